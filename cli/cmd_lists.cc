// cmd_lists.cc: the listings a host shows: "sites", "recent", "history"
// and "favorites".

#include <cstdio>
#include <memory>
#include <string>

#include "cli/data_folder.h"
#include "cli/options.h"
#include "cli/output.h"
#include "cli/row_actions.h"
#include "cli/session.h"
#include "cli/store_reader.h"
#include "cli/time_text.h"

namespace corvane::cli {
namespace {

struct ListOptions {
  uint32_t count = 20;
  std::string search;
  std::string since;
  std::string until;
};

// Opens the session; a listing that ran the day's first update says so, so
// that a later "corvane update" finding nothing to do is no surprise.
HRESULT OpenForListing(ProviderSession* lpSession) {
  HRESULT hr = lpSession->Open(std::string());
  if (SUCCEEDED(hr) && lpSession->Updated()) {
    std::string browser;
    if (FAILED(lpSession->GetValue("ExtractBrowser", &browser))) browser = "Unknown";
    std::fprintf(stderr, "corvane: ran the day's first update before listing (browser read: %s)\n",
                 browser.c_str());
  }
  return hr;
}

// What an empty ranking means: what the history holds, and what ranking
// needs.
void SayWhyNoSites() {
  const HistorySummary history = ReadHistorySummary(DataFolderPath() + "/" + kDatabaseFile);
  if (history.visits == 0) {
    std::printf("(no sites yet: the history is empty; run 'corvane browsers' to see what an update reads)\n");
    return;
  }
  std::printf("(no sites ranked yet: the history holds %lld visits on %lld days, %s to %s; a site is ranked "
              "once it was used on days before the last few, and what is new shows under 'corvane recent')\n",
              static_cast<long long>(history.visits), static_cast<long long>(history.days),
              StampDate(history.first).c_str(), StampDate(history.last).c_str());
}

int RunSites(const GlobalOptions& global, const ListOptions& options) {
  ProviderSession session;
  std::vector<SiteRecord> sites;
  HRESULT hr = OpenForListing(&session);
  if (SUCCEEDED(hr)) hr = ListSitesWithPins(session, options.count, &sites);
  if (FAILED(hr)) return ComponentFailure(session.Error());
  if (global.json) {
    PrintJson(SitesJson(sites), stdout);
  } else {
    PrintSites(sites, FormatOf(global), stdout);
    if (sites.empty() && !global.csv) SayWhyNoSites();
  }
  return kExitOk;
}

int RunRecent(const GlobalOptions& global, const ListOptions& options) {
  ProviderSession session;
  std::vector<SiteRecord> sites;
  HRESULT hr = OpenForListing(&session);
  if (SUCCEEDED(hr)) hr = session.ListRecent(options.count, &sites);
  if (FAILED(hr)) return ComponentFailure(session.Error());
  if (global.json) {
    PrintJson(RecentJson(sites), stdout);
  } else {
    PrintRecent(sites, FormatOf(global), stdout);
  }
  return kExitOk;
}

// Keeps the visits dated from since to until (either may be empty), then at
// most count of them (0: all).
void KeepDates(const ListOptions& options, std::vector<DayGroup>* lpDays) {
  size_t left = options.count == 0 ? SIZE_MAX : options.count;
  for (DayGroup& day : *lpDays) {
    std::erase_if(day.visits, [&](const UrlRecord& visit) {
      const std::string date = StampDate(visit.lastVisit);
      return (!options.since.empty() && date < options.since) || (!options.until.empty() && date > options.until);
    });
    if (day.visits.size() > left) day.visits.resize(left);
    left -= day.visits.size();
  }
  std::erase_if(*lpDays, [](const DayGroup& day) { return day.visits.empty(); });
}

int RunHistory(const GlobalOptions& global, const ListOptions& options) {
  for (const std::string* date : {&options.since, &options.until}) {
    if (!date->empty() && !IsIsoDate(*date)) return UsageError("a date is YYYY-MM-DD: " + *date);
  }
  const bool dated = !options.since.empty() || !options.until.empty();
  ProviderSession session;
  std::vector<DayGroup> days;
  HRESULT hr = OpenForListing(&session);
  if (SUCCEEDED(hr)) hr = session.ListHistory(dated ? 0 : options.count, options.search, &days);
  if (FAILED(hr)) return ComponentFailure(session.Error());
  if (dated) KeepDates(options, &days);
  if (global.json) {
    PrintJson(DaysJson(days), stdout);
  } else {
    PrintDays(days, FormatOf(global), stdout);
  }
  return kExitOk;
}

int RunFavorites(const GlobalOptions& global, const ListOptions& options) {
  ProviderSession session;
  std::vector<UrlRecord> favorites;
  HRESULT hr = OpenForListing(&session);
  if (SUCCEEDED(hr)) hr = session.ListFavorites(options.count, &favorites);
  if (FAILED(hr)) return ComponentFailure(session.Error());
  if (global.json) {
    PrintJson(UrlsJson(favorites, RowKind::kFavorite), stdout);
  } else {
    PrintUrls(favorites, RowKind::kFavorite, FormatOf(global), stdout);
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
  sub->add_option("--since", history->since, "Only visits on or after this date (YYYY-MM-DD)");
  sub->add_option("--until", history->until, "Only visits on or before this date (YYYY-MM-DD)");
  lpTable->emplace_back(sub, [&global, history] { return RunHistory(global, *history); });

  auto favorites = std::make_shared<ListOptions>();
  favorites->count = 0;
  sub = AddCounted(app, "favorites", "The browser's bookmarks", favorites.get(), true);
  lpTable->emplace_back(sub, [&global, favorites] { return RunFavorites(global, *favorites); });
}

}  // namespace corvane::cli
