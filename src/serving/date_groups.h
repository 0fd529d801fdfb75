// date_groups.h: the two-level result of the history listing and search:
// one array per day, newest first, each led by a title record that carries
// the day's label, followed by that day's visits in row order.

#ifndef CORVANE_SERVING_DATE_GROUPS_H_
#define CORVANE_SERVING_DATE_GROUPS_H_

#include <cstdint>
#include <string>
#include <string_view>

#include "corvane/CorvaneDataProvider.h"
#include "platform/com_object.h"
#include "serving/url_array.h"
#include "store/history_rows.h"

namespace corvane {

// The label of a day from the first four fields of a visit stamp and the
// difference of its day number to today: "今天 ..." for 0, "昨天 ..." for
// -1, the plain date otherwise. Empty when the stamp does not scan; a
// weekday digit outside 0..6 gives an empty weekday name.
std::u16string FormatDayLabel(std::u16string_view stamp, int64_t dayDiff);

// Groups the rows, in their order, by VisitDate. E_FAIL, with *lppGroups
// untouched, when an array or title can't be created; a visit record that
// can't be created leaves its row out.
[[nodiscard]] HRESULT BuildDateGroups(const CHistoryRows& rows, uint32_t uToday, ComPtr<CURLArray>* lppGroups);

}  // namespace corvane

#endif  // CORVANE_SERVING_DATE_GROUPS_H_
