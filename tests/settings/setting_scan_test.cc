#include "settings/setting_scan.h"

#include <gtest/gtest.h>

#include <limits>
#include <utility>
#include <vector>

#include "common/utf.h"
#include "settings/score_settings.h"

namespace corvane {
namespace {

// ScanScoreRowFields of a text: the fields converted, the row and the lists.
struct RowScan {
  explicit RowScan(const std::u16string& text) : converted(ScanScoreRowFields(text, &row, &params, &reserved)) {}
  ScoreRow row;
  std::u16string params, reserved;
  int converted;
};

TEST(ScanScoreRowFieldsTest, ReadsAllNineFieldsAndAnyFormOfADecimalWeight) {
  const RowScan scan(u"{3,7,50,1,130,1.5,7,{10,2,7},{0,1,2,3,4,5,6,7}}");
  const ScoreRow& r = scan.row;
  EXPECT_EQ(scan.converted, 9);
  EXPECT_EQ((std::vector<int64_t>{r.DayFrom, r.DayTo, r.DayScore, r.VisitScore, r.FavoritePercent, r.ParamCount}),
            (std::vector<int64_t>{3, 7, 50, 1, 130, 7}));
  EXPECT_FLOAT_EQ(r.RecencyWeight, 1.5f);
  EXPECT_EQ(scan.params + u"|" + scan.reserved, u"10,2,7|0,1,2,3,4,5,6,7");
  for (const auto& [weight, expected] : {std::pair<const char16_t*, float>{u"2", 2.0f}, {u"+1.25", 1.25f},
                                         {u"-0.5", -0.5f}, {u".5", 0.5f}, {u"1e1", 10.0f},
                                         {u"1e39", std::numeric_limits<float>::infinity()}}) {
    const RowScan weighted(u"{1,2,3,4,5," + std::u16string(weight) + u",7,{1},{0}}");
    EXPECT_EQ(weighted.converted, 9);
    EXPECT_FLOAT_EQ(weighted.row.RecencyWeight, expected);
  }
}

TEST(ScanScoreRowFieldsTest, CountsFieldsUpToTheFirstMismatch) {
  const std::u16string fits(kMaxInnerListChars, u'1');
  // An empty inner list is no conversion; no closing brace is needed after
  // the ninth field; an inner list stops at 259 characters, so one more
  // leaves a "1" where the "}" belongs.
  const std::pair<std::u16string, int> cases[] = {
      {u"{1,2,3,x,5,1.0,7,{1},{0}}", 3}, {u"1,2,3", 0}, {u"", 0}, {u"{1,2,3,4,5,1.0,7,{},{0}}", 7},
      {u"{1,2,3,4,5,1.0,7,{1},{0", 9},   {u"{1,2,3,4,5,abc,7,{1},{0}}", 5}, {u"{1,2,3,4,5,+-1,7,{1},{0}}", 5},
      {u"{1,2,3,4,5,１,7,{1},{0}}", 5},  {u"{1,2,3,4,5,1.0,7,{" + fits + u"},{0}}", 9},
      {u"{1,2,3,4,5,1.0,7,{" + fits + u"1},{0}}", 8}};
  for (const auto& [text, converted] : cases) EXPECT_EQ(RowScan(text).converted, converted) << ToUtf8(text);
  EXPECT_EQ(RowScan(u"{1,2,3,4,5,1.0,7,{" + fits + u"1},{0}}").params.size(), kMaxInnerListChars);
  // Fields that converted before a mismatch are stored.
  EXPECT_EQ(RowScan(u"{1,2,3,x,5,1.0,7,{1},{0}}").row.DayScore, 3);
}

TEST(ScanNumbersTest, ReservedListSettingValueAndLeadingNumber) {
  std::array<int32_t, 8> values{};
  EXPECT_EQ(ScanReservedList(u"1,2,3,4,5,6,7,8", &values), 8);
  EXPECT_EQ(values[7], 8);
  // Eight numbers are needed; what follows them is not looked at.
  for (const auto& [list, converted] : {std::pair<const char16_t*, int>{u"0,0,0,0,0,0,0,0,9", 8},
                                        {u"0,0,0,0,0,0,0,0junk", 8}, {u"1,2,3,4,5,6,7", 7}, {u"1,2,,4,5,6,7,8", 2},
                                        {u"", 0}}) {
    EXPECT_EQ(ScanReservedList(list, &values), converted);
  }
  int32_t first = 0, second = 0, third = 0;
  EXPECT_EQ(ScanSettingValue(u"{7,{8,3}}", &first, &second, &third), 3);
  EXPECT_EQ((std::vector<int32_t>{first, second, third}), (std::vector<int32_t>{7, 8, 3}));
  EXPECT_EQ(ScanSettingValue(u"{ 1,{ 2,\t4}}", &first, &second, &third), 3);  // blanks before a number
  EXPECT_EQ(ScanSettingValue(u"{9,{8}}", &first, &second, &third), 2);
  EXPECT_EQ((std::vector<int32_t>{first, second, third}), (std::vector<int32_t>{9, 8, 4}));
  EXPECT_EQ(ScanSettingValue(u"{7,7,3}", &first, &second, &third), 1);
  EXPECT_EQ(ScanSettingValue(u"", &first, &second, &third), 0);
  // Too large for 32 bits: the low 32 bits of the saturated 64-bit value.
  for (const auto& [text, value] : {std::pair<const char16_t*, int32_t>{u"42", 42}, {u"  -17abc", -17}, {u"+5", 5},
                                    {u"abc", 0}, {u"-", 0}, {u"", 0}, {u"4294967297", 1},
                                    {u"99999999999999999999999", -1}, {u"-99999999999999999999999", 0}}) {
    EXPECT_EQ(DecimalToInt(text), value) << ToUtf8(text);
  }
}

}  // namespace
}  // namespace corvane
