// GetRecentHistory of CCommonUseURLsManager: recent domains, then recent
// URLs, one record per main domain. The set of listed main domains is local
// to the call, so no call depends on an earlier one.

#include <set>

#include "serving/common_use_manager.h"

namespace corvane {
namespace {

using MainDomainSet = std::set<std::u16string>;

struct RecentListing {
  CCorvaneDB* db;
  uint32_t uCount;
  uint32_t count;
  CURLArray* result;
  MainDomainSet shown;
};

void AddRecord(RecentListing* listing, CURLInfo2* record, const std::u16string& mainDomain) {
  listing->result->Append(record->AsUnknown());
  ++listing->count;
  listing->shown.insert(mainDomain);
}

// TRecentDomain: 0 Domain, 1 MainDomain, 2 LastVisitTime, 3 Score, 4 Name.
void ListRecentDomains(RecentListing* listing, CSqliteStatement* stmt) {
  while (listing->count < listing->uCount && stmt->Step()) {
    const std::u16string mainDomain = stmt->ColumnText16(1);
    if (listing->shown.count(mainDomain) != 0) continue;
    ComPtr<CURLInfo2> record(CreateObject<CURLInfo2>());
    if (!record) continue;
    const std::u16string domain = stmt->ColumnText16(0);
    static_cast<void>(record->SetInfo(1, stmt->ColumnText16(4), SiteURL(domain)));
    record->AddExtraInfo(u"LastVisitTime", StampOf(static_cast<uint64_t>(stmt->ColumnInt64(2))));
    record->AddExtraInfo(u"Domain", domain);
    record->AddExtraInfo(u"MainDomain", mainDomain);
    record->AddExtraInfoULong(u"Score", static_cast<uint32_t>(stmt->ColumnInt64(3)));
    AddRecord(listing, record.Get(), mainDomain);
  }
}

// TRecentHistory: 0 ID, 1 Name, 2 URL, 3 FixedURL, 4 LastVisitTime,
// 5 Domain, 6 MainDomain, 7 Weight, 8 VisitCount.
void ListRecentURLs(RecentListing* listing, CSqliteStatement* stmt) {
  while (listing->count < listing->uCount && stmt->Step()) {
    const std::u16string mainDomain = stmt->ColumnText16(6);
    if (listing->shown.count(mainDomain) != 0) continue;
    ComPtr<CURLInfo2> record(CreateObject<CURLInfo2>());
    if (!record) continue;
    static_cast<void>(record->SetInfo(static_cast<uint32_t>(stmt->ColumnInt64(0)), stmt->ColumnText16(1),
                                      stmt->ColumnText16(2)));
    record->AddExtraInfo(u"FixedURL", stmt->ColumnText16(3));
    record->AddExtraInfo(u"LastVisitTime", StampOf(static_cast<uint64_t>(stmt->ColumnInt64(4))));
    record->AddExtraInfo(u"Domain", stmt->ColumnText16(5));
    record->AddExtraInfo(u"MainDomain", mainDomain);
    record->AddExtraInfoULong(u"Weight", static_cast<uint32_t>(stmt->ColumnInt64(7)));
    record->AddExtraInfoULong(u"VisitCount", static_cast<uint32_t>(stmt->ColumnInt64(8)));
    AddRecord(listing, record.Get(), mainDomain);
  }
}

}  // namespace

HRESULT CCommonUseURLsManager::GetRecentHistory(uint32_t uStart, uint32_t uCount, IUnknown** lppArray,
                                                uint32_t uType) {
  static_cast<void>(uStart);
  static_cast<void>(uType);
  if (uCount == 0 || lppArray == nullptr) return E_INVALIDARG;
  CCorvaneDB* db = m_link.Database();
  if (db == nullptr) return E_FAIL;
  CStorageWatch watch;
  ComPtr<CURLArray> result(CreateObject<CURLArray>());
  if (!result) return E_FAIL;
  RecentListing listing{db, uCount, 0, result.Get(), {}};

  StatementPtr domains;
  const HRESULT hrDomains = db->GetRecentDomains(uCount, &domains);
  if (SUCCEEDED(hrDomains)) ListRecentDomains(&listing, domains.get());
  domains.reset();

  // The URLs are read even when the domain query failed; that failure
  // decides the result all the same. Pages of this listing would follow on
  // from each other without a gap, so one statement reads them all.
  if (listing.count < uCount) {
    StatementPtr rows;
    if (SUCCEEDED(db->GetRecentHistoryRows(&rows))) ListRecentURLs(&listing, rows.get());
  }
  if (FAILED(hrDomains)) return hrDomains;
  if (db->StorageFailed(watch)) return E_FAIL;
  *lppArray = result.Detach()->AsUnknown();
  return S_OK;
}

}  // namespace corvane
