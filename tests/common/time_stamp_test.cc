#include "common/time_stamp.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>

#include "common/utf.h"

namespace corvane {
namespace {

constexpr uint64_t kMarch5th2014 = 130384840230410000ULL;  // 2014-03-05 09:07:03.041
constexpr uint64_t kLimit = uint64_t{1} << 63;
constexpr char16_t kZeroedStamp[] = u"0000.00.00 0 00:00:00.000";

SYSTEMTIME Record(int y, int mo, int dow, int d, int h, int mi, int s, int ms) {
  const auto w = [](int v) { return static_cast<uint16_t>(v); };
  return SYSTEMTIME{w(y), w(mo), w(dow), w(d), w(h), w(mi), w(s), w(ms)};
}

std::u16string Stamp(uint64_t number) {
  std::u16string text;
  EXPECT_TRUE(TimeNumberToStamp(number, &text));
  return text;
}

// The worked example, then more known dates: the number a stamp parses to,
// its day, and the stamp made back from the number.
TEST(TimeStampTest, WorkedExampleAndKnownDates) {
  std::u16string text;
  FormatVisitStamp(Record(2014, 3, 3, 5, 9, 7, 3, 41), &text);
  EXPECT_EQ(text, u"2014.03.05 3 09:07:03.041");
  EXPECT_EQ(VisitStampToLong(text), kMarch5th2014);
  const std::pair<const char16_t*, uint32_t> cases[] = {
      {u"2014.03.05 3 09:07:03.041", 150908}, {u"1601.01.01 1 00:00:00.000", 0},
      {u"1601.12.31 1 00:00:00.000", 364},    {u"1700.03.01 1 00:00:00.000", 36218},  // 1700 is no leap year
      {u"1970.01.01 4 00:00:00.000", 134774}, {u"2000.02.29 2 12:00:00.000", 145790},
      {u"2012.02.29 3 00:00:00.000", 150173}, {u"2100.03.01 1 00:00:00.000", 182315}};
  for (const auto& [stamp, day] : cases) {
    uint64_t number = 0;
    ASSERT_TRUE(ParseVisitStamp(stamp, &number)) << ToUtf8(stamp);
    EXPECT_EQ(DayNumber(number), day);
    EXPECT_EQ(Stamp(number), stamp);
  }
}

// Read as scanf reads them: no leading zeros, blanks or a sign in front of a
// number, text behind the end, and fields cut to 16 bits (65539 s is 3 s).
// Anything else, and any invalid field, gives false and 0.
TEST(TimeStampTest, ParseReadsAsScanfDoesAndRefusesInvalidFields) {
  for (const char16_t* text :
       {u"2014.3.5 3 9:7:3.41", u"2014.03.05 3 09:07:03.041 and more", u"2014.03.05  3 09:07:03.041",
        u"2014.03.05 +3 09:07:03.041", u"2014.03.05 3 09:07:65539.041"}) {
    EXPECT_EQ(VisitStampToLong(text), kMarch5th2014) << ToUtf8(text);
  }
  for (const char16_t* text : {
           u"", u"2014.03.05", u"2014.03.05 3 09:07:03", u"2014.03.05 3 09:07:03.", u"2014-03-05 3 09:07:03.041",
           u"2014.03.05 3 09.07.03.041", u"x2014.03.05 3 09:07:03.041", u"2014.03 .05 3 09:07:03.041",
           u"1600.12.31 0 23:59:59.999", u"2014.13.01 0 00:00:00.000", u"2014.00.01 0 00:00:00.000",
           u"2014.04.31 0 00:00:00.000", u"2014.02.29 0 00:00:00.000", u"1900.02.29 0 00:00:00.000",
           u"2014.03.00 0 00:00:00.000", u"2014.03.05 3 24:00:00.000", u"2014.03.05 3 09:60:00.000",
           u"2014.03.05 3 09:07:60.000", u"2014.03.05 3 09:07:03.1000",
           u"2014.-3.05 3 09:07:03.041",   // a negative field fills the 16 bits
           u"32767.03.05 3 09:07:03.041",  // beyond what the number holds
       }) {
    uint64_t number = 7;
    EXPECT_FALSE(ParseVisitStamp(text, &number)) << ToUtf8(text);
    EXPECT_EQ(number, 0u);
  }
  EXPECT_EQ(VisitStampToLong(static_cast<const char16_t*>(nullptr)), 0u);
}

TEST(TimeStampTest, WeekdayDigitIsIgnoredButSortsBeforeTime) {
  const std::u16string right = u"2014.03.05 3 09:07:03.041", wrong = u"2014.03.05 6 09:07:03.041";
  EXPECT_EQ(VisitStampToLong(wrong), VisitStampToLong(right));
  EXPECT_GT(wrong, right);
  // Even a later time of the same day sorts before the wrong digit.
  EXPECT_LT(std::u16string(u"2014.03.05 3 23:00:00.000"), wrong);
  // Only a right digit comes back from the number.
  EXPECT_EQ(Stamp(VisitStampToLong(wrong)), right);
}

}  // namespace
}  // namespace corvane
