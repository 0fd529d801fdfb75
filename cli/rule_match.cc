// GCC 12 with the sanitizers reports a member of libstdc++'s own regular
// expression automaton as maybe uninitialized where it is not; the warning
// is silenced for this file, the host's only one that compiles expressions.
#if defined(__GNUC__) && !defined(__clang__) && __GNUC__ < 13
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wmaybe-uninitialized"
#endif

#include "cli/rule_match.h"

#include <regex>

#include "common/utf.h"

namespace corvane::cli {

bool MatchesRule(const std::string& host, const std::string& rule) {
  try {
    std::wregex pattern(ToWide(FromUtf8(rule)), std::regex_constants::ECMAScript);
    return std::regex_match(ToWide(FromUtf8(host)), pattern);
  } catch (const std::regex_error&) {
    return false;
  }
}

}  // namespace corvane::cli

#if defined(__GNUC__) && !defined(__clang__) && __GNUC__ < 13
#pragma GCC diagnostic pop
#endif
