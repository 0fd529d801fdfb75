// The bounded ordered lists of the table builders, against a plain model of
// their order, and the cost of finding a place.

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
};

// The order a list must have, worked out the plain way: walk from the first
// entry to the first one the new key goes in front of; a full list refuses a
// key that would go last and otherwise drops its last entry. A held entry
// given a new key moves to where the key ranks. `ahead(held, fresh)` says
// fresh goes in front.
template <class Ahead>
class RankModel {
 public:
  RankModel(int32_t max, Ahead ahead) : m_max(max), m_ahead(ahead) {}

  void Place(const std::u16string& name, int64_t key) {
    auto held = std::ranges::find(m_ranked, name, &Entry::first);
    const bool fresh = held == m_ranked.end();
    if (!fresh) m_ranked.erase(held);
    const auto place = std::ranges::find_if(m_ranked, [&](const Entry& entry) { return m_ahead(entry.second, key); }) -
                       m_ranked.begin();
    if (fresh && m_max >= 1 && m_ranked.size() == static_cast<size_t>(m_max)) {
      if (place == std::ssize(m_ranked)) return;
      std::erase(arrival, m_ranked.back().first);
      m_ranked.pop_back();
    }
    m_ranked.insert(m_ranked.begin() + place, {name, key});
    if (fresh) arrival.push_back(name);
  }
  // The key of a held entry; the largest key when it is not held.
  int64_t Key(const std::u16string& name) const {
    auto held = std::ranges::find(m_ranked, name, &Entry::first);
    return held == m_ranked.end() ? std::numeric_limits<int64_t>::max() : held->second;
  }
  std::vector<std::u16string> Ranked() const {
    std::vector<std::u16string> names;
    for (const Entry& entry : m_ranked) names.push_back(entry.first);
    return names;
  }

  // Names in the order they came in, as the list's vector keeps them.
  std::vector<std::u16string> arrival;

 private:
  using Entry = std::pair<std::u16string, int64_t>;
  int32_t m_max;
  Ahead m_ahead;
  std::vector<Entry> m_ranked;
};

template <class List, class Name>
std::vector<std::u16string> Ranked(const List& list, Name name) {
  std::vector<std::u16string> names;
  list.ForEachRanked([&](int32_t index) { names.push_back(name(*list.Entries()[static_cast<size_t>(index)])); });
  return names;
}

TEST_F(ElementsTest, URLListKeepsTheOrderOfTheWalkWithTiesRepeatsAndEvictionsForEveryLimit) {
  std::mt19937 random(7);
  for (int32_t limit : {0, 1, 2, 5, 15}) {
    SCOPED_TRACE(limit);
    SetElementLimits(-1, limit);
    RankModel model(limit, [](int64_t held, int64_t fresh) { return held < fresh; });
    std::vector<std::unique_ptr<E1Entry>> owned;
    CE3URLElement list;
    for (int i = 0; i < 400; ++i) {
      // Six counts only, so most new entries tie with some held ones; every
      // fifth entry comes again, which a held URL refuses.
      if (i % 5 != 4) {
        owned.push_back(std::make_unique<E1Entry>());
        owned.back()->URL = u"u" + FromUtf8(std::to_string(i));
        owned.back()->VisitCount = static_cast<int32_t>(random() % 6);
      }
      E1Entry* entry = i % 5 != 4 ? owned.back().get() : owned[random() % owned.size()].get();
      const bool held = model.Key(entry->URL) != std::numeric_limits<int64_t>::max();
      ASSERT_EQ(list.FindURL(entry->URL), held) << i;
      list.AddEntry(entry, true);
      if (!held) model.Place(entry->URL, entry->VisitCount);
      ASSERT_EQ(Ranked(list, [](const E1Entry& e) { return e.URL; }), model.Ranked()) << i;
      std::vector<std::u16string> vector;
      for (const E1Entry* kept : list.Entries()) vector.push_back(kept->URL);
      ASSERT_EQ(vector, model.arrival) << i;
    }
  }
}

TEST_F(ElementsTest, DomainListKeepsTheOrderOfTheWalkAndFindsItsDomainsAcrossEvictions) {
  std::mt19937 random(11);
  for (int32_t limit : {0, 1, 3, 6}) {
    SCOPED_TRACE(limit);
    SetElementLimits(limit, -1);
    RankModel model(limit, [](int64_t held, int64_t fresh) { return held > fresh; });
    CEURLDomainElement day;
    for (int i = 0; i < 400; ++i) {
      std::u16string domain = u"d" + FromUtf8(std::to_string(random() % 12)) + u".com";
      int64_t time = static_cast<int64_t>(random() % 8);
      day.AddDomain(u"www." + domain + u"/page", time);
      // An earlier visit moves a held domain forward; a later one is nothing.
      if (time < model.Key(domain)) model.Place(domain, time);
      ASSERT_EQ(Ranked(day, [](const DomainEntry& e) { return e.MainDomain; }), model.Ranked()) << i;
      // Every domain is found exactly when it is held, at its place in the
      // vector, with its earliest time.
      for (int d = 0; d < 12; ++d) {
        std::u16string name = u"d" + FromUtf8(std::to_string(d)) + u".com";
        int32_t position = -1;
        DomainEntry* found = day.FindDomain(name, &position);
        auto arrival = std::find(model.arrival.begin(), model.arrival.end(), name);
        ASSERT_EQ(found != nullptr, arrival != model.arrival.end()) << i << " " << d;
        if (found == nullptr) continue;
        EXPECT_EQ(found->Time, model.Key(name));
        EXPECT_EQ(day.Entries()[static_cast<size_t>(position)].get(), found);
        EXPECT_EQ(position, arrival - model.arrival.begin());
      }
    }
  }
}

TEST_F(ElementsTest, URLListOfADayKeepsOnlyURLsWhoseMainDomainTheDayHolds) {
  CEURLDomainElement day;
  day.AddDomain(u"news.a.com/x", 300);
  day.AddDomain(u"", 1);  // no host: nothing
  CE1URLElement list;
  list.AddEntry(day, u"B", u"b.com/page", u"http://b.com/page", true, 5, 9);
  list.AddEntry(day, u"A", u"a.com/page", u"http://a.com/page", true, 5, 9);
  EXPECT_EQ(Ranked(day, [](const DomainEntry& e) { return e.MainDomain; }), std::vector<std::u16string>{u"a.com"});
  ASSERT_EQ(list.Entries().size(), 1u);
  EXPECT_EQ(list.Entries()[0]->URL, u"a.com/page");
}

// A list whose comparisons are counted.
class CountingList : public CElementBase {
 public:
  explicit CountingList(int32_t max) : m_max(max) {}
  void Add(int32_t key) {
    if (TryInsert(key)) keys.push_back(key);
  }
  std::vector<int32_t> Order() const {
    std::vector<int32_t> order;
    ForEachRanked([&](int32_t index) { order.push_back(index); });
    return order;
  }
  mutable int64_t compares = 0;
  std::vector<int32_t> keys;

 protected:
  int32_t GetMaxCount() const override { return m_max; }
  int32_t Compare(int32_t /*index*/, intptr_t key, intptr_t newKey) const override {
    ++compares;
    return key < newKey ? 1 : key > newKey ? -1 : 0;
  }
  void RemoveAt(int32_t index) override { keys.erase(keys.begin() + index); }

 private:
  int32_t m_max;
};

TEST_F(ElementsTest, EntriesFindTheirPlaceInFewComparisons) {
  constexpr int kEntries = 40000;
  // Ties and keys ranking last go in after one comparison with the last
  // node; a walk from the head would take some 800 million steps. Ties
  // stand in order of arrival, in front of the lower keys.
  CountingList falling(0);
  for (int i = 0; i < kEntries; ++i) falling.Add(5);
  for (int i = 0; i < kEntries; ++i) falling.Add(4 - i);
  EXPECT_LE(falling.compares, 2 * kEntries);
  std::vector<int32_t> order = falling.Order();
  ASSERT_EQ(order.size(), static_cast<size_t>(2 * kEntries));
  for (int i = 0; i < 2 * kEntries; ++i) ASSERT_EQ(order[static_cast<size_t>(i)], i);
  // A full list refuses a tie with its last node after one comparison; a
  // key ranking first walks only as far as its place.
  CountingList full(15);
  for (int i = 0; i < kEntries; ++i) full.Add(5);
  EXPECT_LE(full.compares, kEntries);
  full.Add(9);
  EXPECT_EQ(full.keys.size(), 15u);
  EXPECT_EQ(full.keys.back(), 9);
  // Keys in random order take a few dozen comparisons each.
  std::mt19937 random(3);
  CountingList list(0);
  for (int i = 0; i < kEntries; ++i) list.Add(static_cast<int32_t>(random() % 1000));
  EXPECT_LE(list.compares, 64 * kEntries);
  order = list.Order();
  EXPECT_TRUE(std::is_sorted(order.begin(), order.end(), [&](int32_t a, int32_t b) {
    const int32_t keyA = list.keys[static_cast<size_t>(a)], keyB = list.keys[static_cast<size_t>(b)];
    return keyA > keyB || (keyA == keyB && a < b);
  }));
}

TEST_F(ElementsTest, ScoresRoundHalfUpAndAreHeldToThirtyTwoBits) {
  constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();
  constexpr float kInfinity = std::numeric_limits<float>::infinity();
  const std::pair<float, int32_t> kCases[] = {
      {319.5f, 320}, {319.49f, 319}, {0.0f, 0}, {-0.7f, 0}, {1e10f, 2147483647}, {-1e10f, -2147483647 - 1},
      {kNaN, 0}, {-kNaN, 0}, {kInfinity, 2147483647}, {-kInfinity, -2147483647 - 1},
      // The largest float below 2^31 is kept; -2^31 plus a half cuts to -2^31 + 1.
      {2147483520.0f, 2147483520}, {-2147483648.0f, -2147483647},
  };
  for (const auto& [score, rounded] : kCases) EXPECT_EQ(CH1URLElement::RoundScore(score), rounded) << score;
  // The first entry of a URL stays.
  CH1URLElement scored;
  scored.AddEntry(u"N", u"a.com", u"http://a.com/", 1, 3, 1, 61.2f, false);
  scored.AddEntry(u"N", u"a.com", u"http://a.com/", 2, 3, 1, 99.0f, true);
  ASSERT_EQ(scored.Entries().size(), 1u);
  EXPECT_EQ(scored.FindURL(u"a.com")->Score, 61);
}

}  // namespace
}  // namespace corvane
