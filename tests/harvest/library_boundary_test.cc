// The extraction library offers its three exports and no other symbol, so
// that nothing of its inside can clash with a host's or the component's.

#include <gtest/gtest.h>

#include <set>
#include <string>

#include "support/elf_symbols.h"
#include "support/test_host.h"

namespace corvane::testing {
namespace {

TEST(HarvestLibraryBoundaryTest, TheLibraryShowsItsThreeExportsAndNothingElse) {
  const std::set<std::string> exports = {"CreateVisitHarvestObj", "GetDefautBrowser", "IsBrowserInstalled"};
  EXPECT_EQ(test::DefinedDynamicSymbols(test::BuildLibDir() + "/libVisitHarvest.so"), exports);
}

}  // namespace
}  // namespace corvane::testing
