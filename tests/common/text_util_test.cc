#include "common/text_util.h"

#include <gtest/gtest.h>

#include <tuple>

namespace corvane {
namespace {

TEST(TextUtilTest, FoldsOnlyAsciiLettersToCompareAndFind) {
  EXPECT_EQ(AsciiLowerCopy(u"AbZ@[`{09\u00C4\u0130"), u"abz@[`{09\u00C4\u0130");
  EXPECT_TRUE(AsciiEqualsIgnoreCase(u"Example.COM", u"eXample.com"));
  EXPECT_FALSE(AsciiEqualsIgnoreCase(u"example", u"example."));
  EXPECT_FALSE(AsciiEqualsIgnoreCase(u"@", u"`"));  // 0x40 and 0x60 differ by the case bit
  EXPECT_EQ(AsciiCompareIgnoreCaseN(u"HTTP://x", u"http://y", 7), 0);
  EXPECT_LT(AsciiCompareIgnoreCaseN(u"http://x", u"http://y", 8), 0);
  EXPECT_GT(AsciiCompareIgnoreCaseN(u"b", u"A", 1), 0);
  // The end of a text sorts first; both ending within n is equal.
  EXPECT_LT(AsciiCompareIgnoreCaseN(u"www", u"www.", 4), 0);
  EXPECT_GT(AsciiCompareIgnoreCaseN(u"www.", u"www", 4), 0);
  EXPECT_EQ(AsciiCompareIgnoreCaseN(u"ab", u"AB", 100), 0);
  EXPECT_EQ(AsciiCompareIgnoreCaseN(u"abc", u"xyz", 0), 0);
  EXPECT_EQ(AsciiFindIgnoreCase(u"a.Example.com", u"EXAMPLE"), 2u);
  EXPECT_EQ(AsciiFindIgnoreCase(u"abcabc", u"ABC", 1), 3u);
  EXPECT_EQ(AsciiFindIgnoreCase(u"abc", u"abcd"), std::u16string_view::npos);
  EXPECT_EQ(AsciiFindIgnoreCase(u"abc", u"c", 3), std::u16string_view::npos);
  EXPECT_EQ(AsciiFindIgnoreCase(u"abc", u"", 3), 3u);
  EXPECT_EQ(AsciiFindIgnoreCase(u"abc", u"", 4), std::u16string_view::npos);
}

// Saturated like strtol before the cut to 16 bits; a refused text (end 0)
// leaves value and position alone.
TEST(TextUtilTest, ScanInt16LikeScanf) {
  const std::tuple<const char16_t*, int16_t, size_t> cases[] = {
      {u"42.", 42, 2},   {u"  -7x", -7, 4},   {u"+005", 5, 4},  {u"65537", 1, 5},  {u"32768", -32768, 5},
      {u"\t\n12", 12, 4}, {u"99999999999999999999", -1, 20},    {u"-99999999999999999999", 0, 21},
      {u"", 123, 0},     {u"-", 123, 0},      {u" +", 123, 0},  {u"x1", 123, 0},   {u".5", 123, 0}};
  for (const auto& [text, expected, end] : cases) {
    size_t pos = 0;
    int16_t value = 123;
    EXPECT_EQ(ScanInt16(text, &pos, &value), end != 0);
    EXPECT_EQ(value, expected);
    EXPECT_EQ(pos, end);
  }
}

}  // namespace
}  // namespace corvane
