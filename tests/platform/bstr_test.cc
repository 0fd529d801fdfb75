// Counted strings: the exported allocation functions with lengths that the
// 4-byte prefix can't hold.

#include "platform/bstr.h"

#include <gtest/gtest.h>

#include <cstring>
#include <limits>

#include "support/test_host.h"

namespace corvane {
namespace {

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
