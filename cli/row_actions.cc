#include "cli/row_actions.h"

#include <algorithm>
#include <regex>

#include "cli/data_folder.h"
#include "cli/output.h"
#include "cli/row_ids.h"
#include "cli/store_reader.h"

namespace corvane::cli {
namespace {

// Enough for every record the recommendation listing can hold.
constexpr uint32_t kWholeListing = 1000000;

void PutPinsFirst(const std::vector<UrlRecord>& pins, std::vector<SiteRecord>* lpSites) {
  std::vector<SiteRecord> ordered;
  for (const UrlRecord& pin : pins) {
    SiteRecord record;
    record.id = pin.id;
    record.whiteList = kPinRecord;
    record.url = pin.url;
    for (auto site = lpSites->begin(); site != lpSites->end(); ++site) {
      if (!site->focus || site->focusId != pin.id) continue;
      record = std::move(*site);
      lpSites->erase(site);
      break;
    }
    record.name = pin.name;
    record.focus = true;
    record.focusId = pin.id;
    ordered.push_back(std::move(record));
  }
  for (SiteRecord& site : *lpSites) {
    site.focus = false;  // a focus record whose pin is gone is ranked like the rest
    ordered.push_back(std::move(site));
  }
  *lpSites = std::move(ordered);
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
// sub-domains and its pages.
HRESULT HideWholeSite(ProviderSession& session, const SiteRecord& site, bool untilRebuild, std::string* lpWhat,
                      std::string* lpError) {
  SiteRows rows;
  if (!ReadSiteRows(DataFolderPath() + "/" + kDatabaseFile, site.mainDomain, &rows, lpError)) return E_FAIL;
  const std::pair<HideKind, const std::vector<uint32_t>*> kTables[] = {
      {HideKind::kSite, &rows.hosts}, {HideKind::kSubSite, &rows.subDomains}, {HideKind::kUrl, &rows.pages}};
  for (const auto& [kind, ids] : kTables) {
    for (uint32_t id : *ids) {
      if (FAILED(session.Hide(kind, std::to_string(id), false, untilRebuild))) {
        *lpError = session.Error();
        return E_FAIL;
      }
    }
  }
  *lpWhat = site.name + " (" + site.mainDomain + "): " + std::to_string(rows.hosts.size()) + " hosts, " +
            std::to_string(rows.subDomains.size()) + " sub-domains and " + std::to_string(rows.pages.size()) + " pages";
  return S_OK;
}

bool Refuse(const std::string& message, std::string* lpError) {
  *lpError = message;
  return false;
}

}  // namespace

HRESULT ListSitesWithPins(ProviderSession& session, uint32_t count, std::vector<SiteRecord>* lpSites) {
  std::vector<UrlRecord> pins;
  HRESULT hr = session.ListSites(count, lpSites);
  if (SUCCEEDED(hr)) hr = session.ListPins(&pins);
  if (FAILED(hr)) return hr;
  PutPinsFirst(pins, lpSites);
  // The white-listed domains come all at once, whatever the count asked
  // for; keep the count asked for, pins included.
  if (lpSites->size() > count) lpSites->resize(count);
  return S_OK;
}

bool CheckPin(const std::string& url, const std::string& name, std::string* lpError) {
  static const std::regex kWeb(R"(https?://[A-Za-z0-9]([A-Za-z0-9.-]*[A-Za-z0-9])?(:[0-9]{1,5})?([/?#]\S*)?)",
                               std::regex::icase);
  static const std::regex kFile(R"(file:///\S*)", std::regex::icase);
  static const std::regex kDomain(R"([A-Za-z0-9]([A-Za-z0-9-]*[A-Za-z0-9])?(\.[A-Za-z0-9]([A-Za-z0-9-]*[A-Za-z0-9])?)+)");
  if (!std::regex_match(url, kWeb) && !std::regex_match(url, kFile) && !std::regex_match(url, kDomain)) {
    return Refuse("'" + url + "' is no address to pin: give an http, https or file URL, or a domain such as "
                  "example.com", lpError);
  }
  return name.empty() ? Refuse("pin needs a name", lpError) : true;
}

bool CheckHideTarget(const std::string& rowId, bool untilRebuild, std::string* lpError) {
  RowKind kind = RowKind::kDomain;
  uint32_t number = 0;
  if (!ParseRowId(rowId, &kind, &number)) {
    return Refuse("'" + rowId + "' is no row ID: give the ID as 'sites', 'history' or 'favorites' list it", lpError);
  }
  if (kind == RowKind::kPin) return Refuse("a pin is removed with 'corvane unpin " + rowId + "'", lpError);
  if (kind == RowKind::kRecent) return Refuse("a recent row can't be hidden; hide its site as 'sites' lists it", lpError);
  if (untilRebuild && (kind == RowKind::kHistory || kind == RowKind::kFavorite)) {
    return Refuse("--until-rebuild applies to sites, sub-domains and pages only", lpError);
  }
  return true;
}

HRESULT PinUrl(ProviderSession& session, const std::string& url, const std::string& name, std::string* lpAction,
               std::string* lpError) {
  if (!CheckPin(url, name, lpError)) return E_INVALIDARG;
  std::vector<UrlRecord> pins;
  HRESULT hr = session.ListPins(&pins);
  auto pinned = std::find_if(pins.begin(), pins.end(), [&](const UrlRecord& pin) { return pin.url == url; });
  *lpAction = pinned == pins.end() ? "pinned" : pinned->name == name ? "already pinned" : "renamed";
  // Pinned under another name: the pin is renamed (it comes back with a new
  // ID, last among the pins).
  if (SUCCEEDED(hr) && *lpAction == "renamed") hr = session.RemovePin(std::to_string(pinned->id), true);
  if (SUCCEEDED(hr) && *lpAction != "already pinned") hr = session.AddPin(url, name);
  if (FAILED(hr)) *lpError = session.Error();
  return hr;
}

HRESULT HideRow(ProviderSession& session, const std::string& rowId, bool untilRebuild, std::string* lpWhat,
                std::string* lpError) {
  if (!CheckHideTarget(rowId, untilRebuild, lpError)) return E_INVALIDARG;
  RowKind kind = RowKind::kDomain;
  uint32_t number = 0;
  static_cast<void>(ParseRowId(rowId, &kind, &number));
  const std::string id = std::to_string(number);
  *lpWhat = rowId;
  HRESULT hr = S_OK;
  if (kind == RowKind::kHistory || kind == RowKind::kFavorite) {
    bool listed = false;
    hr = IsListedUrl(session, kind, number, &listed);
    if (SUCCEEDED(hr) && !listed) return *lpError = "no visible row " + rowId, E_FAIL;
    if (SUCCEEDED(hr)) hr = session.Hide(kind == RowKind::kHistory ? HideKind::kHistory : HideKind::kFavorite, id, false, false);
  } else {
    std::vector<SiteRecord> sites;
    hr = session.ListSites(kWholeListing, &sites);
    const SiteRecord* row = SUCCEEDED(hr) ? FindSiteRow(sites, rowId) : nullptr;
    if (SUCCEEDED(hr) && row == nullptr) return *lpError = "no visible row " + rowId, E_FAIL;
    if (SUCCEEDED(hr) && row->whiteList == 1u) return HideWholeSite(session, *row, untilRebuild, lpWhat, lpError);
    const HideKind hideKind = kind == RowKind::kUrl ? HideKind::kUrl
                              : kind == RowKind::kSubDomain ? HideKind::kSubSite : HideKind::kSite;
    if (SUCCEEDED(hr)) hr = session.Hide(hideKind, id, false, untilRebuild);
    if (SUCCEEDED(hr)) *lpWhat = rowId + " " + (row->name.empty() ? row->url : row->name);
  }
  if (FAILED(hr)) *lpError = session.Error();
  return hr;
}

}  // namespace corvane::cli
