// harvest_host.h: the extraction library loaded by path as the component
// loads it, with HOME and the XDG folders pointed at a temporary home and
// the debug log written to a file the test can read.

#ifndef CORVANE_TESTS_HARVEST_HARVEST_HOST_H_
#define CORVANE_TESTS_HARVEST_HARVEST_HOST_H_

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "corvane/VisitHarvest.h"
#include "support/test_host.h"

namespace corvane::testing {

struct HarvestLibrary {
  bool (*CreateVisitHarvestObj)(IExtractor**);
  uint32_t (*GetDefautBrowser)();
  bool (*IsBrowserInstalled)(uint32_t);
};
const HarvestLibrary& LoadHarvest();

// One delivered item, copied out of the extractor.
struct Delivered {
  std::string name;
  std::string url;
  std::string path;
  SYSTEMTIME time{};
  int32_t count = 0;
  uint32_t browser = 0;
};

class HarvestTest : public ::testing::Test {
 protected:
  HarvestTest();
  std::vector<Delivered> Extract(uint32_t browser, uint32_t kind);
  std::string Home() const { return m_home.Path(); }
  // The debug lines written since the last call, and empties the log.
  std::string TakeDebugLog();
  // A folder outside the home for the test's own files.
  std::string Scratch() const { return m_scratch.Path(); }

  test::TempDir m_home;
  test::TempDir m_scratch;
  test::ScopedEnv m_homeEnv;
  test::ScopedEnv m_config;
  test::ScopedEnv m_configDirs;
  test::ScopedEnv m_dataHome;
  test::ScopedEnv m_dataDirs;
  test::ScopedEnv m_desktop;
  test::ScopedEnv m_debug;
};

// Runs body in a child process and hands back what it returned; false when
// the child did not finish within the time (it is then killed) or died.
// For cases that would hang the process that ran them.
bool RunWithin(int seconds, const std::function<std::string()>& body, std::string* lpOut);

// The URLs of delivered items, in their order.
std::vector<std::string> URLs(const std::vector<Delivered>& items);

}  // namespace corvane::testing

#endif  // CORVANE_TESTS_HARVEST_HARVEST_HOST_H_
