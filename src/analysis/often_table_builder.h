// often_table_builder.h: from TPreparedURL to the scored tables.
//
// It gathers each URL's days and visits, splits the URLs seen only lately
// (table j1) from those with older visits (table h2), scores both, builds
// the first-opened-sites tables e2 and e3 that the counters report, and
// picks out of h2 the hosts that a sub-domain rule makes sites of their own
// (table z). All five tables are rebuilt from nothing.
//
// The score of a URL is (day score x days + visit score x visits) x the
// recency weight of its newest day x the favourite factor, rounded.

#ifndef CORVANE_ANALYSIS_OFTEN_TABLE_BUILDER_H_
#define CORVANE_ANALYSIS_OFTEN_TABLE_BUILDER_H_

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>

#include "analysis/visit_counts.h"

namespace corvane {

class CCorvaneDB;
class CEURLDomainElement;
class CScoreSettings;
class CSubList;

struct URLDayStat {
  uint32_t dayMask[2] = {0, 0};  // bit n: a row with day index n (below 64)
  int32_t recentVisits = 0;
  int32_t olderVisits = 0;

  int32_t Total() const { return AddCounts(recentVisits, olderVisits); }
  int32_t Days() const;
  // The smallest day index with a row; 0 when there is none.
  int32_t Newest() const;
  bool RecentOnly() const { return recentVisits > 0 && olderVisits == 0; }
};

struct URLDayStatMap {
  std::unordered_map<std::u16string, URLDayStat> stats;
  int32_t m_nDayCount = 0;  // the highest day index seen plus 1
};

class COftenTableBuilder {
 public:
  COftenTableBuilder(CCorvaneDB* pDB, CScoreSettings* pSettings);

  void LoadParameters();
  void BuildOftenTables();

  void CollectDayStats(CCorvaneDB* pDB, std::u16string_view source, URLDayStatMap* lpMap) const;
  void BuildETables(CCorvaneDB* pDB, std::u16string_view source, const URLDayStatMap& map, std::u16string_view e2,
                    std::u16string_view e3) const;
  void FillDayDomains(CCorvaneDB* pDB, std::u16string_view source, CEURLDomainElement* lpDays, int32_t length) const;
  void BuildHTables(CCorvaneDB* pDB, std::u16string_view source, const URLDayStatMap& map, std::u16string_view j1,
                    std::u16string_view h2) const;
  bool BuildZTable(CCorvaneDB* pDB, std::u16string_view h2, std::u16string_view z, const CSubList& rules) const;

  // The unrounded score of a URL, with the favourite factor if it is one.
  float Score(const URLDayStat& stat, bool bFavorite) const;

 private:
  int32_t m_nDays = 21;
  int32_t m_nDayScore = 50;
  int32_t m_nVisitScore = 1;
  float m_fFavoriteFactor = 1.3f;
  int32_t m_nTopDomainLimit = 10;
  int32_t m_nRecentDays = 7;
  int32_t m_nMinVisitCount = 2;
  int32_t m_nTopURLLimit = 15;
  int32_t m_nUnusedParam = 15;
  int32_t m_nMinRecentVisits = 1;
  CScoreSettings* m_pSettings;
  CCorvaneDB* m_pDB;
};

}  // namespace corvane

#endif  // CORVANE_ANALYSIS_OFTEN_TABLE_BUILDER_H_
