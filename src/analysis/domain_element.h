// domain_element.h: the main domains that the user reached first on one
// day, earliest first, at most the domain limit of them.

#ifndef CORVANE_ANALYSIS_DOMAIN_ELEMENT_H_
#define CORVANE_ANALYSIS_DOMAIN_ELEMENT_H_

#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "analysis/element_base.h"

namespace corvane {

struct DomainEntry {
  std::u16string MainDomain;
  int64_t Time = 0;  // the earliest visit time seen for it on this day
};

class CEURLDomainElement : public CElementBase {
 public:
  // Keeps the URL's main domain with the time, or moves it earlier.
  void AddDomain(std::u16string_view url, int64_t time);
  // The entry of a main domain, or null; its position in *lpPosition. A
  // hash lookup, kept right as entries are evicted.
  DomainEntry* FindDomain(std::u16string_view mainDomain, int32_t* lpPosition = nullptr) const;
  const std::vector<std::unique_ptr<DomainEntry>>& Entries() const { return m_entries; }

 protected:
  int32_t GetMaxCount() const override { return DomainElementLimit(); }
  // Ordered by rising time: the key points at the new time number.
  int32_t Compare(int32_t index, intptr_t key, intptr_t newKey) const override;
  void RemoveAt(int32_t index) override;

 private:
  std::vector<std::unique_ptr<DomainEntry>> m_entries;
  // The position of each main domain in m_entries; the key views the
  // entry's own string, which never moves.
  std::unordered_map<std::u16string_view, int32_t> m_positions;
};

}  // namespace corvane

#endif  // CORVANE_ANALYSIS_DOMAIN_ELEMENT_H_
