// The analysis of the first days with IE as the source, while THistory holds
// no IE visits yet: every URL of the IE snapshot with its visits, summed in
// one map across all dates, goes straight into TRecommendURL.

#include "analysis/update_driver.h"
#include "analysis/visit_counts.h"
#include "common/time_stamp.h"
#include "common/url_util.h"
#include "settings/score_settings.h"
#include "store/corvane_db.h"

namespace corvane {
namespace {

// The rows of one date into the map that lives across dates. A record keeps
// the stamp of its first, that is newest, row.
void SumDate(CSqliteStatement* stmt, int32_t dayIndex, PreparedMap* lpMap) {
  HostTimeMap hosts;
  while (stmt->Step()) {
    std::u16string url = stmt->ColumnText16(0);
    std::u16string time = stmt->ColumnText16(2);
    int32_t count = std::max(stmt->ColumnInt(3), 1);
    int32_t hadWww = 0;
    int32_t hadSlash = 0;
    MakeFixedURL(url, &hadWww, &hadSlash);
    if (CUpdateDriver::IsRepeatVisit(time, url, &hosts)) continue;
    auto found = lpMap->find(url);
    if (found != lpMap->end()) {
      CPreparedURL& record = found->second;
      record.mergedRows += 1;
      record.VisitCount = AddCounts(record.VisitCount, count);
      if (record.lastDayIndex != dayIndex) {
        record.dayCount += 1;
        record.lastDayIndex = dayIndex;
      }
      continue;
    }
    CPreparedURL record;
    record.DayIndex = dayIndex;
    record.lastDayIndex = dayIndex;
    record.Name = stmt->ColumnText16(1);
    record.VisitTime = std::move(time);
    record.hadWww = hadWww;
    record.hadSlash = hadSlash;
    record.rowVisitCount = count;
    record.VisitCount = count;
    lpMap->emplace(std::move(url), std::move(record));
  }
}

}  // namespace

HRESULT CUpdateDriver::AnalyzeIEOnly() {
  StatementPtr dates;
  if (FAILED(m_pDB->GetIEHistoryDates(m_pSettings->GetMaxDays(), &dates))) return E_FAIL;
  PreparedMap map;
  int32_t dayIndex = 0;
  while (dates->Step()) {
    uint32_t date = static_cast<uint32_t>(dates->ColumnInt64(0));
    if (dayIndex == 0 && !IsToday(date)) dayIndex = 1;
    StatementPtr visits;
    if (SUCCEEDED(m_pDB->GetIEHistoryByDate(date, &visits))) SumDate(visits.get(), dayIndex, &map);
    dayIndex += 1;
  }
  dates.reset();
  return m_pDB->BuildRecommendURLsFromMap(map);
}

}  // namespace corvane
