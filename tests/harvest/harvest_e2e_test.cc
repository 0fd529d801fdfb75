// The component with the real extraction library on a fixture home, loaded
// and driven through its exports as a host does: the first update stores
// every visit the fixture's person chose, the recommendations lead with the
// sites that person uses most, and the next day's update adds exactly that
// day's visits.

#include <gtest/gtest.h>
#include <sqlite3.h>

#include <algorithm>
#include <map>
#include <set>

#include "common/utf.h"
#include "harvest/fixture/browsing_model.h"
#include "harvest/fixture/profile_fixture.h"
#include "platform/ini_file.h"
#include "support/test_host.h"

namespace corvane::testing {
namespace {

using fixture::Family;
using test::ScopedEnv;
using test::TempDir;

constexpr char kLastDay[] = "2024-05-20";
constexpr char kNextDay[] = "2024-05-21";

fixture::ProfileSpec Spec() {
  fixture::ProfileSpec spec;
  spec.seed = 3;
  spec.days = 30;
  spec.visitsPerDay = 300;
  spec.distinctUrls = 3000;
  spec.hosts = 300;
  spec.bookmarks = 40;
  spec.lastDay = kLastDay;
  spec.endTime = "20:30";
  return spec;
}

std::string HostOf(const std::string& url) {
  size_t start = url.find("://") + 3;
  return url.substr(start, url.find('/', start) - start);
}

// What the fixture's model says the person chose on every day of the
// profile: the count, and the chosen visits per host.
struct ModelHistory {
  size_t chosen = 0;
  std::map<std::string, int> perHost;
};

ModelHistory Model(const fixture::ProfileSpec& spec) {
  ModelHistory history;
  fixture::BrowsingModel model(spec);
  std::string error;
  bool made = fixture::ForEachDay(
      spec, &model,
      [&](const std::vector<fixture::VisitEvent>& visits) {
        for (const fixture::VisitEvent& visit : visits) {
          if (!fixture::IsChosen(visit.kind)) continue;
          ++history.chosen;
          ++history.perHost[HostOf(model.Pages()[static_cast<size_t>(visit.page)].url)];
        }
        return true;
      },
      &error);
  EXPECT_TRUE(made) << error;
  return history;
}

size_t ModelAppendedDay(const fixture::ProfileSpec& spec, const std::string& day) {
  std::unique_ptr<fixture::BrowsingModel> model;
  std::vector<fixture::VisitEvent> visits;
  std::string error;
  EXPECT_TRUE(fixture::AppendedDay(spec, day, &model, &visits, &error)) << error;
  return static_cast<size_t>(
      std::count_if(visits.begin(), visits.end(), [](const fixture::VisitEvent& v) { return fixture::IsChosen(v.kind); }));
}

class HarvestEndToEndTest : public ::testing::TestWithParam<Family> {
 protected:
  HarvestEndToEndTest()
      : m_homeEnv("HOME", m_home.Path().c_str()),
        m_config("XDG_CONFIG_HOME", m_home.File(".config").c_str()),
        m_configDirs("XDG_CONFIG_DIRS", m_home.File("etc-xdg").c_str()),
        m_dataHome("XDG_DATA_HOME", m_home.File(".local/share").c_str()),
        m_dataDirs("XDG_DATA_DIRS", m_home.File("usr-share").c_str()),
        m_desktop("XDG_CURRENT_DESKTOP", nullptr),
        m_chromeHome("CHROME_CONFIG_HOME", nullptr),
        m_tz("TZ", "Europe/Berlin"),
        m_appDataEnv("CORVANE_APPDATA", m_appData.Path().c_str()),
        m_library("CORVANE_HARVEST_LIBRARY", (test::BuildLibDir() + "/libVisitHarvest.so").c_str()),
        m_debug("CORVANE_DEBUG", m_appData.File("debug.log").c_str()),
        m_now("CORVANE_TEST_NOW", (std::string(kLastDay) + " 21:00:00").c_str()) {}

  // Initialize runs the day's first update; a fresh provider for each, as
  // a host that starts once a day. A forced update runs again.
  void UpdateAt(const std::string& now, bool force = false) {
    ScopedEnv clock("CORVANE_TEST_NOW", now.c_str());
    ComPtr<ICorvaneDataProviderObject> provider = test::CreateProvider();
    ASSERT_TRUE(provider);
    ASSERT_EQ(provider->Initialize(nullptr), S_OK);
    if (force) {
      ASSERT_EQ(provider->ForceUpdateData(), S_OK);
    }
    ASSERT_EQ(provider->Uninitialize(), S_OK);
  }

  std::string Config(const std::string& key) const {
    std::string path = m_appData.File("CorvaneApp/DBConfig.ini");
    return ToUtf8(ReadProfileString(FromUtf8(path), u"DBConfig", FromUtf8(key), u"", 260));
  }

  std::vector<std::string> Column(const std::string& sql) const {
    std::vector<std::string> values;
    sqlite3* db = nullptr;
    sqlite3_open_v2(m_appData.File("CorvaneApp/CorvaneAppDB.db").c_str(), &db, SQLITE_OPEN_READONLY, nullptr);
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

  bool WriteProfile(const fixture::ProfileSpec& spec, std::string* error) {
    bool chromium = GetParam() == Family::kChromium;
    return (chromium ? fixture::WriteChromiumProfile(m_home.Path(), spec, error)
                     : fixture::WriteFirefoxProfile(m_home.Path(), spec, error)) &&
           fixture::WriteDefaultBrowser(m_home.Path(), GetParam(), error);
  }

  bool AppendDay(const fixture::ProfileSpec& spec, const std::string& day, std::string* error) {
    return GetParam() == Family::kChromium ? fixture::AppendChromiumDay(m_home.Path(), spec, day, error)
                                           : fixture::AppendFirefoxDay(m_home.Path(), spec, day, error);
  }

  std::string BrowserName() const { return GetParam() == Family::kChromium ? "Chrome" : "FireFox"; }

  TempDir m_home;
  TempDir m_appData;
  ScopedEnv m_homeEnv;
  ScopedEnv m_config;
  ScopedEnv m_configDirs;
  ScopedEnv m_dataHome;
  ScopedEnv m_dataDirs;
  ScopedEnv m_desktop;
  ScopedEnv m_chromeHome;
  ScopedEnv m_tz;
  ScopedEnv m_appDataEnv;
  ScopedEnv m_library;
  ScopedEnv m_debug;
  ScopedEnv m_now;
};

TEST_P(HarvestEndToEndTest, UpdatesStoreTheChosenVisitsAndRecommendTheTopSites) {
  fixture::ProfileSpec spec = Spec();
  std::string error;
  ASSERT_TRUE(WriteProfile(spec, &error)) << error;
  ModelHistory model = Model(spec);
  ASSERT_GT(model.chosen, 5000u);

  UpdateAt(std::string(kLastDay) + " 21:00:00");
  EXPECT_EQ(Config("DefBrowser"), BrowserName());
  EXPECT_EQ(Config("ExtractBrowser"), BrowserName());
  EXPECT_EQ(Config("HitoryExtractCount"), std::to_string(model.chosen));
  EXPECT_EQ(Config("AddHistoryCount"), std::to_string(model.chosen));
  EXPECT_EQ(Column("select count(*) from THistory"), std::vector<std::string>{std::to_string(model.chosen)});
  EXPECT_EQ(Config("FavoriteExtractCount"), "40");

  // The sites the person uses most lead the recommendations.
  std::vector<std::pair<int, std::string>> ranked;
  for (const auto& [host, visits] : model.perHost) ranked.emplace_back(-visits, host);
  std::sort(ranked.begin(), ranked.end());
  std::vector<std::string> recommended =
      Column("select Domain from TRecommendURL order by Weight desc, LastVisitTime desc");
  ASSERT_GE(recommended.size(), 10u);
  EXPECT_EQ(recommended[0], ranked[0].second);
  std::set<std::string> topTen(recommended.begin(), recommended.begin() + 10);
  for (size_t i = 0; i < 5; ++i) {
    EXPECT_TRUE(topTen.count(ranked[i].second)) << ranked[i].second << " (" << -ranked[i].first
                                                << " visits) is not among the first ten recommendations";
  }

  // The next day: only its visits are added.
  ASSERT_TRUE(AppendDay(spec, kNextDay, &error)) << error;
  size_t newDay = ModelAppendedDay(spec, kNextDay);
  ASSERT_GT(newDay, 150u);
  UpdateAt(std::string(kNextDay) + " 21:00:00");
  EXPECT_EQ(Config("AddHistoryCount"), std::to_string(newDay));
  EXPECT_EQ(Config("HitoryExtractCount"), std::to_string(model.chosen + newDay));
  EXPECT_EQ(Column("select count(*) from THistory"), std::vector<std::string>{std::to_string(model.chosen + newDay)});
  // An update later the same day finds nothing new.
  UpdateAt(std::string(kNextDay) + " 22:00:00", true);
  EXPECT_EQ(Config("AddHistoryCount"), "0");
  EXPECT_EQ(Column("select count(*) from THistory"), std::vector<std::string>{std::to_string(model.chosen + newDay)});
}

INSTANTIATE_TEST_SUITE_P(BothFamilies, HarvestEndToEndTest, ::testing::Values(Family::kChromium, Family::kFirefox),
                         [](const ::testing::TestParamInfo<Family>& family) {
                           return family.param == Family::kChromium ? "Chromium" : "Firefox";
                         });

}  // namespace
}  // namespace corvane::testing
