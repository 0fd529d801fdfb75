// url_elements.h: the URL lists of the e tables.
//
// CE1URLElement is one day's list: the URLs of that day that belong to the
// day's first-reached main domains. CE2URLElement gathers, across the day
// lists, the URLs seen only on recent days, each once, in order of arrival;
// CE3URLElement the URLs with older visits, each once, the best by visit
// count up to the URL limit. The day lists own the entries; the other two
// only point at them.

#ifndef CORVANE_ANALYSIS_URL_ELEMENTS_H_
#define CORVANE_ANALYSIS_URL_ELEMENTS_H_

#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "analysis/element_base.h"

namespace corvane {

class CEURLDomainElement;

struct E1Entry {
  std::u16string Name;
  std::u16string URL;
  std::u16string OriginalURL;
  uint8_t RecentOnly = 0;
  int64_t Time = 0;
  int32_t VisitCount = 0;  // all visits of the URL in the analysed span
};

class CE1URLElement {
 public:
  CE1URLElement() = default;
  virtual ~CE1URLElement() = default;
  CE1URLElement(const CE1URLElement&) = delete;
  CE1URLElement& operator=(const CE1URLElement&) = delete;

  // Keeps the URL when its main domain stands in the day's domain list.
  void AddEntry(const CEURLDomainElement& domains, std::u16string_view name, std::u16string_view url,
                std::u16string_view originalURL, bool recentOnly, int64_t time, int32_t visitCount);
  const std::vector<std::unique_ptr<E1Entry>>& Entries() const { return m_entries; }

 private:
  std::vector<std::unique_ptr<E1Entry>> m_entries;
};

class CE2URLElement {
 public:
  CE2URLElement() = default;
  virtual ~CE2URLElement() = default;
  CE2URLElement(const CE2URLElement&) = delete;
  CE2URLElement& operator=(const CE2URLElement&) = delete;
  // With dedupe set, a URL already held is not added again.
  virtual void AddEntry(E1Entry* entry, bool dedupe);
  bool FindURL(std::u16string_view url) const;
  const std::vector<E1Entry*>& Entries() const { return m_entries; }

 protected:
  void Append(E1Entry* entry);
  void EraseAt(size_t index);

 private:
  std::vector<E1Entry*> m_entries;
  // How often each URL stands in m_entries, so that FindURL needs no walk.
  std::unordered_map<std::u16string_view, int32_t> m_urlCounts;
};

class CE3URLElement : public CE2URLElement, public CElementBase {
 public:
  void AddEntry(E1Entry* entry, bool dedupe) override;

 protected:
  int32_t GetMaxCount() const override { return URLElementLimit(); }
  // Ordered by falling visit count.
  int32_t Compare(int32_t index, intptr_t key, intptr_t newKey) const override;
  // The entry belongs to a day list: it only leaves the vector.
  void RemoveAt(int32_t index) override;
};

}  // namespace corvane

#endif  // CORVANE_ANALYSIS_URL_ELEMENTS_H_
