// Sub-domain rules: whole-host matches of the main domain's own rules.

#include <gtest/gtest.h>

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

TEST(SubListTest, ListDropsRulesThatDoNotCompileAndKeepsTheRest) {
  test::TempDir dir;
  test::ScopedEnv appData("CORVANE_APPDATA", dir.Path().c_str());
  CCorvaneDB db;
  ASSERT_EQ(db.Open(FromUtf8(dir.File("db.sqlite")), false), S_OK);
  ASSERT_TRUE(db.Exec(u"insert into TSubList values('N', 'a.com', '(unclosed', 'x');"
                      u"insert into TSubList values('N', 'a.com', '[a-z]+\\.a\\.com', 'x');"));
  CSubList rules(&db);
  EXPECT_EQ(rules.Rules().size(), 1u);
  EXPECT_TRUE(rules.Matches(u"a.com", u"blog.a.com"));
  EXPECT_FALSE(rules.Matches(u"b.com", u"blog.a.com"));
}

}  // namespace
}  // namespace corvane
