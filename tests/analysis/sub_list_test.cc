// Sub-domain rules: whole-host matches of the main domain's own rules, and
// the rules refused before they reach the matcher.

#include "analysis/sub_list.h"

#include <gtest/gtest.h>

#include "common/utf.h"

namespace corvane::testing {
namespace {

std::u16string Nested(size_t depth) { return std::u16string(depth, u'(') + u"b" + std::u16string(depth, u')') + u"\\.a\\.com"; }

TEST(SubListTest, RulesMatchWholeHostsOfTheirOwnMainDomainWithCase) {
  const std::u16string longest = u"b\\.a\\.com|" + std::u16string(502, u'x');  // 512 characters
  const struct {
    std::u16string rule;
    bool compiled;
    std::u16string main;
    std::u16string host;
    bool matches;
  } kCases[] = {
      {u"news\\.a\\.com", true, u"a.com", u"news.a.com", true},
      {u"news\\.a\\.com", true, u"a.com", u"old.news.a.com", false},  // a whole-host match
      {u"news\\.a\\.com", true, u"a.com", u"NEWS.a.com", false},      // case counts
      {u"news\\.a\\.com", true, u"A.com", u"news.a.com", false},      // another main domain
      {u"news\\.a\\.com", true, u"a.com", u"", false},
      {u".*", true, u"a.com", std::u16string(253, u'a'), true},
      {u".*", true, u"a.com", std::u16string(254, u'a'), false},  // longer than a host can be
      {u"news[", false, u"a.com", u"news[", false},
      {u"", true, u"a.com", u"", false},
      // Nesting up to 32 deep and 512 characters compile, one more is refused.
      {Nested(32), true, u"a.com", u"b.a.com", true},
      {Nested(33), false, u"a.com", u"b.a.com", false},
      {Nested(50000), false, u"a.com", u"b.a.com", false},
      {longest, true, u"a.com", u"b.a.com", true},
      {longest + u"x", false, u"a.com", u"b.a.com", false},
      // The backtracking matcher would try 2^40 ways before it gave up on
      // the first host; the call would not return within the run.
      {u"(a|a)*b\\.a\\.com", true, u"a.com", std::u16string(40, u'a') + u".a.com", false},
      {u"(a|a)*b\\.a\\.com", true, u"a.com", std::u16string(40, u'a') + u"b.a.com", true},
      // Sixteen characters of nested counts make ten thousand copies, enough
      // for the matcher's recursion to exhaust the stack on a long host.
      {u"((a?){100}){100}", false, u"a.com", std::u16string(253, u'a'), false},
      {u"(a{3000,})", false, u"a.com", std::u16string(253, u'a'), false},
      {u"[a-z0-9-]{1,63}\\.a\\.com", true, u"a.com", u"news-1.a.com", true},
      {u"[a-z0-9-]{1,63}\\.a\\.com", true, u"a.com", std::u16string(64, u'n') + u".a.com", false},
      {u"(\\d{1,3}\\.){3}\\d{1,3}", true, u"a.com", u"10.0.0.255", true},
      // Back-references have no polynomial matcher: such a rule is dropped.
      {u"(b)\\1\\.a\\.com", false, u"a.com", u"bb.a.com", false},
  };
  for (const auto& test : kCases) {
    SCOPED_TRACE(ToUtf8(test.rule.substr(0, 40)) + " on " + ToUtf8(test.host.substr(0, 40)));
    CSubListRule rule(u"a.com", test.rule);
    EXPECT_EQ(rule.IsCompiled(), test.compiled);
    EXPECT_EQ(rule.IsSubDomain(test.main, test.host), test.matches);
  }
}

}  // namespace
}  // namespace corvane::testing
