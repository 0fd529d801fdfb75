// provider_host.h: the base of the end-to-end suites. Each test gets a data
// folder of its own, "now" at 2024-03-10 20:00 (a Sunday), a debug log, and
// the scripted extraction library serving a fixture that the test fills in;
// updates run through the component's exports, and the test reads back the
// tables and the DBConfig.ini keys they leave.

#ifndef CORVANE_TESTS_INTAKE_PROVIDER_HOST_H_
#define CORVANE_TESTS_INTAKE_PROVIDER_HOST_H_

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "corvane/VisitHarvest.h"
#include "intake/fake_fixture.h"
#include "support/test_host.h"

namespace corvane::testing {

// A date of March 2024, "2024-03-DD"; 0 and below count back into February.
std::string March(int day);

class ProviderTest : public ::testing::Test {
 protected:
  // What Config gives for a key that DBConfig.ini lacks.
  static constexpr char kAbsent[] = "<absent>";

  ProviderTest();

  // A visit of the default browser, Chrome unless a test changes it.
  void Visit(const std::string& url, const std::string& time, int count = 1, const std::string& name = "Page",
             uint32_t browser = BROWSER_CHROME) {
    m_fixture.history[browser].push_back(FakeItem{name, url, "", time, count});
  }
  // IE becomes the only installed browser and the default one.
  void UseIEOnly() {
    m_fixture.installed = {BROWSER_IE};
    m_fixture.defaultBrowser = BROWSER_IE;
  }

  // Writes the fixture, then creates and initializes a provider, which runs
  // its first update; the result of Initialize.
  HRESULT Start(ComPtr<ICorvaneDataProviderObject>* provider = nullptr);
  // Start, then a forced update: a second delivery of the same fixture.
  HRESULT Update();

  // The rows of a query, each as its columns joined by "|".
  std::vector<std::string> Rows(const std::string& sql) const;
  std::string Scalar(const std::string& sql) const;
  std::string Config(const std::string& key) const;
  void SetConfig(const std::string& key, const std::string& value) const;
  std::string DebugLog() const;
  // The classification's debug lines of the last update, without prefix.
  std::vector<std::string> ClassificationLines() const;
  // The extraction library's "Extract <browser> <kind> <count>" lines.
  std::vector<std::string> Calls() const;
  std::string DataFile(const std::string& name) const { return m_dir.Path() + "/CorvaneApp/" + name; }

  test::TempDir m_dir;
  test::ScopedEnv m_appData;
  test::ScopedEnv m_now;
  test::ScopedEnv m_debug;
  std::string m_fixturePath;
  test::ScopedEnv m_fixtureEnv;
  test::ScopedEnv m_library;
  FakeFixture m_fixture;
};

}  // namespace corvane::testing

#endif  // CORVANE_TESTS_INTAKE_PROVIDER_HOST_H_
