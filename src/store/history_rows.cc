#include "store/history_rows.h"

#include <sqlite3.h>

#include <algorithm>

#include "common/text_util.h"

namespace corvane {
namespace {

constexpr int kHidColumn = 0;
constexpr int kNameColumn = 1;
constexpr int kUrlColumn = 2;
constexpr int kTimeColumn = 4;
constexpr int kDateColumn = 5;

// "DDDD.DD.DD D DD:DD:DD.DDD": where a stamp of the usual form has digits.
constexpr std::u16string_view kStampForm = u"0000.00.00 0 00:00:00.000";

// The stamp's digits as one number (18 digits fit in 64 bits). Two stamps
// of this form differ only in their digits, so the numbers order as the
// texts do. 0 for a text of any other form.
uint64_t StampKey(std::u16string_view stamp) {
  if (stamp.size() != kStampForm.size()) return 0;
  uint64_t key = 0;
  for (size_t i = 0; i < stamp.size(); ++i) {
    if (kStampForm[i] != u'0') {
      if (stamp[i] != kStampForm[i]) return 0;
      continue;
    }
    if (stamp[i] < u'0' || stamp[i] > u'9') return 0;
    key = key * 10 + static_cast<uint64_t>(stamp[i] - u'0');
  }
  return key + 1;  // 0 stays "no key"
}

// Compares two texts in the order of their code points, as the default
// collation of the component's connections compares them (SQLite compares
// text of a UTF-16 database as UTF-8 bytes on a connection opened with
// sqlite3_open16): a unit of a surrogate pair comes after every other unit
// below U+10000, then the shorter text first.
int CompareCodePoints(std::u16string_view a, std::u16string_view b) {
  const auto rank = [](char16_t unit) -> int {
    return unit < 0xD800 ? unit : unit < 0xE000 ? unit + 0x2000 : unit - 0x800;
  };
  const size_t common = std::min(a.size(), b.size());
  for (size_t i = 0; i < common; ++i) {
    if (a[i] != b[i]) return rank(a[i]) - rank(b[i]);
  }
  return a.size() < b.size() ? -1 : a.size() > b.size() ? 1 : 0;
}

}  // namespace

CHistoryRows::Span CHistoryRows::Keep(std::u16string_view text) {
  Span span{static_cast<uint32_t>(m_text.size()), static_cast<uint32_t>(text.size())};
  m_text.append(text);
  return span;
}

bool CHistoryRows::ReadAll(CSqliteStatement* stmt) {
  bool sortable = true;
  while (stmt->Step()) {
    sortable = sortable && stmt->ColumnType(kDateColumn) == SQLITE_INTEGER && stmt->ColumnType(kTimeColumn) == SQLITE_TEXT;
    Row row;
    row.hid = stmt->ColumnInt64(kHidColumn);
    row.visitDate = stmt->ColumnInt64(kDateColumn);
    row.name = Keep(stmt->ColumnText16View(kNameColumn));
    row.url = Keep(stmt->ColumnText16View(kUrlColumn));
    const std::u16string_view time = stmt->ColumnText16View(kTimeColumn);
    row.time = Keep(time);
    row.stampKey = StampKey(time);
    m_rows.push_back(row);
  }
  return sortable;
}

bool CHistoryRows::NewerThan(const Row& a, const Row& b) const {
  if (a.visitDate != b.visitDate) return a.visitDate > b.visitDate;
  if (a.stampKey != 0 && b.stampKey != 0) {
    if (a.stampKey != b.stampKey) return a.stampKey > b.stampKey;
  } else if (const int order = CompareCodePoints(Text(a.time), Text(b.time)); order != 0) {
    return order > 0;
  }
  return a.hid > b.hid;
}

void CHistoryRows::SortNewestFirst() {
  std::sort(m_rows.begin(), m_rows.end(), [this](const Row& a, const Row& b) { return NewerThan(a, b); });
}

bool HoldsSearchedText(std::u16string_view text, std::u16string_view searched) {
  return AsciiFindIgnoreCase(text, searched) != std::u16string_view::npos;
}

int64_t CharacterCount(std::u16string_view text) {
  int64_t characters = 0;
  for (size_t i = 0; i < text.size(); ++i, ++characters) {
    const bool high = text[i] >= 0xD800 && text[i] < 0xDC00;
    const bool low = text[i] >= 0xDC00 && text[i] < 0xE000;
    if (high && i + 1 < text.size() && text[i + 1] >= 0xDC00 && text[i + 1] < 0xE000) {
      ++i;
    } else if (high || low) {
      return -1;
    }
  }
  return characters;
}

void CHistoryRows::KeepHolding(std::u16string_view text) {
  std::erase_if(m_rows, [&](const Row& row) {
    return !HoldsSearchedText(Text(row.name), text) && !HoldsSearchedText(Text(row.url), text);
  });
}

void CHistoryRows::Clear() {
  m_text.clear();
  m_rows.clear();
}

}  // namespace corvane
