// fake_fixture.h: writes the fixture file that the scripted extraction
// library (libFakeVisitHarvest.so) serves, and finds that library and its
// siblings in the build tree.

#ifndef CORVANE_TESTS_INTAKE_FAKE_FIXTURE_H_
#define CORVANE_TESTS_INTAKE_FAKE_FIXTURE_H_

#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace corvane::testing {

struct FakeItem {
  std::string name{};
  std::string url{};
  std::string path{};
  std::string time{};  // "YYYY-MM-DD HH:MM:SS.mmm", fields taken as they stand
  int count = 1;
  bool null = false;       // the extractor hands out a null item
  bool nullTexts = false;  // name, URL and path are null pointers
};

struct FakeFixture {
  std::vector<uint32_t> installed{};
  uint32_t defaultBrowser = 0;
  std::map<uint32_t, std::vector<FakeItem>> history{};
  std::map<uint32_t, std::vector<FakeItem>> favorites{};
  std::string log{};  // file that gets one line per Extract call; empty: none
  bool failCreate = false;

  // Writes the fixture as JSON; false when the file can't be written.
  bool Write(const std::string& path) const;
};

// lib<name>.so of the build tree: "FakeVisitHarvest" is the scripted
// library; "NoFactoryHarvest" lacks the factory; "NoDefaultBrowserHarvest"
// and "NoInstalledHarvest" are the scripted one without GetDefautBrowser or
// IsBrowserInstalled.
std::string TestLibrary(const std::string& name);
inline std::string FakeHarvestLibrary() { return TestLibrary("FakeVisitHarvest"); }

}  // namespace corvane::testing

#endif  // CORVANE_TESTS_INTAKE_FAKE_FIXTURE_H_
