#include "common/text_util.h"

#include <gtest/gtest.h>

namespace corvane {
namespace {

TEST(TextUtilTest, FoldsOnlyAsciiLetters) {
  EXPECT_EQ(AsciiLowerCopy(u"AbZ@[`{09"), u"abz@[`{09");
  // Non-ASCII capitals stay as they are.
  EXPECT_EQ(AsciiLowerCopy(u"\u00C4\u0130"), u"\u00C4\u0130");
  EXPECT_TRUE(AsciiEqualsIgnoreCase(u"Example.COM", u"eXample.com"));
  EXPECT_FALSE(AsciiEqualsIgnoreCase(u"example", u"example."));
  EXPECT_FALSE(AsciiEqualsIgnoreCase(u"@", u"`"));  // 0x40 and 0x60 differ by the case bit
}

TEST(TextUtilTest, CompareNStopsAtEndOfText) {
  EXPECT_EQ(AsciiCompareIgnoreCaseN(u"HTTP://x", u"http://y", 7), 0);
  EXPECT_LT(AsciiCompareIgnoreCaseN(u"http://x", u"http://y", 8), 0);
  EXPECT_GT(AsciiCompareIgnoreCaseN(u"b", u"A", 1), 0);
  // A shorter text ends in a terminator, which sorts first.
  EXPECT_LT(AsciiCompareIgnoreCaseN(u"www", u"www.", 4), 0);
  EXPECT_GT(AsciiCompareIgnoreCaseN(u"www.", u"www", 4), 0);
  // Both end within n: equal, whatever n is.
  EXPECT_EQ(AsciiCompareIgnoreCaseN(u"ab", u"AB", 100), 0);
  EXPECT_EQ(AsciiCompareIgnoreCaseN(u"abc", u"xyz", 0), 0);
}

TEST(TextUtilTest, FindIgnoresCase) {
  EXPECT_EQ(AsciiFindIgnoreCase(u"a.Example.com", u"EXAMPLE"), 2u);
  EXPECT_EQ(AsciiFindIgnoreCase(u"abcabc", u"ABC", 1), 3u);
  EXPECT_EQ(AsciiFindIgnoreCase(u"abc", u"abcd"), std::u16string_view::npos);
  EXPECT_EQ(AsciiFindIgnoreCase(u"abc", u"c", 3), std::u16string_view::npos);
  EXPECT_EQ(AsciiFindIgnoreCase(u"abc", u"", 3), 3u);
  EXPECT_EQ(AsciiFindIgnoreCase(u"abc", u"", 4), std::u16string_view::npos);
}

TEST(TextUtilTest, ScanInt16LikeScanf) {
  struct Case {
    const char16_t* text;
    int16_t value;
    size_t end;
  };
  const Case cases[] = {
      {u"42.", 42, 2},      {u"  -7x", -7, 4},      {u"+005", 5, 4},
      {u"65537", 1, 5},     {u"32768", -32768, 5},  {u"\t\n12", 12, 4},
      // Saturated like strtol before the cut to 16 bits.
      {u"99999999999999999999", -1, 20},
      {u"-99999999999999999999", 0, 21},
  };
  for (const Case& c : cases) {
    size_t pos = 0;
    int16_t value = 123;
    EXPECT_TRUE(ScanInt16(c.text, &pos, &value));
    EXPECT_EQ(value, c.value);
    EXPECT_EQ(pos, c.end);
  }
  for (const char16_t* text : {u"", u"-", u" +", u"x1", u".5"}) {
    size_t pos = 0;
    int16_t value = 123;
    EXPECT_FALSE(ScanInt16(text, &pos, &value));
    EXPECT_EQ(value, 123);
    EXPECT_EQ(pos, 0u);
  }
}

}  // namespace
}  // namespace corvane
