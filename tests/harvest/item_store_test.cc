// The store hands out pointers that must stay valid, and hold the same
// text, until it is cleared, however many texts follow and however long.

#include "harvest/item_store.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace corvane::harvest {
namespace {

TEST(ItemStoreTest, KeptTextsStayWhereTheyAreAcrossBlocks) {
  ItemStore store;
  std::vector<std::pair<const char16_t*, std::u16string>> kept;
  for (int i = 0; i < 20000; ++i) {
    std::u16string text = u"https://example.com/page/" + std::u16string(static_cast<size_t>(i % 97), u'x');
    kept.emplace_back(store.Keep(text), text);
  }
  // Longer than a block: it gets one of its own, and the next text another.
  for (const std::u16string& text : {std::u16string(300000, u'h'), std::u16string(u"after"), std::u16string()}) {
    kept.emplace_back(store.Keep(text), text);
  }
  for (const auto& [pointer, text] : kept) ASSERT_EQ(std::u16string(pointer), text);
}

TEST(ItemStoreTest, VisitsOfOnePageShareItsTexts) {
  ItemStore store;
  EXPECT_EQ(store.FindPage(7), nullptr);
  const ItemStore::PageTexts& page = store.KeepPage(7, u"Title", u"https://example.com/");
  SYSTEMTIME time{2026, 11, 1, 23, 9, 30, 0, 0};
  store.AddVisit(BROWSER_CHROME, page, time, 1);
  ASSERT_NE(store.FindPage(7), nullptr);
  store.AddVisit(BROWSER_CHROME, *store.FindPage(7), time, 1);
  store.AddFavorite(BROWSER_CHROME, u"Bookmark", u"https://b.example/", u"Bookmarks bar/Work");
  ASSERT_EQ(store.Size(), 3u);
  EXPECT_EQ(store.At(0)->GetURL(), store.At(1)->GetURL());
  EXPECT_EQ(std::u16string(store.At(1)->GetName()), u"Title");
  EXPECT_EQ(store.At(1)->GetKind(), static_cast<uint32_t>(EXTRACT_HISTORY));
  EXPECT_EQ(std::u16string(store.At(2)->GetPath()), u"Bookmarks bar/Work");
  EXPECT_EQ(store.At(2)->GetKind(), static_cast<uint32_t>(EXTRACT_FAVORITES));
  store.Clear();
  EXPECT_EQ(store.Size(), 0u);
  EXPECT_EQ(store.FindPage(7), nullptr);
}

}  // namespace
}  // namespace corvane::harvest
