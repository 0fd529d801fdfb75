// cmd_lists.cc: the listings a host shows: "sites", "recent", "history"
// and "favorites".

#include <cstdio>
#include <memory>
#include <string>

#include "cli/options.h"
#include "cli/output.h"
#include "cli/session.h"

namespace corvane::cli {
namespace {

struct ListOptions {
  uint32_t count = 20;
  std::string search;
};

int RunSites(const GlobalOptions& global, const ListOptions& options) {
  ProviderSession session;
  std::vector<SiteRecord> sites;
  HRESULT hr = session.Open(std::string());
  if (SUCCEEDED(hr)) hr = session.ListSites(options.count, &sites);
  if (FAILED(hr)) return ComponentFailure(session.Error());
  // The white-listed domains come all at once, whatever the count asked
  // for; show the count the user asked for.
  if (sites.size() > options.count) sites.resize(options.count);
  if (global.json) {
    PrintJson(ToJson(sites), stdout);
  } else {
    PrintSites(sites, stdout);
  }
  return kExitOk;
}

int RunRecent(const GlobalOptions& global, const ListOptions& options) {
  ProviderSession session;
  std::vector<SiteRecord> sites;
  HRESULT hr = session.Open(std::string());
  if (SUCCEEDED(hr)) hr = session.ListRecent(options.count, &sites);
  if (FAILED(hr)) return ComponentFailure(session.Error());
  if (global.json) {
    PrintJson(ToJson(sites), stdout);
  } else {
    PrintRecent(sites, stdout);
  }
  return kExitOk;
}

int RunHistory(const GlobalOptions& global, const ListOptions& options) {
  ProviderSession session;
  std::vector<DayGroup> days;
  HRESULT hr = session.Open(std::string());
  if (SUCCEEDED(hr)) hr = session.ListHistory(options.count, options.search, &days);
  if (FAILED(hr)) return ComponentFailure(session.Error());
  if (global.json) {
    PrintJson(ToJson(days), stdout);
  } else {
    PrintDays(days, stdout);
  }
  return kExitOk;
}

int RunFavorites(const GlobalOptions& global, const ListOptions& options) {
  ProviderSession session;
  std::vector<UrlRecord> favorites;
  HRESULT hr = session.Open(std::string());
  if (SUCCEEDED(hr)) hr = session.ListFavorites(options.count, &favorites);
  if (FAILED(hr)) return ComponentFailure(session.Error());
  if (global.json) {
    PrintJson(ToJson(favorites), stdout);
  } else {
    PrintUrls(favorites, true, stdout);
  }
  return kExitOk;
}

CLI::App* AddCounted(CLI::App& app, const char* name, const char* help, ListOptions* lpOptions, bool allowAll) {
  CLI::App* sub = app.add_subcommand(name, help);
  auto* option = sub->add_option("-n,--count", lpOptions->count, allowAll ? "Rows to show; 0 shows all" : "Records to show");
  option->check(CLI::Range(allowAll ? 0u : 1u, 100000u));
  return sub;
}

}  // namespace

void AddListCommands(CLI::App& app, const GlobalOptions& global, CommandTable* lpTable) {
  auto sites = std::make_shared<ListOptions>();
  CLI::App* sub = AddCounted(app, "sites", "The sites this user really uses, pinned sites first", sites.get(), false);
  lpTable->emplace_back(sub, [&global, sites] { return RunSites(global, *sites); });

  auto recent = std::make_shared<ListOptions>();
  recent->count = 10;
  sub = AddCounted(app, "recent", "What the user took up lately", recent.get(), false);
  lpTable->emplace_back(sub, [&global, recent] { return RunRecent(global, *recent); });

  auto history = std::make_shared<ListOptions>();
  history->count = 50;
  sub = AddCounted(app, "history", "The browsing history by day", history.get(), true);
  sub->add_option("--search", history->search, "Only visits whose name or URL holds this text");
  lpTable->emplace_back(sub, [&global, history] { return RunHistory(global, *history); });

  auto favorites = std::make_shared<ListOptions>();
  favorites->count = 0;
  sub = AddCounted(app, "favorites", "The browser's bookmarks", favorites.get(), true);
  lpTable->emplace_back(sub, [&global, favorites] { return RunFavorites(global, *favorites); });
}

}  // namespace corvane::cli
