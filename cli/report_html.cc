#include "cli/report_html.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <iterator>
#include <map>

#include "cli/time_text.h"

namespace corvane::cli {
namespace {

constexpr char kStyle[] =
    "body{font-family:sans-serif;margin:2em;color:#222;background:#fafafa}"
    "h1{font-size:1.6em}h2{font-size:1.2em;margin-top:1.6em;border-bottom:1px solid #ccc}"
    "table{border-collapse:collapse}td,th{padding:.2em .8em;text-align:left}"
    "tr:nth-child(even){background:#f0f0f0}.sub td:first-child{padding-left:2em}"
    ".num{text-align:right}svg text{font-size:10px;fill:#444}";

std::string Link(const std::string& url, const std::string& label) {
  return "<a href=\"" + EscapeHtml(LinkTarget(url)) + "\">" + EscapeHtml(label.empty() ? url : label) + "</a>";
}

std::string SiteRows(const std::vector<SiteRecord>& sites, bool withHide) {
  std::string html;
  for (const SiteRecord& site : sites) {
    html += "<tr><td>" + Link(site.url, site.name) + "</td><td>" + EscapeHtml(site.domain) + "</td><td class=\"num\">" +
            (site.weight ? std::to_string(*site.weight) : "") + "</td>" +
            (withHide ? "<td>" + std::string(HideStateName(site.hide)) + "</td>" : "") + "</tr>\n";
    for (const SiteRecord& sub : site.subSites) {
      html += "<tr class=\"sub\"><td>" + Link(sub.url, sub.name) + "</td><td>" + EscapeHtml(sub.domain) +
              "</td><td class=\"num\">" + (sub.weight ? std::to_string(*sub.weight) : "") + "</td>" +
              (withHide ? "<td></td>" : "") + "</tr>\n";
    }
  }
  return html;
}

std::string Chart(const std::vector<std::pair<std::string, int>>& days) {
  constexpr int kBarWidth = 24, kHeight = 160, kTop = 10;
  int most = 1;
  for (const auto& day : days) most = std::max(most, day.second);
  int width = static_cast<int>(days.size()) * kBarWidth + 20;
  std::string svg = "<svg width=\"" + std::to_string(width) + "\" height=\"" +
                    std::to_string(kHeight + 50) + "\" role=\"img\" aria-label=\"visits per day\">\n";
  for (size_t i = 0; i < days.size(); ++i) {
    int height = days[i].second * kHeight / most;
    int x = 10 + static_cast<int>(i) * kBarWidth;
    svg += "<rect x=\"" + std::to_string(x) + "\" y=\"" + std::to_string(kTop + kHeight - height) + "\" width=\"" +
           std::to_string(kBarWidth - 4) + "\" height=\"" + std::to_string(height) + "\" fill=\"#4a7ab5\"><title>" +
           EscapeHtml(days[i].first) + ": " + std::to_string(days[i].second) + "</title></rect>\n";
    svg += "<text x=\"" + std::to_string(x) + "\" y=\"" + std::to_string(kTop + kHeight + 14) + "\">" +
           std::to_string(days[i].second) + "</text>\n";
  }
  return svg + "</svg>\n";
}

using Date = std::chrono::year_month_day;

bool StampDate(const std::string& stamp, Date* lpDate) {
  int year = 0;
  unsigned month = 0, day = 0;
  if (std::sscanf(stamp.c_str(), "%4d.%2u.%2u", &year, &month, &day) != 3) return false;
  *lpDate = Date{std::chrono::year{year}, std::chrono::month{month}, std::chrono::day{day}};
  return lpDate->ok();
}

std::string DateLabel(const Date& date) {
  char text[16];
  std::snprintf(text, sizeof(text), "%04d-%02u-%02u", static_cast<int>(date.year()),
                static_cast<unsigned>(date.month()), static_cast<unsigned>(date.day()));
  return text;
}

}  // namespace

std::vector<std::pair<std::string, int>> VisitsPerDay(const std::vector<DayGroup>& days, size_t span) {
  std::map<std::chrono::sys_days, int> counts;
  for (const DayGroup& day : days) {
    for (const UrlRecord& visit : day.visits) {
      Date date;
      if (StampDate(visit.lastVisit, &date)) ++counts[std::chrono::sys_days(date)];
    }
  }
  std::vector<std::pair<std::string, int>> bars;
  if (counts.empty()) return bars;
  std::chrono::sys_days newest = counts.rbegin()->first;
  // The oldest day of the span is the span-th newest day with visits.
  std::chrono::sys_days oldest = counts.begin()->first;
  if (span != 0 && counts.size() > span) oldest = std::next(counts.rbegin(), static_cast<long>(span) - 1)->first;
  oldest = std::max(oldest, newest - std::chrono::days(kMaxChartDays - 1));
  for (std::chrono::sys_days date = oldest; date <= newest; date += std::chrono::days(1)) {
    auto found = counts.find(date);
    bars.emplace_back(DateLabel(Date(date)), found == counts.end() ? 0 : found->second);
  }
  return bars;
}

std::string EscapeHtml(const std::string& text) {
  std::string out;
  for (char c : text) {
    switch (c) {
      case '&': out += "&amp;"; break;
      case '<': out += "&lt;"; break;
      case '>': out += "&gt;"; break;
      case '"': out += "&quot;"; break;
      case '\'': out += "&#39;"; break;
      default: out.push_back(c);
    }
  }
  return out;
}

std::string LinkTarget(const std::string& url) {
  // A stored "https://" address comes back from the component restored
  // with "http://" in front of it; link the address itself.
  if (url.rfind("http://https://", 0) == 0) return url.substr(7);
  if (url.rfind("http://", 0) == 0 || url.rfind("https://", 0) == 0) return url;
  if (url.empty() || url.find("://") != std::string::npos || url.find(':') < url.find('/')) return "#";
  return "http://" + url;
}

std::string BuildReportHtml(const ReportData& data) {
  std::string html = "<!DOCTYPE html>\n<html><head><meta charset=\"utf-8\"><title>corvane report</title><style>";
  html += kStyle;
  html += "</style></head><body>\n<h1>Your sites</h1>\n<p>Made " + EscapeHtml(StampForPeople(data.generated)) + "</p>\n";
  html += "<h2>Top sites</h2>\n<table><tr><th>Site</th><th>Domain</th><th>Weight</th><th>State</th></tr>\n";
  html += SiteRows(data.sites, true) + "</table>\n";
  html += "<h2>Recent sites</h2>\n<table><tr><th>Site</th><th>Domain</th><th>Weight</th></tr>\n";
  html += SiteRows(data.recent, false) + "</table>\n";
  html += "<h2>Visits per day</h2>\n" + Chart(data.visitsPerDay);
  html += "<h2>Favourites</h2>\n<table><tr><th>Folder</th><th>Name</th></tr>\n";
  for (const UrlRecord& favorite : data.favorites) {
    html += "<tr><td>" + EscapeHtml(favorite.path) + "</td><td>" + Link(favorite.url, favorite.name) + "</td></tr>\n";
  }
  return html + "</table>\n</body></html>\n";
}

}  // namespace corvane::cli
