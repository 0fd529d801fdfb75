// fake_fixture.h: writes the fixture file that the scripted extraction
// library (libFakeVisitHarvest.so) serves, and points the library at it.

#ifndef CORVANE_TESTS_INTAKE_FAKE_FIXTURE_H_
#define CORVANE_TESTS_INTAKE_FAKE_FIXTURE_H_

#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace corvane::testing {

struct FakeItem {
  std::string name;
  std::string url;
  std::string path;
  std::string time;  // "YYYY-MM-DD HH:MM:SS.mmm", fields taken as they stand
  int count = 1;
  uint32_t browser = 0;  // 0: the browser the item is filed under
  bool null = false;     // the extractor hands out a null item
  bool nullTexts = false;  // name, URL and path are null pointers
};

struct FakeFixture {
  std::vector<uint32_t> installed;
  uint32_t defaultBrowser = 0;
  std::map<uint32_t, std::vector<FakeItem>> history;
  std::map<uint32_t, std::vector<FakeItem>> favorites;
  std::string log;  // file that gets one line per Extract call; empty: none
  bool failCreate = false;

  // Writes the fixture as JSON; false when the file can't be written.
  bool Write(const std::string& path) const;
};

// The lines of a call log, in order; empty when there is none.
std::vector<std::string> ReadLines(const std::string& path);

// The scripted library and its siblings in the build tree: one without the
// factory, and the scripted one without GetDefautBrowser or without
// IsBrowserInstalled.
std::string FakeHarvestLibrary();
std::string NoFactoryHarvestLibrary();
std::string NoDefaultBrowserHarvestLibrary();
std::string NoInstalledHarvestLibrary();

}  // namespace corvane::testing

#endif  // CORVANE_TESTS_INTAKE_FAKE_FIXTURE_H_
