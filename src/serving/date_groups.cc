#include "serving/date_groups.h"

#include <array>
#include <string>

#include "common/text_util.h"
#include "serving/url_info.h"

namespace corvane {
namespace {

// Indexed by the weekday digit of a stamp, 0 is Sunday.
constexpr std::array<const char16_t*, 7> kWeekdayNames = {u"日", u"一", u"二", u"三", u"四", u"五", u"六"};

std::u16string Number(int16_t value) {
  std::string digits = std::to_string(value);
  return std::u16string(digits.begin(), digits.end());
}

// Reads "%hd.%hd.%hd %hd" the way scanf does; false unless all four fields
// were read.
bool ScanDateFields(std::u16string_view stamp, std::array<int16_t, 4>* fields) {
  size_t pos = 0;
  for (size_t i = 0; i < fields->size(); ++i) {
    if (i == 1 || i == 2) {
      if (pos >= stamp.size() || stamp[pos] != u'.') return false;
      ++pos;
    }
    if (!ScanInt16(stamp, &pos, &(*fields)[i])) return false;
  }
  return true;
}

}  // namespace

std::u16string FormatDayLabel(std::u16string_view stamp, int64_t dayDiff) {
  std::array<int16_t, 4> fields{};
  if (!ScanDateFields(stamp, &fields)) return std::u16string();
  const int16_t weekday = fields[3];
  std::u16string label;
  if (dayDiff == 0) label = u"今天 ";
  if (dayDiff == -1) label = u"昨天 ";
  label += Number(fields[0]) + u"年" + Number(fields[1]) + u"月" + Number(fields[2]) + u"日 星期";
  if (weekday >= 0 && weekday < static_cast<int16_t>(kWeekdayNames.size())) label += kWeekdayNames[weekday];
  return label;
}

HRESULT BuildDateGroups(const CHistoryRows& rows, uint32_t uToday, ComPtr<CURLArray>* lppGroups) {
  ComPtr<CURLArray> groups(CreateObject<CURLArray>());
  if (!groups) return E_FAIL;
  ComPtr<CURLArray> day;
  int64_t currentDate = 0;
  for (size_t row = 0; row < rows.Size(); ++row) {
    const int64_t visitDate = rows.VisitDate(row);
    const std::u16string_view visitTime = rows.VisitTime(row);
    if (visitDate != currentDate) {
      currentDate = visitDate;
      if (day) groups->Append(day->AsUnknown());
      day.Reset();
    }
    if (!day) {
      day.Reset(CreateObject<CURLArray>());
      ComPtr<CURLInfo> title(CreateObject<CURLInfo>());
      if (!day || !title) return E_FAIL;
      title->SetInfo(0, FormatDayLabel(visitTime, visitDate - static_cast<int64_t>(uToday)), u"", u"");
      day->Append(title->AsUnknown());
    }
    ComPtr<CURLInfo> visit(CreateObject<CURLInfo>());
    if (!visit) continue;
    visit->SetInfo(static_cast<uint32_t>(rows.Hid(row)), rows.Name(row), rows.Url(row), u"", visitTime);
    day->Append(visit->AsUnknown());
  }
  if (day) groups->Append(day->AsUnknown());
  *lppGroups = std::move(groups);
  return S_OK;
}

}  // namespace corvane
