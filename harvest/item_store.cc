#include "harvest/item_store.h"

#include <algorithm>
#include <cstring>
#include <queue>
#include <utility>

#include "common/local_clock.h"
#include "common/utf.h"

namespace corvane::harvest {
namespace {

// Characters of a text block: 256 KiB, a few thousand URLs with titles.
constexpr size_t kBlockChars = 128 * 1024;
constexpr int64_t kMicrosPerSecond = 1000000;

// Seven bits a byte, low bits first; the top bit says another byte follows.
void PutVarint(uint64_t value, std::vector<uint8_t>* lpBytes) {
  for (; value >= 0x80; value >>= 7) lpBytes->push_back(static_cast<uint8_t>(value | 0x80));
  lpBytes->push_back(static_cast<uint8_t>(value));
}

// The packed visits of one source, read back one after the other: each is
// its step in time from the visit before (zigzag, so that a step back
// costs no more than one forward) and its page's place.
class PackedVisits {
 public:
  explicit PackedVisits(const std::vector<uint8_t>& bytes) : m_at(bytes.data()), m_end(bytes.data() + bytes.size()) {}
  bool Next() {
    if (m_at == m_end) return false;
    const uint64_t step = Varint();
    // In unsigned arithmetic, as the step was taken: it may wrap.
    m_micros = static_cast<int64_t>(static_cast<uint64_t>(m_micros) + ((step >> 1) ^ (~(step & 1) + 1)));
    m_page = static_cast<uint32_t>(Varint());
    return true;
  }
  int64_t Micros() const { return m_micros; }
  uint32_t Page() const { return m_page; }

 private:
  uint64_t Varint() {
    uint64_t value = 0;
    for (int shift = 0; m_at != m_end && shift < 64; shift += 7) {
      const uint8_t byte = *m_at++;
      value |= static_cast<uint64_t>(byte & 0x7F) << shift;
      if ((byte & 0x80) == 0) break;
    }
    return value;
  }

  const uint8_t* m_at;
  const uint8_t* m_end;
  int64_t m_micros = 0;
  uint32_t m_page = 0;
};

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
  if (m_sources > 0) PackSource();
  ++m_sources;
  m_browser = browser;
  m_pathPrefix = FromUtf8(pathPrefix);
  m_pageIds.Clear();
  m_sourceFavoritesStart = m_favorites.size();
}

void ItemStore::PackSource() {
  std::vector<uint8_t>& bytes = m_packed.emplace_back();
  int64_t before = 0;
  for (const VisitItem& visit : m_visits) {
    const uint64_t step = static_cast<uint64_t>(visit.UnixMicros()) - static_cast<uint64_t>(before);
    PutVarint((step << 1) ^ (static_cast<int64_t>(step) < 0 ? ~uint64_t{0} : 0), &bytes);
    PutVarint(visit.Page()->index, &bytes);
    before = visit.UnixMicros();
  }
  bytes.shrink_to_fit();
  std::deque<VisitItem>().swap(m_visits);
}

void ItemStore::AbandonSource() {
  if (m_sources == 0) return;
  m_visits.clear();
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
  const uint16_t source = static_cast<uint16_t>(m_sources == 0 ? 0 : m_sources - 1);
  const auto index = static_cast<uint32_t>(m_pages.size());
  const PageTexts& page = m_pages.emplace_back(PageTexts{Keep(name), Keep(url), typedCount, m_browser, source, index});
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
  auto it = std::lower_bound(m_visits.begin(), m_visits.end(), unixMicros,
                             [](const VisitItem& visit, int64_t at) { return visit.UnixMicros() < at; });
  for (; it != m_visits.end() && it->UnixMicros() == unixMicros; ++it) {
    if (it->Page() == page) return static_cast<size_t>(it - m_visits.begin());
  }
  return std::string::npos;
}

void ItemStore::DropSourceVisits(std::vector<size_t> places) {
  if (places.empty()) return;
  std::sort(places.begin(), places.end());
  size_t kept = places.front();
  for (size_t i = kept, next = 0; i < m_visits.size(); ++i) {
    if (next < places.size() && places[next] == i) {
      while (next < places.size() && places[next] == i) ++next;
      continue;
    }
    m_visits[kept++] = m_visits[i];
  }
  m_visits.erase(m_visits.begin() + static_cast<std::ptrdiff_t>(kept), m_visits.end());
}

void ItemStore::MergeSources() {
  // One source: its visits are the stream as they stand.
  if (m_packed.empty()) return;
  PackSource();
  std::vector<PackedVisits> sources(m_packed.begin(), m_packed.end());
  // The next visit of each source, earliest first; on a tie the earlier
  // source. A heap of one entry per source: n log k for n visits.
  using Next = std::pair<int64_t, size_t>;
  std::priority_queue<Next, std::vector<Next>, std::greater<Next>> heads;
  for (size_t source = 0; source < sources.size(); ++source) {
    if (sources[source].Next()) heads.emplace(sources[source].Micros(), source);
  }
  // The pages of the visits kept in the second being merged, to find a
  // copy of one.
  std::vector<const PageTexts*> second;
  int64_t secondOf = -1;
  while (!heads.empty()) {
    const auto [micros, source] = heads.top();
    heads.pop();
    const PageTexts* page = &m_pages[sources[source].Page()];
    if (sources[source].Next()) heads.emplace(sources[source].Micros(), source);
    if (micros / kMicrosPerSecond != secondOf) {
      secondOf = micros / kMicrosPerSecond;
      second.clear();
    }
    const bool copy = std::any_of(second.begin(), second.end(), [page](const PageTexts* kept) {
      return kept->source != page->source && kept->url == page->url;
    });
    if (copy) continue;
    second.push_back(page);
    m_visits.emplace_back(page, micros);
  }
  std::vector<std::vector<uint8_t>>().swap(m_packed);
}

size_t ItemStore::Size() const { return m_visits.size() + m_favorites.size(); }

size_t ItemStore::SourceSize() const { return m_visits.size() + m_favorites.size() - m_sourceFavoritesStart; }

IExtractItem* ItemStore::At(size_t index) {
  if (index < m_visits.size()) return &m_visits[index];
  return &m_favorites[index - m_visits.size()];
}

void ItemStore::Clear() {
  m_visits.clear();
  m_favorites.clear();
  m_packed.clear();
  m_sources = 0;
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
