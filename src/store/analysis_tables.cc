// Table operations of CCorvaneDB for the visit classification: emptying and
// filling TPreparedURL, and, on the IE-only path, filling TRecommendURL
// straight from the summed map.

#include "common/time_stamp.h"
#include "common/url_util.h"
#include "store/corvane_db.h"
#include "store/schema.h"

namespace corvane {

HRESULT CCorvaneDB::ClearPreparedURLs() {
  bool deleted = Exec(u"delete from TPreparedURL;");
  static_cast<void>(Exec(u"update sqlite_sequence set seq = 0 where name='TPreparedURL';"));
  return deleted ? S_OK : E_FAIL;
}

HRESULT CCorvaneDB::WritePreparedURLs(const PreparedMap& map) {
  if (map.empty()) return E_INVALIDARG;
  if (!BeginTransaction()) return E_FAIL;
  StatementPtr insert = Prepare(u"insert into TPreparedURL values(?, ?, ? , ? , ? , ? , ?)");
  std::u16string original;
  for (const auto& [url, record] : map) {
    if (!insert) break;
    RestoreURL(url, record.hadWww, record.hadSlash, &original);
    if (insert->BindInt(0, record.DayIndex) && insert->BindText16(1, record.Name) && insert->BindText16(2, url) &&
        insert->BindText16(3, original) && insert->BindInt(4, record.VisitCount) &&
        insert->BindText16(5, record.VisitTime) &&
        insert->BindInt64(6, static_cast<int64_t>(VisitStampToLong(record.VisitTime)))) {
      static_cast<void>(insert->Execute());
    }
  }
  bool prepared = insert != nullptr;
  insert.reset();
  static_cast<void>(EndTransaction());
  return prepared ? S_OK : E_FAIL;
}

HRESULT CCorvaneDB::BuildRecommendURLsFromMap(const PreparedMap& map) {
  if (map.empty()) return S_FALSE;
  // The table is built with or without a transaction of its own; only a
  // pair that began is ended, so a failed begin leaves the nesting count.
  bool began = BeginTransaction();
  // Saved before the table is emptied.
  HideMap hidden;
  HRESULT saved = GetHiddenRecommendURLs(&hidden);
  if (TableExists(schema::kRecommendURL) == S_FALSE) static_cast<void>(Exec(schema::kCreateRecommendURL));
  static_cast<void>(ClearTable(schema::kRecommendURL));
  StatementPtr insert = Prepare(u"insert into TRecommendURL values(?, ?, ?, ?, ?, ?, ?, ?, ?, ?);");
  std::u16string url;
  std::u16string domain;
  std::u16string mainDomain;
  for (const auto& [fixedURL, record] : map) {
    if (!insert) break;
    RestoreURL(fixedURL, record.hadWww, record.hadSlash, &url);
    GetFullDomain(fixedURL, &domain);
    mainDomain.clear();
    static_cast<void>(GetMainDomain(domain, &mainDomain));
    int32_t average = record.dayCount == 0 ? 0 : record.VisitCount / record.dayCount;
    if (insert->BindText16(0, record.Name) && insert->BindText16(1, url) && insert->BindText16(2, fixedURL) &&
        insert->BindInt64(3, static_cast<int64_t>(VisitStampToLong(record.VisitTime))) &&
        insert->BindText16(4, domain) && insert->BindText16(5, mainDomain) && insert->BindInt(6, 0) &&
        insert->BindInt(7, 0) && insert->BindInt(8, record.VisitCount) && insert->BindInt(9, average)) {
      static_cast<void>(insert->Execute());
    }
  }
  insert.reset();
  if (saved == 0) static_cast<void>(ReapplyHiddenRecommendURLs(hidden, kHideFactor));
  if (began) static_cast<void>(EndTransaction());
  return S_OK;
}

}  // namespace corvane
