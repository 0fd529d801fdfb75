// cmd_explain.cc: "explain URL|DOMAIN": why a site ranks where it does.

#include <cstdio>
#include <filesystem>
#include <memory>
#include <string>

#include "cli/data_folder.h"
#include "cli/explain_data.h"
#include "cli/options.h"
#include "cli/output.h"
#include "cli/records.h"
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

void PrintFacts(const Json::Value& facts) {
  std::string main = facts["mainDomain"].asString();
  std::printf("%s (main domain %s)\n", facts["domain"].asCString(), main.empty() ? "not recorded" : main.c_str());
  if (facts.isMember("dayScore")) {
    std::printf("Scoring: (%d x days + %d x visits) x recency weight x %d%% for a favourite  [%s]\n",
                facts["dayScore"].asInt(), facts["visitScore"].asInt(), facts["favoritePercent"].asInt(),
                facts["settings"].asCString());
  } else {
    std::printf("Scoring: Settings.ini holds no readable score rows\n");
  }
  if (facts["urls"].empty()) std::printf("No scored URL: the analysis has not seen it in its span.\n");
  for (const Json::Value& url : facts["urls"]) {
    std::string computed = url.isMember("expectedScore") ? " (computed " + url["expectedScore"].asString() + ")" : "";
    std::printf("  %s [%s]\n    %u %s, %u visits, newest day index %u (%s)%s\n    score %u%s\n",
                url["url"].asCString(), url["table"].asString() == "h2" ? "long-standing" : "recent only",
                url["days"].asUInt(), url["days"].asUInt() == 1 ? "day" : "days", url["visits"].asUInt(),
                url["newestDayIndex"].asUInt(),
                url["recencyBand"].asCString(), url["favorite"].asBool() ? ", favourite" : "", url["score"].asUInt(),
                computed.c_str());
  }
  for (const Json::Value& row : facts["ranked"]) {
    std::printf("Listed in %s as ID %lld (%s): score %lld, %s\n", row["table"].asCString(),
                static_cast<long long>(row["id"].asInt64()), row["key"].asCString(),
                static_cast<long long>(row["score"].asInt64()), row["hideState"].asCString());
  }
  for (const Json::Value& group : facts["whiteList"]) std::printf("White-list group: %s\n", group.asCString());
  for (const Json::Value& rule : facts["subDomainRules"]) std::printf("Sub-domain rule: %s\n", rule.asCString());
  if (facts["subDomainSite"].asBool()) std::printf("A site of its own by a sub-domain rule.\n");
  if (facts["blackListed"].asBool()) std::printf("On the black list: never recommended.\n");
}

int RunExplain(const GlobalOptions& global, const std::string& target) {
  std::string folder = DataFolderPath();
  std::string db = folder + "/" + kDatabaseFile;
  std::error_code error;
  if (folder.empty() || !std::filesystem::exists(db, error)) {
    return Failure("no database in " + folder + ": run 'corvane update' first");
  }
  ExplainFacts facts;
  std::string message;
  if (!ReadExplainFacts(db, target, &facts, &message)) return Failure(message);
  Json::Value document = FactsJson(facts, LoadScoreModel(folder));
  if (global.json) {
    PrintJson(document, stdout);
  } else {
    PrintFacts(document);
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
