// The extraction driver through the exports: which browser is read, what is
// stored, which counters DBConfig.ini gets, and how a missing or broken
// extraction library fails the update.

#include <gtest/gtest.h>
#include <sqlite3.h>

#include <string>
#include <vector>

#include "corvane/VisitHarvest.h"
#include "intake/fake_fixture.h"
#include "platform/ini_file.h"
#include "support/test_host.h"

namespace corvane::testing {
namespace {

using test::ScopedEnv;
using test::TempDir;

FakeItem Visit(const std::string& url, const std::string& time, int count = 1) {
  return FakeItem{"Title of " + url, url, "", time, count};
}

class ExtractionTest : public ::testing::Test {
 protected:
  ExtractionTest()
      : m_appData("CORVANE_APPDATA", m_dir.Path().c_str()),
        m_now("CORVANE_TEST_NOW", "2024-03-05 20:00:00"),
        m_fixturePath(m_dir.File("fixture.json")),
        m_fixtureEnv("CORVANE_FAKE_HARVEST_FIXTURE", m_fixturePath.c_str()),
        m_library("CORVANE_HARVEST_LIBRARY", FakeHarvestLibrary().c_str()) {
    m_fixture.log = m_dir.File("calls.log");
  }

  // Writes the fixture and runs one update through a fresh provider.
  HRESULT Update() {
    EXPECT_TRUE(m_fixture.Write(m_fixturePath));
    ComPtr<ICorvaneDataProviderObject> provider = test::CreateProvider();
    if (!provider) return E_FAIL;
    HRESULT hr = provider->Initialize(nullptr);
    if (hr == S_OK) hr = provider->ForceUpdateData();
    return hr;
  }

  std::string DataFile(const std::string& name) const { return m_dir.Path() + "/CorvaneApp/" + name; }

  std::u16string Config(std::u16string_view key) const {
    std::string path = DataFile("DBConfig.ini");
    return ReadProfileString(std::u16string(path.begin(), path.end()), u"DBConfig", key, u"", 260);
  }

  void SetConfig(std::u16string_view key, std::u16string_view value) const {
    std::string path = DataFile("DBConfig.ini");
    std::u16string text(value);
    ASSERT_TRUE(WriteProfileString(std::u16string(path.begin(), path.end()), u"DBConfig", key, &text));
  }

  int64_t Count(const std::string& sql) const {
    sqlite3* db = nullptr;
    sqlite3_open_v2(DataFile("CorvaneAppDB.db").c_str(), &db, SQLITE_OPEN_READONLY, nullptr);
    sqlite3_stmt* stmt = nullptr;
    int64_t count = -1;
    if (sqlite3_prepare_v2(db, sql.c_str(), -1, &stmt, nullptr) == SQLITE_OK && sqlite3_step(stmt) == SQLITE_ROW) {
      count = sqlite3_column_int64(stmt, 0);
    }
    sqlite3_finalize(stmt);
    sqlite3_close(db);
    return count;
  }

  std::vector<std::string> Calls() const { return ReadLines(m_fixture.log); }

  TempDir m_dir;
  ScopedEnv m_appData;
  ScopedEnv m_now;
  std::string m_fixturePath;
  ScopedEnv m_fixtureEnv;
  ScopedEnv m_library;
  FakeFixture m_fixture;
};

TEST_F(ExtractionTest, DefaultBrowserWithVisitsIsReadOnce) {
  m_fixture.installed = {BROWSER_CHROME, BROWSER_IE};
  m_fixture.defaultBrowser = BROWSER_CHROME;
  m_fixture.history[BROWSER_CHROME] = {Visit("http://a.example.com/", "2024-03-05 09:00:00.000"),
                                       Visit("http://b.example.com/", "2024-03-04 09:00:00.000", 4)};
  m_fixture.favorites[BROWSER_CHROME] = {FakeItem{"A", "http://a.example.com/", "Bookmarks bar", ""}};
  ASSERT_TRUE(m_fixture.Write(m_fixturePath));
  ComPtr<ICorvaneDataProviderObject> provider = test::CreateProvider();
  ASSERT_EQ(provider->Initialize(nullptr), S_OK);
  // Only the first update after a merge has a date to forget.
  SetConfig(u"IEHistoryAdded", u"2024.03.01");
  ASSERT_EQ(provider->ForceUpdateData(), S_OK);

  EXPECT_EQ(Config(u"IEHistoryAdded"), u"");
  EXPECT_EQ(Config(u"DefBrowser"), u"Chrome");
  EXPECT_EQ(Config(u"ExtractBrowser"), u"Chrome");
  EXPECT_EQ(Config(u"HitoryExtractCount"), u"2");
  EXPECT_EQ(Config(u"FavoriteExtractCount"), u"1");
  EXPECT_EQ(Count("select count(*) from THistory where Browser = 2 and HideDate = 0"), 2);
  EXPECT_EQ(Count("select VisitCount from THistory where URL = 'http://b.example.com/'"), 4);
  EXPECT_EQ(Count("select count(*) from TFavorite where FixedURL = 'a.example.com'"), 1);
  // Initialize's own update and the forced one: history then favourites.
  EXPECT_EQ(Calls(), (std::vector<std::string>{"Extract 2 1 2", "Extract 2 2 1", "Extract 2 1 2", "Extract 2 2 1"}));
  // The second delivery was the same: nothing new was stored.
  EXPECT_EQ(Config(u"AddHistoryCount"), u"0");
}

TEST_F(ExtractionTest, EmptyDefaultFallsBackToIEAndMerges) {
  m_fixture.installed = {BROWSER_CHROME, BROWSER_IE};
  m_fixture.defaultBrowser = BROWSER_CHROME;
  m_fixture.history[BROWSER_IE] = {Visit("http://ie.example.com/", "2024-03-05 08:00:00.000", 3)};
  ASSERT_EQ(Update(), S_OK);
  EXPECT_EQ(Config(u"ExtractBrowser"), u"IE");
  EXPECT_EQ(Config(u"DefBrowser"), u"Chrome");
  // The first merge only takes the snapshot.
  EXPECT_EQ(Count("select count(*) from TIEHistory"), 1);
  EXPECT_EQ(Count("select count(*) from THistory"), 0);
  EXPECT_EQ(Config(u"IEInitialized"), u"2024.03.05");
  EXPECT_EQ(Config(u"AddHistoryCount"), u"1");
  // Chrome is asked first, then IE from the fallback order (twice: once for
  // Initialize, once forced).
  std::vector<std::string> calls = Calls();
  ASSERT_GE(calls.size(), 3u);
  EXPECT_EQ(calls[0], "Extract 2 1 0");
  EXPECT_EQ(calls[1], "Extract 1 1 1");
  EXPECT_EQ(calls[2], "Extract 1 2 0");
}

TEST_F(ExtractionTest, IEDefaultWithoutVisitsIsAskedTwiceThen360Delivers) {
  m_fixture.installed = {BROWSER_IE, BROWSER_360};
  m_fixture.defaultBrowser = BROWSER_IE;
  m_fixture.history[BROWSER_360] = {Visit("http://360.example.com/", "2024-03-05 08:00:00.000")};
  ASSERT_TRUE(m_fixture.Write(m_fixturePath));
  ComPtr<ICorvaneDataProviderObject> provider = test::CreateProvider();
  ASSERT_EQ(provider->Initialize(nullptr), S_OK);
  EXPECT_EQ(Calls(), (std::vector<std::string>{"Extract 1 1 0", "Extract 1 1 0", "Extract 4 1 1", "Extract 4 2 0"}));
  EXPECT_EQ(Config(u"ExtractBrowser"), u"360");
  EXPECT_EQ(Config(u"DefBrowser"), u"IE");
  EXPECT_EQ(Count("select count(*) from THistory where Browser = 4"), 1);
}

TEST_F(ExtractionTest, NothingInstalledStoresAnEmptyDelivery) {
  ASSERT_EQ(Update(), S_OK);
  EXPECT_EQ(Config(u"DefBrowser"), u"Unknown");
  EXPECT_EQ(Config(u"ExtractBrowser"), u"Unknown");
  EXPECT_EQ(Config(u"HitoryExtractCount"), u"0");
  EXPECT_EQ(Config(u"AddHistoryCount"), u"0");
  std::vector<std::string> calls = Calls();
  ASSERT_EQ(calls.size(), 4u);
  EXPECT_EQ(calls[0], "Extract 0 1 0");
  EXPECT_EQ(calls[1], "Extract 0 2 0");
}

TEST_F(ExtractionTest, MaxhonIsReadOnlyAsTheDefault) {
  m_fixture.installed = {BROWSER_MAXHON, BROWSER_FIREFOX};
  m_fixture.defaultBrowser = BROWSER_MAXHON;
  ASSERT_TRUE(m_fixture.Write(m_fixturePath));
  ComPtr<ICorvaneDataProviderObject> provider = test::CreateProvider();
  ASSERT_EQ(provider->Initialize(nullptr), S_OK);
  // Not tried again in the fallback; Firefox delivers nothing either; so
  // Maxhon comes back for the final, empty delivery.
  EXPECT_EQ(Calls(), (std::vector<std::string>{"Extract 32 1 0", "Extract 64 1 0", "Extract 32 1 0", "Extract 32 2 0"}));
  EXPECT_EQ(Config(u"ExtractBrowser"), u"Maxhon");
}

TEST_F(ExtractionTest, ValueOutsideTheTableIsAskedAndNamedUnknown) {
  m_fixture.defaultBrowser = 0x1000;
  m_fixture.history[0x1000] = {Visit("http://odd.example.com/", "2024-03-05 08:00:00.000")};
  ASSERT_TRUE(m_fixture.Write(m_fixturePath));
  ComPtr<ICorvaneDataProviderObject> provider = test::CreateProvider();
  ASSERT_EQ(provider->Initialize(nullptr), S_OK);
  EXPECT_EQ(Config(u"DefBrowser"), u"Unknown");
  EXPECT_EQ(Config(u"ExtractBrowser"), u"Unknown");
  EXPECT_EQ(Count("select count(*) from THistory where Browser = 4096"), 1);
  EXPECT_EQ(Calls().front(), "Extract 4096 1 1");
}

TEST_F(ExtractionTest, SecondIEMergeAddsTheNewVisits) {
  m_fixture.installed = {BROWSER_IE};
  m_fixture.defaultBrowser = BROWSER_IE;
  m_fixture.history[BROWSER_IE] = {Visit("http://ie.example.com/", "2024-03-04 08:00:00.000", 3)};
  ASSERT_EQ(Update(), S_OK);
  m_fixture.history[BROWSER_IE] = {Visit("http://ie.example.com/", "2024-03-05 08:00:00.000", 5)};
  ASSERT_EQ(Update(), S_OK);
  EXPECT_EQ(Count("select VisitCount from THistory where URL = 'http://ie.example.com/' and Browser = 1"), 2);
  EXPECT_EQ(Config(u"IEHistoryAdded"), u"2024.03.05");
  EXPECT_EQ(Config(u"AddHistoryCount"), u"1");
  EXPECT_EQ(Count("select VisitCount from TIEHistory"), 5);
}

class BrokenLibraryTest : public ExtractionTest {
 protected:
  // An update whose library is broken changes no stamp and stores nothing.
  void ExpectUpdateFails(const char* library) {
    m_fixture.installed = {BROWSER_CHROME};
    m_fixture.defaultBrowser = BROWSER_CHROME;
    m_fixture.history[BROWSER_CHROME] = {Visit("http://a.example.com/", "2024-03-05 09:00:00.000")};
    ASSERT_TRUE(m_fixture.Write(m_fixturePath));
    ScopedEnv broken("CORVANE_HARVEST_LIBRARY", library);
    ComPtr<ICorvaneDataProviderObject> provider = test::CreateProvider();
    EXPECT_EQ(provider->Initialize(nullptr), E_FAIL);
    EXPECT_EQ(provider->ForceUpdateData(), E_FAIL);
    EXPECT_EQ(Config(u"LastUpdate"), u"");
    EXPECT_EQ(Count("select count(*) from THistory"), 0);
  }
};

TEST_F(BrokenLibraryTest, MissingLibraryFailsTheUpdate) { ExpectUpdateFails("/nonexistent/libVisitHarvest.so"); }

TEST_F(BrokenLibraryTest, LibraryWithoutFactoryFailsTheUpdate) {
  ExpectUpdateFails(NoFactoryHarvestLibrary().c_str());
}

TEST_F(BrokenLibraryTest, FactoryThatSaysNoFailsTheUpdate) {
  m_fixture.failCreate = true;
  ExpectUpdateFails(FakeHarvestLibrary().c_str());
}

}  // namespace
}  // namespace corvane::testing
