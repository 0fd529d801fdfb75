// harvest_host.h: what the tests of the extraction library (linked to the
// test, its three exports called directly) share: a fixture whose HOME and XDG folders point at a temporary home,
// with the debug log in a file the test reads; what the fixture's model says
// was chosen; and browser files written row by row for the cases a fixture
// profile does not hold (odd transitions, damaged values).

#ifndef CORVANE_TESTS_HARVEST_HARVEST_HOST_H_
#define CORVANE_TESTS_HARVEST_HARVEST_HOST_H_

#include <gtest/gtest.h>
#include <sqlite3.h>

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "corvane/VisitHarvest.h"
#include "harvest/fixture/profile_fixture.h"
#include "support/test_host.h"

namespace corvane::testing {

// One delivered item, copied out of the extractor.
struct Delivered {
  std::string name, url, path;
  SYSTEMTIME time{};
  int32_t count = 0;
  uint32_t browser = 0;
};

// TZ is UTC unless a test sets another zone.
class HarvestTest : public ::testing::Test {
 protected:
  HarvestTest();
  ~HarvestTest() override;
  // Sets (null: unsets) a variable until the test ends.
  void SetEnv(const char* name, const char* value);
  std::vector<Delivered> Extract(uint32_t browser, uint32_t kind);
  std::string Home() const { return m_home.Path(); }
  // The debug lines written since the last call; empties the log.
  std::string TakeDebugLog();

  // The component on this home, with its data folder in m_appData: a
  // fresh provider whose Initialize runs the day's first update, as a host
  // that starts once a day, at now (empty: the real clock); force runs it
  // again.
  void UpdateAt(const std::string& now, bool force = false);
  std::string Config(const std::string& key) const;
  // The first column of sql on the component's database, or on file.
  std::vector<std::string> Column(const std::string& sql, std::string file = "") const;

  test::TempDir m_home;
  test::TempDir m_appData;
  test::TempDir m_scratch;  // outside the home, for the test's own files
  std::vector<std::unique_ptr<test::ScopedEnv>> m_env;
};

uint32_t BrowserOf(fixture::Family family);
// The family's fixture profile under home, or with a day ("YYYY-MM-DD")
// one more day of it; a failure is a test failure.
bool WriteFixture(fixture::Family family, const std::string& home, const fixture::ProfileSpec& spec,
                  const std::string& day = "");

// What the fixture's model says the person chose over the whole profile,
// and on one appended day.
struct ModelHistory {
  size_t chosen = 0;
  std::map<std::string, int> perHost;
};
ModelHistory ChosenByModel(const fixture::ProfileSpec& spec);
size_t ChosenOnAppendedDay(const fixture::ProfileSpec& spec, const std::string& day);

// Runs body in a child process and hands back what it returned; false when
// the child did not finish within the time (it is then killed) or died.
bool RunWithin(int seconds, const std::function<std::string()>& body, std::string* lpOut);

std::vector<std::string> URLs(const std::vector<Delivered>& items);
// "YYYY-MM-DD d HH:MM:SS.mmm", d the day of the week (0: Sunday).
std::string Clock(const SYSTEMTIME& time);
std::string ReadAll(const std::string& path);

// Runs SQL; a failure is a test failure.
void ExecSql(sqlite3* db, const std::string& sql);
// A new database at path (its folder made, an old one and its log removed)
// holding the tables of a Chromium History or a Firefox places.sqlite and
// the given rows.
void WriteDb(const std::string& path, bool firefox, const std::string& rows);
// A Chromium profile under home/.config/chromium, the last used one, whose
// History holds the given rows. Returns History's path.
std::string HandChromiumHistory(const std::string& home, const std::string& rows);
// A Firefox profile under home/.mozilla/firefox, the only one profiles.ini
// names, whose places.sqlite (in WAL mode) holds the bookmark roots and the
// given rows. Returns places.sqlite's path.
std::string HandFirefoxPlaces(const std::string& home, const std::string& rows);

}  // namespace corvane::testing

#endif  // CORVANE_TESTS_HARVEST_HARVEST_HOST_H_
