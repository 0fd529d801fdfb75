// report_html.h: the self-contained HTML page of "report --html".
//
// One file with inline CSS and an inline SVG bar chart: no script, no font,
// no image and no style sheet from the network. The only addresses in it
// are the links of the listed sites themselves. All text from the browser
// is escaped.

#ifndef CORVANE_CLI_REPORT_HTML_H_
#define CORVANE_CLI_REPORT_HTML_H_

#include <string>
#include <utility>
#include <vector>

#include "cli/records.h"

namespace corvane::cli {

struct ReportData {
  std::string generated;                             // when the page was made
  std::vector<SiteRecord> sites;
  std::vector<SiteRecord> recent;
  std::vector<UrlRecord> favorites;
  std::vector<std::pair<std::string, int>> visitsPerDay;  // oldest day first
};

// The chart's bars: one per calendar day, oldest first, from the oldest of
// the newest span days with visits up to the newest day with visits, at
// most kMaxChartDays of them; a day without visits is a bar of 0. Visits
// are dated by their stamps ("YYYY.MM.DD ..."); span 0 takes every day.
inline constexpr int kMaxChartDays = 366;
std::vector<std::pair<std::string, int>> VisitsPerDay(const std::vector<DayGroup>& days, size_t span);

std::string EscapeHtml(const std::string& text);
// An address for href: the URL with "http://" in front when it has no
// scheme; anything that is not http or https becomes "#".
std::string LinkTarget(const std::string& url);
std::string BuildReportHtml(const ReportData& data);

}  // namespace corvane::cli

#endif  // CORVANE_CLI_REPORT_HTML_H_
