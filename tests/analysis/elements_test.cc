// The bounded ordered lists of the table builders: their order with ties
// and evictions, the cost of finding a place, and the rounding of scores.

#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <random>

#include "analysis/element_base.h"
#include "analysis/h1_element.h"

namespace corvane {
namespace {

class ElementsTest : public ::testing::Test {
 protected:
  ~ElementsTest() override { SetElementLimits(-1, -1); }
};

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
