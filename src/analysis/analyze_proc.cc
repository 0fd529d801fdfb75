// The classification of the visit stream: THistory, date by date and visit
// by visit from the newest, reduced to one row per URL and day in
// TPreparedURL; then the builders of every table that the managers read.
//
// Each visit is held back as Last until the next older one, Cur, is known.
// The pair then tells whether Last was a page of its own or a step of a
// walk inside a site that began at Cur: only the walk's entry page counts.
// Visits to one host less than a second apart count once.

#include "analysis/often_table_builder.h"
#include "analysis/sub_list.h"
#include "analysis/update_driver.h"
#include "analysis/visit_counts.h"
#include "common/debug_log.h"
#include "common/time_stamp.h"
#include "common/url_util.h"
#include "common/utf.h"
#include "intake/browser_table.h"
#include "settings/score_settings.h"
#include "store/corvane_db.h"

namespace corvane {
namespace {

// One visit as the row steps read it.
struct VisitRow {
  std::u16string url;  // fixed
  std::u16string storedURL;
  std::u16string name;
  std::u16string time;
  int32_t count = 1;
  int32_t hadWww = 0;
  int32_t hadSlash = 0;
};

void ReadVisitRow(CSqliteStatement* stmt, VisitRow* row) {
  row->storedURL = stmt->ColumnText16(0);
  row->name = stmt->ColumnText16(1);
  row->time = stmt->ColumnText16(2);
  row->count = std::max(stmt->ColumnInt(3), 1);
  row->url = row->storedURL;
  row->hadWww = 0;
  row->hadSlash = 0;
  MakeFixedURL(row->url, &row->hadWww, &row->hadSlash);
}

void Log(const char* format, const std::u16string& text) {
  if (DebugLogEnabled()) DebugLog(format, ToUtf8(text).c_str());
}

bool IsPathPage(const CPreparedURL& visit) { return visit.hadSlash != 0 || IsPathURL(visit.fixedURL); }

// The decision on Last against Cur: true when Last is counted, with the
// debug line of the case.
bool CountsLast(const CPreparedURL& last, const CPreparedURL& cur, const char** lpLine) {
  bool lastP = IsPathPage(last);
  bool curP = IsPathPage(cur);
  std::u16string lastHost;
  std::u16string curHost;
  GetFullDomain(last.fixedURL, &lastHost);
  GetFullDomain(cur.fixedURL, &curHost);
  if (IsSameFullDomain(lastHost, curHost)) {
    if (lastP) {
      *lpLine = curP ? "!!!!!AnalyzeProc() [S,P-P] AddLastURL[LastURL:%s]\r\n"
                     : "!!!!!AnalyzeProc() [S,P-F] AddLastURL[LastURL:%s]\r\n";
      return true;
    }
    if (curP) {
      *lpLine = "!!!!!AnalyzeProc() [S,F-P]Cur->Last[LastURL:%s]\r\n";
      return false;
    }
    if (IsDynamicURL(last.fixedURL) == IsDynamicURL(cur.fixedURL)) {
      *lpLine = "!!!!!AnalyzeProc() [S,F-F,Dynamic(DD;NN)]Cur->Last[LastURL:%s]\r\n";
      return false;
    }
    *lpLine = "!!!!!AnalyzeProc() [S,F-F,Dynamic(DN;ND)]Cur->Last[LastURL:%s]\r\n";
    return true;
  }
  if (lastP) {
    *lpLine = curP ? "!!!!!AnalyzeProc() [P-P] AddLastURL[LastURL:%s]\r\n" : "!!!!!AnalyzeProc() [P-F] AddLastURL[LastURL:%s]\r\n";
    return true;
  }
  if (!curP) {
    *lpLine = "!!!!!AnalyzeProc() [F-F] AddLastURL[LastURL:%s]\r\n";
    return true;
  }
  if (IsSameMainDomain(lastHost, curHost)) {
    *lpLine = "!!!!!AnalyzeProc() [F-P,SameMainDomain]Cur->Last[LastURL:%s]\r\n";
    return false;
  }
  *lpLine = "!!!!!AnalyzeProc() [F-P,NotSameMainDomain] AddLastURL[LastURL:%s]\r\n";
  return true;
}

void AddAndLog(int32_t dayIndex, const CPreparedURL& last, PreparedMap* lpMap, HostTimeMap* lpHosts) {
  HRESULT hr = CUpdateDriver::AddLastURL(dayIndex, last, lpMap, lpHosts);
  if (!DebugLogEnabled()) return;
  const char* word = hr == 0 ? "AddOK" : hr == 1 ? "AddVisitCount" : "Ignore(1s)";
  DebugLog("!!!!!AnalyzeProc() AddURL(%s) %s %#X\r\n", ToUtf8(last.fixedURL).c_str(), word, static_cast<unsigned>(hr));
}

// An IE row: no pairs, every row passes the rule of one second, and a row
// without a title counts too.
void AddIERow(int32_t dayIndex, const VisitRow& row, PreparedMap* lpMap, HostTimeMap* lpHosts) {
  if (CUpdateDriver::IsRepeatVisit(row.time, row.url, lpHosts)) return;
  auto found = lpMap->find(row.url);
  if (found != lpMap->end()) {
    CPreparedURL& record = found->second;
    record.mergedRows += 1;
    record.VisitCount = AddCounts(record.VisitCount, row.count);
    record.VisitTime = row.time;
    if (record.lastDayIndex != dayIndex) {
      record.dayCount += 1;
      record.lastDayIndex = dayIndex;
    }
    return;
  }
  CPreparedURL record;
  record.DayIndex = dayIndex;
  record.lastDayIndex = dayIndex;
  record.Name = row.name;
  record.VisitTime = row.time;
  record.hadWww = row.hadWww;
  record.hadSlash = row.hadSlash;
  record.rowVisitCount = row.count;
  record.VisitCount = row.count;
  lpMap->emplace(row.url, std::move(record));
}

// The rows of one date, into lpMap.
void ClassifyDate(CSqliteStatement* stmt, int32_t dayIndex, bool ieRows, PreparedMap* lpMap) {
  HostTimeMap hosts;
  CPreparedURL last;
  VisitRow row;
  while (stmt->Step()) {
    ReadVisitRow(stmt, &row);
    Log("!!!!!AnalyzeProc() CurrentURL:[%s]\r\n", row.storedURL);
    if (ieRows) {
      AddIERow(dayIndex, row, lpMap, &hosts);
      continue;
    }
    CPreparedURL cur;
    cur.fixedURL = row.url;
    cur.hadSlash = row.hadSlash;
    if (!last.Name.empty()) {
      const char* line = nullptr;
      bool counted = CountsLast(last, cur, &line);
      Log(line, last.fixedURL);
      if (counted) AddAndLog(dayIndex, last, lpMap, &hosts);
    }
    Log("!!!!!AnalyzeProc() SetLastURL:[%s]\r\n", row.storedURL);
    last.Name = row.name;
    last.VisitTime = row.time;
    last.DayIndex = dayIndex;
    last.hadWww = row.hadWww;
    last.hadSlash = row.hadSlash;
    last.rowVisitCount = row.count;
    last.VisitCount = row.count;
    last.fixedURL = row.url;
  }
  if (!last.Name.empty()) static_cast<void>(CUpdateDriver::AddLastURL(dayIndex, last, lpMap, &hosts));
}

}  // namespace

bool CUpdateDriver::IsRepeatVisit(std::u16string_view visitStamp, std::u16string_view fixedURL, HostTimeMap* lpHosts) {
  uint64_t time = 0;
  if (!ParseVisitStamp(visitStamp, &time)) return false;
  std::u16string host;
  GetFullDomain(fixedURL, &host);
  auto [entry, inserted] = lpHosts->try_emplace(std::move(host), time);
  if (inserted) return false;
  if (TimeNumberDiffMs(entry->second, time) < 1000) return true;
  entry->second = time;
  return false;
}

HRESULT CUpdateDriver::AddLastURL(int32_t nDayIndex, const CPreparedURL& last, PreparedMap* lpMap,
                                  HostTimeMap* lpHosts) {
  if (IsRepeatVisit(last.VisitTime, last.fixedURL, lpHosts)) return E_ABORT;
  auto found = lpMap->find(last.fixedURL);
  if (found != lpMap->end()) {
    CPreparedURL& record = found->second;
    record.mergedRows += 1;
    record.VisitCount = AddCounts(record.VisitCount, last.rowVisitCount);
    record.VisitTime = last.VisitTime;
    if (record.lastDayIndex != nDayIndex) {
      record.dayCount += 1;
      record.lastDayIndex = nDayIndex;
    }
    return 1;
  }
  CPreparedURL record = last;
  record.lastDayIndex = nDayIndex;
  record.dayCount = 1;
  lpMap->emplace(last.fixedURL, std::move(record));
  return 0;
}

HRESULT CUpdateDriver::AnalyzeProc(uint32_t uBrowser) {
  if (DebugLogEnabled()) {
    DebugLog("!!!!!AnalyzeProc() Settings:[%s][%s]\r\n", ToUtf8(m_pSettings->GetName()).c_str(),
             ToUtf8(BrowserName(uBrowser)).c_str());
  }
  static_cast<void>(m_pDB->ClearPreparedURLs());
  StatementPtr dates;
  if (FAILED(m_pDB->GetHistoryDates(m_pSettings->GetMaxDays(), &dates))) return E_FAIL;
  int32_t dayIndex = 0;
  while (dates->Step()) {
    uint32_t date = static_cast<uint32_t>(dates->ColumnInt64(0));
    // Today is index 0 only when it has visits.
    if (dayIndex == 0 && !IsToday(date)) dayIndex = 1;
    StatementPtr visits;
    if (SUCCEEDED(m_pDB->GetHistoryByDate(date, &visits))) {
      if (DebugLogEnabled()) DebugLog("!!!!!AnalyzeProc() Deal Date %d URLs\r\n", static_cast<int>(date));
      PreparedMap map;
      ClassifyDate(visits.get(), dayIndex, uBrowser == BROWSER_IE, &map);
      visits.reset();
      static_cast<void>(m_pDB->WritePreparedURLs(map));
    }
    dayIndex += 1;
  }
  dates.reset();
  COftenTableBuilder builder(m_pDB, m_pSettings);
  builder.LoadParameters();
  builder.BuildOftenTables();
  static_cast<void>(BuildRecommendTables());
  CSubList rules(m_pDB);
  SubDomainTest isSubDomain = [&rules](std::u16string_view mainDomain, std::u16string_view fullDomain) {
    return rules.Matches(mainDomain, fullDomain);
  };
  static_cast<void>(m_pDB->BuildRecentHistory());
  static_cast<void>(m_pDB->BuildRecentMatch(isSubDomain));
  static_cast<void>(m_pDB->BuildRecentDomainTemp());
  static_cast<void>(m_pDB->BuildRecentDomains());
  static_cast<void>(m_pDB->MergeRecentDomains());
  static_cast<void>(m_pDB->RestoreRecentHistory());
  return S_OK;
}

}  // namespace corvane
