#include "cli/output.h"

#include <json/writer.h>

#include <algorithm>
#include <memory>
#include <sstream>

#include "cli/time_text.h"

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

// A CSV field, quoted when it holds a comma, a quote or a line break.
std::string CsvField(const std::string& text) {
  if (text.find_first_of(",\"\r\n") == std::string::npos) return text;
  std::string out = "\"";
  for (char c : text) out += c == '"' ? std::string("\"\"") : std::string(1, c);
  return out + "\"";
}

std::string Trimmed(std::string text) {
  text.erase(0, text.find_first_not_of(' '));
  return text;
}

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

void TextTable::Print(std::FILE* out, TableFormat format) const {
  if (format == TableFormat::kCsv) {
    auto printCsv = [&](const std::vector<std::string>& row) {
      std::string line;
      for (size_t c = 0; c < row.size(); ++c) line += (c > 0 ? "," : "") + CsvField(Trimmed(row[c]));
      std::fprintf(out, "%s\r\n", line.c_str());
    };
    printCsv(m_header);
    for (const auto& row : m_rows) printCsv(row);
    return;
  }
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

namespace {

// The time fields of a record: ISO 8601 and the component's own stamp.
void AddTimes(const std::string& stamp, Json::Value* lpValue) {
  if (stamp.empty()) return;
  (*lpValue)["lastVisit"] = StampToIso(stamp);
  (*lpValue)["stamp"] = stamp;
}

Json::Value SiteJson(const SiteRecord& record, const std::string& id) {
  Json::Value value(Json::objectValue);
  value["id"] = id;
  value["componentId"] = record.id;
  value["kind"] = SiteKindName(record);
  value["name"] = record.name;
  value["url"] = record.url;
  value["domain"] = record.domain;
  value["mainDomain"] = record.mainDomain;
  AddTimes(record.lastVisit, &value);
  value["focus"] = record.focus;
  if (!record.fixedUrl.empty()) value["fixedUrl"] = record.fixedUrl;
  if (record.weight) value["weight"] = *record.weight;
  if (record.hide) value["hide"] = HideValue(*record.hide);
  if (record.hide) value["hideState"] = HideStateName(record.hide);
  if (record.visitCount) value["visitCount"] = *record.visitCount;
  if (record.focusId) value["focusId"] = *record.focusId;
  if (!record.subSites.empty()) {
    value["subSites"] = Json::Value(Json::arrayValue);
    for (const SiteRecord& sub : record.subSites) value["subSites"].append(SiteJson(sub, SiteRowId(sub)));
  }
  return value;
}

Json::Value UrlJson(const UrlRecord& record, RowKind kind) {
  Json::Value value(Json::objectValue);
  value["id"] = RowId(kind, record.id);
  value["componentId"] = record.id;
  value["name"] = record.name;
  value["url"] = record.url;
  if (!record.path.empty()) value["path"] = record.path;
  AddTimes(record.lastVisit, &value);
  return value;
}

}  // namespace

std::string SiteRowId(const SiteRecord& record) {
  const RowKind kind = SiteRowKind(record);
  const uint32_t number = kind == RowKind::kPin && record.focusId ? *record.focusId : record.id;
  return number == 0 ? std::string("-") : RowId(kind, number);
}

Json::Value SitesJson(const std::vector<SiteRecord>& records) {
  Json::Value list(Json::arrayValue);
  for (const SiteRecord& record : records) list.append(SiteJson(record, SiteRowId(record)));
  return list;
}

Json::Value RecentJson(const std::vector<SiteRecord>& records) {
  Json::Value list(Json::arrayValue);
  for (size_t i = 0; i < records.size(); ++i) {
    list.append(SiteJson(records[i], RowId(RowKind::kRecent, static_cast<uint32_t>(i + 1))));
  }
  return list;
}

Json::Value UrlsJson(const std::vector<UrlRecord>& records, RowKind kind) {
  Json::Value list(Json::arrayValue);
  for (const UrlRecord& record : records) list.append(UrlJson(record, kind));
  return list;
}

Json::Value DaysJson(const std::vector<DayGroup>& groups) {
  Json::Value list(Json::arrayValue);
  for (const DayGroup& group : groups) {
    Json::Value value(Json::objectValue);
    value["label"] = group.label;
    if (!group.visits.empty()) value["date"] = StampDate(group.visits.front().lastVisit);
    value["visits"] = UrlsJson(group.visits, RowKind::kHistory);
    list.append(value);
  }
  return list;
}

void PrintJson(const Json::Value& document, std::FILE* out) {
  Json::StreamWriterBuilder builder;
  builder["indentation"] = "  ";
  builder["emitUTF8"] = true;
  std::string text = Json::writeString(builder, document);
  std::fprintf(out, "%s\n", text.c_str());
}

void PrintSites(const std::vector<SiteRecord>& sites, TableFormat format, std::FILE* out) {
  TextTable table({"ID", "KIND", "WEIGHT", "STATE", "NAME", "URL"});
  bool focusDone = false;
  for (const SiteRecord& site : sites) {
    if (format == TableFormat::kText && !site.focus && !focusDone && &site != &sites.front()) {
      table.AddRow({"--", "", "", "", "", ""});
    }
    focusDone = focusDone || !site.focus;
    std::string name = (site.focus && format == TableFormat::kText ? "* " : "") + SiteLabel(site);
    table.AddRow({SiteRowId(site), SiteKindName(site), Number(site.weight), HideStateName(site.hide), name, site.url});
    // A nested part shows the ID of its host's ranked row; "-" when the
    // database names none.
    for (const SiteRecord& sub : site.subSites) {
      table.AddRow({SiteRowId(sub), SiteKindName(sub), Number(sub.weight), HideStateName(sub.hide),
                    (format == TableFormat::kText ? "  \u2514 " : "") + SiteLabel(sub), sub.url});
    }
  }
  table.Print(out, format);
}

// No ID column: the component gives every recent record the same ID, and
// none can be hidden.
void PrintRecent(const std::vector<SiteRecord>& sites, TableFormat format, std::FILE* out) {
  TextTable table({"WEIGHT", "LAST VISIT", "NAME", "URL"});
  for (const SiteRecord& site : sites) {
    table.AddRow({Number(site.weight), StampForPeople(site.lastVisit), SiteLabel(site), site.url});
  }
  table.Print(out, format);
}

void PrintDays(const std::vector<DayGroup>& days, TableFormat format, std::FILE* out) {
  if (format == TableFormat::kCsv) {
    TextTable table({"ID", "DATE", "TIME", "NAME", "URL"});
    for (const DayGroup& day : days) {
      for (const UrlRecord& visit : day.visits) {
        const std::string iso = StampToIso(visit.lastVisit);
        table.AddRow({RowId(RowKind::kHistory, visit.id), iso.substr(0, 10), iso.substr(11, 8), visit.name, visit.url});
      }
    }
    table.Print(out, format);
    return;
  }
  const std::string today = TodayDate();
  for (const DayGroup& day : days) {
    const std::string date = day.visits.empty() ? std::string() : StampDate(day.visits.front().lastVisit);
    std::fprintf(out, "%s\n", DayHeading(date, today, day.label).c_str());
    TextTable table({"  ID", "TIME", "NAME", "URL"});
    for (const UrlRecord& visit : day.visits) {
      // The stamp is "YYYY.MM.DD w HH:MM:SS.mmm"; the day stands above.
      std::string time = visit.lastVisit.size() > 13 ? visit.lastVisit.substr(13, 8) : visit.lastVisit;
      table.AddRow({"  " + RowId(RowKind::kHistory, visit.id), time, visit.name, visit.url});
    }
    table.Print(out);
  }
  if (days.empty()) std::fprintf(out, "(no history)\n");
}

void PrintUrls(const std::vector<UrlRecord>& records, RowKind kind, TableFormat format, std::FILE* out) {
  const bool withPath = kind == RowKind::kFavorite;
  TextTable table(withPath ? std::vector<std::string>{"ID", "FOLDER", "NAME", "URL"}
                           : std::vector<std::string>{"ID", "NAME", "URL"});
  for (const UrlRecord& record : records) {
    if (withPath) {
      table.AddRow({RowId(kind, record.id), record.path, record.name, record.url});
    } else {
      table.AddRow({RowId(kind, record.id), record.name, record.url});
    }
  }
  table.Print(out, format);
}

}  // namespace corvane::cli
