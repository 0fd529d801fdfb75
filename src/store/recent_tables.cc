// Table operations of CCorvaneDB that turn the recent table j1 into what the
// recent listing reads: TRecentDomain, one named row per recent host that
// the reference lists know, and TRecentHistory, the recent single URLs.
// Plain SQL on our own tables, except the marking of the hosts that a
// sub-domain rule matches, which the caller's rule test does.

#include "store/corvane_db.h"
#include "store/schema.h"

namespace corvane {
namespace {

std::u16string RecentDomainTempCreate() {
  std::u16string sql(schema::kCreateRecentDomain);
  std::u16string_view name = schema::kRecentDomain;
  sql.replace(sql.find(name), name.size(), schema::kRecentDomainTemp);
  return sql;
}

}  // namespace

HRESULT CCorvaneDB::BuildRecentHistory() {
  if (TableExists(schema::kRecentHistory) == S_FALSE) static_cast<void>(Exec(schema::kCreateRecentHistory));
  static_cast<void>(ClearTable(schema::kRecentHistory));
  return Exec(u"insert into TRecentHistory select rowid, Name, OriginalURL, URL, LastVisitTime, fullDomainName, "
              u"mainDomainName, Score, VisitCount from J1 where fullDomainName not in (select Domain from TBlackList)")
             ? S_OK
             : E_FAIL;
}

HRESULT CCorvaneDB::BuildRecentMatch(const SubDomainTest& isSubDomain) {
  static_cast<void>(Begin());
  bool marked = MarkRecentMatches(schema::kRecentHistory, schema::kRecentHistoryMatch, isSubDomain);
  static_cast<void>(Commit());
  return marked ? S_OK : E_FAIL;
}

// A copy of the source with Match 1 on the rows whose host a rule matches.
// The rules run once per distinct host.
bool CCorvaneDB::MarkRecentMatches(std::u16string_view source, std::u16string_view matchTable,
                                   const SubDomainTest& isSubDomain) {
  RecreateTable(schema::kCreateRecentHistoryMatchTemplate, matchTable);
  RecreateTable(schema::kCreateDomainTempTemplate, schema::kHistoryDomainTemp);
  StatementPtr insert = Prepare(FillTemplate(u"insert into %s values(?)", schema::kHistoryDomainTemp));
  if (!insert) return false;
  StatementPtr hosts =
      Prepare(FillTemplate(u"select MainDomain, Domain As FullDomainname from %s group by FullDomainname", source));
  if (!hosts) return false;
  while (hosts->Step()) {
    std::u16string host = hosts->ColumnText16(1);
    if (isSubDomain && isSubDomain(hosts->ColumnText16(0), host) && insert->BindText16(0, host)) {
      static_cast<void>(insert->Execute());
    }
  }
  insert.reset();
  hosts.reset();
  std::u16string match(matchTable);
  static_cast<void>(Exec(u"insert into " + match + u" select *, 0 from " + std::u16string(source)));
  static_cast<void>(Exec(u"update " + match + u" set match=1 where domain in (select FullDomainName from " +
                         schema::kHistoryDomainTemp + u")"));
  static_cast<void>(Exec(FillTemplate(u"drop table %s", schema::kHistoryDomainTemp)));
  return true;
}

HRESULT CCorvaneDB::BuildRecentDomainTemp() {
  static_cast<void>(DropTable(schema::kRecentDomainTemp));
  if (TableExists(schema::kRecentDomainTemp) == S_FALSE) static_cast<void>(Exec(RecentDomainTempCreate()));
  bool built = Exec(
      u"insert into TRecentDomainTemp select TRecentHistory_Match.Domain, TRecentHistory_Match.MainDomain, "
      u"max(TRecentHistory_Match.LastVisitTime), sum(TRecentHistory_Match.Weight), TNames.Name from "
      u"TRecentHistory_Match, TNames where TRecentHistory_Match.Domain = TNames.Domain and TRecentHistory_Match.Match "
      u"= 1 group by TRecentHistory_Match.Domain;");
  if (built) built = Exec(u"delete from TRecentHistory_Match where Match = 1;");
  return built ? S_OK : E_FAIL;
}

HRESULT CCorvaneDB::BuildRecentDomains() {
  static_cast<void>(DropTable(schema::kRecentDomain));
  if (TableExists(schema::kRecentDomain) == S_FALSE) static_cast<void>(Exec(schema::kCreateRecentDomain));
  bool built = Exec(
      u"insert into TRecentDomain select TRecentHistory.Domain, TRecentHistory.MainDomain, "
      u"max(TRecentHistory.LastVisitTime), sum(TRecentHistory.Weight), TWhiteList.SubName from TRecentHistory, "
      u"TWhiteList where TRecentHistory.Domain in (select Domain from TWhiteList) and TRecentHistory.Domain = "
      u"TWhiteList.Domain group by TRecentHistory.Domain;");
  if (built) built = Exec(u"delete from TRecentHistory where Domain in (select Domain from TRecentDomain);");
  return built ? S_OK : E_FAIL;
}

// A host both white-listed and rule-matched keeps its better row: the higher
// score, at equal score the later visit; on a full tie the white-list row.
HRESULT CCorvaneDB::MergeRecentDomains() {
  static constexpr const char16_t* kSteps[] = {
      u"delete from TRecentDomain where Score < (select max(Score) from TRecentDomainTemp where "
      u"TRecentDomainTemp.Domain = TRecentDomain.Domain) or (Score = (select max(Score) from TRecentDomainTemp where "
      u"TRecentDomainTemp.Domain = TRecentDomain.Domain) and LastVisitTime < (select max(LastVisitTime) from "
      u"TRecentDomainTemp where TRecentDomainTemp.Domain = TRecentDomain.Domain) )",
      u"delete from TRecentDomainTemp where Domain in (select Domain from TRecentDomain);",
      u"insert into TRecentDomain select TRecentDomainTemp.Domain, TRecentDomainTemp.MainDomain, "
      u"TRecentDomainTemp.LastvisitTime, TRecentDomainTemp.Score, TNames.Name from TRecentDomainTemp, TNames where "
      u"TRecentDomainTemp.Domain = TNames.Domain;",
  };
  for (const char16_t* step : kSteps) {
    if (!Exec(step)) return E_FAIL;
  }
  return S_OK;
}

HRESULT CCorvaneDB::RestoreRecentHistory() {
  static_cast<void>(Exec(u"delete from TRecentHistory_Match where ID in (select ID from TRecentHistory)"));
  return Exec(u"insert into TRecentHistory select ID, Name, URL, FixedURL, LastVisitTime, Domain, MainDomain, Weight, "
              u"VisitCount from TRecentHistory_Match where Domain not in (select Domain from TRecentDomain) ")
             ? S_OK
             : E_FAIL;
}

}  // namespace corvane
