// item_store.h: the items of one delivery and their texts.
//
// A heavy user's history is a hundred thousand visits and more, of a few
// ten thousand pages. Items that each held three strings of their own would
// cost three allocations a visit, more than reading the visit does. The
// store keeps its items in a deque, whose elements never move, and every
// text in large blocks, each text followed by its terminator, so that the
// pointers that the items hand out stay valid until Clear. The title and
// address of a page are kept once, however many visits share them.

#ifndef CORVANE_HARVEST_ITEM_STORE_H_
#define CORVANE_HARVEST_ITEM_STORE_H_

#include <cstddef>
#include <cstdint>
#include <deque>
#include <memory>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "harvest/harvest_item.h"

namespace corvane::harvest {

class ItemStore {
 public:
  ItemStore() = default;
  ItemStore(const ItemStore&) = delete;
  ItemStore& operator=(const ItemStore&) = delete;

  // A copy of the text, with its terminator, that lives until Clear. The
  // empty text needs no copy.
  const char16_t* Keep(std::u16string_view text);

  // The kept texts of one page of the browser's history, by the browser's
  // own number of the page.
  struct PageTexts {
    const char16_t* name;
    const char16_t* url;
  };
  // Null for a page not kept yet.
  const PageTexts* FindPage(int64_t pageId) const;
  const PageTexts& KeepPage(int64_t pageId, std::u16string_view name, std::u16string_view url);

  // One visit of page: its count is 1, whatever the page's total.
  void AddVisit(uint32_t browser, const PageTexts& page, const SYSTEMTIME& time, uint32_t typedCount);
  void AddFavorite(uint32_t browser, std::u16string_view name, std::u16string_view url, std::u16string_view path);

  size_t Size() const { return m_items.size(); }
  HarvestItem* At(size_t index) { return &m_items[index]; }
  void Clear();

 private:
  std::deque<HarvestItem> m_items;
  std::unordered_map<int64_t, PageTexts> m_pages;
  std::vector<std::unique_ptr<char16_t[]>> m_blocks;
  size_t m_blockUsed = 0;
  size_t m_blockSize = 0;
};

}  // namespace corvane::harvest

#endif  // CORVANE_HARVEST_ITEM_STORE_H_
