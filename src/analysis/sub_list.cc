// GCC 12 with the sanitizers reports a member of libstdc++'s own regular
// expression automaton as maybe uninitialized where it is not; the warning
// is silenced for this file, the only one that compiles expressions.
#if defined(__GNUC__) && !defined(__clang__) && __GNUC__ < 13
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wmaybe-uninitialized"
#endif

#include "analysis/sub_list.h"

#include <algorithm>
#include <regex>
#include <vector>

#include "common/debug_log.h"
#include "common/utf.h"
#include "store/corvane_db.h"

namespace corvane {
namespace {

// The expression compiler recurses once per term and once per level of
// parentheses, so a long or deeply nested rule could exhaust the stack.
// Host-name rules are short and flat; these bounds are far above them.
constexpr size_t kMaxRuleLength = 512;
constexpr size_t kMaxRuleDepth = 32;
// A counted repetition copies its atom into the automaton, and the matcher
// follows the empty steps between copies recursively on every character.
// Rules that would grow past this many atoms (a few dozen characters of
// nested counts reach tens of thousands) are refused as well.
constexpr int64_t kMaxRuleAtoms = 2048;
// Counts are held below this while summing, so nothing overflows.
constexpr int64_t kAtomCeiling = int64_t{1} << 40;
constexpr int64_t kCopiesCeiling = int64_t{1} << 20;

int64_t Bounded(int64_t value) { return std::min(value, kAtomCeiling); }

// Reads a number at *lpIndex, held below the ceiling of copies; false
// when no digit stands there.
bool ReadCount(std::u16string_view rule, size_t* lpIndex, int64_t* lpValue) {
  size_t start = *lpIndex;
  *lpValue = 0;
  while (*lpIndex < rule.size() && rule[*lpIndex] >= u'0' && rule[*lpIndex] <= u'9') {
    *lpValue = std::min(*lpValue * 10 + (rule[*lpIndex] - u'0'), kCopiesCeiling);
    ++*lpIndex;
  }
  return *lpIndex > start;
}

// At *lpIndex, "{m}", "{m,}" or "{m,n}": the copies of the item before it,
// with *lpIndex left on the closing brace. 0 when the text is no count.
int64_t CountedCopies(std::u16string_view rule, size_t* lpIndex) {
  size_t i = *lpIndex + 1;
  int64_t low = 0;
  int64_t high = 0;
  if (!ReadCount(rule, &i, &low)) return 0;
  bool open = false;
  if (i < rule.size() && rule[i] == u',') {
    ++i;
    open = !ReadCount(rule, &i, &high);
  }
  if (i >= rule.size() || rule[i] != u'}') return 0;
  *lpIndex = i;
  // An open count is its least number of copies and a loop.
  return std::max<int64_t>(open ? low + 1 : std::max(low, high), 1);
}

// The position of the "]" that ends the class opened at index.
size_t EndOfClass(std::u16string_view rule, size_t index) {
  for (size_t i = index + 1; i < rule.size(); ++i) {
    if (rule[i] == u'\\') {
      ++i;
    } else if (rule[i] == u']') {
      return i;
    }
  }
  return rule.size();
}

// Why a rule is refused before it is compiled, or null when it may be.
// The walk over the text is coarse: a class or an escape is one atom, a
// group its atoms plus two, and a count multiplies the item before it.
const char* RefusalReason(std::u16string_view rule) {
  if (rule.size() > kMaxRuleLength) return "longer than 512 characters";
  std::vector<int64_t> groups{0};  // atoms of each open group, outermost first
  int64_t last = 0;                // atoms of the item just read
  for (size_t i = 0; i < rule.size(); ++i) {
    int64_t item = 1;
    switch (rule[i]) {
      case u'\\':
        ++i;
        break;
      case u'[':
        i = EndOfClass(rule, i);
        break;
      case u'(':
        if (groups.size() > kMaxRuleDepth) return "nested more than 32 deep";
        groups.push_back(0);
        last = 0;
        continue;
      case u')':
        if (groups.size() > 1) {
          item = Bounded(groups.back() + 2);
          groups.pop_back();
        }
        break;
      case u'{':
        if (int64_t copies = CountedCopies(rule, &i); copies > 0) {
          groups.back() = Bounded(groups.back() + last * (copies - 1));
          last = Bounded(last * copies);
          continue;
        }
        break;
      default:
        break;
    }
    groups.back() = Bounded(groups.back() + item);
    last = item;
  }
  int64_t atoms = 0;
  for (int64_t group : groups) atoms = Bounded(atoms + group);
  return atoms > kMaxRuleAtoms ? "repeats into too large an automaton" : nullptr;
}

}  // namespace

struct CSubListRule::Expression {
  std::wregex regex;
};

CSubListRule::CSubListRule(std::u16string mainDomain, std::u16string_view expression)
    : m_mainDomain(std::move(mainDomain)) {
  if (const char* reason = RefusalReason(expression)) {
    if (DebugLogEnabled()) {
      DebugLog("sub list: rule of %s refused, %s\r\n", ToUtf8(m_mainDomain).c_str(), reason);
    }
    return;
  }
  try {
    auto compiled = std::make_unique<Expression>();
    // The polynomial matcher runs in time linear in the host for a given
    // rule, where the backtracking one can take exponential time on a rule
    // such as "(a|a)*b". It refuses back-references, which no host-name rule
    // needs: such a rule does not compile and is dropped.
    compiled->regex.assign(ToWide(expression), std::regex_constants::ECMAScript | std::regex_constants::__polynomial);
    m_expression = std::move(compiled);
  } catch (const std::regex_error&) {
    // The rule stays without an expression and is dropped by the list.
  }
}

CSubListRule::~CSubListRule() = default;

bool CSubListRule::IsSubDomain(std::u16string_view mainDomain, std::u16string_view fullDomain) const {
  if (!m_expression || fullDomain.empty() || fullDomain.size() > kMaxHostLength) return false;
  // The main domain comes first, so the expression only runs on hosts of
  // its own main domain.
  if (mainDomain != m_mainDomain) return false;
  try {
    return std::regex_match(ToWide(fullDomain), m_expression->regex);
  } catch (const std::regex_error&) {
    // An expression too complex for the host at hand matches nothing.
    return false;
  }
}

CSubList::CSubList(CCorvaneDB* pDB) {
  StatementPtr stmt = pDB->Prepare(u"select MainDomain, domain from TSubList");
  while (stmt && stmt->Step()) {
    auto rule = std::make_unique<CSubListRule>(stmt->ColumnText16(0), stmt->ColumnText16(1));
    if (rule->IsCompiled()) m_rules.push_back(std::move(rule));
  }
}

bool CSubList::Matches(std::u16string_view mainDomain, std::u16string_view fullDomain) const {
  for (const auto& rule : m_rules) {
    if (rule->IsSubDomain(mainDomain, fullDomain)) return true;
  }
  return false;
}

}  // namespace corvane

#if defined(__GNUC__) && !defined(__clang__) && __GNUC__ < 13
#pragma GCC diagnostic pop
#endif
