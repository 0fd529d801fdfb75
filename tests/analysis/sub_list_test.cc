// Sub-domain rules: whole-host matches of the main domain's own rules.

#include <gtest/gtest.h>

#include <fstream>

#include "analysis/sub_list.h"
#include "common/utf.h"
#include "store/corvane_db.h"
#include "support/test_host.h"

namespace corvane {
namespace {

TEST(SubListTest, RuleMatchesWholeHostsOfItsOwnMainDomainWithCase) {
  CSubListRule rule(u"example.com", u"news\\.example\\.com");
  EXPECT_TRUE(rule.IsSubDomain(u"example.com", u"news.example.com"));
  EXPECT_FALSE(rule.IsSubDomain(u"example.com", u"old.news.example.com"));
  EXPECT_FALSE(rule.IsSubDomain(u"example.com", u"NEWS.example.com"));
  EXPECT_FALSE(rule.IsSubDomain(u"Example.com", u"news.example.com"));
  EXPECT_FALSE(rule.IsSubDomain(u"example.com", u""));
  CSubListRule any(u"example.com", u".*");
  EXPECT_FALSE(any.IsSubDomain(u"example.com", std::u16string(254, u'a')));
  EXPECT_TRUE(any.IsSubDomain(u"example.com", std::u16string(253, u'a')));
  CSubListRule broken(u"example.com", u"news[");
  EXPECT_FALSE(broken.IsCompiled());
  EXPECT_FALSE(broken.IsSubDomain(u"example.com", u"news["));
  CSubListRule empty(u"example.com", u"");
  EXPECT_TRUE(empty.IsCompiled());
  EXPECT_FALSE(empty.IsSubDomain(u"example.com", u""));
}

TEST(SubListTest, RuleNestedFiftyThousandDeepIsRefusedWithoutCrashing) {
  std::u16string deep = std::u16string(50000, u'(') + u"b" + std::u16string(50000, u')') + u"\\.a\\.com";
  CSubListRule rule(u"a.com", deep);
  EXPECT_FALSE(rule.IsCompiled());
  EXPECT_FALSE(rule.IsSubDomain(u"a.com", u"b.a.com"));
}

TEST(SubListTest, DepthAndLengthBoundsLeaveOrdinaryRulesAlone) {
  auto nested = [](size_t depth) {
    return std::u16string(depth, u'(') + u"b" + std::u16string(depth, u')') + u"\\.a\\.com";
  };
  CSubListRule deepest(u"a.com", nested(32));
  EXPECT_TRUE(deepest.IsSubDomain(u"a.com", u"b.a.com"));
  CSubListRule tooDeep(u"a.com", nested(33));
  EXPECT_FALSE(tooDeep.IsCompiled());
  // 512 characters compile, 513 are refused though the text is valid.
  std::u16string longest = u"b\\.a\\.com|" + std::u16string(502, u'x');
  ASSERT_EQ(longest.size(), 512u);
  CSubListRule atLength(u"a.com", longest);
  EXPECT_TRUE(atLength.IsSubDomain(u"a.com", u"b.a.com"));
  CSubListRule overLength(u"a.com", longest + u"x");
  EXPECT_FALSE(overLength.IsCompiled());
  EXPECT_FALSE(overLength.IsSubDomain(u"a.com", u"b.a.com"));
}

TEST(SubListTest, RuleThatBacktracksExponentiallyEndsOnALongHost) {
  CSubListRule rule(u"a.com", u"(a|a)*b\\.a\\.com");
  ASSERT_TRUE(rule.IsCompiled());
  // The backtracking matcher tries 2^40 ways before it gives up here; this
  // call would not return within the run of the suite.
  EXPECT_FALSE(rule.IsSubDomain(u"a.com", std::u16string(40, u'a') + u".a.com"));
  EXPECT_TRUE(rule.IsSubDomain(u"a.com", std::u16string(40, u'a') + u"b.a.com"));
}

TEST(SubListTest, CountedRepetitionsThatBlowUpAreRefusedAndOrdinaryCountsKept) {
  // Sixteen characters of nested counts make ten thousand copies, enough
  // for the matcher's recursion to exhaust the stack on a long host.
  CSubListRule blowUp(u"a.com", u"((a?){100}){100}");
  EXPECT_FALSE(blowUp.IsCompiled());
  EXPECT_FALSE(blowUp.IsSubDomain(u"a.com", std::u16string(253, u'a')));
  CSubListRule open(u"a.com", u"(a{3000,})");
  EXPECT_FALSE(open.IsCompiled());
  CSubListRule label(u"a.com", u"[a-z0-9-]{1,63}\\.a\\.com");
  EXPECT_TRUE(label.IsSubDomain(u"a.com", u"news-1.a.com"));
  EXPECT_FALSE(label.IsSubDomain(u"a.com", std::u16string(64, u'n') + u".a.com"));
  CSubListRule address(u"a.com", u"(\\d{1,3}\\.){3}\\d{1,3}");
  EXPECT_TRUE(address.IsSubDomain(u"a.com", u"10.0.0.255"));
  // Back-references have no polynomial matcher: such a rule is dropped.
  CSubListRule backReference(u"a.com", u"(b)\\1\\.a\\.com");
  EXPECT_FALSE(backReference.IsCompiled());
}

TEST(SubListTest, RefusedRuleLeavesADebugLine) {
  test::TempDir dir;
  test::ScopedEnv debug("CORVANE_DEBUG", dir.File("debug.log").c_str());
  CSubListRule rule(u"deep.com", std::u16string(40, u'(') + std::u16string(40, u')'));
  EXPECT_FALSE(rule.IsCompiled());
  std::ifstream log(dir.File("debug.log"));
  std::string line;
  std::getline(log, line);
  EXPECT_EQ(line, "sub list: rule of deep.com refused, nested more than 32 deep\r");
}

TEST(SubListTest, ListDropsRulesThatDoNotCompileAndKeepsTheRest) {
  test::TempDir dir;
  test::ScopedEnv appData("CORVANE_APPDATA", dir.Path().c_str());
  CCorvaneDB db;
  ASSERT_EQ(db.Open(FromUtf8(dir.File("db.sqlite")), false), S_OK);
  ASSERT_TRUE(db.Exec(u"insert into TSubList values('N', 'a.com', '(unclosed', 'x');"
                      u"insert into TSubList values('N', 'a.com', '[a-z]+\\.a\\.com', 'x');"));
  // A rule nested too deeply is dropped like one that doesn't compile.
  StatementPtr deep = db.Prepare(u"insert into TSubList values('N', 'a.com', ?, 'x')");
  ASSERT_TRUE(deep && deep->BindText16(0, std::u16string(33, u'(') + u"b" + std::u16string(33, u')')) && deep->Execute());
  deep.reset();
  CSubList rules(&db);
  EXPECT_EQ(rules.Rules().size(), 1u);
  EXPECT_TRUE(rules.Matches(u"a.com", u"blog.a.com"));
  EXPECT_FALSE(rules.Matches(u"b.com", u"blog.a.com"));
}

}  // namespace
}  // namespace corvane
