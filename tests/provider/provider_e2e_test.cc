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

  std::u16string Config(std::u16string_view key) const {
    std::string path = DataFile("DBConfig.ini");
    return ReadProfileString(std::u16string(path.begin(), path.end()), u"DBConfig", key, u"", 260);
  }

  TempDir m_dir;
  ScopedEnv m_appData;
  ScopedEnv m_now;
};

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
  EXPECT_TRUE(std::filesystem::exists(DataFile("Settings.ini")));
  EXPECT_EQ(Config(u"LastUpdate"), u"2024.03.05 2 09:07:03.041");
  EXPECT_EQ(Config(u"LastUpdateBK"), u"");
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

}  // namespace
}  // namespace corvane::test
