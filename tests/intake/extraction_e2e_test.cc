// The extraction driver through the exports: which browser is read, what is
// stored, which counters DBConfig.ini gets, and how a missing or broken
// extraction library fails the update.

#include "intake/provider_host.h"

namespace corvane::testing {
namespace {

FakeItem Item(const std::string& url, const std::string& time, int count = 1) {
  return FakeItem{"Title of " + url, url, "", time, count};
}

// One run of the fallback order: the first update's calls of the library,
// then, after the keys of an earlier IE merge were set, a forced update and
// what it leaves: the debug line of the choice, whether the keys stay (only
// reading IE or nothing keeps them), and DBConfig keys or queries with their
// first row.
struct Fallback {
  const char* name;
  FakeFixture fixture;
  std::vector<std::string> calls;
  const char* debugLine;
  bool keepsIEKeys;
  std::map<std::string, std::string> checks;
  const char* library = "FakeVisitHarvest";
};

void PrintTo(const Fallback& run, std::ostream* out) { *out << run.name; }

class FallbackTest : public ProviderTest, public ::testing::WithParamInterface<Fallback> {};

TEST_P(FallbackTest, ReadsTheRightBrowserAndWritesItsCounters) {
  const Fallback& run = GetParam();
  m_fixture = run.fixture;
  test::ScopedEnv library("CORVANE_HARVEST_LIBRARY", TestLibrary(run.library).c_str());
  ComPtr<ICorvaneDataProviderObject> provider;
  ASSERT_EQ(Start(&provider), S_OK);
  EXPECT_EQ(Calls(), run.calls);
  SetConfig("IEHistoryAdded", "2024.03.01");
  SetConfig("IEHistoryAddedBK", "2024.02.28");
  ASSERT_EQ(provider->ForceUpdateData(), S_OK);
  EXPECT_EQ(Config("IEHistoryAdded") + " " + Config("IEHistoryAddedBK"),
            run.keepsIEKeys ? "2024.03.01 2024.02.28" : "<absent> <absent>");
  EXPECT_NE(DebugLog().find(std::string("!!!! ") + run.debugLine + "\r\n"), std::string::npos) << DebugLog();
  for (const auto& [key, value] : run.checks) {
    EXPECT_EQ(key.rfind("select", 0) == 0 ? Scalar(key) : Config(key), value) << key;
  }
}

const Fallback kFallbacks[] = {
    // The second delivery is the same: nothing new is stored.
    {"ChromeDefaultWithVisits",
     {.installed = {BROWSER_CHROME, BROWSER_IE},
      .defaultBrowser = BROWSER_CHROME,
      .history = {{BROWSER_CHROME, {Item("http://a.example.com/", "2024-03-05 09:00:00.000"),
                                    Item("http://b.example.com/", "2024-03-04 09:00:00.000", 4)}}},
      .favorites = {{BROWSER_CHROME, {FakeItem{"A", "http://a.example.com/", "Bookmarks bar", ""}}}}},
     {"Extract 2 1 2", "Extract 2 2 1"}, "ExtractHistory(Chrome)) OK1", false,
     {{"DefBrowser", "Chrome"}, {"ExtractBrowser", "Chrome"}, {"HitoryExtractCount", "2"},
      {"FavoriteExtractCount", "1"}, {"AddHistoryCount", "0"},
      {"select count(*) from THistory where Browser = 2 and HideDate = 0", "2"},
      {"select VisitCount from THistory where URL = 'http://b.example.com/'", "4"},
      {"select count(*) from TFavorite where FixedURL = 'a.example.com'", "1"}}},
    // Chrome is asked first, then IE, first in the fallback order; the
    // first merge only takes the snapshot.
    {"ChromeEmptyAndIEInstalledMergesOnIE",
     {.installed = {BROWSER_CHROME, BROWSER_IE},
      .defaultBrowser = BROWSER_CHROME,
      .history = {{BROWSER_IE, {Item("http://ie.example.com/", "2024-03-05 08:00:00.000", 3)}}}},
     {"Extract 2 1 0", "Extract 1 1 1", "Extract 1 2 0"}, "ExtractHistory(IE)) OK2", false,
     {{"DefBrowser", "Chrome"}, {"ExtractBrowser", "IE"}, {"HitoryExtractCount", "1"}, {"IEInitialized", "2024.03.10"},
      {"AddHistoryCount", "1"}, {"select count(*) from TIEHistory", "1"}, {"select count(*) from THistory", "0"}}},
    {"IEDefaultDeliversNothingIsAskedTwiceThen360",
     {.installed = {BROWSER_IE, BROWSER_360},
      .defaultBrowser = BROWSER_IE,
      .history = {{BROWSER_360, {Item("http://360.example.com/", "2024-03-05 08:00:00.000")}}}},
     {"Extract 1 1 0", "Extract 1 1 0", "Extract 4 1 1", "Extract 4 2 0"}, "ExtractHistory(360)) OK2", false,
     {{"DefBrowser", "IE"}, {"ExtractBrowser", "360"}, {"HitoryExtractCount", "1"},
      {"select count(*) from THistory where Browser = 4", "1"}}},
    {"NothingInstalledStoresAnEmptyDelivery", {}, {"Extract 0 1 0", "Extract 0 2 0"}, "ExtractHistory(Unknown)) OK3", true,
     {{"DefBrowser", "Unknown"}, {"ExtractBrowser", "Unknown"}, {"HitoryExtractCount", "0"}, {"AddHistoryCount", "0"}}},
    // Not tried again in the fallback; Firefox delivers nothing either; so
    // Maxhon comes back for the final, empty delivery.
    {"MaxhonIsReadOnlyAsTheDefault",
     {.installed = {BROWSER_MAXHON, BROWSER_FIREFOX}, .defaultBrowser = BROWSER_MAXHON},
     {"Extract 32 1 0", "Extract 64 1 0", "Extract 32 1 0", "Extract 32 2 0"}, "ExtractHistory(Maxhon)) OK3", false,
     {{"ExtractBrowser", "Maxhon"}, {"HitoryExtractCount", "0"}}},
    {"WithoutGetDefautBrowserTheFallbackOrderDecides",
     {.installed = {BROWSER_CHROME},
      .defaultBrowser = BROWSER_IE,  // never asked
      .history = {{BROWSER_CHROME, {Item("http://a.example.com/", "2024-03-05 09:00:00.000")}},
                  {BROWSER_IE, {Item("http://ie.example.com/", "2024-03-05 09:00:00.000")}}}},
     {"Extract 2 1 1", "Extract 2 2 0"}, "ExtractHistory(Chrome)) OK2", false,
     {{"DefBrowser", "Unknown"}, {"ExtractBrowser", "Chrome"}, {"HitoryExtractCount", "1"}},
     "NoDefaultBrowserHarvest"},
    {"WithoutIsBrowserInstalledThereIsNoFallback",
     {.installed = {BROWSER_CHROME, BROWSER_IE},
      .defaultBrowser = BROWSER_CHROME,
      .history = {{BROWSER_IE, {Item("http://ie.example.com/", "2024-03-05 09:00:00.000")}}}},
     {"Extract 2 1 0", "Extract 2 1 0", "Extract 2 2 0"}, "ExtractHistory(Chrome)) OK3", false,
     {{"DefBrowser", "Chrome"}, {"ExtractBrowser", "Chrome"}, {"HitoryExtractCount", "0"},
      {"select count(*) from TIEHistory", "0"}},
     "NoInstalledHarvest"},
};

INSTANTIATE_TEST_SUITE_P(Scenarios, FallbackTest, ::testing::ValuesIn(kFallbacks),
                         [](const auto& scenario) { return std::string(scenario.param.name); });

class ExtractionTest : public ProviderTest {};

TEST_F(ExtractionTest, BadItemsAreSkippedOnEveryPathAndQuotesStoredAsText) {
  const std::string name = "It's \"quoted\"; drop table THistory; --";
  const std::string url = "http://q.example.com/?a='1'&b=\"2\"";
  const std::string quoted = "Name = 'It''s \"quoted\"; drop table THistory; --' and URL = 'http://q.example.com/?a=''1''&b=\"2\"'";
  auto deliver = [&](uint32_t browser, const std::string& time, int count) {
    FakeItem nullItem{.null = true};
    FakeItem nullTexts = Item("http://x.example.com/", time);
    nullTexts.nullTexts = true;
    m_fixture.history = {{browser,
                          {nullItem, FakeItem{"", "", "", time, count}, Item("http://month13.example.com/", "2024-13-05 10:00:00.000", count),
                           Item("http://april31.example.com/", "2024-04-31 10:00:00.000", count),
                           Item("http://feb29.example.com/", "2023-02-29 10:00:00.000", count), nullTexts,
                           FakeItem{name, url, "", time, count}, FakeItem{"", "http://noname.example.com/", "", time, count}}}};
    EXPECT_EQ(Update(), S_OK);
    EXPECT_EQ(Config("HitoryExtractCount"), "8");
  };
  // Today's first update, which Initialize runs, delivers nothing; each
  // delivery below is then stored by one forced update.
  ASSERT_EQ(Start(), S_OK);
  deliver(BROWSER_CHROME, "2024-03-05 10:00:00.000", 1);
  EXPECT_EQ(Config("AddHistoryCount"), "2");
  deliver(BROWSER_CHROME, "2024-03-06 10:00:00.000", 1);
  EXPECT_EQ(Config("AddHistoryCount"), "2");
  EXPECT_EQ(Rows("select count(*) from THistory where " + quoted), std::vector<std::string>{"2"});
  EXPECT_EQ(Rows("select count(*) from THistory where Name = '' and URL = 'http://noname.example.com/'"),
            std::vector<std::string>{"2"});
  EXPECT_EQ(Scalar("select count(*) from THistory"), "4");

  UseIEOnly();
  deliver(BROWSER_IE, "2024-03-07 10:00:00.000", 2);
  EXPECT_EQ(Scalar("select count(*) from TIEHistory"), "2");
  deliver(BROWSER_IE, "2024-03-08 10:00:00.000", 5);
  EXPECT_EQ(Config("AddHistoryCount") + " " + Config("IEHistoryAdded"), "2 2024.03.10");
  EXPECT_EQ(Scalar("select VisitCount from THistory where Browser = 1 and " + quoted), "3");
  EXPECT_EQ(Scalar("select count(*) from THistory where Browser = 1"), "2");
  EXPECT_EQ(Rows("select VisitCount from TIEHistory"), (std::vector<std::string>{"5", "5"}));
}

// A missing library, one without the factory and a factory that says no
// fail the update: on a fresh folder, and after a successful update, whose
// stamps and rows stay as they were. The next good library updates again.
TEST_F(ExtractionTest, BrokenLibraryFailsTheUpdateAndChangesNothing) {
  m_fixture.history[BROWSER_CHROME] = {Item("http://a.example.com/", "2024-03-04 09:00:00.000", 3),
                                       Item("http://b.example.com/", "2024-03-05 09:00:00.000")};
  m_fixture.favorites[BROWSER_CHROME] = {FakeItem{"A", "http://a.example.com/", "Bar", ""}};
  auto dump = [this] {
    std::string all = Config("LastUpdate") + "|" + Config("LastUpdateBK") + "\n";
    // The search index's shadow tables hold its own settings from the start.
    for (const std::string& table : Rows("select name from sqlite_master where type = 'table' and name not like "
                                         "'THistorySearch^_%' escape '^' order by name")) {
      for (const std::string& row : Rows("select * from \"" + table + "\"")) all += table + ":" + row + "\n";
    }
    return all;
  };
  auto expectFails = [&](const std::string& before) {
    for (const char* library : {"NoSuchHarvest", "NoFactoryHarvest", "FakeVisitHarvest"}) {
      SCOPED_TRACE(library);
      m_fixture.failCreate = std::string(library) == "FakeVisitHarvest";
      test::ScopedEnv env("CORVANE_HARVEST_LIBRARY", TestLibrary(library).c_str());
      ComPtr<ICorvaneDataProviderObject> provider;
      EXPECT_EQ(Start(&provider), E_FAIL);
      EXPECT_EQ(provider->ForceUpdateData(), E_FAIL);
      EXPECT_EQ(dump(), before);
    }
    m_fixture.failCreate = false;
  };
  // A fresh folder gets no stamp and no row in any table.
  expectFails(std::string(kAbsent) + "|" + kAbsent + "\n");
  ASSERT_EQ(Start(), S_OK);
  ASSERT_EQ(Config("LastUpdate"), "2024.03.10 0 20:00:00.000");
  ASSERT_EQ(Scalar("select count(*) from THistory"), "2");

  test::ScopedEnv nextDay("CORVANE_TEST_NOW", "2024-03-11 08:00:00");
  m_fixture.history[BROWSER_CHROME].push_back(Item("http://c.example.com/", "2024-03-11 07:00:00.000"));
  expectFails(dump());
  ASSERT_EQ(Start(), S_OK);
  EXPECT_EQ(Config("LastUpdate") + " / " + Config("LastUpdateBK"), "2024.03.11 1 08:00:00.000 / 2024.03.10 0 20:00:00.000");
  EXPECT_EQ(Scalar("select count(*) from THistory where URL = 'http://c.example.com/'"), "1");
}

}  // namespace
}  // namespace corvane::testing
