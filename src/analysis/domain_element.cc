#include "analysis/domain_element.h"

#include "common/url_util.h"

namespace corvane {

int32_t CEURLDomainElement::Compare(int32_t index, intptr_t /*key*/, intptr_t newKey) const {
  int64_t entryTime = m_entries[static_cast<size_t>(index)]->Time;
  int64_t newTime = *reinterpret_cast<const int64_t*>(newKey);
  if (entryTime > newTime) return 1;
  return entryTime == newTime ? 0 : -1;
}

void CEURLDomainElement::RemoveAt(int32_t index) {
  if (index < 0 || static_cast<size_t>(index) >= m_entries.size()) return;
  m_positions.erase(m_entries[static_cast<size_t>(index)]->MainDomain);
  m_entries.erase(m_entries.begin() + index);
  // The entries behind the gap moved up by one. Only a full list evicts,
  // so this walk is as long as the bound.
  for (size_t i = static_cast<size_t>(index); i < m_entries.size(); ++i) {
    m_positions[m_entries[i]->MainDomain] = static_cast<int32_t>(i);
  }
}

DomainEntry* CEURLDomainElement::FindDomain(std::u16string_view mainDomain, int32_t* lpPosition) const {
  auto found = m_positions.find(mainDomain);
  if (found == m_positions.end()) return nullptr;
  if (lpPosition != nullptr) *lpPosition = found->second;
  return m_entries[static_cast<size_t>(found->second)].get();
}

void CEURLDomainElement::AddDomain(std::u16string_view url, int64_t time) {
  std::u16string mainDomain;
  GetMainDomainOfURL(url, &mainDomain);
  if (mainDomain.empty()) return;
  int32_t position = 0;
  if (DomainEntry* entry = FindDomain(mainDomain, &position)) {
    if (time >= entry->Time) return;
    Reposition(position, reinterpret_cast<intptr_t>(&time));
    entry->Time = time;
    return;
  }
  if (!TryInsert(reinterpret_cast<intptr_t>(&time))) return;
  m_entries.push_back(std::make_unique<DomainEntry>(DomainEntry{std::move(mainDomain), time}));
  m_positions.emplace(m_entries.back()->MainDomain, static_cast<int32_t>(m_entries.size() - 1));
}

}  // namespace corvane
