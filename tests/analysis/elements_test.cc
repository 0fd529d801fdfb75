// The bounded ordered lists of the table builders.

#include <gtest/gtest.h>

#include <limits>

#include "analysis/domain_element.h"
#include "analysis/element_base.h"
#include "analysis/h1_element.h"
#include "analysis/url_elements.h"

namespace corvane {
namespace {

class ElementsTest : public ::testing::Test {
 protected:
  ~ElementsTest() override { SetElementLimits(-1, -1); }

  static std::unique_ptr<E1Entry> Entry(const std::u16string& url, int32_t visits) {
    auto entry = std::make_unique<E1Entry>();
    entry->URL = url;
    entry->VisitCount = visits;
    return entry;
  }
};

// The URLs of a CE3 list in rank order.
std::vector<std::u16string> Ranked(const CE3URLElement& list) {
  std::vector<std::u16string> urls;
  list.ForEachRanked([&](int32_t index) { urls.push_back(list.Entries()[static_cast<size_t>(index)]->URL); });
  return urls;
}

TEST_F(ElementsTest, FullListRefusesTiesAndEvictsTheLastForABetterEntry) {
  SetElementLimits(10, 3);
  std::vector<std::unique_ptr<E1Entry>> owned;
  CE3URLElement list;
  for (auto [url, visits] : {std::pair{u"a", 5}, {u"b", 9}, {u"c", 2}}) {
    owned.push_back(Entry(url, visits));
    list.AddEntry(owned.back().get(), true);
  }
  EXPECT_EQ(Ranked(list), (std::vector<std::u16string>{u"b", u"a", u"c"}));
  // Equal to the smallest: refused, nothing changes.
  owned.push_back(Entry(u"d", 2));
  list.AddEntry(owned.back().get(), true);
  EXPECT_EQ(list.Count(), 3);
  EXPECT_FALSE(list.FindURL(u"d"));
  // Best of all: "c" goes, the vector closes up, the new entry is last in
  // the vector and first in rank.
  owned.push_back(Entry(u"e", 20));
  list.AddEntry(owned.back().get(), true);
  ASSERT_EQ(list.Entries().size(), 3u);
  EXPECT_EQ(list.Entries()[2]->URL, u"e");
  EXPECT_EQ(Ranked(list), (std::vector<std::u16string>{u"e", u"b", u"a"}));
  EXPECT_FALSE(list.FindURL(u"c"));
  // A tie with a middle entry goes behind it, pushing out the last.
  owned.push_back(Entry(u"f", 9));
  list.AddEntry(owned.back().get(), true);
  EXPECT_EQ(Ranked(list), (std::vector<std::u16string>{u"e", u"b", u"f"}));
  // A URL held is not added twice.
  list.AddEntry(owned[1].get(), true);
  EXPECT_EQ(list.Count(), 3);
}

TEST_F(ElementsTest, ALimitOfOneKeepsTheBestEntryOnly) {
  SetElementLimits(10, 1);
  std::vector<std::unique_ptr<E1Entry>> owned;
  CE3URLElement list;
  owned.push_back(Entry(u"a", 3));
  list.AddEntry(owned.back().get(), true);
  EXPECT_EQ(list.Count(), 1);
  owned.push_back(Entry(u"b", 3));
  list.AddEntry(owned.back().get(), true);
  owned.push_back(Entry(u"c", 4));
  list.AddEntry(owned.back().get(), true);
  EXPECT_EQ(Ranked(list), std::vector<std::u16string>{u"c"});
  ASSERT_EQ(list.Entries().size(), 1u);
  EXPECT_FALSE(list.FindURL(u"a"));
}

TEST_F(ElementsTest, NoBoundBeforeTheLimitsAreSet) {
  SetElementLimits(-1, 0);
  std::vector<std::unique_ptr<E1Entry>> owned;
  CE3URLElement list;
  for (int i = 0; i < 40; ++i) {
    std::u16string url(2, u'u');
    url[1] = static_cast<char16_t>(u'A' + i);
    owned.push_back(Entry(url, i));
    list.AddEntry(owned.back().get(), false);
  }
  EXPECT_EQ(list.Count(), 40);
  EXPECT_EQ(Ranked(list).front(), owned.back()->URL);
}

TEST_F(ElementsTest, DomainsOfADayKeepTheEarliestFirstReached) {
  SetElementLimits(2, 15);
  CEURLDomainElement day;
  day.AddDomain(u"news.a.com/x", 300);
  day.AddDomain(u"b.com", 200);
  day.AddDomain(u"c.com/y", 400);  // later than both: no room
  EXPECT_EQ(day.FindDomain(u"c.com"), nullptr);
  day.AddDomain(u"www.a.com", 100);  // moves a.com first
  ASSERT_NE(day.FindDomain(u"a.com"), nullptr);
  EXPECT_EQ(day.FindDomain(u"a.com")->Time, 100);
  day.AddDomain(u"c.com", 150);  // earlier than b.com: b.com goes
  EXPECT_EQ(day.FindDomain(u"b.com"), nullptr);
  std::vector<std::u16string> order;
  day.ForEachRanked([&](int32_t index) { order.push_back(day.Entries()[static_cast<size_t>(index)]->MainDomain); });
  EXPECT_EQ(order, (std::vector<std::u16string>{u"a.com", u"c.com"}));
  day.AddDomain(u"", 1);  // no host: nothing
  day.AddDomain(u"c.com", 150);  // equal time: nothing
  EXPECT_EQ(day.Entries().size(), 2u);

  // A URL whose main domain is not in the day's list is not kept.
  CE1URLElement list;
  list.AddEntry(day, u"B", u"b.com/page", u"http://b.com/page", true, 5, 9);
  list.AddEntry(day, u"A", u"a.com/page", u"http://a.com/page", true, 5, 9);
  ASSERT_EQ(list.Entries().size(), 1u);
  EXPECT_EQ(list.Entries()[0]->URL, u"a.com/page");
}

TEST_F(ElementsTest, ScoresRoundHalfUp) {
  EXPECT_EQ(CH1URLElement::RoundScore(319.5f), 320);
  EXPECT_EQ(CH1URLElement::RoundScore(319.49f), 319);
  EXPECT_EQ(CH1URLElement::RoundScore(0.0f), 0);
  // Out of the column's range: held at the bound instead of undefined.
  EXPECT_EQ(CH1URLElement::RoundScore(1e10f), 2147483647);
  EXPECT_EQ(CH1URLElement::RoundScore(-1e10f), -2147483647 - 1);
  EXPECT_EQ(CH1URLElement::RoundScore(std::numeric_limits<float>::quiet_NaN()), 0);
  CH1URLElement scored;
  scored.AddEntry(u"N", u"a.com", u"http://a.com/", 1, 3, 1, 61.2f, false);
  scored.AddEntry(u"N", u"a.com", u"http://a.com/", 2, 3, 1, 99.0f, true);
  ASSERT_EQ(scored.Entries().size(), 1u);
  EXPECT_EQ(scored.FindURL(u"a.com")->Score, 61);
}

}  // namespace
}  // namespace corvane
