// explain.h: why a site ranks where it does, as the explain command and the
// start page say it: the facts as JSON (with the internal names) and the
// same in plain words, one line each.

#ifndef CORVANE_CLI_EXPLAIN_H_
#define CORVANE_CLI_EXPLAIN_H_

#include <json/value.h>

#include <string>
#include <vector>

namespace corvane::cli {

// False with the reason when there is no database or it can't be read.
[[nodiscard]] bool ExplainTarget(const std::string& target, Json::Value* lpFacts, std::vector<std::string>* lpLines,
                                 std::string* lpError);

}  // namespace corvane::cli

#endif  // CORVANE_CLI_EXPLAIN_H_
