// rule_match.h: whether a host matches a sub-domain rule of the white list,
// the way the component matches it (the whole host, as wide text, with the
// ECMAScript grammar).
//
// The rules come from a file that anyone can edit, so a rule is checked
// before it is compiled: longer than kMaxRuleChars characters or nested
// deeper than kMaxRuleNesting groups, it is refused (the compiler recurses
// per group and per term and would overflow the stack). The expression is
// run by libstdc++'s polynomial-time matcher, so no rule can take
// exponential time on a host name. A rule that is refused or does not
// compile matches nothing.

#ifndef CORVANE_CLI_RULE_MATCH_H_
#define CORVANE_CLI_RULE_MATCH_H_

#include <cstddef>
#include <string>
#include <string_view>

namespace corvane::cli {

inline constexpr size_t kMaxRuleChars = 512;
inline constexpr size_t kMaxRuleNesting = 32;

// True when the rule is short enough and its groups shallow enough to be
// compiled.
[[nodiscard]] bool IsRuleCompilable(std::string_view rule);
[[nodiscard]] bool MatchesRule(const std::string& host, const std::string& rule);

}  // namespace corvane::cli

#endif  // CORVANE_CLI_RULE_MATCH_H_
