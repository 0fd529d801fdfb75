// sub_list.h: the sub-domain rules of TSubList, which make hosts of a main
// domain sites of their own.
//
// A rule is a regular expression (ECMAScript grammar, case-sensitive) that
// must match a whole host name, and holds only for hosts of its own main
// domain, compared exactly. A rule whose text doesn't compile is dropped,
// and so is one too long, too deeply nested or repeating into too large an
// automaton to compile and match safely; matching takes time linear in the
// host. This is the one use of regular expressions in the system.

#ifndef CORVANE_ANALYSIS_SUB_LIST_H_
#define CORVANE_ANALYSIS_SUB_LIST_H_

#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace corvane {

class CCorvaneDB;

class CSubListRule {
 public:
  // A rule whose expression is refused or doesn't compile has none and
  // never holds.
  CSubListRule(std::u16string mainDomain, std::u16string_view expression);
  ~CSubListRule();
  CSubListRule(const CSubListRule&) = delete;
  CSubListRule& operator=(const CSubListRule&) = delete;

  bool IsSubDomain(std::u16string_view mainDomain, std::u16string_view fullDomain) const;
  bool IsCompiled() const { return m_expression != nullptr; }

 private:
  // The compiled expression; only sub_list.cc sees the regular expression
  // library.
  struct Expression;
  std::unique_ptr<Expression> m_expression;
  std::u16string m_mainDomain;
};

class CSubList {
 public:
  // Loads and compiles the rules of TSubList, in table order.
  explicit CSubList(CCorvaneDB* pDB);

  const std::vector<std::unique_ptr<CSubListRule>>& Rules() const { return m_rules; }
  // True when a rule holds for the host: the callers stop at the first.
  bool Matches(std::u16string_view mainDomain, std::u16string_view fullDomain) const;

 private:
  std::vector<std::unique_ptr<CSubListRule>> m_rules;
};

// Host names are at most 253 characters; a longer text is no host and is
// never handed to an expression.
inline constexpr size_t kMaxHostLength = 253;

}  // namespace corvane

#endif  // CORVANE_ANALYSIS_SUB_LIST_H_
