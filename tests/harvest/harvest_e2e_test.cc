// The extraction library at its boundary: its three exports and no other
// symbol, so that nothing of its inside can clash with a host's or the
// component's; and the component driving it on a fixture home, through its
// exports as a host does: the first update stores every visit the
// fixture's person chose, the recommendations lead with the sites that
// person uses most, and the next day's update adds exactly that day's visits.

#include <algorithm>
#include <set>

#include "common/utf.h"
#include "platform/ini_file.h"
#include "support/elf_symbols.h"

#include "harvest/harvest_host.h"

namespace corvane::testing {
namespace {

using fixture::Family;

TEST(HarvestLibraryBoundaryTest, TheLibraryShowsItsThreeExportsAndNothingElse) {
  EXPECT_EQ(test::DefinedDynamicSymbols(test::BuildLibDir() + "/libVisitHarvest.so"),
            (std::set<std::string>{"CreateVisitHarvestObj", "GetDefautBrowser", "IsBrowserInstalled"}));
}

class HarvestEndToEndTest : public HarvestTest, public ::testing::WithParamInterface<Family> {
 protected:
  HarvestEndToEndTest() {
    SetEnv("TZ", "Europe/Berlin");
    SetEnv("CORVANE_APPDATA", m_appData.Path().c_str());
    SetEnv("CORVANE_HARVEST_LIBRARY", (test::BuildLibDir() + "/libVisitHarvest.so").c_str());
  }

  // Initialize runs the day's first update; a fresh provider for each, as
  // a host that starts once a day. A forced update runs again.
  void UpdateAt(const std::string& now, bool force = false) {
    test::ScopedEnv clock("CORVANE_TEST_NOW", now.c_str());
    ComPtr<ICorvaneDataProviderObject> provider = test::CreateProvider();
    ASSERT_TRUE(provider);
    ASSERT_EQ(provider->Initialize(nullptr), S_OK);
    ASSERT_EQ(force ? provider->ForceUpdateData() : S_OK, S_OK);
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

  test::TempDir m_appData;
};

TEST_P(HarvestEndToEndTest, UpdatesStoreTheChosenVisitsAndRecommendTheTopSites) {
  fixture::ProfileSpec spec{.seed = 3, .days = 30, .visitsPerDay = 300, .distinctUrls = 3000, .hosts = 300,
                            .bookmarks = 40, .lastDay = "2024-05-20", .endTime = "20:30"};
  std::string error;
  ASSERT_TRUE(WriteFixture(GetParam(), Home(), spec) && fixture::WriteDefaultBrowser(Home(), GetParam(), &error)) << error;
  ModelHistory model = ChosenByModel(spec);
  ASSERT_GT(model.chosen, 5000u);

  UpdateAt("2024-05-20 21:00:00");
  std::string browser = GetParam() == Family::kChromium ? "Chrome" : "FireFox";
  EXPECT_EQ(Config("DefBrowser"), browser);
  EXPECT_EQ(Config("ExtractBrowser"), browser);
  EXPECT_EQ(Config("HitoryExtractCount"), std::to_string(model.chosen));
  EXPECT_EQ(Config("AddHistoryCount"), std::to_string(model.chosen));
  EXPECT_EQ(Column("select count(*) from THistory"), std::vector<std::string>{std::to_string(model.chosen)});
  EXPECT_EQ(Config("FavoriteExtractCount"), "40");

  // The sites the person uses most lead the recommendations.
  std::vector<std::pair<int, std::string>> ranked;
  for (const auto& [host, visits] : model.perHost) ranked.emplace_back(-visits, host);
  std::sort(ranked.begin(), ranked.end());
  std::vector<std::string> recommended = Column("select Domain from TRecommendURL order by Weight desc, LastVisitTime desc");
  ASSERT_GE(recommended.size(), 10u);
  EXPECT_EQ(recommended[0], ranked[0].second);
  std::set<std::string> topTen(recommended.begin(), recommended.begin() + 10);
  for (size_t i = 0; i < 5; ++i) EXPECT_TRUE(topTen.count(ranked[i].second)) << ranked[i].second << " not in the top ten";

  // The next day: only its visits are added; an update later the same day
  // finds nothing new.
  ASSERT_TRUE(WriteFixture(GetParam(), Home(), spec, "2024-05-21"));
  size_t newDay = ChosenOnAppendedDay(spec, "2024-05-21");
  ASSERT_GT(newDay, 150u);
  UpdateAt("2024-05-21 21:00:00");
  EXPECT_EQ(Config("AddHistoryCount"), std::to_string(newDay));
  EXPECT_EQ(Config("HitoryExtractCount"), std::to_string(model.chosen + newDay));
  UpdateAt("2024-05-21 22:00:00", true);
  EXPECT_EQ(Config("AddHistoryCount"), "0");
  EXPECT_EQ(Column("select count(*) from THistory"), std::vector<std::string>{std::to_string(model.chosen + newDay)});
}

INSTANTIATE_TEST_SUITE_P(BothFamilies, HarvestEndToEndTest, ::testing::Values(Family::kChromium, Family::kFirefox),
                         [](const ::testing::TestParamInfo<Family>& family) {
                           return family.param == Family::kChromium ? "Chromium" : "Firefox";
                         });

}  // namespace
}  // namespace corvane::testing
