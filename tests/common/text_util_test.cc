#include "common/text_util.h"

#include <gtest/gtest.h>


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

}  // namespace
}  // namespace corvane
