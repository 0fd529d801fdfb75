// analysis_host.h: runs updates through the exports on a scripted delivery
// and reads the tables that the analysis built.

#ifndef CORVANE_TESTS_ANALYSIS_ANALYSIS_HOST_H_
#define CORVANE_TESTS_ANALYSIS_ANALYSIS_HOST_H_

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "intake/fake_fixture.h"
#include "support/test_host.h"

namespace corvane::testing {

class AnalysisTest : public ::testing::Test {
 protected:
  // "Now" is 2024-03-10 20:00, a Sunday.
  AnalysisTest();

  // One visit of the default browser (Chrome).
  void Visit(const std::string& url, const std::string& time, int count = 1, const std::string& name = "Page");
  // Makes IE the only installed browser and the default one.
  void UseIEOnly();
  // One entry of IE's own history list.
  void IEVisit(const std::string& url, const std::string& time, int count, const std::string& name = "Page");
  void Favorite(const std::string& url);
  void WriteWhiteList(const std::string& json);
  // Writes the fixture and runs a forced update through a fresh provider.
  HRESULT Update();

  // The rows of a query, each as its columns joined by "|".
  std::vector<std::string> Rows(const std::string& sql) const;
  std::string Scalar(const std::string& sql) const;
  std::string DataFile(const std::string& name) const { return m_dir.Path() + "/CorvaneApp/" + name; }
  // A key of DBConfig.ini as it stands in the file; empty when missing.
  std::string Config(const std::string& key) const;
  // The classification's debug lines of the last update written to the log
  // file, without their line ends.
  std::vector<std::string> ClassificationLines(const std::string& logPath) const;

  test::TempDir m_dir;
  test::ScopedEnv m_appData;
  test::ScopedEnv m_now;
  std::string m_fixturePath;
  test::ScopedEnv m_fixtureEnv;
  test::ScopedEnv m_library;
  FakeFixture m_fixture;
};

}  // namespace corvane::testing

#endif  // CORVANE_TESTS_ANALYSIS_ANALYSIS_HOST_H_
