// Counted strings: their layout, and the exported allocation functions with
// lengths that the 4-byte prefix can't hold.

#include "platform/bstr.h"

#include <gtest/gtest.h>

#include <cstring>
#include <limits>

#include "support/test_host.h"

namespace corvane {
namespace {

uint32_t PrefixOf(BSTR bstr) {
  uint32_t bytes = 0;
  std::memcpy(&bytes, reinterpret_cast<const char*>(bstr) - 4, 4);
  return bytes;
}

TEST(BstrTest, LengthPrefixTextAndTerminator) {
  const char16_t text[] = {u'a', 0, u'b'};
  BSTR bstr = BstrAllocLen(text, 3);
  ASSERT_NE(bstr, nullptr);
  EXPECT_EQ(PrefixOf(bstr), 6u);
  EXPECT_EQ(BstrLength(bstr), 3u);
  EXPECT_EQ(BstrToString(bstr), std::u16string(text, 3));
  EXPECT_EQ(bstr[3], 0);
  BstrFree(bstr);

  BSTR empty = BstrAlloc(std::u16string_view());
  ASSERT_NE(empty, nullptr);
  EXPECT_EQ(BstrLength(empty), 0u);
  EXPECT_EQ(empty[0], 0);
  BstrFree(empty);
  EXPECT_EQ(BstrLength(nullptr), 0u);
}

TEST(BstrTest, NullSourceGivesZeroedText) {
  BSTR bstr = BstrAllocLen(nullptr, 1000);
  ASSERT_NE(bstr, nullptr);
  EXPECT_EQ(BstrLength(bstr), 1000u);
  EXPECT_EQ(BstrToString(bstr), std::u16string(1000, u'\0'));
  BstrFree(bstr);
}

TEST(BstrTest, LengthBeyondThePrefixGivesNull) {
  constexpr size_t kLargestChars = std::numeric_limits<uint32_t>::max() / 2;
  EXPECT_EQ(BstrAllocLen(nullptr, kLargestChars + 1), nullptr);
  EXPECT_EQ(BstrAllocLen(nullptr, std::numeric_limits<size_t>::max()), nullptr);
  EXPECT_EQ(BstrAllocLen(u"x", kLargestChars + 1), nullptr);
}

// A huge length with a null source once built a zeroed string of that many
// characters before any check, and the allocation failure escaped the C
// export as an exception.
TEST(BstrExportTest, SysAllocStringLenOfAHugeNullTextReturnsNull) {
  const test::Component& component = test::LoadComponent();
  EXPECT_EQ(component.SysAllocStringLen(nullptr, std::numeric_limits<uint32_t>::max()), nullptr);
  EXPECT_EQ(component.SysAllocStringLen(nullptr, 0x80000000u), nullptr);

  BSTR zeros = component.SysAllocStringLen(nullptr, 4);
  ASSERT_NE(zeros, nullptr);
  EXPECT_EQ(component.SysStringLen(zeros), 4u);
  EXPECT_EQ(std::u16string(zeros, 5), std::u16string(5, u'\0'));
  component.SysFreeString(zeros);

  BSTR copy = component.SysAllocStringLen(u"abcdef", 3);
  ASSERT_NE(copy, nullptr);
  EXPECT_EQ(std::u16string(copy), u"abc");
  component.SysFreeString(copy);
}

}  // namespace
}  // namespace corvane
