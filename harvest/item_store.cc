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
    m_blocks.push_back(std::make_unique<char16_t[]>(m_blockSize));
    m_blockUsed = 0;
  }
  char16_t* copy = m_blocks.back().get() + m_blockUsed;
  std::memcpy(copy, text.data(), text.size() * sizeof(char16_t));
  copy[text.size()] = u'\0';
  m_blockUsed += needed;
  return copy;
}

void ItemStore::AddVisit(uint32_t browser, std::u16string_view name, std::u16string_view url, const SYSTEMTIME& time,
                         int32_t visitCount, uint32_t typedCount) {
  m_items.emplace_back(EXTRACT_HISTORY, browser, Keep(name), Keep(url), u"", time, visitCount, typedCount);
}

void ItemStore::AddFavorite(uint32_t browser, std::u16string_view name, std::u16string_view url,
                            std::u16string_view path) {
  m_items.emplace_back(EXTRACT_FAVORITES, browser, Keep(name), Keep(url), Keep(path), SYSTEMTIME{}, 0, 0);
}

void ItemStore::Clear() {
  m_items.clear();
  m_blocks.clear();
  m_blockUsed = 0;
  m_blockSize = 0;
}

}  // namespace corvane::harvest
