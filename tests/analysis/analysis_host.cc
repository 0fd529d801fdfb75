#include "analysis/analysis_host.h"

#include <sqlite3.h>

#include <filesystem>
#include <fstream>

#include "corvane/VisitHarvest.h"

namespace corvane::testing {

AnalysisTest::AnalysisTest()
    : m_appData("CORVANE_APPDATA", m_dir.Path().c_str()),
      m_now("CORVANE_TEST_NOW", "2024-03-10 20:00:00"),
      m_fixturePath(m_dir.File("fixture.json")),
      m_fixtureEnv("CORVANE_FAKE_HARVEST_FIXTURE", m_fixturePath.c_str()),
      m_library("CORVANE_HARVEST_LIBRARY", FakeHarvestLibrary().c_str()) {
  m_fixture.installed = {BROWSER_CHROME};
  m_fixture.defaultBrowser = BROWSER_CHROME;
}

void AnalysisTest::Visit(const std::string& url, const std::string& time, int count, const std::string& name) {
  m_fixture.history[BROWSER_CHROME].push_back(FakeItem{name, url, "", time, count});
}

void AnalysisTest::UseIEOnly() {
  m_fixture.installed = {BROWSER_IE};
  m_fixture.defaultBrowser = BROWSER_IE;
}

void AnalysisTest::IEVisit(const std::string& url, const std::string& time, int count, const std::string& name) {
  m_fixture.history[BROWSER_IE].push_back(FakeItem{name, url, "", time, count});
}

void AnalysisTest::Favorite(const std::string& url) {
  m_fixture.favorites[BROWSER_CHROME].push_back(FakeItem{"Favourite", url, "Bookmarks bar", ""});
}

void AnalysisTest::WriteWhiteList(const std::string& json) {
  std::filesystem::create_directories(m_dir.Path() + "/CorvaneApp");
  std::ofstream(DataFile("WhiteList.js"), std::ios::binary) << json;
}

HRESULT AnalysisTest::Update() {
  EXPECT_TRUE(m_fixture.Write(m_fixturePath));
  ComPtr<ICorvaneDataProviderObject> provider = test::CreateProvider();
  if (!provider) return E_FAIL;
  HRESULT hr = provider->Initialize(nullptr);
  if (hr == S_OK) hr = provider->ForceUpdateData();
  return hr;
}

std::vector<std::string> AnalysisTest::Rows(const std::string& sql) const {
  std::vector<std::string> rows;
  sqlite3* db = nullptr;
  sqlite3_open_v2(DataFile("CorvaneAppDB.db").c_str(), &db, SQLITE_OPEN_READONLY, nullptr);
  sqlite3_stmt* stmt = nullptr;
  if (sqlite3_prepare_v2(db, sql.c_str(), -1, &stmt, nullptr) != SQLITE_OK) {
    ADD_FAILURE() << sqlite3_errmsg(db) << " in " << sql;
  }
  while (stmt != nullptr && sqlite3_step(stmt) == SQLITE_ROW) {
    std::string row;
    for (int i = 0; i < sqlite3_column_count(stmt); ++i) {
      if (i > 0) row += "|";
      const unsigned char* text = sqlite3_column_text(stmt, i);
      row += text != nullptr ? reinterpret_cast<const char*>(text) : "";
    }
    rows.push_back(row);
  }
  sqlite3_finalize(stmt);
  sqlite3_close(db);
  return rows;
}

std::string AnalysisTest::Scalar(const std::string& sql) const {
  std::vector<std::string> rows = Rows(sql);
  return rows.empty() ? "" : rows.front();
}

std::string AnalysisTest::Config(const std::string& key) const {
  std::ifstream file(DataFile("DBConfig.ini"));
  std::string line;
  while (std::getline(file, line)) {
    if (!line.empty() && line.back() == '\r') line.pop_back();
    if (line.rfind(key + "=", 0) == 0) return line.substr(key.size() + 1);
  }
  return "";
}

std::vector<std::string> AnalysisTest::ClassificationLines(const std::string& logPath) const {
  const std::string kPrefix = "!!!!!AnalyzeProc() ";
  std::vector<std::string> lines;
  std::ifstream file(logPath);
  std::string line;
  while (std::getline(file, line)) {
    if (!line.empty() && line.back() == '\r') line.pop_back();
    if (line.rfind(kPrefix, 0) != 0) continue;
    // Each update starts with its settings line: keep the last update only.
    if (line.rfind(kPrefix + "Settings:", 0) == 0) lines.clear();
    lines.push_back(line.substr(kPrefix.size()));
  }
  return lines;
}

}  // namespace corvane::testing
