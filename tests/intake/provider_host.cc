#include "intake/provider_host.h"

#include <fstream>
#include <sstream>

#include "common/utf.h"
#include "platform/ini_file.h"
#include "store/db_fixture.h"

namespace corvane::testing {
namespace {

std::vector<std::string> Lines(const std::string& path) {
  std::vector<std::string> lines;
  std::ifstream in(path);
  for (std::string line; std::getline(in, line);) {
    if (!line.empty() && line.back() == '\r') line.pop_back();
    lines.push_back(line);
  }
  return lines;
}

}  // namespace

std::string March(int day) {
  const int dayOfMonth = day > 0 ? day : 29 + day;
  return std::string(day > 0 ? "2024-03-" : "2024-02-") + (dayOfMonth < 10 ? "0" : "") + std::to_string(dayOfMonth);
}

ProviderTest::ProviderTest()
    : m_appData("CORVANE_APPDATA", m_dir.Path().c_str()),
      m_now("CORVANE_TEST_NOW", "2024-03-10 20:00:00"),
      m_debug("CORVANE_DEBUG", m_dir.File("debug.log").c_str()),
      m_fixturePath(m_dir.File("fixture.json")),
      m_fixtureEnv("CORVANE_FAKE_HARVEST_FIXTURE", m_fixturePath.c_str()),
      m_library("CORVANE_HARVEST_LIBRARY", FakeHarvestLibrary().c_str()) {
  m_fixture.installed = {BROWSER_CHROME};
  m_fixture.defaultBrowser = BROWSER_CHROME;
}

HRESULT ProviderTest::Start(ComPtr<ICorvaneDataProviderObject>* provider) {
  m_fixture.log = m_dir.File("calls.log");
  EXPECT_TRUE(m_fixture.Write(m_fixturePath));
  ComPtr<ICorvaneDataProviderObject> created = test::CreateProvider();
  if (!created) return E_POINTER;
  HRESULT hr = created->Initialize(nullptr);
  if (provider != nullptr) *provider = std::move(created);
  return hr;
}

HRESULT ProviderTest::Update() {
  ComPtr<ICorvaneDataProviderObject> provider;
  HRESULT hr = Start(&provider);
  return hr == S_OK ? provider->ForceUpdateData() : hr;
}

std::vector<std::string> ProviderTest::Rows(const std::string& sql) const {
  sqlite3* db = nullptr;
  sqlite3_open_v2(DataFile("CorvaneAppDB.db").c_str(), &db, SQLITE_OPEN_READONLY, nullptr);
  std::vector<std::string> rows = QueryRows(db, sql);
  sqlite3_close(db);
  return rows;
}

std::string ProviderTest::Scalar(const std::string& sql) const {
  std::vector<std::string> rows = Rows(sql);
  return rows.empty() ? "" : rows.front();
}

std::string ProviderTest::Config(const std::string& key) const {
  return ToUtf8(ReadProfileString(FromUtf8(DataFile("DBConfig.ini")), u"DBConfig", FromUtf8(key), u"<absent>", 260));
}

void ProviderTest::SetConfig(const std::string& key, const std::string& value) const {
  const std::u16string text = FromUtf8(value);
  ASSERT_TRUE(WriteProfileString(FromUtf8(DataFile("DBConfig.ini")), u"DBConfig", FromUtf8(key), &text));
}

std::string ProviderTest::DebugLog() const {
  std::ostringstream text;
  text << std::ifstream(m_dir.File("debug.log")).rdbuf();
  return text.str();
}

std::vector<std::string> ProviderTest::ClassificationLines() const {
  const std::string kPrefix = "!!!!!AnalyzeProc() ";
  std::vector<std::string> lines;
  for (const std::string& line : Lines(m_dir.File("debug.log"))) {
    if (line.rfind(kPrefix, 0) != 0) continue;
    // Each update starts with its settings line: keep the last update only.
    if (line.rfind(kPrefix + "Settings:", 0) == 0) lines.clear();
    lines.push_back(line.substr(kPrefix.size()));
  }
  return lines;
}

std::vector<std::string> ProviderTest::Calls() const { return Lines(m_fixture.log); }

}  // namespace corvane::testing
