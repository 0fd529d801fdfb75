#include "cli/output.h"

#include <json/writer.h>

#include <algorithm>
#include <memory>
#include <sstream>

namespace corvane::cli {
namespace {

std::string Pad(const std::string& text, size_t width) {
  size_t shown = DisplayWidth(text);
  return shown >= width ? text : text + std::string(width - shown, ' ');
}

std::string Number(std::optional<uint32_t> value) {
  return value ? std::to_string(*value) : std::string();
}

// "Hide" holds -1 as 0xFFFFFFFF; JSON shows the signed state.
Json::Value HideValue(uint32_t hide) { return Json::Value(static_cast<int32_t>(hide)); }

std::string SiteLabel(const SiteRecord& site) {
  return site.name.empty() ? site.domain : site.name;
}

}  // namespace

size_t DisplayWidth(const std::string& text) {
  size_t count = 0;
  for (unsigned char c : text) count += (c & 0xC0) != 0x80 ? 1 : 0;
  return count;
}

TextTable::TextTable(std::vector<std::string> header) : m_header(std::move(header)) {}

void TextTable::AddRow(std::vector<std::string> cells) {
  cells.resize(m_header.size());
  m_rows.push_back(std::move(cells));
}

void TextTable::Print(std::FILE* out) const {
  std::vector<size_t> widths(m_header.size());
  for (size_t c = 0; c < m_header.size(); ++c) widths[c] = DisplayWidth(m_header[c]);
  for (const auto& row : m_rows) {
    for (size_t c = 0; c < row.size(); ++c) widths[c] = std::max(widths[c], DisplayWidth(row[c]));
  }
  auto printRow = [&](const std::vector<std::string>& row) {
    std::string line;
    for (size_t c = 0; c < row.size(); ++c) line += c + 1 == row.size() ? row[c] : Pad(row[c], widths[c]) + "  ";
    while (!line.empty() && line.back() == ' ') line.pop_back();
    std::fprintf(out, "%s\n", line.c_str());
  };
  printRow(m_header);
  for (const auto& row : m_rows) printRow(row);
}

Json::Value ToJson(const SiteRecord& record) {
  Json::Value value(Json::objectValue);
  value["id"] = record.id;
  value["name"] = record.name;
  value["url"] = record.url;
  value["domain"] = record.domain;
  value["mainDomain"] = record.mainDomain;
  value["lastVisit"] = record.lastVisit;
  value["kind"] = SiteKindName(record);
  value["focus"] = record.focus;
  if (!record.fixedUrl.empty()) value["fixedUrl"] = record.fixedUrl;
  if (record.weight) value["weight"] = *record.weight;
  if (record.hide) value["hide"] = HideValue(*record.hide);
  if (record.hide) value["hideState"] = HideStateName(record.hide);
  if (record.visitCount) value["visitCount"] = *record.visitCount;
  if (record.focusId) value["focusId"] = *record.focusId;
  if (!record.subSites.empty()) value["subSites"] = ToJson(record.subSites);
  return value;
}

Json::Value ToJson(const UrlRecord& record) {
  Json::Value value(Json::objectValue);
  value["id"] = record.id;
  value["name"] = record.name;
  value["url"] = record.url;
  if (!record.path.empty()) value["path"] = record.path;
  if (!record.lastVisit.empty()) value["lastVisit"] = record.lastVisit;
  return value;
}

Json::Value ToJson(const DayGroup& group) {
  Json::Value value(Json::objectValue);
  value["label"] = group.label;
  value["visits"] = ToJson(group.visits);
  return value;
}

Json::Value ToJson(const std::vector<SiteRecord>& records) {
  Json::Value list(Json::arrayValue);
  for (const SiteRecord& record : records) list.append(ToJson(record));
  return list;
}

Json::Value ToJson(const std::vector<UrlRecord>& records) {
  Json::Value list(Json::arrayValue);
  for (const UrlRecord& record : records) list.append(ToJson(record));
  return list;
}

Json::Value ToJson(const std::vector<DayGroup>& groups) {
  Json::Value list(Json::arrayValue);
  for (const DayGroup& group : groups) list.append(ToJson(group));
  return list;
}

void PrintJson(const Json::Value& document, std::FILE* out) {
  Json::StreamWriterBuilder builder;
  builder["indentation"] = "  ";
  builder["emitUTF8"] = true;
  std::string text = Json::writeString(builder, document);
  std::fprintf(out, "%s\n", text.c_str());
}

void PrintSites(const std::vector<SiteRecord>& sites, std::FILE* out) {
  TextTable table({"ID", "KIND", "WEIGHT", "STATE", "NAME", "URL"});
  bool focusDone = false;
  for (const SiteRecord& site : sites) {
    if (!site.focus && !focusDone && &site != &sites.front()) table.AddRow({"--", "", "", "", "", ""});
    focusDone = focusDone || !site.focus;
    std::string name = (site.focus ? "* " : "") + SiteLabel(site);
    table.AddRow({std::to_string(site.id), SiteKindName(site), Number(site.weight), HideStateName(site.hide), name,
                  site.url});
    // A nested sub-site shows the ID of its host's row, which "hide site"
    // takes; none when the database does not name one.
    for (const SiteRecord& sub : site.subSites) {
      table.AddRow({sub.id == 0 ? "-" : std::to_string(sub.id), SiteKindName(sub), Number(sub.weight),
                    HideStateName(sub.hide), "  \u2514 " + SiteLabel(sub), sub.url});
    }
  }
  table.Print(out);
  if (sites.empty()) std::fprintf(out, "(no sites yet: run 'corvane update')\n");
}

void PrintRecent(const std::vector<SiteRecord>& sites, std::FILE* out) {
  TextTable table({"ID", "WEIGHT", "LAST VISIT", "NAME", "URL"});
  for (const SiteRecord& site : sites) {
    table.AddRow({std::to_string(site.id), Number(site.weight), site.lastVisit, SiteLabel(site), site.url});
  }
  table.Print(out);
}

void PrintDays(const std::vector<DayGroup>& days, std::FILE* out) {
  for (const DayGroup& day : days) {
    std::fprintf(out, "%s\n", day.label.c_str());
    TextTable table({"  ID", "TIME", "NAME", "URL"});
    for (const UrlRecord& visit : day.visits) {
      // The stamp is "YYYY.MM.DD w HH:MM:SS.mmm"; the day stands above.
      std::string time = visit.lastVisit.size() > 13 ? visit.lastVisit.substr(13, 8) : visit.lastVisit;
      table.AddRow({"  " + std::to_string(visit.id), time, visit.name, visit.url});
    }
    table.Print(out);
  }
  if (days.empty()) std::fprintf(out, "(no history)\n");
}

void PrintUrls(const std::vector<UrlRecord>& records, bool withPath, std::FILE* out) {
  TextTable table(withPath ? std::vector<std::string>{"ID", "FOLDER", "NAME", "URL"}
                           : std::vector<std::string>{"ID", "NAME", "URL"});
  for (const UrlRecord& record : records) {
    if (withPath) {
      table.AddRow({std::to_string(record.id), record.path, record.name, record.url});
    } else {
      table.AddRow({std::to_string(record.id), record.name, record.url});
    }
  }
  table.Print(out);
}

}  // namespace corvane::cli
