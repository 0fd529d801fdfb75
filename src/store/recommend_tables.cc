// Table operations of CCorvaneDB that build the recommendation tables from
// the scored tables h2 and z: single pages (TRecommendURL), white-listed
// hosts with the summed score of their pages (TRecommendDomain), the other
// hosts of a main domain with an outstanding host (TZS), and the hosts that
// a sub-domain rule made sites of their own (TSubDomain). All set-based SQL
// on our own tables; no outside text enters a statement.

#include <algorithm>
#include <cmath>
#include <cstdio>

#include "common/utf.h"
#include "store/corvane_db.h"
#include "store/schema.h"

namespace corvane {
namespace {

// The create statement of TRecommendDomain for a table of the same shape.
std::u16string DomainTableCreate(std::u16string_view table) {
  std::u16string sql(schema::kCreateRecommendDomain);
  std::u16string_view name = schema::kRecommendDomain;
  sql.replace(sql.find(name), name.size(), table);
  return sql;
}

void CreateIfMissing(CCorvaneDB* db, std::u16string_view table, std::u16string_view createSql) {
  if (db->TableExists(table) == S_FALSE) static_cast<void>(db->Exec(createSql));
}

}  // namespace

HRESULT CCorvaneDB::BuildRecommendURLs() {
  CreateIfMissing(this, schema::kRecommendURL, schema::kCreateRecommendURL);
  static_cast<void>(ClearTable(schema::kRecommendURL));
  // Hosts on the black list never reach the recommendation tables.
  if (!Exec(u"insert into TRecommendURL select Name, OriginalURL, URL, LastVisitTime, fullDomainName, mainDomainName, "
            u"Score, 0, VisitCount, 0 from h2 where fullDomainName not in (select Domain from TBlackList)")) {
    return E_FAIL;
  }
  // Pages visited more than the (truncated) average are marked.
  static_cast<void>(Exec(u"update TRecommendURL set AvgVisitCount = 1 where VisitCount > (select "
                         u"sum(VisitCount)/count(1) as avg from TRecommendURL);"));
  return S_OK;
}

HRESULT CCorvaneDB::BuildRecommendDomains() {
  HideMap hidden;
  HRESULT saved = GetHiddenRecommendDomains(&hidden);
  static_cast<void>(DropTable(schema::kRecommendDomain));
  CreateIfMissing(this, schema::kRecommendDomain, schema::kCreateRecommendDomain);
  bool built = Exec(u"insert into TRecommendDomain select Domain, MainDomain, max(LastVisitTime), sum(Weight), 0, 0 "
                    u"from TRecommendURL where Domain in (select Domain from TWhiteList) group by Domain;");
  // A page is either a single page or counted in its host, never both.
  if (built) built = Exec(u"delete from TRecommendURL where Domain in (select Domain from TRecommendDomain);");
  if (saved == 0) static_cast<void>(ReapplyHiddenRecommendDomains(hidden));
  return built ? S_OK : E_FAIL;
}

// Flags the hosts whose score lies above the mean plus 2.5 population
// standard deviations. The mean is SQL's integer average.
HRESULT CCorvaneDB::MarkTopDomains() {
  StatementPtr average = Prepare(u"select sum(Score) / count(1) as Avg from TRecommendDomain;");
  if (!average) return E_FAIL;
  double mean = average->Step() ? static_cast<double>(average->ColumnInt64(0)) : 0.0;
  average.reset();
  StatementPtr scores = Prepare(u"select Score from TRecommendDomain;");
  if (!scores) return E_FAIL;
  double count = 0;
  double sumSquares = 0;
  while (scores->Step()) {
    double deviation = static_cast<double>(scores->ColumnInt64(0)) - mean;
    sumSquares += deviation * deviation;
    count += 1;
  }
  scores.reset();
  if (!(count > 0)) return E_FAIL;
  // Cut toward zero, within what a 32-bit number holds.
  double limit = std::clamp(std::sqrt(sumSquares / count) * 2.5 + mean, -2147483648.0, 2147483647.0);
  char sql[96];
  std::snprintf(sql, sizeof(sql), "update TRecommendDomain Set T2Flag = 1 where Score > %d;", static_cast<int32_t>(limit));
  return ExecUtf8(sql) ? S_OK : E_FAIL;
}

HRESULT CCorvaneDB::BuildZSTable() {
  static_cast<void>(DropTable(schema::kZS));
  CreateIfMissing(this, schema::kZS, DomainTableCreate(schema::kZS));
  return Exec(u"insert into TZS select * from TRecommendDomain where T2Flag = 0 and MainDomain in (select MainDomain "
              u"from TRecommendDomain where T2Flag = 1 group by MainDomain) order by Score desc, LastVisitTime desc;")
             ? S_OK
             : E_FAIL;
}

HRESULT CCorvaneDB::BuildSubDomains() {
  HideMap hidden;
  HRESULT saved = GetHiddenSubDomains(&hidden);
  static_cast<void>(DropTable(schema::kSubDomain));
  CreateIfMissing(this, schema::kSubDomain, DomainTableCreate(schema::kSubDomain));
  bool built = Exec(u"insert into TSubDomain select FullDomainName, MainDomainname, max(LastVisitTime) as VT, "
                    u"sum(Score) as S, 0, 0 from z group by FullDomainName order by S desc, VT desc;");
  if (saved == 0) static_cast<void>(ReapplyHiddenSubDomains(hidden));
  return built ? S_OK : E_FAIL;
}

}  // namespace corvane
