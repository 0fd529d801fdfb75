#include "analysis/often_table_builder.h"

#include <algorithm>
#include <bit>
#include <unordered_set>
#include <vector>

#include "analysis/domain_element.h"
#include "analysis/element_base.h"
#include "analysis/h1_element.h"
#include "analysis/sub_list.h"
#include "analysis/url_elements.h"
#include "analysis/visit_counts.h"
#include "common/url_util.h"
#include "settings/score_settings.h"
#include "store/corvane_db.h"
#include "store/schema.h"

namespace corvane {
namespace {

constexpr char16_t kRowsSelect[] = u"select Name, URL, OriginalURL, DayIndex, VisitCount, VisitTimeLong from ";

// One row of the select above.
struct PreparedRow {
  std::u16string name;
  std::u16string url;
  std::u16string originalURL;
  int32_t dayIndex = 0;
  int64_t time = 0;
};

void ReadPreparedRow(CSqliteStatement* stmt, PreparedRow* row) {
  row->name = stmt->ColumnText16(0);
  row->url = stmt->ColumnText16(1);
  row->originalURL = stmt->ColumnText16(2);
  row->dayIndex = stmt->ColumnInt(3);
  row->time = stmt->ColumnInt64(5);
}

const URLDayStat* FindStat(const URLDayStatMap& map, const std::u16string& url) {
  auto found = map.stats.find(url);
  return found == map.stats.end() ? nullptr : &found->second;
}

using FavoriteSet = std::unordered_set<std::u16string>;

// The fixed URLs of all favourites, read once. Asking the table URL by URL
// ("select count(*) from TFavorite where FixedURL = ?") gives the same
// answers at the cost of one statement per scored URL. A table that can't
// be read gives no favourites, as a failed count does.
FavoriteSet ReadFavoriteURLs(CCorvaneDB* pDB) {
  FavoriteSet favorites;
  StatementPtr stmt = pDB->Prepare(FillTemplate(u"select FixedURL from %s where FixedURL is not null", schema::kFavorite));
  while (stmt && stmt->Step()) favorites.insert(stmt->ColumnText16(0));
  return favorites;
}

StatementPtr PrepareInsert(CCorvaneDB* pDB, std::u16string_view table, std::u16string_view values) {
  return pDB->Prepare(FillTemplate(u"insert into %s values(", table) + std::u16string(values) + u")");
}

void WriteETable(CCorvaneDB* pDB, std::u16string_view table, const std::vector<E1Entry*>& entries) {
  StatementPtr insert = PrepareInsert(pDB, table, u"?, ?, ?, ?, ?, ?");
  for (const E1Entry* entry : entries) {
    if (!insert) return;
    if (insert->BindText16(0, entry->Name) && insert->BindText16(1, entry->URL) &&
        insert->BindText16(2, entry->OriginalURL) && insert->BindInt64(3, entry->Time) &&
        insert->BindInt(4, entry->VisitCount) && insert->BindInt(5, 0)) {
      static_cast<void>(insert->Execute());
    }
  }
}

void WriteHTable(CCorvaneDB* pDB, std::u16string_view table, const CH1URLElement& element) {
  StatementPtr insert = PrepareInsert(pDB, table, u"?, ?, ?, ?, ?, ?, ?, ?, ?");
  std::u16string fullDomain;
  std::u16string mainDomain;
  for (const auto& entry : element.Entries()) {
    if (!insert) return;
    GetFullDomain(entry->URL, &fullDomain);
    mainDomain.clear();
    if (!fullDomain.empty()) static_cast<void>(GetMainDomain(fullDomain, &mainDomain));
    if (insert->BindText16(0, entry->Name) && insert->BindText16(1, entry->URL) &&
        insert->BindText16(2, entry->OriginalURL) && insert->BindText16(3, mainDomain) &&
        insert->BindText16(4, fullDomain) && insert->BindInt64(5, entry->Time) &&
        insert->BindInt(6, entry->VisitCount) && insert->BindInt(7, entry->AvgVisitCount) &&
        insert->BindInt(8, entry->Score)) {
      static_cast<void>(insert->Execute());
    }
  }
}

}  // namespace

int32_t URLDayStat::Days() const { return std::popcount(dayMask[0]) + std::popcount(dayMask[1]); }

int32_t URLDayStat::Newest() const {
  if (dayMask[0] != 0) return std::countr_zero(dayMask[0]);
  if (dayMask[1] != 0) return 32 + std::countr_zero(dayMask[1]);
  return 0;
}

COftenTableBuilder::COftenTableBuilder(CCorvaneDB* pDB, CScoreSettings* pSettings)
    : m_pSettings(pSettings), m_pDB(pDB) {}

void COftenTableBuilder::LoadParameters() {
  m_nDays = static_cast<int32_t>(m_pSettings->GetMaxDays());
  m_nDayScore = m_pSettings->GetDayScore(0);
  m_nVisitScore = m_pSettings->GetVisitScore(0);
  m_fFavoriteFactor = static_cast<float>(m_pSettings->GetFavoritePercent(0) / 100.0);
  m_nTopDomainLimit = m_pSettings->GetParam(0, 0);
  m_nRecentDays = m_pSettings->GetParam(0, 2);
  m_nMinVisitCount = m_pSettings->GetParam(0, 1);
  m_nTopURLLimit = m_pSettings->GetParam(0, 6);
  m_nUnusedParam = m_pSettings->GetParam(0, 5);
  m_nMinRecentVisits = m_pSettings->GetParam(0, 4);
}

// Inside the update cycle's transaction the plain Begin fails and the first
// Commit ends that transaction: the scored tables are committed together
// and what follows writes statement by statement.
void COftenTableBuilder::BuildOftenTables() {
  static_cast<void>(m_pDB->Begin());
  SetElementLimits(m_nTopDomainLimit, m_nTopURLLimit);
  URLDayStatMap map;
  CollectDayStats(m_pDB, schema::kPreparedURL, &map);
  BuildETables(m_pDB, schema::kPreparedURL, map, schema::kE2, schema::kE3);
  BuildHTables(m_pDB, schema::kPreparedURL, map, schema::kJ1, schema::kH2);
  CSubList rules(m_pDB);
  static_cast<void>(m_pDB->Begin());
  static_cast<void>(BuildZTable(m_pDB, schema::kH2, schema::kZ, rules));
  static_cast<void>(m_pDB->Commit());
  static_cast<void>(m_pDB->Commit());
}

void COftenTableBuilder::CollectDayStats(CCorvaneDB* pDB, std::u16string_view source, URLDayStatMap* lpMap) const {
  StatementPtr stmt = pDB->Prepare(u"select URL, DayIndex, VisitCount from " + std::u16string(source));
  while (stmt && stmt->Step()) {
    std::u16string url = stmt->ColumnText16(0);
    if (url.empty()) continue;
    int32_t dayIndex = stmt->ColumnInt(1);
    int32_t visits = stmt->ColumnInt(2);
    // Day indexes are ours, but the table is a file: no overflow on a
    // damaged one.
    if (dayIndex >= lpMap->m_nDayCount) lpMap->m_nDayCount = AddCounts(dayIndex, 1);
    URLDayStat& stat = lpMap->stats[std::move(url)];
    if (dayIndex < m_nRecentDays) {
      stat.recentVisits = AddCounts(stat.recentVisits, visits);
    } else {
      stat.olderVisits = AddCounts(stat.olderVisits, visits);
    }
    if (dayIndex >= 0 && dayIndex < 64) stat.dayMask[dayIndex / 32] |= 1u << (dayIndex % 32);
  }
}

void COftenTableBuilder::FillDayDomains(CCorvaneDB* pDB, std::u16string_view source, CEURLDomainElement* lpDays,
                                        int32_t length) const {
  StatementPtr stmt = pDB->Prepare(u"select URL, DayIndex, VisitTimeLong from " + std::u16string(source));
  while (stmt && stmt->Step()) {
    std::u16string url = stmt->ColumnText16(0);
    int32_t dayIndex = stmt->ColumnInt(1);
    if (url.empty() || dayIndex < 0 || dayIndex >= length) continue;
    lpDays[dayIndex].AddDomain(url, stmt->ColumnInt64(2));
  }
}

void COftenTableBuilder::BuildETables(CCorvaneDB* pDB, std::u16string_view source, const URLDayStatMap& map,
                                      std::u16string_view e2, std::u16string_view e3) const {
  // One element per day index up to the newest row's, never more than the
  // span. Without counted rows no element would be filled, so none is made:
  // a span of millions of days from the settings costs nothing then.
  int32_t days = std::max(std::min(m_nDays, map.m_nDayCount), 0);
  std::vector<CEURLDomainElement> domains(static_cast<size_t>(days));
  FillDayDomains(pDB, source, domains.data(), days);
  StatementPtr stmt = pDB->Prepare(kRowsSelect + std::u16string(source));
  if (!stmt) return;
  std::vector<CE1URLElement> dayLists(static_cast<size_t>(days));
  PreparedRow row;
  while (stmt->Step()) {
    ReadPreparedRow(stmt.get(), &row);
    if (row.dayIndex < 0 || row.dayIndex >= days || row.url.empty()) continue;
    const URLDayStat* stat = FindStat(map, row.url);
    if (stat == nullptr) continue;
    if (static_cast<uint32_t>(stat->Total()) < static_cast<uint32_t>(m_nMinVisitCount)) continue;
    dayLists[static_cast<size_t>(row.dayIndex)].AddEntry(domains[static_cast<size_t>(row.dayIndex)], row.name,
                                                         row.url, row.originalURL, stat->RecentOnly(), row.time,
                                                         stat->Total());
  }
  stmt.reset();
  CE2URLElement recent;
  CE3URLElement older;
  for (const CE1URLElement& day : dayLists) {
    for (const auto& entry : day.Entries()) {
      if (entry->RecentOnly) {
        recent.AddEntry(entry.get(), true);
      } else {
        older.AddEntry(entry.get(), true);
      }
    }
  }
  pDB->RecreateTable(schema::kCreateETableTemplate, e2);
  pDB->RecreateTable(schema::kCreateETableTemplate, e3);
  WriteETable(pDB, e2, recent.Entries());
  WriteETable(pDB, e3, older.Entries());
}

float COftenTableBuilder::Score(const URLDayStat& stat, bool bFavorite) const {
  int32_t base = AddCounts(MultiplyCounts(m_nDayScore, stat.Days()), MultiplyCounts(m_nVisitScore, stat.Total()));
  float weight = m_pSettings->GetRecencyWeight(static_cast<uint32_t>(stat.Newest()));
  float factor = bFavorite ? m_fFavoriteFactor : 1.0f;
  float score = static_cast<float>(base) * weight;
  return score * factor;
}

void COftenTableBuilder::BuildHTables(CCorvaneDB* pDB, std::u16string_view source, const URLDayStatMap& map,
                                      std::u16string_view j1, std::u16string_view h2) const {
  StatementPtr stmt = pDB->Prepare(kRowsSelect + std::u16string(source));
  if (!stmt) return;
  pDB->RecreateTable(schema::kCreateHTableTemplate, j1);
  pDB->RecreateTable(schema::kCreateHTableTemplate, h2);
  FavoriteSet favorites = ReadFavoriteURLs(pDB);
  CH1URLElement recent;
  CH1URLElement older;
  PreparedRow row;
  while (stmt->Step()) {
    ReadPreparedRow(stmt.get(), &row);
    if (row.dayIndex < 0 || row.dayIndex >= m_nDays || row.url.empty()) continue;
    const URLDayStat* stat = FindStat(map, row.url);
    if (stat == nullptr) continue;
    bool isRecent = stat->olderVisits == 0 && stat->recentVisits >= m_nMinRecentVisits;
    CH1URLElement& target = isRecent ? recent : older;
    if (H1Entry* known = target.FindURL(row.url)) {
      if (row.time > known->Time) known->Time = row.time;
      continue;
    }
    int32_t days = stat->Days();
    int32_t average = days == 0 ? 0 : stat->Total() / days;
    target.AddEntry(row.name, row.url, row.originalURL, row.time, stat->Total(), average, Score(*stat, favorites.count(row.url) != 0),
                    false);
  }
  stmt.reset();
  WriteHTable(pDB, j1, recent);
  WriteHTable(pDB, h2, older);
}

bool COftenTableBuilder::BuildZTable(CCorvaneDB* pDB, std::u16string_view h2, std::u16string_view z,
                                     const CSubList& rules) const {
  pDB->RecreateTable(schema::kCreateHTableTemplate, z);
  pDB->RecreateTable(schema::kCreateDomainTempTemplate, schema::kZDomainTemp);
  StatementPtr insert = PrepareInsert(pDB, schema::kZDomainTemp, u"?");
  StatementPtr hosts =
      pDB->Prepare(FillTemplate(u"select MainDomainname, FullDomainname from %s group by FullDomainname", h2));
  if (!insert || !hosts) return false;
  while (hosts->Step()) {
    std::u16string fullDomain = hosts->ColumnText16(1);
    if (!rules.Matches(hosts->ColumnText16(0), fullDomain)) continue;
    if (insert->BindText16(0, fullDomain)) static_cast<void>(insert->Execute());
  }
  insert.reset();
  hosts.reset();
  std::u16string copy = u"insert into " + std::u16string(z) + u" select * from " + std::u16string(h2) +
                        u" where fulldomainname in (select  fulldomainname from " + schema::kZDomainTemp + u")";
  static_cast<void>(pDB->Exec(copy));
  static_cast<void>(pDB->Exec(FillTemplate(u"drop table %s", schema::kZDomainTemp)));
  return true;
}

}  // namespace corvane
