// cmd_pins.cc: the host's own changes: "pin", "unpin", "pins" (the focus
// list) and "hide" (recommended sites, history entries, favourites).
//
// The component answers S_OK for an ID that matches no row, so the host
// looks the ID up in the listing first and reports an unknown one.

#include <algorithm>
#include <cstdio>
#include <memory>
#include <string>

#include "cli/host_text.h"
#include "cli/options.h"
#include "cli/output.h"
#include "cli/session.h"

namespace corvane::cli {
namespace {

// Enough for every record the recommendation listing can hold.
constexpr uint32_t kWholeListing = 1000000;

struct PinOptions {
  std::string url;
  std::string name;
};

struct HideOptions {
  std::string kind;
  std::string id;
  bool untilRebuild = false;
};

int PrintDone(const GlobalOptions& global, const std::string& action, const std::string& what) {
  if (global.json) {
    Json::Value document(Json::objectValue);
    document["action"] = action;
    document["target"] = what;
    document["status"] = "ok";
    PrintJson(document, stdout);
  } else {
    std::printf("%s: %s\n", action.c_str(), what.c_str());
  }
  return kExitOk;
}

int RunPin(const GlobalOptions& global, const PinOptions& options) {
  if (options.url.empty() || options.name.empty()) return UsageError("pin needs a URL and a name");
  ProviderSession session;
  HRESULT hr = session.Open(std::string());
  if (SUCCEEDED(hr)) hr = session.AddPin(options.url, options.name);
  if (FAILED(hr)) return ComponentFailure(session.Error());
  return PrintDone(global, hr == S_FALSE ? "already pinned" : "pinned", options.url);
}

int RunUnpin(const GlobalOptions& global, const std::string& target) {
  bool byId = IsDecimalNumber(target);
  ProviderSession session;
  std::vector<UrlRecord> pins;
  HRESULT hr = session.Open(std::string());
  if (SUCCEEDED(hr)) hr = session.ListPins(&pins);
  if (FAILED(hr)) return ComponentFailure(session.Error());
  bool known = std::any_of(pins.begin(), pins.end(), [&](const UrlRecord& pin) {
    return byId ? std::to_string(pin.id) == target : pin.url == target;
  });
  if (!known) return Failure("no pinned site with " + std::string(byId ? "ID " : "URL ") + target);
  hr = session.RemovePin(target, byId);
  if (FAILED(hr)) return ComponentFailure(session.Error());
  return PrintDone(global, "unpinned", target);
}

int RunPins(const GlobalOptions& global) {
  ProviderSession session;
  std::vector<UrlRecord> pins;
  HRESULT hr = session.Open(std::string());
  if (SUCCEEDED(hr)) hr = session.ListPins(&pins);
  if (FAILED(hr)) return ComponentFailure(session.Error());
  if (global.json) {
    PrintJson(ToJson(pins), stdout);
  } else {
    PrintUrls(pins, false, stdout);
  }
  return kExitOk;
}

bool ParseHideKind(const std::string& text, HideKind* lpKind) {
  static const std::pair<const char*, HideKind> kKinds[] = {{"site", HideKind::kSite},
                                                             {"subsite", HideKind::kSubSite},
                                                             {"url", HideKind::kUrl},
                                                             {"history", HideKind::kHistory},
                                                             {"favorite", HideKind::kFavorite}};
  for (const auto& [name, kind] : kKinds) {
    if (text == name) *lpKind = kind;
    if (text == name) return true;
  }
  return false;
}

// Whether the listing that the kind hides from shows the target.
HRESULT IsListed(ProviderSession& session, HideKind kind, const std::string& id, bool byUrl, bool* lpListed) {
  std::vector<SiteRecord> sites;
  std::vector<DayGroup> days;
  std::vector<UrlRecord> favorites;
  HRESULT hr = S_OK;
  if (kind == HideKind::kHistory) {
    hr = session.ListHistory(0, std::string(), &days);
    for (const DayGroup& day : days) {
      for (const UrlRecord& visit : day.visits) *lpListed = *lpListed || std::to_string(visit.id) == id;
    }
    return hr;
  }
  if (kind == HideKind::kFavorite) {
    hr = session.ListFavorites(0, &favorites);
    for (const UrlRecord& favorite : favorites) *lpListed = *lpListed || std::to_string(favorite.id) == id;
    return hr;
  }
  uint32_t wanted = kind == HideKind::kSite ? 1 : kind == HideKind::kSubSite ? 2 : 0;
  hr = session.ListSites(kWholeListing, &sites);
  for (const SiteRecord& site : sites) {
    bool same = byUrl ? site.url == id : std::to_string(site.id) == id;
    *lpListed = *lpListed || (same && site.whiteList == wanted);
    // A sub-site nested in a site is a row of the sites' table too.
    for (const SiteRecord& sub : site.subSites) {
      *lpListed = *lpListed || (kind == HideKind::kSite && sub.id != 0 && std::to_string(sub.id) == id);
    }
  }
  return hr;
}

int RunHide(const GlobalOptions& global, const HideOptions& options) {
  HideKind kind = HideKind::kSite;
  if (!ParseHideKind(options.kind, &kind)) {
    return UsageError("unknown kind '" + options.kind + "': use site, subsite, url, history or favorite");
  }
  bool byUrl = kind == HideKind::kUrl && !IsDecimalNumber(options.id);
  if (!byUrl && !IsDecimalNumber(options.id)) return UsageError("ID must be a decimal number: " + options.id);
  if (options.untilRebuild && (kind == HideKind::kHistory || kind == HideKind::kFavorite)) {
    return UsageError("--until-rebuild applies to site, subsite and url only");
  }
  ProviderSession session;
  bool listed = false;
  HRESULT hr = session.Open(std::string());
  if (SUCCEEDED(hr)) hr = IsListed(session, kind, options.id, byUrl, &listed);
  if (FAILED(hr)) return ComponentFailure(session.Error());
  if (!listed) return Failure("no visible " + options.kind + " with " + (byUrl ? "URL " : "ID ") + options.id);
  hr = session.Hide(kind, options.id, byUrl, options.untilRebuild);
  if (FAILED(hr)) return ComponentFailure(session.Error());
  return PrintDone(global, options.untilRebuild ? "hidden until the next rebuild" : "hidden",
                   options.kind + " " + options.id);
}

}  // namespace

void AddPinCommands(CLI::App& app, const GlobalOptions& global, CommandTable* lpTable) {
  auto pin = std::make_shared<PinOptions>();
  CLI::App* sub = app.add_subcommand("pin", "Pin a site: it is listed first by 'sites'");
  sub->add_option("URL", pin->url, "Address; a site's main domain pins the whole site")->required();
  sub->add_option("NAME", pin->name, "Name to show")->required();
  lpTable->emplace_back(sub, [&global, pin] { return RunPin(global, *pin); });

  auto target = std::make_shared<std::string>();
  sub = app.add_subcommand("unpin", "Remove a pinned site");
  sub->add_option("TARGET", *target, "ID shown by 'pins', or the URL")->required();
  lpTable->emplace_back(sub, [&global, target] { return RunUnpin(global, *target); });

  sub = app.add_subcommand("pins", "List the pinned sites");
  lpTable->emplace_back(sub, [&global] { return RunPins(global); });

  auto hide = std::make_shared<HideOptions>();
  sub = app.add_subcommand("hide", "Hide a site, a history entry or a favourite");
  sub->add_option("KIND", hide->kind, "site, subsite, url, history or favorite")->required();
  sub->add_option("ID", hide->id, "ID as listed; a nested sub-site's ID goes with site (a URL also for url)")
      ->required();
  sub->add_flag("--until-rebuild", hide->untilRebuild, "Hide until the next update, lowering the site's weight");
  lpTable->emplace_back(sub, [&global, hide] { return RunHide(global, *hide); });
}

}  // namespace corvane::cli
