#include "cli/update_summary.h"

#include <string>

#include "cli/sources_report.h"
#include "cli/time_text.h"

namespace corvane::cli {
namespace {

// Keys of DBConfig.ini that an update writes.
constexpr const char* kCounterKeys[] = {"AddHistoryCount", "BuildOftenTable", "H2", "E3inH2", "E3",
                                        "H1",              "E2inH1",          "E2"};

}  // namespace

Json::Value ReadUpdateSummary(ProviderSession& session, bool updated, double seconds) {
  Json::Value document(Json::objectValue);
  std::string value;
  document["updated"] = updated;
  document["seconds"] = seconds;
  for (const char* key : {"ExtractBrowser", "LastUpdate"}) {
    document[key] = SUCCEEDED(session.GetValue(key, &value)) ? value : std::string();
  }
  Json::Value counters(Json::objectValue);
  for (const char* key : kCounterKeys) {
    if (SUCCEEDED(session.GetValue(key, &value))) counters[key] = value;
  }
  document["counters"] = counters;
  document["sources"] = LastReadJson();
  return document;
}

void PrintUpdateSummary(const Json::Value& summary, std::FILE* out) {
  if (summary["updated"].asBool()) {
    std::fprintf(out, "Updated in %.2f s\n", summary["seconds"].asDouble());
  } else {
    // The stamp is "YYYY.MM.DD w HH:MM:SS.mmm": the clock time is enough.
    const std::string stamp = summary["LastUpdate"].asString();
    std::fprintf(out, "Already up to date: updated today at %s; 'corvane update --force' reads the browser again\n",
                 stamp.size() >= 18 ? stamp.substr(13, 5).c_str() : stamp.c_str());
  }
  std::fprintf(out, "Browser read: %s\n", summary["ExtractBrowser"].asCString());
  std::string sources;
  for (const Json::Value& source : summary["sources"]) {
    sources += (sources.empty() ? "" : ", ") + source["name"].asString() + " (" + source["visits"].asString() + ")";
  }
  if (!sources.empty()) std::fprintf(out, "Profiles read: %s\n", sources.c_str());
  std::fprintf(out, "Last update:  %s\n", StampForPeople(summary["LastUpdate"].asString()).c_str());
  const Json::Value& counters = summary["counters"];
  for (const std::string& key : counters.getMemberNames()) {
    std::fprintf(out, "  %-16s %s\n", key.c_str(), counters[key].asCString());
  }
}

}  // namespace corvane::cli
