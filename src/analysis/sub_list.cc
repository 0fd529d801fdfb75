#include "analysis/sub_list.h"

#include "common/utf.h"
#include "store/corvane_db.h"

namespace corvane {

CSubListRule::CSubListRule(std::u16string mainDomain, std::u16string_view expression)
    : m_mainDomain(std::move(mainDomain)) {
  try {
    m_expression = std::make_unique<std::wregex>(ToWide(expression), std::regex_constants::ECMAScript);
  } catch (const std::regex_error&) {
    m_expression.reset();
  }
}

bool CSubListRule::IsSubDomain(std::u16string_view mainDomain, std::u16string_view fullDomain) const {
  if (!m_expression || fullDomain.empty() || fullDomain.size() > kMaxHostLength) return false;
  // The main domain comes first, so the expression only runs on hosts of
  // its own main domain.
  if (mainDomain != m_mainDomain) return false;
  try {
    return std::regex_match(ToWide(fullDomain), *m_expression);
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
