// update_summary.h: what "update" and "demo" show of an update: whether it
// ran, how long it took, the browser read and the counters the component
// wrote to DBConfig.ini, all read back through GetValue.

#ifndef CORVANE_CLI_UPDATE_SUMMARY_H_
#define CORVANE_CLI_UPDATE_SUMMARY_H_

#include <json/value.h>

#include <cstdio>

#include "cli/session.h"

namespace corvane::cli {

// {"updated", "seconds", "ExtractBrowser", "LastUpdate", "counters": {...}};
// a counter the component did not write is left out.
Json::Value ReadUpdateSummary(ProviderSession& session, bool updated, double seconds);
void PrintUpdateSummary(const Json::Value& summary, std::FILE* out);

}  // namespace corvane::cli

#endif  // CORVANE_CLI_UPDATE_SUMMARY_H_
