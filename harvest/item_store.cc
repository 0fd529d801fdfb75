#include "harvest/item_store.h"

#include <algorithm>
#include <cstring>

namespace corvane::harvest {
namespace {

// Characters of a text block: 256 KiB, a few thousand URLs with titles.
constexpr size_t kBlockChars = 128 * 1024;

}  // namespace

const char16_t* ItemStore::Keep(std::u16string_view text) {
  if (text.empty()) return u"";
  const size_t needed = text.size() + 1;
  if (m_blocks.empty() || m_blockSize - m_blockUsed < needed) {
    // A text longer than a block gets a block of its own size.
    m_blockSize = std::max(kBlockChars, needed);
    // Every character of a block is written before it is read.
    m_blocks.push_back(std::make_unique_for_overwrite<char16_t[]>(m_blockSize));
    m_blockUsed = 0;
  }
  char16_t* copy = m_blocks.back().get() + m_blockUsed;
  std::memcpy(copy, text.data(), text.size() * sizeof(char16_t));
  copy[text.size()] = u'\0';
  m_blockUsed += needed;
  return copy;
}

const ItemStore::PageTexts* ItemStore::FindPage(int64_t pageId) const {
  auto found = m_pages.find(pageId);
  return found == m_pages.end() ? nullptr : &found->second;
}

const ItemStore::PageTexts& ItemStore::KeepPage(int64_t pageId, std::u16string_view name, std::u16string_view url) {
  return m_pages.insert_or_assign(pageId, PageTexts{Keep(name), Keep(url)}).first->second;
}

void ItemStore::AddVisit(uint32_t browser, const PageTexts& page, const SYSTEMTIME& time, uint32_t typedCount) {
  m_items.emplace_back(EXTRACT_HISTORY, browser, page.name, page.url, u"", time, 1, typedCount);
}

void ItemStore::AddFavorite(uint32_t browser, std::u16string_view name, std::u16string_view url,
                            std::u16string_view path) {
  m_items.emplace_back(EXTRACT_FAVORITES, browser, Keep(name), Keep(url), Keep(path), SYSTEMTIME{}, 0, 0);
}

void ItemStore::Clear() {
  m_items.clear();
  m_pages.clear();
  m_blocks.clear();
  m_blockUsed = 0;
  m_blockSize = 0;
}

}  // namespace corvane::harvest
