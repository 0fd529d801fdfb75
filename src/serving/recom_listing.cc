// GetRecomURLs of CCommonUseURLsManager: white-listed domains with their
// sub-sites, then sub-domains, then single URLs, each main domain once.

#include "common/text_util.h"
#include "common/url_util.h"
#include "serving/common_use_manager.h"
#include "serving/shown_set_pager.h"

namespace corvane {
namespace {

// Page sizes of the paged stages.
constexpr uint32_t kSubDomainPage = 20;
constexpr uint32_t kURLPage = 50;
// At most this many sub-sites are attached to a domain record.
constexpr uint32_t kSubSiteCount = 3;

constexpr char16_t kHomeName[] = u"首页";

// WhiteList values: which table a record's ID belongs to.
constexpr uint32_t kSingleURL = 0;
constexpr uint32_t kDomainRecord = 1;
constexpr uint32_t kSubDomainRecord = 2;
constexpr uint32_t kSubSiteEntry = 3;

// The extra values every site record carries.
void AddSiteExtras(CURLInfo2* record, const std::u16string& domain, const std::u16string& mainDomain,
                   uint64_t lastVisitTime, uint32_t weight, int32_t hide) {
  record->AddExtraInfo(u"Domain", domain);
  record->AddExtraInfo(u"MainDomain", mainDomain);
  record->AddExtraInfo(u"LastVisitTime", StampOf(lastVisitTime));
  record->AddExtraInfoULong(u"Weight", weight);
  record->AddExtraInfoULong(u"Hide", static_cast<uint32_t>(hide));
}

void ReplaceWhiteList(CURLInfo2* record, uint32_t value) {
  record->RemoveExtraInfo(u"WhiteList");
  record->AddExtraInfoULong(u"WhiteList", value);
}

void AddFocusID(CCorvaneDB* db, CURLInfo2* record, std::u16string_view key) {
  uint32_t id = 0;
  if (SUCCEEDED(db->GetFocusID(key, &id))) record->AddExtraInfoULong(u"FocusID", id);
}

}  // namespace

void CCommonUseURLsManager::AddShown(Listing* listing, CURLInfo2* record, const std::u16string& mainDomain) {
  listing->result->Append(record->AsUnknown());
  ++listing->count;
  listing->db->m_mapShownDomains[mainDomain] = 1;
}

HRESULT CCommonUseURLsManager::GetRecomURLs(uint32_t uStart, uint32_t uCount, IUnknown** lppUnkArray,
                                            uint32_t uType) {
  static_cast<void>(uStart);
  if (uCount == 0 || lppUnkArray == nullptr) return E_INVALIDARG;
  CCorvaneDB* db = m_link.Database();
  if (db == nullptr) return E_FAIL;
  CStorageWatch watch;
  bool bPending = false;
  if (m_link.IsIEBrowser()) {
    // While THistory holds no IE visit, only the URL table by visit count
    // says anything.
    std::u16string added;
    bPending = FAILED(db->GetConfig(u"IEHistoryAdded", &added, u""));
  }
  ComPtr<CURLArray> result(CreateObject<CURLArray>());
  if (!result) return E_FAIL;
  const bool bFocus = (uType & 1) != 0;
  if (bFocus) db->m_mapShownDomains.clear();

  Listing listing{db, bFocus, uCount, 0, result.Get()};
  if (!bPending) RunDomainStage(&listing);
  if (!bPending && listing.count < uCount) RunSubDomainStage(&listing);
  if (listing.count < uCount) {
    HRESULT hr = RunURLStage(&listing, bPending);
    if (FAILED(hr)) return hr;
  }
  if (db->StorageFailed(watch)) return E_FAIL;
  *lppUnkArray = result.Detach()->AsUnknown();
  return S_OK;
}

void CCommonUseURLsManager::RunDomainStage(Listing* listing) {
  std::vector<DomainRow> rows;
  if (FAILED(listing->db->GetRecommendDomains(listing->bFocus, &rows))) return;
  // One query for the sub-sites of all domains instead of one per domain.
  const SubSiteMap subSites = ReadSubSites(listing->db);
  // No bound here: every eligible domain is listed, whatever uCount says.
  for (const DomainRow& row : rows) {
    if (listing->db->m_mapShownDomains.count(row.MainDomain) != 0) continue;
    ComPtr<CURLInfo2> record(CreateObject<CURLInfo2>());
    if (!record) continue;
    static_cast<void>(record->SetInfo(row.ID, row.Name, u"www." + row.MainDomain));
    AddSiteExtras(record.Get(), row.Domain, row.MainDomain, row.LastVisitTime, row.Score, row.Hide);
    record->AddExtraInfoULong(u"WhiteList", kDomainRecord);
    record = AttachSubSites(subSites, row, std::move(record));
    if (listing->bFocus) AddFocusID(listing->db, record.Get(), row.MainDomain);
    AddShown(listing, record.Get(), row.MainDomain);
  }
}

CCommonUseURLsManager::SubSiteMap CCommonUseURLsManager::ReadSubSites(CCorvaneDB* db) {
  SubSiteMap subSites;
  StatementPtr stmt;
  if (FAILED(db->GetAllDomainSubSites(&stmt))) return subSites;
  while (stmt->Step()) {
    std::vector<SubSiteRow>& rows = subSites[stmt->ColumnText16(1)];
    if (rows.size() >= kSubSiteCount) continue;
    rows.push_back(SubSiteRow{stmt->ColumnText16(0), stmt->ColumnText16(1),
                              static_cast<uint64_t>(stmt->ColumnInt64(2)), static_cast<uint32_t>(stmt->ColumnInt64(3)),
                              stmt->ColumnInt(4), stmt->ColumnText16(6)});
  }
  return subSites;
}

ComPtr<CURLInfo2> CCommonUseURLsManager::AttachSubSites(const SubSiteMap& subSiteRows, const DomainRow& row,
                                                        ComPtr<CURLInfo2> record) {
  const uint32_t weight = record->ExtraULongOr(u"Weight", 0);
  bool bSawHome = false;
  bool bPromoted = false;
  ComPtr<CURLArray> subSites;
  auto found = subSiteRows.find(row.MainDomain);
  if (found != subSiteRows.end()) {
    for (const SubSiteRow& site : found->second) {
      if (!subSites) {
        subSites.Reset(CreateObject<CURLArray>());
        if (!subSites) break;
      }
      if (AsciiEqualsIgnoreCase(site.Domain, row.Domain)) continue;  // not its own sub-site
      ComPtr<CURLInfo2> entry(CreateObject<CURLInfo2>());
      if (!entry) continue;
      const bool bPromote = site.Score > weight && AsciiEqualsIgnoreCase(site.Domain, site.MainDomain);
      if (IsMainDomain(site.Domain)) {
        static_cast<void>(entry->SetInfo(1, kHomeName, u"www." + site.Domain));
        bSawHome = true;
      } else {
        static_cast<void>(entry->SetInfo(1, site.SubName, site.Domain));
      }
      AddSiteExtras(entry.Get(), site.Domain, site.MainDomain, site.LastVisitTime, site.Score, site.Hide);
      if (bPromote && !bPromoted) {
        // The bare main domain outranks the listed host: they change places.
        static_cast<void>(record->SetInfo(row.ID, row.SubName, row.Domain));
        ReplaceWhiteList(record.Get(), kSubSiteEntry);
        static_cast<void>(entry->SetInfo(row.ID, site.SubName, SiteURL(site.Domain)));
        entry->AddExtraInfoULong(u"WhiteList", kDomainRecord);
        subSites->Append(record->AsUnknown());
        record = std::move(entry);
        bPromoted = true;
      } else {
        entry->AddExtraInfoULong(u"WhiteList", kSubSiteEntry);
        subSites->Append(entry->AsUnknown());
      }
    }
  }
  if (subSites) record->AddExtraInfoUnknown(u"SubDomain", subSites->AsUnknown());
  if (bSawHome && !bPromoted) {
    // The bare main domain stands in the list as the home page, so the
    // record names its own host.
    static_cast<void>(record->SetInfo(row.ID, row.SubName, SiteURL(row.Domain)));
  }
  return record;
}

// TSubDomain joined with TNames: 0 rowid, 1 Domain, 2 MainDomain,
// 3 LastVisitTime, 4 Score, 5 Hide, 6 T2Flag, 7 TNames.Name.
void CCommonUseURLsManager::RunSubDomainStage(Listing* listing) {
  StatementPtr stmt;
  if (FAILED(listing->db->GetSubDomains(listing->bFocus, &stmt))) return;
  CShownSetPager pager(stmt.get(), 2, kSubDomainPage, &listing->db->m_mapShownDomains);
  while (pager.NextPage()) {
    while (listing->count < listing->uCount && pager.NextRow()) {
      const std::u16string& mainDomain = pager.MainDomain();
      if (listing->db->m_mapShownDomains.count(mainDomain) != 0) continue;
      ComPtr<CURLInfo2> record(CreateObject<CURLInfo2>());
      if (!record) continue;
      const std::u16string domain = stmt->ColumnText16(1);
      static_cast<void>(record->SetInfo(static_cast<uint32_t>(stmt->ColumnInt64(0)), stmt->ColumnText16(7),
                                        SiteURL(domain)));
      AddSiteExtras(record.Get(), domain, mainDomain, static_cast<uint64_t>(stmt->ColumnInt64(3)),
                    static_cast<uint32_t>(stmt->ColumnInt64(4)), stmt->ColumnInt(5));
      record->AddExtraInfoULong(u"WhiteList", kSubDomainRecord);
      if (listing->bFocus) AddFocusID(listing->db, record.Get(), domain);
      AddShown(listing, record.Get(), mainDomain);
      pager.NoteShown();
    }
    if (listing->count >= listing->uCount) return;
  }
}

// TRecommendURL behind its rowid: 0 rowid, 1 Name, 2 URL, 3 FixedURL,
// 4 LastVisitTime, 5 Domain, 6 MainDomain, 7 Weight, 8 Hide, 9 VisitCount,
// 10 AvgVisitCount.
HRESULT CCommonUseURLsManager::RunURLStage(Listing* listing, bool bPending) {
  StatementPtr stmt;
  HRESULT hr = bPending ? listing->db->GetRecommendURLsByVisitCount(listing->bFocus, &stmt)
                        : listing->db->GetRecommendURLs(listing->bFocus, &stmt);
  if (FAILED(hr)) return hr;
  CShownSetPager pager(stmt.get(), 6, kURLPage, &listing->db->m_mapShownDomains);
  while (pager.NextPage()) {
    while (listing->count < listing->uCount && pager.NextRow()) {
      const std::u16string& mainDomain = pager.MainDomain();
      if (listing->db->m_mapShownDomains.count(mainDomain) != 0) continue;
      ComPtr<CURLInfo2> record(CreateObject<CURLInfo2>());
      if (!record) continue;
      const std::u16string url = stmt->ColumnText16(2);
      static_cast<void>(record->SetInfo(static_cast<uint32_t>(stmt->ColumnInt64(0)), stmt->ColumnText16(1), url));
      record->AddExtraInfo(u"FixedURL", stmt->ColumnText16(3));
      AddSiteExtras(record.Get(), stmt->ColumnText16(5), mainDomain, static_cast<uint64_t>(stmt->ColumnInt64(4)),
                    static_cast<uint32_t>(stmt->ColumnInt64(7)), stmt->ColumnInt(8));
      record->AddExtraInfoULong(u"VisitCount", static_cast<uint32_t>(stmt->ColumnInt64(9)));
      record->AddExtraInfoULong(u"AvgVisitCount", static_cast<uint32_t>(stmt->ColumnInt64(10)));
      record->AddExtraInfoULong(u"WhiteList", kSingleURL);
      if (listing->bFocus) AddFocusID(listing->db, record.Get(), url);
      AddShown(listing, record.Get(), mainDomain);
      pager.NoteShown();
    }
    if (listing->count >= listing->uCount) return S_OK;
  }
  return S_OK;
}

}  // namespace corvane
