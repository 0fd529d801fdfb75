#include "harvest/harvest_host.h"

#include <poll.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "common/utf.h"
#include "platform/ini_file.h"
#include "harvest/fixture/browsing_model.h"

namespace corvane::testing {

namespace fs = std::filesystem;

namespace {

// The host of a URL with a scheme.
std::string HostOf(const std::string& url) {
  size_t start = url.find("://") + 3;
  return url.substr(start, url.find('/', start) - start);
}

}  // namespace
using fixture::Family;

HarvestTest::HarvestTest() {
  SetEnv("HOME", Home().c_str());
  for (const char* unset : {"XDG_CONFIG_HOME", "XDG_DATA_HOME", "XDG_CURRENT_DESKTOP", "CHROME_CONFIG_HOME"}) {
    SetEnv(unset, nullptr);
  }
  SetEnv("XDG_CONFIG_DIRS", (Home() + "/etc-xdg").c_str());
  SetEnv("XDG_DATA_DIRS", (Home() + "/usr-share").c_str());
  SetEnv("CORVANE_DEBUG", m_scratch.File("debug.log").c_str());
  SetEnv("TZ", "UTC");
  SetEnv("CORVANE_APPDATA", m_appData.Path().c_str());
  SetEnv("CORVANE_HARVEST_LIBRARY", (test::BuildLibDir() + "/libVisitHarvest.so").c_str());
}

// Newest first, so that a variable set twice gets its first value back.
HarvestTest::~HarvestTest() {
  while (!m_env.empty()) m_env.pop_back();
}

void HarvestTest::SetEnv(const char* name, const char* value) {
  m_env.push_back(std::make_unique<test::ScopedEnv>(name, value));
}

std::string HarvestTest::TakeDebugLog() {
  std::string text = ReadAll(m_scratch.File("debug.log"));
  std::ofstream(m_scratch.File("debug.log"), std::ios::trunc);
  return text;
}

void HarvestTest::UpdateAt(const std::string& now, bool force) {
  test::ScopedEnv clock("CORVANE_TEST_NOW", now.empty() ? nullptr : now.c_str());
  ComPtr<ICorvaneDataProviderObject> provider = test::CreateProvider();
  ASSERT_TRUE(provider);
  ASSERT_EQ(provider->Initialize(nullptr), S_OK);
  ASSERT_EQ(force ? provider->ForceUpdateData() : S_OK, S_OK);
  ASSERT_EQ(provider->Uninitialize(), S_OK);
}

std::string HarvestTest::Config(const std::string& key) const {
  std::string path = m_appData.File("CorvaneApp/DBConfig.ini");
  return ToUtf8(ReadProfileString(FromUtf8(path), u"DBConfig", FromUtf8(key), u"", 260));
}

std::vector<std::string> HarvestTest::Column(const std::string& sql, std::string file) const {
  if (file.empty()) file = m_appData.File("CorvaneApp/CorvaneAppDB.db");
  std::vector<std::string> values;
  sqlite3* db = nullptr;
  sqlite3_open_v2(file.c_str(), &db, SQLITE_OPEN_READONLY, nullptr);
  sqlite3_stmt* stmt = nullptr;
  if (sqlite3_prepare_v2(db, sql.c_str(), -1, &stmt, nullptr) != SQLITE_OK) ADD_FAILURE() << sqlite3_errmsg(db);
  while (stmt != nullptr && sqlite3_step(stmt) == SQLITE_ROW) {
    const unsigned char* text = sqlite3_column_text(stmt, 0);
    values.push_back(text != nullptr ? reinterpret_cast<const char*>(text) : "");
  }
  sqlite3_finalize(stmt);
  sqlite3_close(db);
  return values;
}

std::vector<Delivered> HarvestTest::Extract(uint32_t browser, uint32_t kind) {
  std::vector<Delivered> items;
  IExtractor* extractor = nullptr;
  if (!CreateVisitHarvestObj(&extractor) || extractor == nullptr) {
    ADD_FAILURE() << "no extractor";
    return items;
  }
  extractor->Extract(browser, kind);
  for (uint32_t i = 0, count = extractor->GetCount(); i < count; ++i) {
    IExtractItem* item = nullptr;
    extractor->GetNextItem(&item);
    if (item == nullptr) continue;
    items.push_back({ToUtf8(item->GetName()), ToUtf8(item->GetURL()), ToUtf8(item->GetPath()), {},
                     item->GetVisitCount(), item->GetBrowser()});
    item->GetVisitTime(&items.back().time);
  }
  extractor->FreeItems();
  extractor->Destroy();
  return items;
}

uint32_t BrowserOf(Family family) { return family == Family::kChromium ? BROWSER_CHROME : BROWSER_FIREFOX; }

bool WriteFixture(Family family, const std::string& home, const fixture::ProfileSpec& spec, const std::string& day) {
  std::string error;
  bool chromium = family == Family::kChromium;
  bool written = day.empty() ? (chromium ? fixture::WriteChromiumProfile(home, spec, &error)
                                         : fixture::WriteFirefoxProfile(home, spec, &error))
                             : (chromium ? fixture::AppendChromiumDay(home, spec, day, &error)
                                         : fixture::AppendFirefoxDay(home, spec, day, &error));
  EXPECT_TRUE(written) << error;
  return written;
}

ModelHistory ChosenByModel(const fixture::ProfileSpec& spec) {
  ModelHistory history;
  fixture::BrowsingModel model(spec);
  std::string error;
  EXPECT_TRUE(fixture::ForEachDay(spec, &model, [&](const std::vector<fixture::VisitEvent>& visits) {
    for (const fixture::VisitEvent& visit : visits) {
      if (!fixture::IsChosen(visit.kind)) continue;
      ++history.chosen;
      ++history.perHost[HostOf(model.Pages()[static_cast<size_t>(visit.page)].url)];
    }
    return true;
  }, &error)) << error;
  return history;
}

size_t ChosenOnAppendedDay(const fixture::ProfileSpec& spec, const std::string& day) {
  std::unique_ptr<fixture::BrowsingModel> model;
  std::vector<fixture::VisitEvent> visits;
  std::string error;
  EXPECT_TRUE(fixture::AppendedDay(spec, day, &model, &visits, &error)) << error;
  size_t chosen = 0;
  for (const fixture::VisitEvent& visit : visits) chosen += fixture::IsChosen(visit.kind) ? 1 : 0;
  return chosen;
}

// The parent closes its end of the pipe, so that a child that ends is seen
// at once.
bool RunWithin(int seconds, const std::function<std::string()>& body, std::string* lpOut) {
  int channel[2];
  if (pipe(channel) != 0) return false;
  pid_t child = fork();
  if (child == 0) {
    std::string out = body();
    _exit(write(channel[1], out.data(), out.size()) == static_cast<ssize_t>(out.size()) ? 0 : 1);
  }
  close(channel[1]);
  pollfd wait{channel[0], POLLIN, 0};
  bool ended = poll(&wait, 1, seconds * 1000) == 1;
  char buffer[4096];
  ssize_t got = ended ? read(channel[0], buffer, sizeof(buffer)) : 0;
  lpOut->assign(buffer, static_cast<size_t>(std::max<ssize_t>(got, 0)));
  close(channel[0]);
  if (!ended) kill(child, SIGKILL);
  int status = 0;
  waitpid(child, &status, 0);
  return ended && WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

std::vector<std::string> URLs(const std::vector<Delivered>& items) {
  std::vector<std::string> urls;
  for (const Delivered& item : items) urls.push_back(item.url);
  return urls;
}

std::string Clock(const SYSTEMTIME& t) {
  char text[64];
  std::snprintf(text, sizeof(text), "%04d-%02d-%02d %d %02d:%02d:%02d.%03d", t.wYear, t.wMonth, t.wDay, t.wDayOfWeek,
                t.wHour, t.wMinute, t.wSecond, t.wMilliseconds);
  return text;
}

std::string ReadAll(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

void ExecSql(sqlite3* db, const std::string& sql) {
  char* message = nullptr;
  if (sqlite3_exec(db, sql.c_str(), nullptr, nullptr, &message) != SQLITE_OK) {
    ADD_FAILURE() << (message != nullptr ? message : "no database") << " in " << sql;
  }
  sqlite3_free(message);
}

void WriteDb(const std::string& path, bool firefox, const std::string& rows) {
  fs::create_directories(fs::path(path).parent_path());
  for (const char* suffix : {"", "-wal", "-shm", "-journal"}) fs::remove(path + suffix);
  sqlite3* db = nullptr;
  sqlite3_open(path.c_str(), &db);
  ExecSql(db, firefox ? "create table moz_places(id INTEGER PRIMARY KEY, url, title, rev_host, visit_count DEFAULT 0, "
                        "hidden DEFAULT 0 NOT NULL, typed DEFAULT 0 NOT NULL); create table moz_historyvisits(id "
                        "INTEGER PRIMARY KEY, from_visit, place_id, visit_date, visit_type, session); create table "
                        "moz_bookmarks(id INTEGER PRIMARY KEY, type, fk, parent, position, title, guid);" + rows
                      : "create table urls(id INTEGER PRIMARY KEY, url, title, visit_count, typed_count, "
                        "last_visit_time, hidden); create table visits(id INTEGER PRIMARY KEY, url, visit_time, "
                        "from_visit, transition, segment_id, visit_duration, originator_cache_guid); create table "
                        "visit_source(id INTEGER PRIMARY KEY, source NOT NULL);" + rows);
  sqlite3_close(db);
}

std::string HandChromiumHistory(const std::string& home, const std::string& rows) {
  std::string path = home + "/.config/chromium/Default/History";
  WriteDb(path, false, rows);
  std::ofstream(home + "/.config/chromium/Local State") << R"({"profile":{"last_used":"Default"}})";
  return path;
}

std::string HandFirefoxPlaces(const std::string& home, const std::string& rows) {
  std::string root = home + "/.mozilla/firefox";
  WriteDb(root + "/hand.default/places.sqlite", true,
          "PRAGMA journal_mode=WAL; insert into moz_bookmarks(id, type, parent, position, title, guid) values "
          "(1, 2, 0, 0, '', 'root________'), (2, 2, 1, 0, 'menu', 'menu________'), (3, 2, 1, 1, 'toolbar', "
          "'toolbar_____');" + rows);
  std::ofstream(root + "/profiles.ini", std::ios::trunc) << "[Profile0]\nName=hand\nIsRelative=1\nPath=hand.default\n";
  return root + "/hand.default/places.sqlite";
}

}  // namespace corvane::testing
