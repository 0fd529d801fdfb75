// h1_element.h: the scored URLs of one of the tables j1 and h2, each URL
// once, in order of first appearance.

#ifndef CORVANE_ANALYSIS_H1_ELEMENT_H_
#define CORVANE_ANALYSIS_H1_ELEMENT_H_

#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace corvane {

struct H1Entry {
  std::u16string Name;
  std::u16string URL;
  std::u16string OriginalURL;
  int64_t Time = 0;          // the newest visit of the URL
  int32_t VisitCount = 0;    // all visits in the analysed span
  int32_t AvgVisitCount = 0; // visits per distinct day
  int32_t Score = 0;         // rounded
};

class CH1URLElement {
 public:
  CH1URLElement() = default;
  virtual ~CH1URLElement() = default;
  CH1URLElement(const CH1URLElement&) = delete;
  CH1URLElement& operator=(const CH1URLElement&) = delete;

  // The score is rounded half up: 319.5 gives 320, 319.49 gives 319.
  virtual void AddEntry(std::u16string_view name, std::u16string_view url, std::u16string_view originalURL, int64_t time,
                int32_t visitCount, int32_t avgVisitCount, float score, bool dedupe);
  H1Entry* FindURL(std::u16string_view url) const;
  const std::vector<std::unique_ptr<H1Entry>>& Entries() const { return m_entries; }

  static int32_t RoundScore(float score);

 private:
  std::vector<std::unique_ptr<H1Entry>> m_entries;
  // The first entry of each URL, so that FindURL needs no walk.
  std::unordered_map<std::u16string_view, H1Entry*> m_byURL;
};

}  // namespace corvane

#endif  // CORVANE_ANALYSIS_H1_ELEMENT_H_
