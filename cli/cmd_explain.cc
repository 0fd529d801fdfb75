// cmd_explain.cc: "explain URL|DOMAIN": why a site ranks where it does.

#include <cstdarg>
#include <cstdio>

#include "cli/explain.h"
#include <filesystem>
#include <memory>
#include <string>

#include "cli/data_folder.h"
#include "cli/explain_data.h"
#include "cli/options.h"
#include "cli/output.h"
#include "cli/records.h"
#include "cli/row_ids.h"
#include "cli/score_bands.h"

namespace corvane::cli {
namespace {

std::string BandText(const ScoreModel& model, uint32_t day) {
  const ScoreBand* row = model.RowFor(day);
  if (row == nullptr) return "outside every band (weight 0)";
  char text[96];
  std::snprintf(text, sizeof(text), "day indexes %u-%u, weight %.1f", row->dayFrom, row->dayTo - 1,
                static_cast<double>(row->recencyWeight));
  return text;
}

// The row ID that the listings show for a ranked row.
std::string ListedId(const std::string& table, int64_t rowid) {
  const RowKind kind = table == "TSubDomain" ? RowKind::kSubDomain
                       : table == "TRecommendURL" ? RowKind::kUrl : RowKind::kDomain;
  return RowId(kind, static_cast<uint32_t>(rowid));
}

Json::Value UrlJson(const ScoredUrl& url, const ScoreModel& model) {
  Json::Value value(Json::objectValue);
  value["table"] = url.table;
  value["url"] = url.url;
  value["name"] = url.name;
  value["days"] = url.days;
  value["visits"] = url.visits;
  value["newestDayIndex"] = url.newestDay;
  value["recencyBand"] = BandText(model, url.newestDay);
  value["favorite"] = url.favorite;
  value["score"] = url.score;
  if (!model.rows.empty()) value["expectedScore"] = model.Score(url.days, url.visits, url.newestDay, url.favorite);
  return value;
}

Json::Value FactsJson(const ExplainFacts& facts, const ScoreModel& model) {
  Json::Value document(Json::objectValue);
  document["domain"] = facts.domain;
  document["mainDomain"] = facts.mainDomain;
  if (facts.isUrl) document["fixedUrl"] = facts.fixedUrl;
  document["settings"] = model.source;
  const ScoreBand* first = model.RowFor(0);
  if (first != nullptr) {
    document["dayScore"] = first->dayScore;
    document["visitScore"] = first->visitScore;
    document["favoritePercent"] = first->favoritePercent;
  }
  document["urls"] = Json::Value(Json::arrayValue);
  for (const ScoredUrl& url : facts.urls) document["urls"].append(UrlJson(url, model));
  document["ranked"] = Json::Value(Json::arrayValue);
  for (const RankedRow& row : facts.ranked) {
    Json::Value value(Json::objectValue);
    value["table"] = row.table;
    value["id"] = static_cast<Json::Int64>(row.rowid);
    value["rowId"] = ListedId(row.table, row.rowid);
    value["key"] = row.key;
    value["score"] = static_cast<Json::Int64>(row.score);
    value["hide"] = row.hide;
    value["hideState"] = HideStateName(static_cast<uint32_t>(row.hide));
    document["ranked"].append(value);
  }
  document["whiteList"] = Json::Value(Json::arrayValue);
  for (const std::string& group : facts.whiteGroups) document["whiteList"].append(group);
  document["subDomainRules"] = Json::Value(Json::arrayValue);
  for (const std::string& rule : facts.matchingRules) document["subDomainRules"].append(rule);
  document["subDomainSite"] = facts.inZ;
  document["blackListed"] = facts.blackListed;
  return document;
}

// "today", "yesterday" or "N days ago" for a day index (0 is today).
std::string DaysAgo(uint32_t day) {
  if (day == 0) return "today";
  if (day == 1) return "yesterday";
  return std::to_string(day) + " days ago";
}

std::string Format(const char* format, ...) __attribute__((format(printf, 1, 2)));
std::string Format(const char* format, ...) {
  char text[1024];
  va_list args;
  va_start(args, format);
  std::vsnprintf(text, sizeof(text), format, args);
  va_end(args);
  return text;
}

// One scored page in words, with the formula and its numbers.
void AddPageLines(const Json::Value& url, const ScoreModel& model, std::vector<std::string>* lpLines) {
  const uint32_t days = url["days"].asUInt(), visits = url["visits"].asUInt(), newest = url["newestDayIndex"].asUInt();
  const bool favorite = url["favorite"].asBool();
  lpLines->push_back("  " + url["url"].asString() +
                     (url["table"].asString() == "h2" ? "" : "  (only lately: a recent take-up, not yet ranked)"));
  lpLines->push_back(Format("    used on %u %s, %u %s, last %s, %s", days, days == 1 ? "day" : "days", visits,
                            visits == 1 ? "visit" : "visits", DaysAgo(newest).c_str(),
                            favorite ? "bookmarked" : "not bookmarked"));
  const ScoreBand* first = model.RowFor(0);
  const ScoreBand* band = model.RowFor(newest);
  if (first == nullptr || band == nullptr) {
    lpLines->push_back(Format("    score %u", url["score"].asUInt()));
    return;
  }
  const uint32_t computed = model.Score(days, visits, newest, favorite);
  std::string line = Format("    score (%d x %u days + %d x %u visits) x %.1f for the last visit%s = %u",
                            first->dayScore, days, first->visitScore, visits, static_cast<double>(band->recencyWeight),
                            favorite ? Format(" x %d%% as a bookmark", first->favoritePercent).c_str() : "", computed);
  if (computed != url["score"].asUInt()) line += Format(" (the last update stored %u)", url["score"].asUInt());
  lpLines->push_back(line);
}

std::vector<std::string> ExplainLines(const Json::Value& facts, const ScoreModel& model) {
  std::vector<std::string> lines;
  const std::string main = facts["mainDomain"].asString();
  lines.push_back(main.empty() ? facts["domain"].asString() + ": not in the analysed history"
                               : facts["domain"].asString() + ", of the site " + main);
  const ScoreBand* first = model.RowFor(0);
  lines.push_back(first == nullptr ? std::string("How a page scores: Settings.ini holds no readable score rows")
                                   : Format("How a page scores: %d points for each day it was used and %d for each "
                                            "visit, times a weight for how recent its last visit is, times %d%% when "
                                            "it is bookmarked (settings: %s)",
                                            first->dayScore, first->visitScore, first->favoritePercent,
                                            facts["settings"].asCString()));
  if (facts["urls"].empty()) lines.push_back("No scored URL: the analysis has not seen it in its span.");
  for (const Json::Value& url : facts["urls"]) AddPageLines(url, model, &lines);
  for (const Json::Value& row : facts["ranked"]) {
    lines.push_back(Format("Listed as %s (%s): weight %lld, %s", row["rowId"].asCString(), row["key"].asCString(),
                           static_cast<long long>(row["score"].asInt64()), row["hideState"].asCString()));
  }
  for (const Json::Value& group : facts["whiteList"]) lines.push_back("A site of the white list: " + group.asString());
  for (const Json::Value& rule : facts["subDomainRules"]) {
    lines.push_back("Each host like this one is a site of its own (rule " + rule.asString() + ")");
  }
  if (facts["subDomainSite"].asBool()) lines.push_back("This host is a site of its own.");
  if (facts["blackListed"].asBool()) lines.push_back("On the black list: never recommended.");
  return lines;
}

}  // namespace

bool ExplainTarget(const std::string& target, Json::Value* lpFacts, std::vector<std::string>* lpLines,
                   std::string* lpError) {
  std::string folder = DataFolderPath();
  std::string db = folder + "/" + kDatabaseFile;
  std::error_code error;
  if (folder.empty() || !std::filesystem::exists(db, error)) {
    *lpError = "no database in " + folder + ": run 'corvane update' first";
    return false;
  }
  ExplainFacts facts;
  if (!ReadExplainFacts(db, target, &facts, lpError)) return false;
  const ScoreModel model = LoadScoreModel(folder);
  *lpFacts = FactsJson(facts, model);
  *lpLines = ExplainLines(*lpFacts, model);
  return true;
}

namespace {

int RunExplain(const GlobalOptions& global, const std::string& target) {
  Json::Value facts;
  std::vector<std::string> lines;
  std::string error;
  if (!ExplainTarget(target, &facts, &lines, &error)) return Failure(error);
  if (global.json) {
    PrintJson(facts, stdout);
  } else {
    for (const std::string& line : lines) std::printf("%s\n", line.c_str());
  }
  return kExitOk;
}

}  // namespace

void AddExplainCommand(CLI::App& app, const GlobalOptions& global, CommandTable* lpTable) {
  auto target = std::make_shared<std::string>();
  CLI::App* sub = app.add_subcommand("explain", "Why a site ranks where it does");
  sub->add_option("TARGET", *target, "A URL or a host name")->required();
  lpTable->emplace_back(sub, [&global, target] { return RunExplain(global, *target); });
}

}  // namespace corvane::cli
