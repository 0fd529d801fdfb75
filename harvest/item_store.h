// item_store.h: the items of one delivery, from one or more profiles.
//
// A heavy user's history is a hundred thousand visits and more, of a few
// ten thousand pages. The store keeps its items in deques, whose elements
// never move, and every text once, in large blocks, each text followed by
// its terminator, so that the pointers that the items hand out stay valid
// until Clear. A text is kept once however many pages, visits and profiles
// share it.
//
// The profiles of a delivery are read one after the other, each a source:
// StartSource begins one, AbandonSource drops what a source that failed had
// added. Each source delivers its visits in time order; MergeSources then
// orders all visits by their instant (a visit of an earlier source first on
// a tie) and drops a visit that an earlier source holds for the same URL in
// the same second: a synced copy of one visit counts once. Favourites are
// delivered in the order read, a URL bookmarked twice once.
//
// While a profile is read, the browser's file and its cache take most of
// the memory. The visits of the sources read before it wait packed, a few
// bytes each (the step in time from the visit before and the page's
// place), and become items only when every file is closed: four profiles
// then cost little more at their peak than the largest one.

#ifndef CORVANE_HARVEST_ITEM_STORE_H_
#define CORVANE_HARVEST_ITEM_STORE_H_

#include <cstddef>
#include <cstdint>
#include <deque>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "harvest/harvest_item.h"

namespace corvane::harvest {

// The pages of one source by the browser's own number of a page. Those
// numbers are the row numbers of the browser's page table, 1 and up: a
// vector indexed by them finds a page in one step, where a hash map cost a
// sixth of reading a history. A number far beyond the pages kept so far
// (a damaged or sparse table) goes to a map instead, so that it costs no
// more memory than the map.
class PageIndex {
 public:
  const PageTexts* Find(int64_t pageId) const;
  void Set(int64_t pageId, const PageTexts* page);
  void Clear();

 private:
  std::vector<const PageTexts*> m_dense;
  std::unordered_map<int64_t, const PageTexts*> m_sparse;
  size_t m_count = 0;
};

class ItemStore {
 public:
  ItemStore() = default;
  ItemStore(const ItemStore&) = delete;
  ItemStore& operator=(const ItemStore&) = delete;

  // A copy of the text, with its terminator, that lives until Clear; the
  // same text asked for again gives the same copy.
  const char16_t* Keep(std::u16string_view text);

  // Begins a source whose items carry the browser value; a favourite's path
  // is led by pathPrefix ("Brave/") when one is given.
  void StartSource(uint32_t browser, std::string_view pathPrefix = {});
  // Drops the items the current source added.
  void AbandonSource();

  // The pages of the current source, by the browser's own number of a page.
  // Null for a page not kept yet.
  const PageTexts* FindPage(int64_t pageId) const;
  const PageTexts& KeepPage(int64_t pageId, std::u16string_view name, std::u16string_view url, uint32_t typedCount);

  // A visit of the current source, at an instant in microseconds since
  // 1970 (UTC); the visits of a source come in time order.
  void AddVisit(const PageTexts& page, int64_t unixMicros);
  void AddFavorite(std::u16string_view name, std::u16string_view url, std::u16string_view path);

  // The place, among the current source's visits (from 0), of a visit of
  // the page at the instant; npos when there is none.
  size_t FindSourceVisit(int64_t unixMicros, const PageTexts* page) const;
  // Drops the current source's visits at these places.
  void DropSourceVisits(std::vector<size_t> places);

  // Orders the visits of all sources as one stream (see above).
  void MergeSources();

  size_t Size() const;
  IExtractItem* At(size_t index);
  // Items the current source added so far.
  size_t SourceSize() const;
  void Clear();

 private:
  // Packs the current source's visits and frees their items.
  void PackSource();

  // The current source's visits; after MergeSources, those of all sources.
  std::deque<VisitItem> m_visits;
  std::deque<FavoriteItem> m_favorites;
  // The visits of each source read before the current one, packed.
  std::vector<std::vector<uint8_t>> m_packed;
  size_t m_sources = 0;
  size_t m_sourceFavoritesStart = 0;
  uint32_t m_browser = 0;
  std::u16string m_pathPrefix;
  PageIndex m_pageIds;
  std::deque<PageTexts> m_pages;
  std::unordered_set<std::u16string_view> m_texts;
  std::unordered_set<const char16_t*> m_favoriteURLs;
  std::vector<std::unique_ptr<char16_t[]>> m_blocks;
  size_t m_blockUsed = 0;
  size_t m_blockSize = 0;
};

}  // namespace corvane::harvest

#endif  // CORVANE_HARVEST_ITEM_STORE_H_
