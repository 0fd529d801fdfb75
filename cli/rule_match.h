// rule_match.h: whether a host matches a sub-domain rule of the white list,
// the way the component matches it (the whole host, as wide text, with the
// ECMAScript grammar). A rule that does not compile matches nothing.

#ifndef CORVANE_CLI_RULE_MATCH_H_
#define CORVANE_CLI_RULE_MATCH_H_

#include <string>

namespace corvane::cli {

[[nodiscard]] bool MatchesRule(const std::string& host, const std::string& rule);

}  // namespace corvane::cli

#endif  // CORVANE_CLI_RULE_MATCH_H_
