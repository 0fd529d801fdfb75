// The provider as a host sees it: loaded by path, created through the class
// object, with the data folder in a temporary place.

#include <gtest/gtest.h>
#include <sqlite3.h>

#include <filesystem>
#include <fstream>
#include <set>

#include "platform/ini_file.h"
#include "support/test_host.h"

namespace corvane::test {
namespace {

class ProviderTest : public ::testing::Test {
 protected:
  ProviderTest() : m_appData("CORVANE_APPDATA", m_dir.Path().c_str()), m_now("CORVANE_TEST_NOW", "2024-03-05 09:07:03.041") {}

  std::string DataFile(const std::string& name) const { return m_dir.Path() + "/CorvaneApp/" + name; }

  std::u16string Config(std::u16string_view key, std::u16string_view missing = u"") const {
    return ReadProfileString(U16Path(DataFile("DBConfig.ini")), u"DBConfig", key, missing, 260);
  }

  std::u16string SettingsKey(std::u16string_view key) const {
    return ReadProfileString(U16Path(DataFile("Settings.ini")), u"Settings", key, u"", 1020);
  }

  void WriteSettingsKey(std::u16string_view key, const std::u16string& value) const {
    ASSERT_TRUE(WriteProfileString(U16Path(DataFile("Settings.ini")), u"Settings", key, &value));
  }

  static std::u16string U16Path(const std::string& path) { return std::u16string(path.begin(), path.end()); }

  std::string DebugLogText() const {
    std::ifstream in(m_dir.File("debug.log"));
    return std::string((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
  }

  TempDir m_dir;
  ScopedEnv m_appData;
  ScopedEnv m_now;
};

// One score row for days 0 to 30, with its day score and ParamCount.
std::u16string AnalyzeRow(std::u16string_view dayScore, std::u16string_view paramCount = u"7") {
  return u"{0,30," + std::u16string(dayScore) + u",1,130,2.0," + std::u16string(paramCount) +
         u",{10,2,7,7,1,15,15},{0,0,0,0,0,0,0,0}}";
}

// The "Score" rows of the built-in set, as Settings.ini stores them.
constexpr char16_t kDefaultAnalyze[] =
    u"{0,3,50,1,130,2.0,7,{10,2,7,7,1,15,15},{0,0,0,0,0,0,0,0}};"
    u"{3,7,50,1,130,1.5,7,{10,2,7,7,1,15,15},{0,0,0,0,0,0,0,0}};"
    u"{7,15,50,1,130,1.2,7,{10,2,7,7,1,15,15},{0,0,0,0,0,0,0,0}};"
    u"{15,21,50,1,130,1.0,7,{10,2,7,7,1,15,15},{0,0,0,0,0,0,0,0}};";

// A settings text for the file in force whose one row gives each day the
// score number dayScore.
std::u16string InForceSet(std::u16string_view name, std::u16string_view version, std::u16string_view dayScore,
                          std::u16string_view paramCount = u"7") {
  return u"Name@" + std::u16string(name) + u"|Default@true|Ver@" + std::u16string(version) + u"|Score@" +
         AnalyzeRow(dayScore, paramCount) + u"|Setting@{7,{7,3}}";
}

std::set<std::string> SchemaNames(const std::string& path, const char* type) {
  sqlite3* db = nullptr;
  sqlite3_open_v2(path.c_str(), &db, SQLITE_OPEN_READONLY, nullptr);
  std::set<std::string> names;
  sqlite3_stmt* stmt = nullptr;
  std::string sql = std::string("select name from sqlite_master where type='") + type + "' and name not like 'sqlite_%'";
  sqlite3_prepare_v2(db, sql.c_str(), -1, &stmt, nullptr);
  while (sqlite3_step(stmt) == SQLITE_ROW) names.insert(reinterpret_cast<const char*>(sqlite3_column_text(stmt, 0)));
  sqlite3_finalize(stmt);
  sqlite3_close(db);
  return names;
}

TEST_F(ProviderTest, FirstInitializeCreatesFolderDatabaseAndFiles) {
  ComPtr<ICorvaneDataProviderObject> provider = CreateProvider();
  ASSERT_TRUE(provider);
  EXPECT_EQ(provider->Initialize(nullptr), S_OK);

  EXPECT_TRUE(std::filesystem::is_directory(m_dir.Path() + "/CorvaneApp"));
  std::set<std::string> tables = SchemaNames(DataFile("CorvaneAppDB.db"), "table");
  // The schema, and what the first update builds even from an empty history.
  EXPECT_EQ(tables, (std::set<std::string>{"THistory", "TFavorite", "TFocusURL", "TIEHistory", "TPreparedURL",
                                           "TWhiteList", "TBlackList", "TSubList", "TRecommendDomain",
                                           "TRecommendURL", "TZS", "TSubDomain", "TRecentHistory",
                                           "TRecentHistory_Match", "TRecentDomain", "TRecentDomainTemp", "e2", "e3",
                                           "j1", "h2", "z"}));
  std::set<std::string> indices = SchemaNames(DataFile("CorvaneAppDB.db"), "index");
  // The ten indices of the schema, and no other: the tables built at run
  // time have none.
  EXPECT_EQ(indices, (std::set<std::string>{"THistory_VisitTime", "THistory_VisitDate", "THistory_HideDate",
                                            "THistory_URL", "TFavorite_URL_Name_Path", "TFocusURL_URL",
                                            "TIEHistory_VisitTime", "TIEHistory_VisitDate", "TIEHistory_HideDate",
                                            "TIEHistory_URL"}));
  // Settings.ini holds the built-in set, all five keys.
  EXPECT_EQ(SettingsKey(u"Name"), u"Default");
  EXPECT_EQ(SettingsKey(u"Version"), u"0");
  EXPECT_EQ(SettingsKey(u"Default"), u"true");
  EXPECT_EQ(SettingsKey(u"Setting"), u"{7,{7,3}}");
  EXPECT_EQ(SettingsKey(u"Analyze"), kDefaultAnalyze);
  EXPECT_EQ(Config(u"LastUpdate"), u"2024.03.05 2 09:07:03.041");
  // No earlier stamp: the key is not there at all, not even empty.
  EXPECT_EQ(Config(u"LastUpdateBK", u"<absent>"), u"<absent>");
}

TEST_F(ProviderTest, GateRunsOncePerDateAndForceAlwaysRuns) {
  ComPtr<ICorvaneDataProviderObject> provider = CreateProvider();
  ASSERT_EQ(provider->Initialize(nullptr), S_OK);
  {
    // Later the same day, from a new object: the gate stays shut.
    ScopedEnv later("CORVANE_TEST_NOW", "2024-03-05 23:59:00");
    ComPtr<ICorvaneDataProviderObject> second = CreateProvider();
    EXPECT_EQ(second->Initialize(nullptr), S_OK);
    EXPECT_EQ(Config(u"LastUpdate"), u"2024.03.05 2 09:07:03.041");
    EXPECT_EQ(Config(u"LastUpdateBK"), u"");
    // Forcing runs the cycle and keeps the stamp before it.
    EXPECT_EQ(second->ForceUpdateData(), S_OK);
    EXPECT_EQ(Config(u"LastUpdate"), u"2024.03.05 2 23:59:00.000");
    EXPECT_EQ(Config(u"LastUpdateBK"), u"2024.03.05 2 09:07:03.041");
  }
  // The clock set back a day opens the gate as well: inequality, not order.
  ScopedEnv back("CORVANE_TEST_NOW", "2024-03-04 10:00:00");
  EXPECT_EQ(provider->Initialize(nullptr), S_OK);
  EXPECT_EQ(Config(u"LastUpdate"), u"2024.03.04 1 10:00:00.000");
  EXPECT_EQ(Config(u"LastUpdateBK"), u"2024.03.05 2 23:59:00.000");
}

TEST_F(ProviderTest, GetValueAnswersKeysOfTheConfigFile) {
  ComPtr<ICorvaneDataProviderObject> provider = CreateProvider();
  ASSERT_EQ(provider->Initialize(nullptr), S_OK);
  EXPECT_EQ(GetValue(provider.Get(), u"LastUpdate"), u"2024.03.05 2 09:07:03.041");
  EXPECT_EQ(GetValue(provider.Get(), u"lastupdate"), u"2024.03.05 2 09:07:03.041");

  Bstr key(u"NoSuchKey");
  BSTR untouched = reinterpret_cast<BSTR>(0x1234);
  EXPECT_EQ(provider->GetValue(key.Get(), &untouched), E_FAIL);
  EXPECT_EQ(untouched, reinterpret_cast<BSTR>(0x1234));
  Bstr value;
  EXPECT_EQ(provider->GetValue(nullptr, value.Put()), E_INVALIDARG);
  EXPECT_EQ(provider->GetValue(key.Get(), nullptr), E_INVALIDARG);
}

TEST_F(ProviderTest, ManagerIdsOutsideOneToFourAreNoInterface) {
  ComPtr<ICorvaneDataProviderObject> provider = CreateProvider();
  ASSERT_EQ(provider->Initialize(nullptr), S_OK);
  IUnknown* manager = reinterpret_cast<IUnknown*>(0x1);
  EXPECT_EQ(provider->GetURLsManager(0, &manager), E_NOINTERFACE);
  EXPECT_EQ(provider->GetURLsManager(5, &manager), E_NOINTERFACE);
  EXPECT_EQ(manager, reinterpret_cast<IUnknown*>(0x1));
  EXPECT_EQ(provider->Uninitialize(), S_OK);
}

TEST_F(ProviderTest, DatabaseThatIsNoDatabaseFailsWithoutBeingOverwritten) {
  std::filesystem::create_directories(m_dir.Path() + "/CorvaneApp");
  const std::string garbage(4096, 'x');
  std::ofstream(DataFile("CorvaneAppDB.db"), std::ios::binary) << garbage;

  ComPtr<ICorvaneDataProviderObject> provider = CreateProvider();
  EXPECT_LT(provider->Initialize(nullptr), 0);
  EXPECT_EQ(Config(u"LastUpdate"), u"");
  EXPECT_EQ(provider->ForceUpdateData(), E_FAIL);
  std::ifstream in(DataFile("CorvaneAppDB.db"), std::ios::binary);
  std::string content((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
  EXPECT_EQ(content, garbage);
}

TEST_F(ProviderTest, WithoutApplicationDataFolderInitializeFails) {
  ScopedEnv noAppData("CORVANE_APPDATA", nullptr);
  ScopedEnv noXdg("XDG_DATA_HOME", nullptr);
  ScopedEnv noHome("HOME", nullptr);
  ComPtr<ICorvaneDataProviderObject> provider = CreateProvider();
  EXPECT_EQ(provider->Initialize(nullptr), E_FAIL);
}

TEST_F(ProviderTest, ReleasingEverythingLetsTheLibraryUnload) {
  {
    ComPtr<ICorvaneDataProviderObject> provider = CreateProvider();
    ASSERT_EQ(provider->Initialize(nullptr), S_OK);
    EXPECT_EQ(LoadComponent().DllCanUnloadNow(), S_FALSE);
  }
  EXPECT_EQ(LoadComponent().DllCanUnloadNow(), S_OK);

  IClassFactory* factory = nullptr;
  ASSERT_EQ(LoadComponent().DllGetClassObject(CLSID_CorvaneDataProviderObject, IID_IClassFactory,
                                              reinterpret_cast<void**>(&factory)),
            S_OK);
  EXPECT_EQ(factory->LockServer(1), S_OK);
  EXPECT_EQ(LoadComponent().DllCanUnloadNow(), S_FALSE);
  EXPECT_EQ(factory->LockServer(0), S_OK);
  EXPECT_EQ(LoadComponent().DllCanUnloadNow(), S_OK);

  void* object = reinterpret_cast<void*>(0x1);
  IUnknown* outer = reinterpret_cast<IUnknown*>(factory);
  EXPECT_EQ(factory->CreateInstance(outer, IID_IUnknown, &object), CLASS_E_NOAGGREGATION);
  EXPECT_EQ(factory->CreateInstance(nullptr, IID_ICorvaneDataProviderObject, nullptr), E_POINTER);
  factory->Release();

  EXPECT_EQ(LoadComponent().DllGetClassObject(IID_IURLArray, IID_IClassFactory, &object), CLASS_E_CLASSNOTAVAILABLE);
  EXPECT_EQ(LoadComponent().DllGetClassObject(CLSID_CorvaneDataProviderObject, IID_IClassFactory, nullptr), E_POINTER);
}

// ---- Settings commands of Initialize ----

// "Settings" is handled first, whatever the order of the text. Both sets have
// version 1: the one saved first stands, since the other is not newer and
// force passes only a stored version of 0.
TEST_F(ProviderTest, SettingsIsSavedBeforeForceSettingsAndEachSaveIsReloaded) {
  ScopedEnv debug("CORVANE_DEBUG", m_dir.File("debug.log").c_str());
  ComPtr<ICorvaneDataProviderObject> provider = CreateProvider();
  Bstr param(u"-ForceSettings=" + InForceSet(u"Forced", u"1", u"88") + u" -Settings=" +
             InForceSet(u"Tuned", u"1", u"77"));
  ASSERT_EQ(provider->Initialize(param.Get()), S_OK);
  EXPECT_EQ(SettingsKey(u"Name"), u"Tuned");
  EXPECT_EQ(SettingsKey(u"Version"), u"1");
  EXPECT_EQ(SettingsKey(u"Analyze"), AnalyzeRow(u"77"));
  // The update of this Initialize scored with the set just saved.
  std::string log = DebugLogText();
  EXPECT_NE(log.find("AnalyzeProc() Settings:[Tuned]"), std::string::npos) << log;
  EXPECT_EQ(log.find("AnalyzeProc() Settings:[Default]"), std::string::npos);
  size_t saved = log.find("!!!!!SaveSetting(Tuned)");
  ASSERT_NE(saved, std::string::npos);
  EXPECT_LT(saved, log.find("AnalyzeProc()"));
}

TEST_F(ProviderTest, ForceSettingsPassesStoredVersionZeroAndSettingsDoesNot) {
  ComPtr<ICorvaneDataProviderObject> provider = CreateProvider();
  Bstr plain(u"-Settings=" + InForceSet(u"Zero", u"0", u"66"));
  ASSERT_EQ(provider->Initialize(plain.Get()), S_OK);
  EXPECT_EQ(SettingsKey(u"Name"), u"Default");
  EXPECT_EQ(SettingsKey(u"Analyze"), kDefaultAnalyze);

  Bstr forced(u"-forcesettings=" + InForceSet(u"Zero", u"0", u"66"));
  ASSERT_EQ(provider->Initialize(forced.Get()), S_OK);
  EXPECT_EQ(SettingsKey(u"Name"), u"Zero");
  EXPECT_EQ(SettingsKey(u"Analyze"), AnalyzeRow(u"66"));
}

// The reload after a command is seen in a damaged Settings.ini: loading it
// replaces it by the built-in set.
TEST_F(ProviderTest, CommandWithoutValueOnlyReloads) {
  ComPtr<ICorvaneDataProviderObject> provider = CreateProvider();
  WriteSettingsKey(u"Version", u"9");
  WriteSettingsKey(u"Analyze", u"{0,3,50}");
  ASSERT_EQ(provider->Initialize(nullptr), S_OK);
  EXPECT_EQ(SettingsKey(u"Version"), u"9");  // no command, no reload

  ASSERT_EQ(provider->Initialize(Bstr(u"-Settings").Get()), S_OK);
  EXPECT_EQ(SettingsKey(u"Version"), u"0");
  EXPECT_EQ(SettingsKey(u"Analyze"), kDefaultAnalyze);
}

// A save that is refused still reloads, and the reload comes after the save:
// had it come first, the rewritten defaults (version 0) would have let the
// set of version 1 in.
TEST_F(ProviderTest, RefusedSaveIsFollowedByTheReload) {
  ComPtr<ICorvaneDataProviderObject> provider = CreateProvider();
  WriteSettingsKey(u"Version", u"9");
  WriteSettingsKey(u"Analyze", u"{0,3,50}");
  Bstr param(u"-Settings=" + InForceSet(u"Tuned", u"1", u"77"));
  ASSERT_EQ(provider->Initialize(param.Get()), S_OK);
  EXPECT_EQ(SettingsKey(u"Name"), u"Default");
  EXPECT_EQ(SettingsKey(u"Version"), u"0");
  EXPECT_EQ(SettingsKey(u"Analyze"), kDefaultAnalyze);
}

TEST_F(ProviderTest, EmptyParameterRunsTheCycleLikeNone) {
  ScopedEnv debug("CORVANE_DEBUG", m_dir.File("debug.log").c_str());
  ComPtr<ICorvaneDataProviderObject> provider = CreateProvider();
  Bstr empty(u"");
  ASSERT_NE(empty.Get(), nullptr);
  EXPECT_EQ(provider->Initialize(empty.Get()), S_OK);
  EXPECT_EQ(Config(u"LastUpdate"), u"2024.03.05 2 09:07:03.041");
  EXPECT_EQ(SettingsKey(u"Name"), u"Default");
  EXPECT_NE(DebugLogText().find("!!!!CorvaneDataProvider::Initialize()"), std::string::npos);
}

// A count far beyond what a row's list can hold once had its zeros allocated
// first, and the failed allocation ended the host.
TEST_F(ProviderTest, SettingsTextWithHugeParamCountIsRefusedAndTheHostGoesOn) {
  ComPtr<ICorvaneDataProviderObject> provider = CreateProvider();
  Bstr param(u"-ForceSettings=" + InForceSet(u"Huge", u"5", u"77", u"2147483647"));
  EXPECT_EQ(provider->Initialize(param.Get()), S_OK);
  EXPECT_EQ(SettingsKey(u"Name"), u"Default");
  EXPECT_EQ(SettingsKey(u"Analyze"), kDefaultAnalyze);
  EXPECT_EQ(Config(u"LastUpdate"), u"2024.03.05 2 09:07:03.041");
}

TEST_F(ProviderTest, SettingsFileWithHugeParamCountIsReplacedWhenTheProviderIsMade) {
  std::filesystem::create_directories(m_dir.Path() + "/CorvaneApp");
  std::ofstream(DataFile("Settings.ini"))
      << "[Settings]\nName=Huge\nAnalyze={0,30,77,1,130,2.0,2147483647,{10,2},{0,0,0,0,0,0,0,0}}\n"
      << "Setting={7,{7,3}}\nVersion=5\nDefault=true\n";
  ComPtr<ICorvaneDataProviderObject> provider = CreateProvider();
  ASSERT_TRUE(provider);
  EXPECT_EQ(SettingsKey(u"Name"), u"Default");
  EXPECT_EQ(SettingsKey(u"Version"), u"0");
  EXPECT_EQ(SettingsKey(u"Analyze"), kDefaultAnalyze);
  EXPECT_EQ(provider->Initialize(nullptr), S_OK);
}

// ---- Data folder, database and DBConfig.ini ----

// A stamp of today shuts the gate even for a database that did not exist:
// Initialize creates the schema and runs no cycle.
TEST_F(ProviderTest, NewDatabaseBesideAConfigStampedTodayGetsTheSchemaAndNoCycle) {
  std::filesystem::create_directories(m_dir.Path() + "/CorvaneApp");
  std::ofstream(DataFile("DBConfig.ini")) << "[DBConfig]\nLastUpdate=2024.03.05 2 01:00:00.000\n";
  ComPtr<ICorvaneDataProviderObject> provider = CreateProvider();
  ASSERT_EQ(provider->Initialize(nullptr), S_OK);
  EXPECT_EQ(SchemaNames(DataFile("CorvaneAppDB.db"), "table"),
            (std::set<std::string>{"THistory", "TFavorite", "TFocusURL", "TIEHistory", "TPreparedURL", "TWhiteList",
                                   "TBlackList", "TSubList", "TRecommendDomain"}));
  EXPECT_EQ(SchemaNames(DataFile("CorvaneAppDB.db"), "index").count("THistory_URL"), 1u);
  EXPECT_EQ(Config(u"LastUpdate"), u"2024.03.05 2 01:00:00.000");
  EXPECT_EQ(Config(u"LastUpdateBK", u"<absent>"), u"<absent>");
  EXPECT_EQ(Config(u"DefBrowser", u"<absent>"), u"<absent>");
}

// The file may come from elsewhere: a byte-order mark, lines ended by a lone
// CR, binary bytes, a NUL and invalid UTF-8 still leave the keys readable.
TEST_F(ProviderTest, GetValueReadsKeysOfAConfigFileWithGarbageLines) {
  std::filesystem::create_directories(m_dir.Path() + "/CorvaneApp");
  const std::string content =
      "\xEF\xBB\xBF[DBConfig]\r"
      "LastUpdate=2024.03.05 2 01:00:00.000\r"
      "\x01\x02\xFF\xFE binary = line\r\n" +
      std::string("Nul=ab\0cd\n", 10) +
      "Bad=\xC3\x28x\r"
      "\xC3\x28=\r"
      "Plain=kept\r";
  std::ofstream(DataFile("DBConfig.ini"), std::ios::binary) << content;
  ComPtr<ICorvaneDataProviderObject> provider = CreateProvider();
  ASSERT_EQ(provider->Initialize(nullptr), S_OK);
  // The stamp was read, so the gate stayed shut and the file was not written.
  EXPECT_EQ(GetValue(provider.Get(), u"LastUpdate"), u"2024.03.05 2 01:00:00.000");
  EXPECT_EQ(GetValue(provider.Get(), u"Nul"), u"ab");
  EXPECT_EQ(GetValue(provider.Get(), u"Bad"), u"\uFFFD(x");
  EXPECT_EQ(GetValue(provider.Get(), u"Plain"), u"kept");
  std::ifstream in(DataFile("DBConfig.ini"), std::ios::binary);
  EXPECT_EQ(std::string((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>()), content);
}

TEST_F(ProviderTest, GetCorvaneDBRefusesANullOutArgument) {
  ComPtr<ICorvaneDataProviderObject> provider = CreateProvider();
  ComPtr<ICorvaneDataProviderInner> inner = Query<ICorvaneDataProviderInner>(provider.Get(), IID_ICorvaneDataProviderInner);
  ASSERT_TRUE(inner);
  EXPECT_EQ(inner->GetCorvaneDB(nullptr), E_POINTER);
  IUnknown* database = nullptr;
  EXPECT_EQ(inner->GetCorvaneDB(&database), S_OK);
  EXPECT_NE(database, nullptr);
}

// The application-data folder: $CORVANE_APPDATA when set and not empty, else
// $XDG_DATA_HOME, else $HOME/.local/share; the data folder is that plus
// CorvaneApp.
TEST_F(ProviderTest, DataFolderFallsBackToXdgDataHomeAndThenHome) {
  const std::string xdg = m_dir.File("xdg");
  const std::string home = m_dir.File("home");
  std::filesystem::create_directories(xdg);
  ScopedEnv xdgEnv("XDG_DATA_HOME", xdg.c_str());
  ScopedEnv homeEnv("HOME", home.c_str());
  {
    ScopedEnv empty("CORVANE_APPDATA", "");
    ComPtr<ICorvaneDataProviderObject> provider = CreateProvider();
    ASSERT_EQ(provider->Initialize(nullptr), S_OK);
    EXPECT_TRUE(std::filesystem::exists(xdg + "/CorvaneApp/CorvaneAppDB.db"));
    EXPECT_EQ(ReadProfileString(U16Path(xdg + "/CorvaneApp/DBConfig.ini"), u"DBConfig", u"LastUpdate", u"", 260),
              u"2024.03.05 2 09:07:03.041");
    EXPECT_EQ(GetValue(provider.Get(), u"LastUpdate"), u"2024.03.05 2 09:07:03.041");
  }
  EXPECT_FALSE(std::filesystem::exists(home));
  {
    ScopedEnv unset("CORVANE_APPDATA", nullptr);
    ScopedEnv noXdg("XDG_DATA_HOME", "");
    ComPtr<ICorvaneDataProviderObject> provider = CreateProvider();
    ASSERT_EQ(provider->Initialize(nullptr), S_OK);
    EXPECT_TRUE(std::filesystem::exists(home + "/.local/share/CorvaneApp/CorvaneAppDB.db"));
    EXPECT_TRUE(std::filesystem::exists(home + "/.local/share/CorvaneApp/Settings.ini"));
    EXPECT_EQ(GetValue(provider.Get(), u"LastUpdate"), u"2024.03.05 2 09:07:03.041");
  }
  // The variable of our own wins over both.
  EXPECT_FALSE(std::filesystem::exists(DataFile("CorvaneAppDB.db")));
  ComPtr<ICorvaneDataProviderObject> provider = CreateProvider();
  ASSERT_EQ(provider->Initialize(nullptr), S_OK);
  EXPECT_TRUE(std::filesystem::exists(DataFile("CorvaneAppDB.db")));
}

}  // namespace
}  // namespace corvane::test
