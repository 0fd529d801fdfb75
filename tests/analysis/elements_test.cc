// The bounded ordered lists of the table builders.

#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <random>

#include "analysis/domain_element.h"
#include "analysis/element_base.h"
#include "analysis/h1_element.h"
#include "analysis/url_elements.h"
#include "common/utf.h"

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

// The order a list must have, worked out the plain way: walk from the
// first entry to the first one the new key goes in front of; a full list
// refuses a key that would go last and otherwise drops its last entry.
// Entries are named by text; `ahead(held, fresh)` says fresh goes in front.
template <class Ahead>
class RankModel {
 public:
  RankModel(int32_t max, Ahead ahead) : m_max(max), m_ahead(ahead) {}

  bool Insert(const std::u16string& name, int64_t key) {
    size_t place = 0;
    while (place < m_ranked.size() && !m_ahead(m_ranked[place].second, key)) ++place;
    bool full = m_max >= 1 && m_ranked.size() == static_cast<size_t>(m_max);
    if (full && place == m_ranked.size()) return false;
    if (full) {
      m_arrival.erase(std::find(m_arrival.begin(), m_arrival.end(), m_ranked.back().first));
      m_ranked.pop_back();
      place = std::min(place, m_ranked.size());
    }
    m_ranked.insert(m_ranked.begin() + static_cast<ptrdiff_t>(place), {name, key});
    m_arrival.push_back(name);
    return true;
  }

  // Moves a held entry to where its new key ranks; false when not held.
  bool Move(const std::u16string& name, int64_t key) {
    auto held = std::find_if(m_ranked.begin(), m_ranked.end(), [&](const auto& entry) { return entry.first == name; });
    if (held == m_ranked.end()) return false;
    m_ranked.erase(held);
    size_t place = 0;
    while (place < m_ranked.size() && !m_ahead(m_ranked[place].second, key)) ++place;
    m_ranked.insert(m_ranked.begin() + static_cast<ptrdiff_t>(place), {name, key});
    return true;
  }

  std::vector<std::u16string> Ranked() const {
    std::vector<std::u16string> names;
    for (const auto& entry : m_ranked) names.push_back(entry.first);
    return names;
  }
  const std::vector<std::u16string>& Arrival() const { return m_arrival; }
  const std::vector<std::pair<std::u16string, int64_t>>& Entries() const { return m_ranked; }

 private:
  int32_t m_max;
  Ahead m_ahead;
  std::vector<std::pair<std::u16string, int64_t>> m_ranked;
  std::vector<std::u16string> m_arrival;
};

TEST_F(ElementsTest, URLListKeepsTheOrderOfTheWalkWithManyTiesForEveryLimit) {
  std::mt19937 random(7);
  for (int32_t limit : {0, 1, 2, 5, 15}) {
    SetElementLimits(-1, limit);
    auto ahead = [](int64_t held, int64_t fresh) { return held < fresh; };
    RankModel model(limit, ahead);
    std::vector<std::unique_ptr<E1Entry>> owned;
    CE3URLElement list;
    for (int i = 0; i < 400; ++i) {
      // Six counts only, so most new entries tie with some held ones.
      int32_t visits = static_cast<int32_t>(random() % 6);
      owned.push_back(Entry(u"u" + FromUtf8(std::to_string(i)), visits));
      list.AddEntry(owned.back().get(), false);
      model.Insert(owned.back()->URL, visits);
      ASSERT_EQ(Ranked(list), model.Ranked()) << "limit " << limit << " after " << i;
      std::vector<std::u16string> vector;
      for (const E1Entry* entry : list.Entries()) vector.push_back(entry->URL);
      ASSERT_EQ(vector, model.Arrival()) << "limit " << limit << " after " << i;
    }
  }
}

TEST_F(ElementsTest, DomainListKeepsTheOrderOfTheWalkAndFindsItsDomainsAcrossEvictions) {
  std::mt19937 random(11);
  for (int32_t limit : {0, 1, 3, 6}) {
    SetElementLimits(limit, -1);
    auto ahead = [](int64_t held, int64_t fresh) { return held > fresh; };
    RankModel model(limit, ahead);
    CEURLDomainElement day;
    for (int i = 0; i < 400; ++i) {
      std::u16string domain = u"d" + FromUtf8(std::to_string(random() % 12)) + u".com";
      int64_t time = static_cast<int64_t>(random() % 8);
      day.AddDomain(u"www." + domain + u"/page", time);
      auto held = std::find_if(model.Entries().begin(), model.Entries().end(),
                               [&](const auto& entry) { return entry.first == domain; });
      if (held == model.Entries().end()) {
        model.Insert(domain, time);
      } else if (time < held->second) {
        model.Move(domain, time);
      }
      std::vector<std::u16string> ranked;
      day.ForEachRanked([&](int32_t index) { ranked.push_back(day.Entries()[static_cast<size_t>(index)]->MainDomain); });
      ASSERT_EQ(ranked, model.Ranked()) << "limit " << limit << " after " << i;
      // Every domain is found exactly when it is held, at its place in the
      // vector, with its earliest time.
      for (int d = 0; d < 12; ++d) {
        std::u16string name = u"d" + FromUtf8(std::to_string(d)) + u".com";
        auto inModel = std::find_if(model.Entries().begin(), model.Entries().end(),
                                    [&](const auto& entry) { return entry.first == name; });
        int32_t position = -1;
        DomainEntry* found = day.FindDomain(name, &position);
        ASSERT_EQ(found != nullptr, inModel != model.Entries().end()) << "limit " << limit << " " << i;
        if (found == nullptr) continue;
        EXPECT_EQ(found->Time, inModel->second);
        EXPECT_EQ(day.Entries()[static_cast<size_t>(position)].get(), found);
        auto arrival = std::find(model.Arrival().begin(), model.Arrival().end(), name);
        EXPECT_EQ(position, arrival - model.Arrival().begin());
      }
    }
  }
}

// A list whose comparisons are counted.
class CountingList : public CElementBase {
 public:
  explicit CountingList(int32_t max) : m_max(max) {}
  void Add(int32_t key) {
    if (TryInsert(key)) m_keys.push_back(key);
  }
  int64_t Compares() const { return m_compares; }
  const std::vector<int32_t>& Keys() const { return m_keys; }

 protected:
  int32_t GetMaxCount() const override { return m_max; }
  int32_t Compare(int32_t /*index*/, intptr_t key, intptr_t newKey) const override {
    ++m_compares;
    return key < newKey ? 1 : key > newKey ? -1 : 0;
  }
  void RemoveAt(int32_t index) override { m_keys.erase(m_keys.begin() + index); }

 private:
  int32_t m_max;
  mutable int64_t m_compares = 0;
  std::vector<int32_t> m_keys;
};

TEST_F(ElementsTest, TiesAndEntriesRankingLastGoInWithOneComparison) {
  constexpr int kEntries = 40000;
  // Without a bound: equal keys, then falling keys, each against the last
  // node only. A walk from the head would take some 800 million steps.
  CountingList unbounded(0);
  for (int i = 0; i < kEntries; ++i) unbounded.Add(5);
  for (int i = 0; i < kEntries; ++i) unbounded.Add(4 - i);
  EXPECT_EQ(unbounded.Count(), 2 * kEntries);
  EXPECT_LE(unbounded.Compares(), 2 * kEntries);
  // The ties stand in order of arrival, in front of the lower keys.
  std::vector<int32_t> order;
  unbounded.ForEachRanked([&](int32_t index) { order.push_back(index); });
  ASSERT_EQ(order.size(), static_cast<size_t>(2 * kEntries));
  for (int i = 0; i < 2 * kEntries; ++i) ASSERT_EQ(order[static_cast<size_t>(i)], i);
  // A full list refuses a tie with its last node after one comparison.
  CountingList full(15);
  for (int i = 0; i < kEntries; ++i) full.Add(5);
  EXPECT_EQ(full.Count(), 15);
  EXPECT_LE(full.Compares(), kEntries);
  // A key ranking first still walks only as far as its place.
  full.Add(9);
  std::vector<int32_t> expected(14, 5);
  expected.push_back(9);
  EXPECT_EQ(full.Keys(), expected);
}

TEST_F(ElementsTest, KeysInRandomOrderFindTheirPlaceInLogarithmicSteps) {
  constexpr int kEntries = 40000;
  std::mt19937 random(3);
  CountingList list(0);
  std::vector<int32_t> keys;
  for (int i = 0; i < kEntries; ++i) {
    keys.push_back(static_cast<int32_t>(random() % 1000));
    list.Add(keys.back());
  }
  // A walk from the head would take some 400 million comparisons; the
  // levels take a few dozen per key.
  EXPECT_LE(list.Compares(), 64 * kEntries);
  // Falling keys, ties in order of arrival.
  std::vector<int32_t> order;
  list.ForEachRanked([&](int32_t index) { order.push_back(index); });
  ASSERT_EQ(order.size(), static_cast<size_t>(kEntries));
  EXPECT_TRUE(std::is_sorted(order.begin(), order.end(), [&](int32_t a, int32_t b) {
    return keys[static_cast<size_t>(a)] > keys[static_cast<size_t>(b)] ||
           (keys[static_cast<size_t>(a)] == keys[static_cast<size_t>(b)] && a < b);
  }));
}

TEST_F(ElementsTest, FortyThousandDomainsOfADayWithoutABound) {
  SetElementLimits(0, 0);
  CEURLDomainElement day;
  for (int i = 0; i < 40000; ++i) day.AddDomain(u"site" + FromUtf8(std::to_string(i)) + u".com/", 1000 + i);
  ASSERT_EQ(day.Entries().size(), 40000u);
  int32_t position = 0;
  ASSERT_NE(day.FindDomain(u"site39999.com", &position), nullptr);
  EXPECT_EQ(position, 39999);
  // An earlier visit moves a domain to the front.
  day.AddDomain(u"site20000.com/x", 5);
  int32_t first = -1;
  day.ForEachRanked([&](int32_t index) {
    if (first < 0) first = index;
  });
  EXPECT_EQ(first, 20000);
  EXPECT_EQ(day.FindDomain(u"site20000.com")->Time, 5);
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
  EXPECT_EQ(CH1URLElement::RoundScore(-std::numeric_limits<float>::quiet_NaN()), 0);
  EXPECT_EQ(CH1URLElement::RoundScore(std::numeric_limits<float>::infinity()), 2147483647);
  EXPECT_EQ(CH1URLElement::RoundScore(-std::numeric_limits<float>::infinity()), -2147483647 - 1);
  // The largest float below 2^31 is kept; -2^31 plus a half cuts to -2^31 + 1.
  EXPECT_EQ(CH1URLElement::RoundScore(2147483520.0f), 2147483520);
  EXPECT_EQ(CH1URLElement::RoundScore(-2147483648.0f), -2147483647);
  EXPECT_EQ(CH1URLElement::RoundScore(-0.7f), 0);
  CH1URLElement scored;
  scored.AddEntry(u"N", u"a.com", u"http://a.com/", 1, 3, 1, 61.2f, false);
  scored.AddEntry(u"N", u"a.com", u"http://a.com/", 2, 3, 1, 99.0f, true);
  ASSERT_EQ(scored.Entries().size(), 1u);
  EXPECT_EQ(scored.FindURL(u"a.com")->Score, 61);
}

}  // namespace
}  // namespace corvane
