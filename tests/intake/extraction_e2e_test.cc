// The extraction driver through the exports: which browser is read, what is
// stored, which counters DBConfig.ini gets, and how a missing or broken
// extraction library fails the update.

#include <gtest/gtest.h>
#include <sqlite3.h>

#include <fstream>
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

// What Config gives for a key that the file does not hold.
constexpr char16_t kAbsent[] = u"<absent>";

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
        m_library("CORVANE_HARVEST_LIBRARY", FakeHarvestLibrary().c_str()),
        m_debug("CORVANE_DEBUG", m_dir.File("debug.log").c_str()) {
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
    return ReadProfileString(std::u16string(path.begin(), path.end()), u"DBConfig", key, kAbsent, 260);
  }

  // Both keys of the last merge that added IE visits, as a merge writes them.
  void SetIEHistoryAdded() const {
    SetConfig(u"IEHistoryAdded", u"2024.03.01");
    SetConfig(u"IEHistoryAddedBK", u"2024.02.28");
  }
  void ExpectIEHistoryAdded(bool kept) const {
    EXPECT_EQ(Config(u"IEHistoryAdded"), kept ? u"2024.03.01" : kAbsent);
    EXPECT_EQ(Config(u"IEHistoryAddedBK"), kept ? u"2024.02.28" : kAbsent);
  }

  std::string DebugLogText() const {
    std::ifstream in(m_dir.File("debug.log"));
    return std::string((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
  }

  // Every row of every table, as text: what a failed update must leave.
  std::string DumpTables() const {
    sqlite3* db = nullptr;
    sqlite3_open_v2(DataFile("CorvaneAppDB.db").c_str(), &db, SQLITE_OPEN_READONLY, nullptr);
    std::vector<std::string> tables;
    sqlite3_stmt* stmt = nullptr;
    sqlite3_prepare_v2(db, "select name from sqlite_master where type = 'table' order by name", -1, &stmt, nullptr);
    while (sqlite3_step(stmt) == SQLITE_ROW) tables.emplace_back(reinterpret_cast<const char*>(sqlite3_column_text(stmt, 0)));
    sqlite3_finalize(stmt);
    std::string dump;
    for (const std::string& table : tables) {
      dump += "[" + table + "]\n";
      sqlite3_prepare_v2(db, ("select * from \"" + table + "\"").c_str(), -1, &stmt, nullptr);
      while (sqlite3_step(stmt) == SQLITE_ROW) {
        for (int i = 0; i < sqlite3_column_count(stmt); ++i) {
          const unsigned char* text = sqlite3_column_text(stmt, i);
          dump += (text != nullptr ? reinterpret_cast<const char*>(text) : "NULL") + std::string("|");
        }
        dump += "\n";
      }
      sqlite3_finalize(stmt);
    }
    sqlite3_close(db);
    return dump;
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
  ScopedEnv m_debug;
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
  // Only the first update after a merge has dates to forget.
  SetIEHistoryAdded();
  ASSERT_EQ(provider->ForceUpdateData(), S_OK);

  ExpectIEHistoryAdded(false);
  EXPECT_NE(DebugLogText().find("!!!! ExtractHistory(Chrome)) OK1\r\n"), std::string::npos);
  EXPECT_EQ(DebugLogText().find("OK2"), std::string::npos);
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
  ASSERT_TRUE(m_fixture.Write(m_fixturePath));
  ComPtr<ICorvaneDataProviderObject> provider = test::CreateProvider();
  ASSERT_EQ(provider->Initialize(nullptr), S_OK);
  // Chrome is not IE: both keys go before anything is delivered, and the
  // first merge adds no visit that would write them again.
  SetIEHistoryAdded();
  ASSERT_EQ(provider->ForceUpdateData(), S_OK);
  ExpectIEHistoryAdded(false);
  EXPECT_NE(DebugLogText().find("!!!! ExtractHistory(IE)) OK2\r\n"), std::string::npos);
  EXPECT_EQ(Config(u"HitoryExtractCount"), u"1");
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
  EXPECT_EQ(Config(u"HitoryExtractCount"), u"1");
  EXPECT_EQ(Count("select count(*) from THistory where Browser = 4"), 1);
  EXPECT_NE(DebugLogText().find("!!!! ExtractHistory(360)) OK2\r\n"), std::string::npos);
}

TEST_F(ExtractionTest, NothingInstalledStoresAnEmptyDelivery) {
  ASSERT_TRUE(m_fixture.Write(m_fixturePath));
  ComPtr<ICorvaneDataProviderObject> provider = test::CreateProvider();
  ASSERT_EQ(provider->Initialize(nullptr), S_OK);
  // No browser other than IE is read: the keys of the last merge stay.
  SetIEHistoryAdded();
  ASSERT_EQ(provider->ForceUpdateData(), S_OK);
  ExpectIEHistoryAdded(true);
  EXPECT_NE(DebugLogText().find("!!!! ExtractHistory(Unknown)) OK3\r\n"), std::string::npos);
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
  EXPECT_EQ(Config(u"HitoryExtractCount"), u"0");
  EXPECT_NE(DebugLogText().find("!!!! ExtractHistory(Maxhon)) OK3\r\n"), std::string::npos);
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
  EXPECT_EQ(Config(u"HitoryExtractCount"), u"1");
  EXPECT_NE(DebugLogText().find("!!!! ExtractHistory(Unknown)) OK1\r\n"), std::string::npos);
}

TEST_F(ExtractionTest, SecondIEMergeAddsTheNewVisits) {
  m_fixture.installed = {BROWSER_IE};
  m_fixture.defaultBrowser = BROWSER_IE;
  m_fixture.history[BROWSER_IE] = {Visit("http://ie.example.com/", "2024-03-04 08:00:00.000", 3)};
  ASSERT_EQ(Update(), S_OK);
  // IE itself is read: the keys stay while a merge adds nothing.
  SetIEHistoryAdded();
  ASSERT_EQ(Update(), S_OK);
  ExpectIEHistoryAdded(true);
  EXPECT_EQ(Config(u"HitoryExtractCount"), u"1");
  EXPECT_NE(DebugLogText().find("!!!! ExtractHistory(IE)) OK1\r\n"), std::string::npos);
  m_fixture.history[BROWSER_IE] = {Visit("http://ie.example.com/", "2024-03-05 08:00:00.000", 5)};
  ASSERT_EQ(Update(), S_OK);
  EXPECT_EQ(Count("select VisitCount from THistory where URL = 'http://ie.example.com/' and Browser = 1"), 2);
  EXPECT_EQ(Config(u"IEHistoryAdded"), u"2024.03.05");
  EXPECT_EQ(Config(u"IEHistoryAddedBK"), u"2024.03.01");
  EXPECT_EQ(Config(u"AddHistoryCount"), u"1");
  EXPECT_EQ(Count("select VisitCount from TIEHistory"), 5);
}

// ---- A library without one of the browser queries ----

TEST_F(ExtractionTest, WithoutGetDefautBrowserTheFallbackOrderDecides) {
  m_fixture.installed = {BROWSER_CHROME};
  m_fixture.defaultBrowser = BROWSER_IE;  // never asked
  m_fixture.history[BROWSER_CHROME] = {Visit("http://a.example.com/", "2024-03-05 09:00:00.000")};
  m_fixture.history[BROWSER_IE] = {Visit("http://ie.example.com/", "2024-03-05 09:00:00.000")};
  ASSERT_TRUE(m_fixture.Write(m_fixturePath));
  ScopedEnv library("CORVANE_HARVEST_LIBRARY", NoDefaultBrowserHarvestLibrary().c_str());
  ComPtr<ICorvaneDataProviderObject> provider = test::CreateProvider();
  ASSERT_EQ(provider->Initialize(nullptr), S_OK);
  EXPECT_EQ(Config(u"DefBrowser"), u"Unknown");
  EXPECT_EQ(Config(u"ExtractBrowser"), u"Chrome");
  EXPECT_EQ(Config(u"HitoryExtractCount"), u"1");
  EXPECT_EQ(Calls(), (std::vector<std::string>{"Extract 2 1 1", "Extract 2 2 0"}));
  EXPECT_NE(DebugLogText().find("!!!! ExtractHistory(Chrome)) OK2\r\n"), std::string::npos);
}

TEST_F(ExtractionTest, WithoutIsBrowserInstalledThereIsNoFallback) {
  m_fixture.installed = {BROWSER_CHROME, BROWSER_IE};
  m_fixture.defaultBrowser = BROWSER_CHROME;
  m_fixture.history[BROWSER_IE] = {Visit("http://ie.example.com/", "2024-03-05 09:00:00.000")};
  ASSERT_TRUE(m_fixture.Write(m_fixturePath));
  ScopedEnv library("CORVANE_HARVEST_LIBRARY", NoInstalledHarvestLibrary().c_str());
  ComPtr<ICorvaneDataProviderObject> provider = test::CreateProvider();
  ASSERT_EQ(provider->Initialize(nullptr), S_OK);
  EXPECT_EQ(Config(u"DefBrowser"), u"Chrome");
  EXPECT_EQ(Config(u"ExtractBrowser"), u"Chrome");
  EXPECT_EQ(Config(u"HitoryExtractCount"), u"0");
  EXPECT_EQ(Calls(), (std::vector<std::string>{"Extract 2 1 0", "Extract 2 1 0", "Extract 2 2 0"}));
  EXPECT_NE(DebugLogText().find("!!!! ExtractHistory(Chrome)) OK3\r\n"), std::string::npos);
  EXPECT_EQ(Count("select count(*) from TIEHistory"), 0);

  // With no default either, the last delivery is asked of browser 0.
  m_fixture.defaultBrowser = 0;
  ASSERT_TRUE(m_fixture.Write(m_fixturePath));
  ASSERT_EQ(provider->ForceUpdateData(), S_OK);
  EXPECT_EQ(Config(u"ExtractBrowser"), u"Unknown");
  EXPECT_EQ(Calls().back(), "Extract 0 2 0");
}

// ---- Bad items after the first update ----

// The second update takes the incremental path: THistory holds a visit, so
// only newer ones are stored, and the bad ones among them are skipped.
TEST_F(ExtractionTest, BadItemsOfALaterDeliveryAreSkippedAndQuotesStoredAsText) {
  m_fixture.installed = {BROWSER_CHROME};
  m_fixture.defaultBrowser = BROWSER_CHROME;
  m_fixture.history[BROWSER_CHROME] = {Visit("http://a.example.com/", "2024-03-05 09:00:00.000")};
  ASSERT_EQ(Update(), S_OK);
  ASSERT_EQ(Count("select count(*) from THistory"), 1);

  const std::string name = "It's \"quoted\"; drop table THistory; --";
  const std::string url = "http://q.example.com/?a='1'&b=\"2\"";
  FakeItem nullTexts = Visit("http://x.example.com/", "2024-03-05 10:00:00.000");
  nullTexts.nullTexts = true;
  FakeItem nullItem;
  nullItem.null = true;
  m_fixture.history[BROWSER_CHROME] = {
      Visit("http://a.example.com/", "2024-03-05 09:00:00.000"),
      nullItem,
      FakeItem{"", "", "", "2024-03-05 10:00:00.000"},
      Visit("http://month13.example.com/", "2024-13-05 10:00:00.000"),
      Visit("http://april31.example.com/", "2024-04-31 10:00:00.000"),
      nullTexts,
      FakeItem{name, url, "", "2024-03-05 10:00:00.000"},
      FakeItem{"", "http://noname.example.com/", "", "2024-03-05 11:00:00.000"},
  };
  ASSERT_EQ(Update(), S_OK);
  EXPECT_EQ(Config(u"HitoryExtractCount"), u"8");
  EXPECT_EQ(Config(u"AddHistoryCount"), u"2");
  EXPECT_EQ(Count("select count(*) from THistory"), 3);
  EXPECT_EQ(Count("select count(*) from THistory where Name = 'It''s \"quoted\"; drop table THistory; --' and "
                  "URL = 'http://q.example.com/?a=''1''&b=\"2\"'"),
            1);
  EXPECT_EQ(Count("select count(*) from THistory where Name = '' and URL = 'http://noname.example.com/'"), 1);
}

// The same bad items through the merge of a second IE delivery: the sound
// ones are compared with the snapshot, the others are skipped.
TEST_F(ExtractionTest, BadItemsOfALaterIEDeliveryAreSkippedByTheMerge) {
  m_fixture.installed = {BROWSER_IE};
  m_fixture.defaultBrowser = BROWSER_IE;
  const std::string name = "It's \"quoted\"";
  const std::string url = "http://q.example.com/?a='1'&b=\"2\"";
  m_fixture.history[BROWSER_IE] = {FakeItem{name, url, "", "2024-03-04 10:00:00.000", 2}};
  ASSERT_EQ(Update(), S_OK);
  ASSERT_EQ(Count("select count(*) from TIEHistory"), 1);

  FakeItem nullTexts = Visit("http://x.example.com/", "2024-03-05 10:00:00.000");
  nullTexts.nullTexts = true;
  FakeItem nullItem;
  nullItem.null = true;
  m_fixture.history[BROWSER_IE] = {
      nullItem,
      FakeItem{"", "", "", "2024-03-05 10:00:00.000", 4},
      Visit("http://month13.example.com/", "2024-13-05 10:00:00.000", 4),
      Visit("http://april31.example.com/", "2024-04-31 10:00:00.000", 4),
      nullTexts,
      FakeItem{name, url, "", "2024-03-05 10:00:00.000", 5},
  };
  ASSERT_EQ(Update(), S_OK);
  EXPECT_EQ(Config(u"HitoryExtractCount"), u"6");
  EXPECT_EQ(Config(u"AddHistoryCount"), u"1");
  EXPECT_EQ(Config(u"IEHistoryAdded"), u"2024.03.05");
  EXPECT_EQ(Count("select VisitCount from THistory where Browser = 1 and "
                  "URL = 'http://q.example.com/?a=''1''&b=\"2\"' and Name = 'It''s \"quoted\"'"),
            3);
  EXPECT_EQ(Count("select count(*) from THistory"), 1);
  EXPECT_EQ(Count("select count(*) from TIEHistory"), 1);
  EXPECT_EQ(Count("select VisitCount from TIEHistory"), 5);
}

TEST_F(ExtractionTest, FavouritesWithNullAndEmptyTextsAreOneRow) {
  m_fixture.installed = {BROWSER_CHROME};
  m_fixture.defaultBrowser = BROWSER_CHROME;
  FakeItem nullTexts{"x", "http://x.example.com/", "y", ""};
  nullTexts.nullTexts = true;
  FakeItem nullItem;
  nullItem.null = true;
  m_fixture.favorites[BROWSER_CHROME] = {nullTexts, FakeItem{"", "", "", ""}, nullItem,
                                         FakeItem{"", "http://example.com/", "", ""}};
  ASSERT_EQ(Update(), S_OK);
  EXPECT_EQ(Config(u"FavoriteExtractCount"), u"4");
  EXPECT_EQ(Count("select count(*) from TFavorite"), 2);
  EXPECT_EQ(Count("select count(*) from TFavorite where Name = '' and URL = '' and Path = ''"), 1);
  EXPECT_EQ(Count("select count(*) from TFavorite where FixedURL = 'example.com'"), 1);
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
    EXPECT_EQ(Config(u"LastUpdate"), kAbsent);
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

// After a successful update, a broken library changes neither the stamp
// nor any stored row, and the next Initialize tries again.
TEST_F(BrokenLibraryTest, BrokenLibraryAfterASuccessfulUpdateLeavesStampAndRows) {
  m_fixture.installed = {BROWSER_CHROME};
  m_fixture.defaultBrowser = BROWSER_CHROME;
  m_fixture.history[BROWSER_CHROME] = {Visit("http://a.example.com/", "2024-03-04 09:00:00.000", 3),
                                       Visit("http://b.example.com/", "2024-03-05 09:00:00.000")};
  m_fixture.favorites[BROWSER_CHROME] = {FakeItem{"A", "http://a.example.com/", "Bar", ""}};
  ASSERT_EQ(Update(), S_OK);
  const std::u16string stamp = Config(u"LastUpdate");
  ASSERT_EQ(stamp, u"2024.03.05 2 20:00:00.000");
  const std::u16string before = Config(u"LastUpdateBK");
  const std::string rows = DumpTables();
  ASSERT_NE(rows.find("http://b.example.com/"), std::string::npos);

  ScopedEnv nextDay("CORVANE_TEST_NOW", "2024-03-06 08:00:00");
  m_fixture.history[BROWSER_CHROME].push_back(Visit("http://c.example.com/", "2024-03-06 07:00:00.000"));
  const std::string missing = m_dir.File("no-such-library.so");
  const struct {
    const char* library;
    bool failCreate;
  } broken[] = {{missing.c_str(), false}, {nullptr, false}, {nullptr, true}};
  const std::string noFactory = NoFactoryHarvestLibrary();
  const std::string scripted = FakeHarvestLibrary();
  for (size_t i = 0; i < std::size(broken); ++i) {
    SCOPED_TRACE(i);
    m_fixture.failCreate = broken[i].failCreate;
    ASSERT_TRUE(m_fixture.Write(m_fixturePath));
    const char* library = broken[i].library != nullptr ? broken[i].library
                          : broken[i].failCreate       ? scripted.c_str()
                                                       : noFactory.c_str();
    ScopedEnv env("CORVANE_HARVEST_LIBRARY", library);
    ComPtr<ICorvaneDataProviderObject> provider = test::CreateProvider();
    EXPECT_EQ(provider->Initialize(nullptr), E_FAIL);
    EXPECT_EQ(Config(u"LastUpdate"), stamp);
    EXPECT_EQ(Config(u"LastUpdateBK"), before);
    EXPECT_EQ(DumpTables(), rows);
  }
  m_fixture.failCreate = false;
  ASSERT_TRUE(m_fixture.Write(m_fixturePath));
  ComPtr<ICorvaneDataProviderObject> provider = test::CreateProvider();
  EXPECT_EQ(provider->Initialize(nullptr), S_OK);
  EXPECT_EQ(Config(u"LastUpdate"), u"2024.03.06 3 08:00:00.000");
  EXPECT_EQ(Config(u"LastUpdateBK"), stamp);
  EXPECT_EQ(Count("select count(*) from THistory where URL = 'http://c.example.com/'"), 1);
}

}  // namespace
}  // namespace corvane::testing
