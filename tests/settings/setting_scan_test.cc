#include "settings/setting_scan.h"

#include <gtest/gtest.h>

#include <limits>
#include <string>

#include "settings/score_settings.h"

namespace corvane {
namespace {

TEST(ScanScoreRowFieldsTest, ReadsAllNineFieldsOfARow) {
  ScoreRow row;
  std::u16string params, reserved;
  EXPECT_EQ(ScanScoreRowFields(u"{3,7,50,1,130,1.5,7,{10,2,7},{0,1,2,3,4,5,6,7}}", &row, &params, &reserved), 9);
  EXPECT_EQ(row.DayFrom, 3u);
  EXPECT_EQ(row.DayTo, 7u);
  EXPECT_EQ(row.DayScore, 50);
  EXPECT_EQ(row.VisitScore, 1);
  EXPECT_EQ(row.FavoritePercent, 130);
  EXPECT_FLOAT_EQ(row.RecencyWeight, 1.5f);
  EXPECT_EQ(row.ParamCount, 7);
  EXPECT_EQ(params, u"10,2,7");
  EXPECT_EQ(reserved, u"0,1,2,3,4,5,6,7");
}

TEST(ScanScoreRowFieldsTest, CountsFieldsUpToTheFirstMismatch) {
  ScoreRow row;
  std::u16string params, reserved;
  // A letter where the fourth number belongs: three fields converted, and
  // those three are stored.
  EXPECT_EQ(ScanScoreRowFields(u"{1,2,3,x,5,1.0,7,{1},{0}}", &row, &params, &reserved), 3);
  EXPECT_EQ(row.DayScore, 3);
  EXPECT_EQ(ScanScoreRowFields(u"1,2,3", &row, &params, &reserved), 0);
  EXPECT_EQ(ScanScoreRowFields(u"", &row, &params, &reserved), 0);
  // An empty inner list is no conversion.
  EXPECT_EQ(ScanScoreRowFields(u"{1,2,3,4,5,1.0,7,{},{0}}", &row, &params, &reserved), 7);
  // A closing brace is not needed once the ninth field has converted.
  EXPECT_EQ(ScanScoreRowFields(u"{1,2,3,4,5,1.0,7,{1},{0", &row, &params, &reserved), 9);
}

TEST(ScanScoreRowFieldsTest, InnerListsStopAt259Characters) {
  ScoreRow row;
  std::u16string params, reserved;
  std::u16string fits(kMaxInnerListChars, u'1');
  EXPECT_EQ(ScanScoreRowFields(u"{1,2,3,4,5,1.0,7,{" + fits + u"},{0}}", &row, &params, &reserved), 9);
  EXPECT_EQ(params.size(), kMaxInnerListChars);
  // One character more: the list is cut, the "}" after it does not match.
  std::u16string tooLong(kMaxInnerListChars + 1, u'1');
  EXPECT_EQ(ScanScoreRowFields(u"{1,2,3,4,5,1.0,7,{" + tooLong + u"},{0}}", &row, &params, &reserved), 8);
  EXPECT_EQ(params.size(), kMaxInnerListChars);
}

TEST(ScanScoreRowFieldsTest, WeightAcceptsTheFormsOfADecimalNumber) {
  struct Case {
    std::u16string weight;
    float expected;
  };
  const Case cases[] = {{u"2", 2.0f},  {u"+1.25", 1.25f}, {u"-0.5", -0.5f},
                        {u".5", 0.5f}, {u"1e1", 10.0f},   {u"1e39", std::numeric_limits<float>::infinity()}};
  for (const Case& c : cases) {
    ScoreRow row;
    std::u16string params, reserved;
    EXPECT_EQ(ScanScoreRowFields(u"{1,2,3,4,5," + c.weight + u",7,{1},{0}}", &row, &params, &reserved), 9);
    EXPECT_FLOAT_EQ(row.RecencyWeight, c.expected);
  }
  ScoreRow row;
  std::u16string params, reserved;
  EXPECT_EQ(ScanScoreRowFields(u"{1,2,3,4,5,abc,7,{1},{0}}", &row, &params, &reserved), 5);
  EXPECT_EQ(ScanScoreRowFields(u"{1,2,3,4,5,+-1,7,{1},{0}}", &row, &params, &reserved), 5);
  EXPECT_EQ(ScanScoreRowFields(u"{1,2,3,4,5,１,7,{1},{0}}", &row, &params, &reserved), 5);
}

TEST(ScanReservedListTest, NeedsEightNumbersAndIgnoresWhatFollows) {
  std::array<int32_t, 8> values{};
  EXPECT_EQ(ScanReservedList(u"1,2,3,4,5,6,7,8", &values), 8);
  EXPECT_EQ(values[7], 8);
  EXPECT_EQ(ScanReservedList(u"0,0,0,0,0,0,0,0,9", &values), 8);
  EXPECT_EQ(ScanReservedList(u"0,0,0,0,0,0,0,0junk", &values), 8);
  EXPECT_EQ(ScanReservedList(u"1,2,3,4,5,6,7", &values), 7);
  EXPECT_EQ(ScanReservedList(u"1,2,,4,5,6,7,8", &values), 2);
  EXPECT_EQ(ScanReservedList(u"", &values), 0);
}

TEST(ScanSettingValueTest, ReadsThreeNumbers) {
  int32_t first = 0, second = 0, third = 0;
  EXPECT_EQ(ScanSettingValue(u"{7,{7,3}}", &first, &second, &third), 3);
  EXPECT_EQ(first, 7);
  EXPECT_EQ(second, 7);
  EXPECT_EQ(third, 3);
  // White space before a number is skipped, as a scanf number does.
  EXPECT_EQ(ScanSettingValue(u"{ 1,{ 2,\t4}}", &first, &second, &third), 3);
  EXPECT_EQ(third, 4);
  EXPECT_EQ(ScanSettingValue(u"{9,{8}}", &first, &second, &third), 2);
  EXPECT_EQ(first, 9);
  EXPECT_EQ(ScanSettingValue(u"{7,7,3}", &first, &second, &third), 1);
  EXPECT_EQ(ScanSettingValue(u"", &first, &second, &third), 0);
}

TEST(DecimalToIntTest, ConvertsTheLeadingNumber) {
  EXPECT_EQ(DecimalToInt(u"42"), 42);
  EXPECT_EQ(DecimalToInt(u"  -17abc"), -17);
  EXPECT_EQ(DecimalToInt(u"+5"), 5);
  EXPECT_EQ(DecimalToInt(u"abc"), 0);
  EXPECT_EQ(DecimalToInt(u"-"), 0);
  EXPECT_EQ(DecimalToInt(u""), 0);
  // Too large for 32 bits: the low 32 bits of the saturated 64-bit value.
  EXPECT_EQ(DecimalToInt(u"4294967297"), 1);
  EXPECT_EQ(DecimalToInt(u"99999999999999999999999"), -1);
  EXPECT_EQ(DecimalToInt(u"-99999999999999999999999"), 0);
}

}  // namespace
}  // namespace corvane
