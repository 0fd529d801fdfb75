// cmd_pins.cc: the host's own changes: "pin", "unpin", "pins" (the focus
// list) and "hide" (a listed row by its row ID).
//
// The component answers S_OK for an ID that matches no row, so the host
// looks the ID up in the listing first and reports an unknown one. Hiding a
// site hides every ranked row of its main domain, each through the
// component's own operation.

#include <algorithm>
#include <cstdio>
#include <memory>
#include <regex>
#include <string>

#include "cli/data_folder.h"
#include "cli/host_text.h"
#include "cli/options.h"
#include "cli/output.h"
#include "cli/session.h"
#include "cli/store_reader.h"

namespace corvane::cli {
namespace {

// Enough for every record the recommendation listing can hold.
constexpr uint32_t kWholeListing = 1000000;

struct PinOptions {
  std::string url;
  std::string name;
};

struct HideOptions {
  std::string target;
  std::string id;  // set in the older form "hide KIND ID"
  bool untilRebuild = false;
};

int PrintDone(const GlobalOptions& global, const std::string& action, const std::string& what,
              const std::string& detail = std::string()) {
  if (global.json) {
    Json::Value document(Json::objectValue);
    document["action"] = action;
    document["target"] = what;
    document["status"] = "ok";
    if (!detail.empty()) document["detail"] = detail;
    PrintJson(document, stdout);
  } else {
    std::printf("%s: %s%s\n", action.c_str(), what.c_str(), detail.empty() ? "" : (": " + detail).c_str());
  }
  return kExitOk;
}

// What may be pinned: an http or https URL with a host, a file URL, or a
// bare main domain that pins the whole site.
bool IsPinnable(const std::string& url) {
  static const std::regex kWeb(R"(https?://[A-Za-z0-9]([A-Za-z0-9.-]*[A-Za-z0-9])?(:[0-9]{1,5})?([/?#]\S*)?)",
                               std::regex::icase);
  static const std::regex kFile(R"(file:///\S*)", std::regex::icase);
  static const std::regex kDomain(R"([A-Za-z0-9]([A-Za-z0-9-]*[A-Za-z0-9])?(\.[A-Za-z0-9]([A-Za-z0-9-]*[A-Za-z0-9])?)+)");
  return std::regex_match(url, kWeb) || std::regex_match(url, kFile) || std::regex_match(url, kDomain);
}

int RunPin(const GlobalOptions& global, const PinOptions& options) {
  if (options.name.empty()) return UsageError("pin needs a name");
  if (!IsPinnable(options.url)) {
    return UsageError("'" + options.url + "' is no address to pin: give an http, https or file URL, or a domain "
                      "such as example.com");
  }
  ProviderSession session;
  std::vector<UrlRecord> pins;
  HRESULT hr = session.Open(std::string());
  if (SUCCEEDED(hr)) hr = session.ListPins(&pins);
  if (FAILED(hr)) return ComponentFailure(session.Error());
  auto pinned = std::find_if(pins.begin(), pins.end(), [&](const UrlRecord& pin) { return pin.url == options.url; });
  if (pinned != pins.end() && pinned->name == options.name) return PrintDone(global, "already pinned", options.url);
  // Pinned under another name: the pin is renamed (it comes back with a new
  // ID, last among the pins).
  if (pinned != pins.end()) hr = session.RemovePin(std::to_string(pinned->id), true);
  if (SUCCEEDED(hr)) hr = session.AddPin(options.url, options.name);
  if (FAILED(hr)) return ComponentFailure(session.Error());
  return PrintDone(global, pinned != pins.end() ? "renamed" : "pinned", options.url, options.name);
}

int RunUnpin(const GlobalOptions& global, std::string target) {
  RowKind kind = RowKind::kPin;
  uint32_t number = 0;
  if (ParseRowId(target, &kind, &number) && kind == RowKind::kPin) target = std::to_string(number);
  const bool byId = IsDecimalNumber(target);
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
    PrintJson(UrlsJson(pins, RowKind::kPin), stdout);
  } else {
    PrintUrls(pins, RowKind::kPin, FormatOf(global), stdout);
  }
  return kExitOk;
}

// The older form "hide KIND NUMBER" as a row ID.
bool RowIdOfKind(const std::string& kindName, const std::string& number, std::string* lpRowId) {
  static const std::pair<const char*, RowKind> kKinds[] = {{"site", RowKind::kDomain}, {"subsite", RowKind::kSubDomain},
                                                            {"url", RowKind::kUrl}, {"history", RowKind::kHistory},
                                                            {"favorite", RowKind::kFavorite}};
  for (const auto& [name, kind] : kKinds) {
    if (kindName == name) *lpRowId = static_cast<char>(kind) + number;
    if (kindName == name) return true;
  }
  return false;
}

// A row of the sites listing, nested parts included; null when none has
// the ID.
const SiteRecord* FindSiteRow(const std::vector<SiteRecord>& sites, const std::string& rowId) {
  for (const SiteRecord& site : sites) {
    if (SiteRowId(site) == rowId) return &site;
    for (const SiteRecord& sub : site.subSites) {
      if (SiteRowId(sub) == rowId) return &sub;
    }
  }
  return nullptr;
}

// Whether the history or the favourites list the row.
HRESULT IsListedUrl(ProviderSession& session, RowKind kind, uint32_t number, bool* lpListed) {
  if (kind == RowKind::kHistory) {
    std::vector<DayGroup> days;
    HRESULT hr = session.ListHistory(0, std::string(), &days);
    for (const DayGroup& day : days) {
      for (const UrlRecord& visit : day.visits) *lpListed = *lpListed || visit.id == number;
    }
    return hr;
  }
  std::vector<UrlRecord> favorites;
  HRESULT hr = session.ListFavorites(0, &favorites);
  for (const UrlRecord& favorite : favorites) *lpListed = *lpListed || favorite.id == number;
  return hr;
}

// Hides every ranked row of the site's main domain: its hosts, its
// sub-domains and its pages. What was hidden, in words.
HRESULT HideWholeSite(ProviderSession& session, const SiteRecord& site, bool untilRebuild, std::string* lpWhat) {
  SiteRows rows;
  std::string error;
  if (!ReadSiteRows(DataFolderPath() + "/" + kDatabaseFile, site.mainDomain, &rows, &error)) {
    *lpWhat = error;
    return E_FAIL;
  }
  HRESULT hr = S_OK;
  for (uint32_t id : rows.hosts) hr = SUCCEEDED(hr) ? session.Hide(HideKind::kSite, std::to_string(id), false, untilRebuild) : hr;
  for (uint32_t id : rows.subDomains) {
    hr = SUCCEEDED(hr) ? session.Hide(HideKind::kSubSite, std::to_string(id), false, untilRebuild) : hr;
  }
  for (uint32_t id : rows.pages) hr = SUCCEEDED(hr) ? session.Hide(HideKind::kUrl, std::to_string(id), false, untilRebuild) : hr;
  *lpWhat = site.name + " (" + site.mainDomain + "): " + std::to_string(rows.hosts.size()) + " hosts, " +
            std::to_string(rows.subDomains.size()) + " sub-domains and " + std::to_string(rows.pages.size()) + " pages";
  return hr;
}

int RunHide(const GlobalOptions& global, const HideOptions& options) {
  std::string rowId = options.target;
  if (!options.id.empty() && !RowIdOfKind(options.target, options.id, &rowId)) {
    return UsageError("unknown kind '" + options.target + "': give the row ID as listed, such as s12 or h40");
  }
  RowKind kind = RowKind::kDomain;
  uint32_t number = 0;
  if (!ParseRowId(rowId, &kind, &number)) {
    return UsageError("'" + rowId + "' is no row ID: give the ID as 'sites', 'history' or 'favorites' list it");
  }
  if (kind == RowKind::kPin) return UsageError("a pin is removed with 'corvane unpin " + rowId + "'");
  if (kind == RowKind::kRecent) return UsageError("a recent row can't be hidden; hide its site as 'sites' lists it");
  if (options.untilRebuild && (kind == RowKind::kHistory || kind == RowKind::kFavorite)) {
    return UsageError("--until-rebuild applies to sites, sub-domains and pages only");
  }
  ProviderSession session;
  HRESULT hr = session.Open(std::string());
  if (FAILED(hr)) return ComponentFailure(session.Error());
  const std::string id = std::to_string(number);
  std::string what = rowId;
  if (kind == RowKind::kHistory || kind == RowKind::kFavorite) {
    bool listed = false;
    hr = IsListedUrl(session, kind, number, &listed);
    if (FAILED(hr)) return ComponentFailure(session.Error());
    if (!listed) return Failure("no visible row " + rowId);
    hr = session.Hide(kind == RowKind::kHistory ? HideKind::kHistory : HideKind::kFavorite, id, false, false);
  } else {
    std::vector<SiteRecord> sites;
    hr = session.ListSites(kWholeListing, &sites);
    if (FAILED(hr)) return ComponentFailure(session.Error());
    const SiteRecord* row = FindSiteRow(sites, rowId);
    if (row == nullptr) return Failure("no visible row " + rowId);
    if (row->whiteList == 1u) {
      hr = HideWholeSite(session, *row, options.untilRebuild, &what);
    } else {
      const HideKind hideKind = kind == RowKind::kUrl ? HideKind::kUrl
                                : kind == RowKind::kSubDomain ? HideKind::kSubSite : HideKind::kSite;
      hr = session.Hide(hideKind, id, false, options.untilRebuild);
      what = rowId + " " + (row->name.empty() ? row->url : row->name);
    }
  }
  if (FAILED(hr)) return ComponentFailure(session.Error().empty() ? what : session.Error());
  if (options.untilRebuild) {
    return PrintDone(global, "hidden until the next update", what, "it comes back then with a lowered weight");
  }
  return PrintDone(global, "hidden for good", what, "the component has no way to show it again");
}

}  // namespace

void AddPinCommands(CLI::App& app, const GlobalOptions& global, CommandTable* lpTable) {
  auto pin = std::make_shared<PinOptions>();
  CLI::App* sub = app.add_subcommand("pin", "Pin a site: 'sites' lists every pin first");
  sub->add_option("URL", pin->url, "http, https or file URL; a main domain such as example.com pins the whole site")
      ->required();
  sub->add_option("NAME", pin->name, "Name to show; pinning a pinned URL renames it")->required();
  lpTable->emplace_back(sub, [&global, pin] { return RunPin(global, *pin); });

  auto target = std::make_shared<std::string>();
  sub = app.add_subcommand("unpin", "Remove a pinned site");
  sub->add_option("TARGET", *target, "ID shown by 'pins' (p2 or 2), or the URL")->required();
  lpTable->emplace_back(sub, [&global, target] { return RunUnpin(global, *target); });

  sub = app.add_subcommand("pins", "List the pinned sites");
  lpTable->emplace_back(sub, [&global] { return RunPins(global); });

  auto hide = std::make_shared<HideOptions>();
  sub = app.add_subcommand("hide", "Hide a listed row: a site (with all its hosts and pages), a page, a visit or a "
                                   "favourite");
  sub->add_option("ID", hide->target, "Row ID as listed: s12 (a site, or one part), d3, u7, h40 or f2")->required();
  sub->add_option("NUMBER", hide->id, "Older form: KIND NUMBER, such as 'site 12'");
  sub->add_flag("--until-rebuild", hide->untilRebuild, "Hide until the next update, lowering the weight");
  lpTable->emplace_back(sub, [&global, hide] { return RunHide(global, *hide); });
}

}  // namespace corvane::cli
