#include "common/time_stamp.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <string>

#include "common/utf.h"

namespace corvane {
namespace {

constexpr uint64_t kMarch5th2014 = 130384840230410000ULL;  // 2014-03-05 09:07:03.041
constexpr uint64_t kLimit = uint64_t{1} << 63;

SYSTEMTIME Record(int y, int mo, int dow, int d, int h, int mi, int s, int ms) {
  const auto w = [](int v) { return static_cast<uint16_t>(v); };
  return SYSTEMTIME{w(y), w(mo), w(dow), w(d), w(h), w(mi), w(s), w(ms)};
}

std::u16string Stamp(uint64_t number) {
  std::u16string text;
  EXPECT_TRUE(TimeNumberToStamp(number, &text));
  return text;
}

TEST(TimeStampTest, WorkedExample) {
  std::u16string text;
  FormatVisitStamp(Record(2014, 3, 3, 5, 9, 7, 3, 41), &text);
  EXPECT_EQ(text, u"2014.03.05 3 09:07:03.041");
  uint64_t number = 0;
  EXPECT_TRUE(ParseVisitStamp(text, &number));
  EXPECT_EQ(number, kMarch5th2014);
  EXPECT_EQ(DayNumber(number), 150908u);
  EXPECT_EQ(Stamp(number), text);
}

// The stamp is written out by hand for speed; it must read as the format
// "%04d.%02d.%02d %d %02d:%02d:%02d.%03d" does, for any field values.
TEST(TimeStampTest, StampTextIsThatOfTheFormat) {
  const SYSTEMTIME records[] = {Record(0, 0, 0, 0, 0, 0, 0, 0),         Record(7, 1, 2, 3, 4, 5, 6, 7),
                                Record(999, 10, 6, 31, 23, 59, 59, 999), Record(2026, 12, 0, 9, 10, 10, 10, 10),
                                Record(10000, 99, 10, 100, 100, 100, 100, 1000),
                                Record(65535, 65535, 65535, 65535, 65535, 65535, 65535, 65535)};
  for (const SYSTEMTIME& time : records) {
    char expected[96];
    std::snprintf(expected, sizeof(expected), "%04d.%02d.%02d %d %02d:%02d:%02d.%03d", time.wYear, time.wMonth,
                  time.wDay, time.wDayOfWeek, time.wHour, time.wMinute, time.wSecond, time.wMilliseconds);
    std::u16string text = u"left over";
    FormatVisitStamp(time, &text);
    EXPECT_EQ(ToUtf8(text), expected);
  }
}

TEST(TimeStampTest, KnownDates) {
  struct Case {
    SYSTEMTIME time;
    uint32_t day;
    const char16_t* stamp;
  };
  const Case cases[] = {
      {Record(1601, 1, 1, 1, 0, 0, 0, 0), 0, u"1601.01.01 1 00:00:00.000"},
      {Record(1601, 12, 1, 31, 0, 0, 0, 0), 364, u"1601.12.31 1 00:00:00.000"},
      {Record(1700, 3, 1, 1, 0, 0, 0, 0), 36218, u"1700.03.01 1 00:00:00.000"},  // 1700 is no leap year
      {Record(1970, 1, 4, 1, 0, 0, 0, 0), 134774, u"1970.01.01 4 00:00:00.000"},
      {Record(2000, 2, 2, 29, 12, 0, 0, 0), 145790, u"2000.02.29 2 12:00:00.000"},
      {Record(2100, 3, 1, 1, 0, 0, 0, 0), 182315, u"2100.03.01 1 00:00:00.000"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(ToUtf8(c.stamp));
    uint64_t number = 0;
    ASSERT_TRUE(SystemTimeToTimeNumber(c.time, &number));
    EXPECT_EQ(DayNumber(number), c.day);
    EXPECT_EQ(Stamp(number), c.stamp);
  }
}

TEST(TimeStampTest, ParseAcceptsScanfForms) {
  // No leading zeros, blanks in front of numbers, and trailing text.
  EXPECT_EQ(VisitStampToLong(u"2014.3.5 3 9:7:3.41"), kMarch5th2014);
  EXPECT_EQ(VisitStampToLong(u"2014.03.05 3 09:07:03.041 and more"), kMarch5th2014);
  EXPECT_EQ(VisitStampToLong(u"2014.03.05  3 09:07:03.041"), kMarch5th2014);
  EXPECT_EQ(VisitStampToLong(u"2014.03.05 +3 09:07:03.041"), kMarch5th2014);
}

TEST(TimeStampTest, ParseRefusesBrokenText) {
  for (const char16_t* text : {u"", u"2014.03.05", u"2014.03.05 3 09:07:03", u"2014.03.05 3 09:07:03.",
                               u"2014-03-05 3 09:07:03.041", u"2014.03.05 3 09.07.03.041",
                               u"x2014.03.05 3 09:07:03.041", u"2014.03 .05 3 09:07:03.041"}) {
    SCOPED_TRACE(ToUtf8(text));
    uint64_t number = 7;
    EXPECT_FALSE(ParseVisitStamp(text, &number));
    EXPECT_EQ(number, 0u);
  }
  EXPECT_EQ(VisitStampToLong(static_cast<const char16_t*>(nullptr)), 0u);
}

TEST(TimeStampTest, ParseRefusesInvalidFields) {
  for (const char16_t* text : {
           u"1600.12.31 0 23:59:59.999",  // before 1601
           u"2014.13.01 0 00:00:00.000",  // month 13
           u"2014.00.01 0 00:00:00.000",  // month 0
           u"2014.04.31 0 00:00:00.000",  // April has 30 days
           u"2014.02.29 0 00:00:00.000",  // no leap year
           u"1900.02.29 0 00:00:00.000",  // century, no leap year
           u"2014.03.00 0 00:00:00.000",  // day 0
           u"2014.03.05 3 24:00:00.000",
           u"2014.03.05 3 09:60:00.000",
           u"2014.03.05 3 09:07:60.000",
           u"2014.03.05 3 09:07:03.1000",
           u"2014.-3.05 3 09:07:03.041",    // a negative field fills the 16 bits
           u"32767.03.05 3 09:07:03.041",  // beyond what the number holds
       }) {
    SCOPED_TRACE(ToUtf8(text));
    EXPECT_EQ(VisitStampToLong(text), 0u);
  }
  EXPECT_NE(VisitStampToLong(u"2012.02.29 3 00:00:00.000"), 0u);
  EXPECT_NE(VisitStampToLong(u"2000.02.29 2 00:00:00.000"), 0u);
}

TEST(TimeStampTest, FieldsAreSixteenBitsWide) {
  // 65536 + 3 seconds lands on 3 once cut to 16 bits.
  EXPECT_EQ(VisitStampToLong(u"2014.03.05 3 09:07:65539.041"), kMarch5th2014);
}

TEST(TimeStampTest, WeekdayDigitIsIgnoredButSortsBeforeTime) {
  const std::u16string right = u"2014.03.05 3 09:07:03.041";
  const std::u16string wrong = u"2014.03.05 6 09:07:03.041";
  EXPECT_EQ(VisitStampToLong(wrong), VisitStampToLong(right));
  EXPECT_GT(wrong, right);
  // Even a later time of the same day sorts before the wrong digit.
  EXPECT_LT(std::u16string(u"2014.03.05 3 23:00:00.000"), wrong);
  // Only a right digit comes back from the number.
  EXPECT_EQ(Stamp(VisitStampToLong(wrong)), right);
}

TEST(TimeStampTest, DifferenceInMilliseconds) {
  EXPECT_EQ(TimeNumberDiffMs(kMarch5th2014, kMarch5th2014), 0u);
  EXPECT_EQ(TimeNumberDiffMs(kMarch5th2014, kMarch5th2014 + 9999), 0u);
  EXPECT_EQ(TimeNumberDiffMs(kMarch5th2014 + 10000, kMarch5th2014), 1u);
  EXPECT_EQ(TimeNumberDiffMs(kMarch5th2014, kMarch5th2014 + 25000), 2u);
  EXPECT_EQ(TimeNumberDiffMs(kMarch5th2014 + 25000, kMarch5th2014), 2u);
  EXPECT_EQ(TimeNumberDiffMs(0, UINT64_MAX), UINT64_MAX / 10000);
}

TEST(TimeStampTest, MidnightCrossing) {
  const uint64_t before = VisitStampToLong(u"2014.12.31 3 23:59:59.999");
  const uint64_t after = VisitStampToLong(u"2015.01.01 4 00:00:00.000");
  ASSERT_NE(before, 0u);
  ASSERT_NE(after, 0u);
  EXPECT_EQ(DayNumber(after), DayNumber(before) + 1);
  EXPECT_EQ(TimeNumberDiffMs(before, after), 1u);
}

TEST(TimeStampTest, RoundTripOverManyDays) {
  // Every 37th day plus an odd time of day over some 1100 years.
  for (uint64_t day = 0; day < 400000; day += 37) {
    const uint64_t number = day * kTimeUnitsPerDay + (day % 86400000) * 10000;
    SYSTEMTIME time{};
    ASSERT_TRUE(TimeNumberToSystemTime(number, &time));
    uint64_t back = 0;
    ASSERT_TRUE(SystemTimeToTimeNumber(time, &back));
    ASSERT_EQ(back, number);
    const std::u16string text = Stamp(number);
    ASSERT_EQ(VisitStampToLong(text), number) << ToUtf8(text);
    ASSERT_EQ(Stamp(number), text);
  }
}

TEST(TimeStampTest, RefusedNumbersGiveZeroedStamp) {
  EXPECT_EQ(Stamp(0), u"1601.01.01 1 00:00:00.000");
  EXPECT_EQ(Stamp(kLimit), u"0000.00.00 0 00:00:00.000");
  EXPECT_EQ(Stamp(UINT64_MAX), u"0000.00.00 0 00:00:00.000");
  SYSTEMTIME time = Record(1, 2, 3, 4, 5, 6, 7, 8);
  EXPECT_FALSE(TimeNumberToSystemTime(kLimit, &time));
  EXPECT_EQ(time.wYear, 1);  // untouched

  SYSTEMTIME last{};
  ASSERT_TRUE(TimeNumberToSystemTime(kLimit - 1, &last));
  uint64_t back = 0;
  ASSERT_TRUE(SystemTimeToTimeNumber(last, &back));
  EXPECT_EQ(back, (kLimit - 1) / 10000 * 10000);  // below a millisecond is dropped
}

TEST(TimeStampTest, DateTextAndToday) {
  EXPECT_EQ(FormatDateText(Record(2014, 3, 3, 5, 9, 7, 3, 41)), u"2014.03.05");
  ASSERT_EQ(setenv("CORVANE_TEST_NOW", "2014-03-05 23:59:59.999", 1), 0);
  EXPECT_EQ(LocalTimeNumberNow(), VisitStampToLong(u"2014.03.05 3 23:59:59.999"));
  EXPECT_EQ(LocalDayNumberToday(), 150908u);
  EXPECT_TRUE(IsToday(150908));
  EXPECT_FALSE(IsToday(150907));
  EXPECT_FALSE(IsToday(150909));
  unsetenv("CORVANE_TEST_NOW");
}

}  // namespace
}  // namespace corvane
