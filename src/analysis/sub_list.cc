// GCC 12 with the sanitizers reports a member of libstdc++'s own regular
// expression automaton as maybe uninitialized where it is not; the warning
// is silenced for this file, the only one that compiles expressions.
#if defined(__GNUC__) && !defined(__clang__) && __GNUC__ < 13
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wmaybe-uninitialized"
#endif

#include "analysis/sub_list.h"

#include <regex>

#include "common/utf.h"
#include "store/corvane_db.h"

namespace corvane {

struct CSubListRule::Expression {
  std::wregex regex;
};

CSubListRule::CSubListRule(std::u16string mainDomain, std::u16string_view expression)
    : m_mainDomain(std::move(mainDomain)) {
  try {
    auto compiled = std::make_unique<Expression>();
    compiled->regex.assign(ToWide(expression), std::regex_constants::ECMAScript);
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
