#include "harvest/item_store.h"

#include <algorithm>
#include <cstring>
#include <queue>
#include <tuple>

#include "common/local_clock.h"
#include "common/utf.h"

namespace corvane::harvest {
namespace {

// Characters of a text block: 256 KiB, a few thousand URLs with titles.
constexpr size_t kBlockChars = 128 * 1024;
constexpr int64_t kMicrosPerSecond = 1000000;

}  // namespace

void VisitItem::GetVisitTime(SYSTEMTIME* lpTime) {
  if (lpTime != nullptr) UnixMicrosToLocalTime(m_unixMicros, lpTime);
}

const char16_t* ItemStore::Keep(std::u16string_view text) {
  if (text.empty()) return u"";
  if (auto found = m_texts.find(text); found != m_texts.end()) return found->data();
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
  m_texts.insert(std::u16string_view(copy, text.size()));
  return copy;
}

void ItemStore::StartSource(uint32_t browser, std::string_view pathPrefix) {
  m_browser = browser;
  m_pathPrefix = FromUtf8(pathPrefix);
  m_pageIds.Clear();
  m_sourceStarts.push_back(m_visits.size());
  m_sourceFavoritesStart = m_favorites.size();
}

void ItemStore::AbandonSource() {
  if (m_sourceStarts.empty()) return;
  m_visits.erase(m_visits.begin() + static_cast<std::ptrdiff_t>(m_sourceStarts.back()), m_visits.end());
  for (size_t i = m_sourceFavoritesStart; i < m_favorites.size(); ++i) m_favoriteURLs.erase(m_favorites[i].GetURL());
  m_favorites.erase(m_favorites.begin() + static_cast<std::ptrdiff_t>(m_sourceFavoritesStart), m_favorites.end());
  m_pageIds.Clear();
}

const PageTexts* PageIndex::Find(int64_t pageId) const {
  if (pageId >= 0 && static_cast<uint64_t>(pageId) < m_dense.size() && m_dense[static_cast<size_t>(pageId)] != nullptr) {
    return m_dense[static_cast<size_t>(pageId)];
  }
  if (m_sparse.empty()) return nullptr;
  auto found = m_sparse.find(pageId);
  return found == m_sparse.end() ? nullptr : found->second;
}

void PageIndex::Set(int64_t pageId, const PageTexts* page) {
  ++m_count;
  // Numbers up to a quarter of a million, or four times the pages kept.
  const uint64_t denseLimit = std::max<uint64_t>(4 * m_count, uint64_t{1} << 18);
  if (pageId < 0 || static_cast<uint64_t>(pageId) >= denseLimit) {
    m_sparse.insert_or_assign(pageId, page);
    return;
  }
  const size_t index = static_cast<size_t>(pageId);
  if (index >= m_dense.size()) m_dense.resize(index + 1, nullptr);
  m_dense[index] = page;
  if (!m_sparse.empty()) m_sparse.erase(pageId);
}

void PageIndex::Clear() {
  m_dense.clear();
  m_sparse.clear();
  m_count = 0;
}

const PageTexts* ItemStore::FindPage(int64_t pageId) const { return m_pageIds.Find(pageId); }

const PageTexts& ItemStore::KeepPage(int64_t pageId, std::u16string_view name, std::u16string_view url,
                                     uint32_t typedCount) {
  const uint16_t source = static_cast<uint16_t>(m_sourceStarts.empty() ? 0 : m_sourceStarts.size() - 1);
  const PageTexts& page = m_pages.emplace_back(PageTexts{Keep(name), Keep(url), typedCount, m_browser, source});
  m_pageIds.Set(pageId, &page);
  return page;
}

void ItemStore::AddVisit(const PageTexts& page, int64_t unixMicros) {
  m_visits.emplace_back(&page, unixMicros);
}

void ItemStore::AddFavorite(std::u16string_view name, std::u16string_view url, std::u16string_view path) {
  const char16_t* keptURL = Keep(url);
  if (!m_favoriteURLs.insert(keptURL).second) return;
  const char16_t* keptPath = m_pathPrefix.empty() ? Keep(path) : Keep(m_pathPrefix + std::u16string(path));
  m_favorites.emplace_back(m_browser, Keep(name), keptURL, keptPath);
}

size_t ItemStore::FindSourceVisit(int64_t unixMicros, const PageTexts* page) const {
  // The source's visits are in time order.
  const size_t start = m_sourceStarts.empty() ? 0 : m_sourceStarts.back();
  auto it = std::lower_bound(m_visits.begin() + static_cast<std::ptrdiff_t>(start), m_visits.end(), unixMicros,
                             [](const VisitItem& visit, int64_t at) { return visit.UnixMicros() < at; });
  for (; it != m_visits.end() && it->UnixMicros() == unixMicros; ++it) {
    if (it->Page() == page) return static_cast<size_t>(it - m_visits.begin()) - start;
  }
  return std::string::npos;
}

void ItemStore::DropSourceVisits(std::vector<size_t> places) {
  if (places.empty()) return;
  std::sort(places.begin(), places.end());
  const size_t start = m_sourceStarts.empty() ? 0 : m_sourceStarts.back();
  size_t kept = start + places.front();
  for (size_t i = kept, next = 0; i < m_visits.size(); ++i) {
    if (next < places.size() && places[next] == i - start) {
      while (next < places.size() && places[next] == i - start) ++next;
      continue;
    }
    m_visits[kept++] = m_visits[i];
  }
  m_visits.erase(m_visits.begin() + static_cast<std::ptrdiff_t>(kept), m_visits.end());
}

void ItemStore::MergeSources() {
  m_order.clear();
  m_merged = m_sourceStarts.size() > 1;
  if (!m_merged) return;
  // The next visit of each source, earliest first; on a tie the earlier
  // source. A heap of one entry per source: n log k for n visits.
  using Next = std::tuple<int64_t, uint16_t, size_t>;
  std::priority_queue<Next, std::vector<Next>, std::greater<Next>> heads;
  std::vector<size_t> ends(m_sourceStarts.begin() + 1, m_sourceStarts.end());
  ends.push_back(m_visits.size());
  for (size_t source = 0; source < m_sourceStarts.size(); ++source) {
    const size_t start = m_sourceStarts[source];
    if (start < ends[source]) heads.emplace(m_visits[start].UnixMicros(), static_cast<uint16_t>(source), start);
  }
  m_order.reserve(m_visits.size());
  // The visits kept in the second being merged, to find a copy of one.
  std::vector<const VisitItem*> second;
  int64_t secondOf = -1;
  while (!heads.empty()) {
    const auto [micros, source, index] = heads.top();
    heads.pop();
    if (index + 1 < ends[source]) heads.emplace(m_visits[index + 1].UnixMicros(), source, index + 1);
    const VisitItem& visit = m_visits[index];
    if (micros / kMicrosPerSecond != secondOf) {
      secondOf = micros / kMicrosPerSecond;
      second.clear();
    }
    const uint16_t from = source;  // a binding that older compilers let no lambda capture
    const bool copy = std::any_of(second.begin(), second.end(), [&](const VisitItem* kept) {
      return kept->Source() != from && kept->KeptURL() == visit.KeptURL();
    });
    if (copy) continue;
    second.push_back(&visit);
    m_order.push_back(static_cast<uint32_t>(index));
  }
}

size_t ItemStore::Size() const { return (m_merged ? m_order.size() : m_visits.size()) + m_favorites.size(); }

size_t ItemStore::SourceSize() const {
  const size_t visits = m_visits.size() - (m_sourceStarts.empty() ? 0 : m_sourceStarts.back());
  return visits + m_favorites.size() - m_sourceFavoritesStart;
}

IExtractItem* ItemStore::At(size_t index) {
  const size_t visits = m_merged ? m_order.size() : m_visits.size();
  if (index < visits) return &m_visits[m_merged ? m_order[index] : index];
  return &m_favorites[index - visits];
}

void ItemStore::Clear() {
  m_visits.clear();
  m_favorites.clear();
  m_order.clear();
  m_merged = false;
  m_sourceStarts.clear();
  m_sourceFavoritesStart = 0;
  m_pathPrefix.clear();
  m_pageIds.Clear();
  m_pages.clear();
  m_texts.clear();
  m_favoriteURLs.clear();
  m_blocks.clear();
  m_blockUsed = 0;
  m_blockSize = 0;
}

}  // namespace corvane::harvest
