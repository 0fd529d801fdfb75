// Counted strings: their layout, and the exported allocation functions with
// lengths that the 4-byte prefix can't hold.

#include "platform/bstr.h"

#include <gtest/gtest.h>

#include <cstring>
#include <limits>

#include "support/test_host.h"

namespace corvane {
namespace {

// Counted from the text, or zeroed for a null one; a length the 4-byte
// prefix can't hold gives null.
TEST(BstrTest, LengthPrefixTextAndTerminator) {
  const char16_t text[] = {u'a', 0, u'b'};
  for (const char16_t* source : {text, static_cast<const char16_t*>(nullptr)}) {
    BSTR bstr = BstrAllocLen(source, 3);
    ASSERT_NE(bstr, nullptr);
    uint32_t bytes = 0;
    std::memcpy(&bytes, reinterpret_cast<const char*>(bstr) - 4, 4);
    EXPECT_EQ(bytes, 6u);
    EXPECT_EQ(BstrToString(bstr), source != nullptr ? std::u16string(text, 3) : std::u16string(3, u'\0'));
    EXPECT_EQ(bstr[3], 0);
    BstrFree(bstr);
  }
  EXPECT_EQ(BstrLength(nullptr), 0u);
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
  BSTR copy = component.SysAllocStringLen(u"abcdef", 3);
  ASSERT_NE(copy, nullptr);
  EXPECT_EQ(component.SysStringLen(copy), 3u);
  EXPECT_EQ(std::u16string(copy, 4), std::u16string(u"abc\0", 4));
  component.SysFreeString(copy);
}

}  // namespace
}  // namespace corvane
