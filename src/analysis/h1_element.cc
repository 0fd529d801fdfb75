#include "analysis/h1_element.h"

#include <cmath>
#include <limits>

namespace corvane {

int32_t CH1URLElement::RoundScore(float score) {
  double rounded = static_cast<double>(score) + 0.5;
  // A score out of the range of the column (only hostile visit counts get
  // there) is held at its bound; converting it would be undefined.
  if (std::isnan(rounded)) return 0;
  if (rounded >= 2147483647.0) return std::numeric_limits<int32_t>::max();
  if (rounded <= -2147483648.0) return std::numeric_limits<int32_t>::min();
  return static_cast<int32_t>(rounded);
}

void CH1URLElement::AddEntry(std::u16string_view name, std::u16string_view url, std::u16string_view originalURL,
                             int64_t time, int32_t visitCount, int32_t avgVisitCount, float score, bool dedupe) {
  if (dedupe && FindURL(url) != nullptr) return;
  auto entry = std::make_unique<H1Entry>();
  entry->Name = name;
  entry->URL = url;
  entry->OriginalURL = originalURL;
  entry->Time = time;
  entry->VisitCount = visitCount;
  entry->AvgVisitCount = avgVisitCount;
  entry->Score = RoundScore(score);
  // The view points into the entry's own string, which never moves.
  m_byURL.emplace(entry->URL, entry.get());
  m_entries.push_back(std::move(entry));
}

H1Entry* CH1URLElement::FindURL(std::u16string_view url) const {
  auto found = m_byURL.find(url);
  return found == m_byURL.end() ? nullptr : found->second;
}

}  // namespace corvane
