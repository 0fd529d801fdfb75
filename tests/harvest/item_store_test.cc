// The store of a delivery: the visits of several sources merged into one
// stream in time order, where a synced copy of a visit counts once.

#include "harvest/item_store.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace corvane::harvest {
namespace {

// Three sources, read one after the other: the second shares a synced copy
// of a visit with the first (same URL, same second, another millisecond),
// the third fails and is abandoned. A source's own two visits of one URL
// in one second both count; the first and the last instant a visit may
// have come back whole.
TEST(ItemStoreTest, SourcesMergeInTimeOrderAndASyncedCopyCountsOnce) {
  ItemStore store;
  const int64_t kSecond = 1000000;
  const int64_t kLast = 253402300799999999;  // 9999-12-31 23:59:59.999999
  store.StartSource(BROWSER_CHROME);
  const PageTexts& a = store.KeepPage(1, u"A", u"https://a.example/", 2);
  store.AddVisit(a, 10 * kSecond);
  store.AddVisit(a, 10 * kSecond + 500);
  store.AddVisit(a, 30 * kSecond);
  store.AddVisit(a, kLast);
  store.StartSource(BROWSER_FIREFOX);
  EXPECT_EQ(store.FindPage(1), nullptr);  // page numbers are the source's own
  const PageTexts& b = store.KeepPage(1, u"B", u"https://b.example/", 0);
  const PageTexts& copy = store.KeepPage(2, u"A again", u"https://a.example/", 0);
  store.AddVisit(store.KeepPage(3, u"Zero", u"https://zero.example/", 0), 0);
  store.AddVisit(b, 5 * kSecond);
  store.AddVisit(copy, 30 * kSecond + 999);
  store.AddVisit(b, 30 * kSecond);
  store.StartSource(BROWSER_CHROME);
  store.AddVisit(store.KeepPage(9, u"Lost", u"https://lost.example/", 0), 1);
  store.AbandonSource();
  store.MergeSources();
  std::vector<std::string> stream;
  for (size_t i = 0; i < store.Size(); ++i) {
    IExtractItem* item = store.At(i);
    stream.push_back(std::string(1, static_cast<char>(item->GetName()[0])) + std::to_string(item->GetBrowser()) +
                     std::to_string(item->GetVisitCount()));
  }
  EXPECT_EQ(stream, (std::vector<std::string>{"Z641", "B641", "A21", "A21", "A21", "B641", "A21"}));
  EXPECT_EQ(store.At(2)->GetTypedCount(), 2u);
  // The sources wait packed, each visit a step from the one before: the
  // instants come back to the microsecond, the smallest and the largest.
  std::vector<int64_t> instants;
  for (size_t i = 0; i < store.Size(); ++i) instants.push_back(static_cast<VisitItem*>(store.At(i))->UnixMicros());
  EXPECT_EQ(instants, (std::vector<int64_t>{0, 5 * kSecond, 10 * kSecond, 10 * kSecond + 500, 30 * kSecond,
                                            30 * kSecond, kLast}));
}

}  // namespace
}  // namespace corvane::harvest
