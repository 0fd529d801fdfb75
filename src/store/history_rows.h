// history_rows.h: the visits of a history listing or search, read out of
// their statement into one block of text and, for a search, put newest
// first here rather than by SQLite.
//
// A search finds thousands of rows at each keystroke of a search as you
// type. Sorting them in SQL copies each whole row into a sorter and out
// again, which costs as much as reading them; sorting small entries that
// point into one block of text costs a fraction of that. The order is
// exactly that of "order by VisitDate desc, VisitTime desc, HID desc" on
// the component's connections (texts in the order of their code points),
// for every row whose VisitDate is an integer and whose VisitTime is a text;
// a statement with any other row says so, and its caller orders it in SQL
// instead.

#ifndef CORVANE_STORE_HISTORY_ROWS_H_
#define CORVANE_STORE_HISTORY_ROWS_H_

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "store/sqlite_db.h"

namespace corvane {

// Whether text holds searched as like reads "%searched%" with the searched
// text taken literally: ASCII letters in either case, any other unit as it
// stands (which is like's character by character for a searched text with
// no half of a surrogate pair).
bool HoldsSearchedText(std::u16string_view text, std::u16string_view searched);

// The characters of a text, a pair of surrogates counting once; -1 when it
// holds half of a pair alone.
int64_t CharacterCount(std::u16string_view text);

class CHistoryRows {
 public:
  // Appends every row of a history statement (0 HID, 1 Name, 2 URL,
  // 4 VisitTime, 5 VisitDate). False when a row's VisitDate is no integer
  // or its VisitTime no text: SortNewestFirst can't order such rows as
  // SQLite does. A null Name or URL reads as the empty text.
  bool ReadAll(CSqliteStatement* stmt);

  // Newest first, as the order by above.
  void SortNewestFirst();

  // Drops the rows whose title and address don't hold the text (see
  // HoldsSearchedText); the others keep their order.
  void KeepHolding(std::u16string_view text);

  void Clear();
  size_t Size() const { return m_rows.size(); }
  int64_t Hid(size_t i) const { return m_rows[i].hid; }
  int64_t VisitDate(size_t i) const { return m_rows[i].visitDate; }
  std::u16string_view Name(size_t i) const { return Text(m_rows[i].name); }
  std::u16string_view Url(size_t i) const { return Text(m_rows[i].url); }
  std::u16string_view VisitTime(size_t i) const { return Text(m_rows[i].time); }

 private:
  struct Span {
    uint32_t at = 0;
    uint32_t length = 0;
  };
  struct Row {
    int64_t hid = 0;
    int64_t visitDate = 0;
    // The digits of a stamp of the usual form ("2024.03.05 2 09:07:03.041")
    // as one number, which orders as the text does; 0 for any other text.
    uint64_t stampKey = 0;
    Span name, url, time;
  };

  Span Keep(std::u16string_view text);
  std::u16string_view Text(Span span) const { return std::u16string_view(m_text).substr(span.at, span.length); }
  bool NewerThan(const Row& a, const Row& b) const;

  std::u16string m_text;
  std::vector<Row> m_rows;
};

}  // namespace corvane

#endif  // CORVANE_STORE_HISTORY_ROWS_H_
