#include "analysis/url_elements.h"

#include "analysis/domain_element.h"
#include "common/url_util.h"

namespace corvane {

void CE1URLElement::AddEntry(const CEURLDomainElement& domains, std::u16string_view name, std::u16string_view url,
                             std::u16string_view originalURL, bool recentOnly, int64_t time, int32_t visitCount) {
  std::u16string mainDomain;
  GetMainDomainOfURL(url, &mainDomain);
  if (mainDomain.empty() || domains.FindDomain(mainDomain) == nullptr) return;
  auto entry = std::make_unique<E1Entry>();
  entry->Name = name;
  entry->URL = url;
  entry->OriginalURL = originalURL;
  entry->RecentOnly = recentOnly ? 1 : 0;
  entry->Time = time;
  entry->VisitCount = visitCount;
  m_entries.push_back(std::move(entry));
}

void CE2URLElement::AddEntry(E1Entry* entry, bool dedupe) {
  if (dedupe && FindURL(entry->URL)) return;
  Append(entry);
}

bool CE2URLElement::FindURL(std::u16string_view url) const { return m_urlCounts.count(url) != 0; }

void CE2URLElement::Append(E1Entry* entry) {
  m_entries.push_back(entry);
  m_urlCounts[entry->URL] += 1;
}

void CE2URLElement::EraseAt(size_t index) {
  if (index >= m_entries.size()) return;
  auto found = m_urlCounts.find(m_entries[index]->URL);
  if (found != m_urlCounts.end() && --found->second == 0) m_urlCounts.erase(found);
  m_entries.erase(m_entries.begin() + static_cast<ptrdiff_t>(index));
}

void CE3URLElement::AddEntry(E1Entry* entry, bool dedupe) {
  if (dedupe && FindURL(entry->URL)) return;
  if (TryInsert(entry->VisitCount)) Append(entry);
}

int32_t CE3URLElement::Compare(int32_t /*index*/, intptr_t key, intptr_t newKey) const {
  int32_t held = static_cast<int32_t>(key);
  int32_t fresh = static_cast<int32_t>(newKey);
  if (held > fresh) return -1;
  return held < fresh ? 1 : 0;
}

void CE3URLElement::RemoveAt(int32_t index) {
  if (index >= 0) EraseAt(static_cast<size_t>(index));
}

}  // namespace corvane
