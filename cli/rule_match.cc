// GCC 12 with the sanitizers reports a member of libstdc++'s own regular
// expression automaton as maybe uninitialized where it is not; the warning
// is silenced for this file, the host's only one that compiles expressions.
#if defined(__GNUC__) && !defined(__clang__) && __GNUC__ < 13
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wmaybe-uninitialized"
#endif

#include "cli/rule_match.h"

#include <regex>

#include "cli/host_text.h"

namespace corvane::cli {

bool IsRuleCompilable(std::string_view rule) {
  size_t chars = 0;
  for (char c : rule) chars += (static_cast<unsigned char>(c) & 0xC0) != 0x80 ? 1 : 0;
  if (chars > kMaxRuleChars) return false;
  size_t depth = 0;
  bool inClass = false;
  for (size_t i = 0; i < rule.size(); ++i) {
    char c = rule[i];
    if (c == '\\') {
      ++i;  // an escaped character is no bracket
    } else if (inClass) {
      inClass = c != ']';
    } else if (c == '[') {
      inClass = true;
    } else if (c == '(' && ++depth > kMaxRuleNesting) {
      return false;
    } else if (c == ')' && depth > 0) {
      --depth;
    }
  }
  return true;
}

bool MatchesRule(const std::string& host, const std::string& rule) {
  if (!IsRuleCompilable(rule)) return false;
  try {
    // __polynomial makes libstdc++ match with its breadth-first executor,
    // whose time grows with the text times the automaton, never
    // exponentially; it refuses back-references, which no host rule needs.
    std::wregex pattern(Utf8ToWide(rule), std::regex_constants::ECMAScript | std::regex_constants::__polynomial);
    return std::regex_match(Utf8ToWide(host), pattern);
  } catch (const std::exception&) {
    // regex_error for a rule that does not compile or has too many
    // states, bad_alloc for one that does not fit in memory.
    return false;
  }
}

}  // namespace corvane::cli

#if defined(__GNUC__) && !defined(__clang__) && __GNUC__ < 13
#pragma GCC diagnostic pop
#endif
