// The component catalogue as a host sees it: every class by its CLSID, the
// interfaces each one offers, managers handed out by the provider, and the
// unload test while objects live.

#include <gtest/gtest.h>
#include <sqlite3.h>

#include <fstream>
#include <iterator>
#include <set>
#include <string>
#include <vector>

#include "support/elf_symbols.h"
#include "support/test_host.h"

namespace corvane::test {
namespace {

const IID* const kAllInterfaces[] = {&IID_ICorvaneDataProviderObject, &IID_ICorvaneDataProviderInner,
                                     &IID_IURLsManager, &IID_ICommonUseURLsManager, &IID_IFocusURLsManager,
                                     &IID_IHistoryURLsManager, &IID_IFavoriteURLsManger, &IID_IURLArray,
                                     &IID_IURLInfo, &IID_IURLInfo2, &IID_IClassFactory};

struct ClassCase {
  const char* name;
  const CLSID* clsid;
  std::vector<const IID*> offered;
};

const std::vector<ClassCase>& Classes() {
  static const std::vector<ClassCase> cases = {
      {"provider", &CLSID_CorvaneDataProviderObject, {&IID_ICorvaneDataProviderObject, &IID_ICorvaneDataProviderInner}},
      {"common use", &CLSID_CommonUseURLsManager, {&IID_IURLsManager, &IID_ICommonUseURLsManager}},
      {"focus", &CLSID_FocusURLsManager, {&IID_IURLsManager, &IID_IFocusURLsManager}},
      {"history", &CLSID_HistoryURLsManager, {&IID_IURLsManager, &IID_IHistoryURLsManager}},
      {"favorite", &CLSID_FavoriteURLsManger, {&IID_IURLsManager, &IID_IFavoriteURLsManger}},
      {"array", &CLSID_URLArray, {&IID_IURLArray}},
      {"info", &CLSID_URLInfo, {&IID_IURLInfo}},
      {"info2", &CLSID_URLInfo2, {&IID_IURLInfo2}},
  };
  return cases;
}

ComPtr<IUnknown> CreateByClsid(const CLSID& clsid) {
  IClassFactory* factory = nullptr;
  EXPECT_EQ(LoadComponent().DllGetClassObject(clsid, IID_IClassFactory, reinterpret_cast<void**>(&factory)), S_OK);
  ComPtr<IClassFactory> holder(factory);
  IUnknown* object = nullptr;
  if (factory != nullptr) {
    EXPECT_EQ(factory->CreateInstance(nullptr, IID_IUnknown, reinterpret_cast<void**>(&object)), S_OK);
  }
  return ComPtr<IUnknown>(object);
}

IClassFactory* ClassObject(const CLSID& clsid) {
  IClassFactory* factory = nullptr;
  EXPECT_EQ(LoadComponent().DllGetClassObject(clsid, IID_IClassFactory, reinterpret_cast<void**>(&factory)), S_OK);
  return factory;
}

class CatalogueTest : public ::testing::Test {
 protected:
  CatalogueTest() : m_appData("CORVANE_APPDATA", m_dir.Path().c_str()) {}
  void TearDown() override { EXPECT_EQ(LoadComponent().DllCanUnloadNow(), S_OK) << "an object outlived its test"; }

  TempDir m_dir;
  ScopedEnv m_appData;
};

TEST_F(CatalogueTest, EveryClassOffersExactlyItsInterfaces) {
  for (const ClassCase& entry : Classes()) {
    SCOPED_TRACE(entry.name);
    ComPtr<IUnknown> object = CreateByClsid(*entry.clsid);
    ASSERT_TRUE(object);
    for (const IID* iid : kAllInterfaces) {
      bool expected = false;
      for (const IID* offered : entry.offered) expected = expected || *offered == *iid;
      void* out = reinterpret_cast<void*>(0x1);
      HRESULT hr = object->QueryInterface(*iid, &out);
      EXPECT_EQ(hr, expected ? S_OK : E_NOINTERFACE);
      if (hr == S_OK) {
        static_cast<IUnknown*>(out)->Release();
      } else {
        EXPECT_EQ(out, nullptr);
      }
    }
  }
}

TEST_F(CatalogueTest, TheLibraryShowsItsExportsAndNothingElse) {
  const std::set<std::string> exports = {"DllGetClassObject", "DllCanUnloadNow", "DllRegisterServer",
                                         "DllUnregisterServer", "DllInstall", "SysAllocString",
                                         "SysAllocStringLen", "SysFreeString", "SysStringLen"};
  EXPECT_EQ(DefinedDynamicSymbols(BuildLibDir() + "/libCorvaneDataProvider.so"), exports);
}

TEST_F(CatalogueTest, NullOutPointersAreRefused) {
  EXPECT_EQ(LoadComponent().DllGetClassObject(CLSID_URLInfo, IID_IClassFactory, nullptr), E_POINTER);
  ComPtr<IClassFactory> factory(ClassObject(CLSID_URLInfo));
  ASSERT_TRUE(factory);
  EXPECT_EQ(factory->CreateInstance(nullptr, IID_IURLInfo, nullptr), E_POINTER);
  EXPECT_EQ(factory->QueryInterface(IID_IUnknown, nullptr), E_POINTER);
}

TEST_F(CatalogueTest, CreateInstanceForAnInterfaceTheClassLacks) {
  for (const ClassCase& entry : Classes()) {
    SCOPED_TRACE(entry.name);
    ComPtr<IClassFactory> factory(ClassObject(*entry.clsid));
    ASSERT_TRUE(factory);
    const IID& missing = *entry.clsid == CLSID_URLInfo ? IID_IURLInfo2 : IID_IURLInfo;
    void* out = reinterpret_cast<void*>(0x1);
    EXPECT_EQ(factory->CreateInstance(nullptr, missing, &out), E_NOINTERFACE);
    EXPECT_EQ(out, nullptr);
    // The object that was built for the query is gone again.
    EXPECT_EQ(LoadComponent().DllCanUnloadNow(), S_OK);
  }
}

TEST_F(CatalogueTest, RepeatedRequestsGetTheSameClassObject) {
  for (const ClassCase& entry : Classes()) {
    SCOPED_TRACE(entry.name);
    ComPtr<IClassFactory> first(ClassObject(*entry.clsid));
    ComPtr<IClassFactory> second(ClassObject(*entry.clsid));
    ASSERT_TRUE(first && second);
    EXPECT_EQ(first.Get(), second.Get());
    void* unknown = nullptr;
    ASSERT_EQ(LoadComponent().DllGetClassObject(*entry.clsid, IID_IUnknown, &unknown), S_OK);
    EXPECT_EQ(unknown, static_cast<void*>(static_cast<IUnknown*>(first.Get())));
    static_cast<IUnknown*>(unknown)->Release();
  }
  ComPtr<IClassFactory> provider(ClassObject(CLSID_CorvaneDataProviderObject));
  ComPtr<IClassFactory> array(ClassObject(CLSID_URLArray));
  EXPECT_NE(provider.Get(), array.Get());
}

TEST_F(CatalogueTest, LockServerMovesTheUnloadAnswer) {
  const Component& component = LoadComponent();
  ComPtr<IClassFactory> info(ClassObject(CLSID_URLInfo));
  ComPtr<IClassFactory> array(ClassObject(CLSID_URLArray));
  ASSERT_TRUE(info && array);
  EXPECT_EQ(component.DllCanUnloadNow(), S_OK);
  EXPECT_EQ(info->LockServer(1), S_OK);
  EXPECT_EQ(component.DllCanUnloadNow(), S_FALSE);
  // The locks of all class objects are the module's: another one unlocks.
  EXPECT_EQ(array->LockServer(1), S_OK);
  EXPECT_EQ(array->LockServer(0), S_OK);
  EXPECT_EQ(component.DllCanUnloadNow(), S_FALSE);
  EXPECT_EQ(array->LockServer(0), S_OK);
  EXPECT_EQ(component.DllCanUnloadNow(), S_OK);
}

TEST_F(CatalogueTest, UnlockWithoutALockNeitherGoesBelowZeroNorFreesALiveObject) {
  const Component& component = LoadComponent();
  ComPtr<IClassFactory> factory(ClassObject(CLSID_URLArray));
  ASSERT_TRUE(factory);
  EXPECT_EQ(factory->LockServer(0), S_OK);
  EXPECT_EQ(factory->LockServer(0), S_OK);
  EXPECT_EQ(component.DllCanUnloadNow(), S_OK);
  // A count driven below 0 would come back to 0 here and answer S_OK.
  EXPECT_EQ(factory->LockServer(1), S_OK);
  EXPECT_EQ(component.DllCanUnloadNow(), S_FALSE);
  EXPECT_EQ(factory->LockServer(0), S_OK);
  EXPECT_EQ(component.DllCanUnloadNow(), S_OK);
  // Nor does it take the lock that a live object holds.
  ComPtr<IUnknown> object = CreateByClsid(CLSID_URLArray);
  EXPECT_EQ(factory->LockServer(0), S_OK);
  EXPECT_EQ(component.DllCanUnloadNow(), S_FALSE);
  object.Reset();
  EXPECT_EQ(component.DllCanUnloadNow(), S_OK);
}

TEST_F(CatalogueTest, UnknownClassAndAggregation) {
  void* out = nullptr;
  EXPECT_EQ(LoadComponent().DllGetClassObject(IID_IURLInfo2, IID_IClassFactory, &out), CLASS_E_CLASSNOTAVAILABLE);
  IClassFactory* factory = nullptr;
  ASSERT_EQ(LoadComponent().DllGetClassObject(CLSID_URLInfo2, IID_IClassFactory, reinterpret_cast<void**>(&factory)),
            S_OK);
  ComPtr<IClassFactory> holder(factory);
  ComPtr<IUnknown> outer = CreateByClsid(CLSID_URLArray);
  EXPECT_EQ(factory->CreateInstance(outer.Get(), IID_IURLInfo2, &out), CLASS_E_NOAGGREGATION);
}

TEST_F(CatalogueTest, ManagersWithoutProviderFailSoundly) {
  ComPtr<IUnknown> common = CreateByClsid(CLSID_CommonUseURLsManager);
  ComPtr<ICommonUseURLsManager> recom = Query<ICommonUseURLsManager>(common.Get(), IID_ICommonUseURLsManager);
  IUnknown* array = nullptr;
  Bstr id(u"1");
  EXPECT_EQ(recom->GetRecomURLs(0, 5, &array, 1), E_FAIL);
  EXPECT_EQ(recom->GetRecentHistory(0, 5, &array, 0), E_FAIL);
  EXPECT_EQ(recom->HideRecommendDomain(id.Get(), 0), E_FAIL);
  EXPECT_EQ(recom->HideSubDomain(id.Get(), 0), E_FAIL);
  EXPECT_EQ(array, nullptr);
  for (const CLSID* clsid : {&CLSID_CommonUseURLsManager, &CLSID_FocusURLsManager, &CLSID_HistoryURLsManager,
                             &CLSID_FavoriteURLsManger}) {
    ComPtr<IURLsManager> manager = Query<IURLsManager>(CreateByClsid(*clsid).Get(), IID_IURLsManager);
    ASSERT_TRUE(manager);
    EXPECT_EQ(manager->RemoveURL(id.Get(), 0), E_FAIL);
    if (*clsid == CLSID_CommonUseURLsManager) continue;  // its GetURLs and ClearURLs never touch data
    EXPECT_EQ(manager->GetURLs(0, &array), E_FAIL);
    EXPECT_EQ(manager->ClearURLs(), E_FAIL);
    EXPECT_EQ(array, nullptr);
  }
  ComPtr<IURLsManager> focus = Query<IURLsManager>(CreateByClsid(CLSID_FocusURLsManager).Get(), IID_IURLsManager);
  Bstr url(u"a.com"), name(u"A");
  EXPECT_EQ(focus->AddURL(url.Get(), name.Get(), 0), E_FAIL);
}

TEST_F(CatalogueTest, ProviderHandsOutManagersByID) {
  ComPtr<ICorvaneDataProviderObject> provider = CreateProvider();
  IUnknown* untouched = reinterpret_cast<IUnknown*>(0x1);
  EXPECT_EQ(provider->GetURLsManager(0, &untouched), E_NOINTERFACE);
  EXPECT_EQ(provider->GetURLsManager(5, &untouched), E_NOINTERFACE);
  EXPECT_EQ(untouched, reinterpret_cast<IUnknown*>(0x1));
  const IID* classInterfaces[] = {&IID_ICommonUseURLsManager, &IID_IFocusURLsManager, &IID_IHistoryURLsManager,
                                  &IID_IFavoriteURLsManger};
  for (uint32_t id = 1; id <= 4; ++id) {
    SCOPED_TRACE(id);
    IUnknown* manager = nullptr;
    ASSERT_EQ(provider->GetURLsManager(id, &manager), S_OK);
    ComPtr<IUnknown> holder(manager);
    for (uint32_t other = 1; other <= 4; ++other) {
      void* out = nullptr;
      HRESULT hr = manager->QueryInterface(*classInterfaces[other - 1], &out);
      EXPECT_EQ(hr, other == id ? S_OK : E_NOINTERFACE);
      if (hr == S_OK) static_cast<IUnknown*>(out)->Release();
    }
  }
}

TEST_F(CatalogueTest, ManagerBeforeInitializeFailsWithoutCrash) {
  ComPtr<ICorvaneDataProviderObject> provider = CreateProvider();
  for (uint32_t id = 2; id <= 4; ++id) {
    IUnknown* unknown = nullptr;
    ASSERT_EQ(provider->GetURLsManager(id, &unknown), S_OK);
    ComPtr<IURLsManager> manager = Query<IURLsManager>(unknown, IID_IURLsManager);
    unknown->Release();
    IUnknown* array = nullptr;
    EXPECT_EQ(manager->GetURLs(0, &array), E_FAIL);
    EXPECT_EQ(array, nullptr);
    EXPECT_EQ(manager->ClearURLs(), E_FAIL);
  }
}

TEST_F(CatalogueTest, ManagerKeepsTheModuleAfterTheHostReleasedTheProvider) {
  const Component& component = LoadComponent();
  ComPtr<ICorvaneDataProviderObject> provider = CreateProvider();
  ASSERT_EQ(provider->Initialize(nullptr), S_OK);
  IUnknown* unknown = nullptr;
  ASSERT_EQ(provider->GetURLsManager(2, &unknown), S_OK);
  ComPtr<IURLsManager> focus = Query<IURLsManager>(unknown, IID_IURLsManager);
  unknown->Release();
  provider.Reset();
  EXPECT_EQ(component.DllCanUnloadNow(), S_FALSE);
  // The provider and its database are still there for the manager.
  Bstr url(u"a.com"), name(u"A");
  EXPECT_EQ(focus->AddURL(url.Get(), name.Get(), 0), S_OK);
  focus.Reset();
  EXPECT_EQ(component.DllCanUnloadNow(), S_OK);
}

// Rows from which the recommendation listing builds a promoted record
// with a "SubDomain" array, a single-URL record, and recent records.
constexpr char kServingRows[] =
    "insert into TRecommendDomain values('news.example.com', 'example.com', 133540000000000000, 300, 0, 0);"
    "insert into TWhiteList values('Example', 'example.com', 'news.example.com', 'Example News');"
    "insert into TWhiteList values('Example', 'example.com', 'example.com', 'Example Home');"
    "insert into TWhiteList values('Example', 'example.com', 'mail.example.com', 'Example Mail');"
    "insert into TZS values('example.com', 'example.com', 133540000000000000, 400, 0, 0);"
    "insert into TZS values('mail.example.com', 'example.com', 133540000000000000, 100, 0, 0);"
    "insert into TRecommendURL values('Page', 'http://other.org/p', 'other.org/p', 133540000000000000, 'other.org',"
    " 'other.org', 50, 0, 3, 1);"
    "insert into TRecentDomain values('a.com', 'a.com', 133540000000000000, 9, 'A');"
    "insert into TRecentHistory values(7, 'Page', 'http://b.com/x', 'b.com/x', 133540000000000000, 'b.com', 'b.com', 5,"
    " 2);"
    "insert into THistory values(null, 'T', 'http://h/', 1, '2024.03.05 2 08:00:00.000', 154561, 0, 2);"
    "insert into TFavorite values('F', 'http://f/', 'f', 'Bar', 0);"
    "insert into TFocusURL(Name, URL) values('Pinned', 'pinned.example.com');";

bool SeedRows(const std::string& path) {
  sqlite3* db = nullptr;
  bool ok = sqlite3_open_v2(path.c_str(), &db, SQLITE_OPEN_READWRITE, nullptr) == SQLITE_OK &&
            sqlite3_exec(db, kServingRows, nullptr, nullptr, nullptr) == SQLITE_OK;
  sqlite3_close(db);
  return ok;
}

uint32_t CountOf(IUnknown* array) {
  uint32_t count = 0;
  ComPtr<IURLArray> list = Query<IURLArray>(array, IID_IURLArray);
  if (!list || list->GetCount(&count) != S_OK) return 0;
  return count;
}

TEST_F(CatalogueTest, HostThatReleasesEverythingLetsTheLibraryGo) {
  const Component& component = LoadComponent();
  ComPtr<IUnknown> keptSubSite;
  {
    ComPtr<ICorvaneDataProviderObject> provider = CreateProvider();
    ASSERT_EQ(provider->Initialize(nullptr), S_OK);
    ASSERT_TRUE(SeedRows(m_dir.Path() + "/CorvaneApp/CorvaneAppDB.db"));
    for (uint32_t id = 1; id <= 4; ++id) {
      IUnknown* manager = nullptr;
      ASSERT_EQ(provider->GetURLsManager(id, &manager), S_OK);
      ComPtr<IUnknown> holder(manager);
      if (id == 1) continue;  // GetURLs of this manager hands out nothing
      ComPtr<IURLsManager> urls = Query<IURLsManager>(manager, IID_IURLsManager);
      IUnknown* array = nullptr;
      ASSERT_EQ(urls->GetURLs(0, &array), S_OK);
      ComPtr<IUnknown> listing(array);
      EXPECT_EQ(CountOf(listing.Get()), 1u) << "manager " << id;
    }
    IUnknown* manager = nullptr;
    ASSERT_EQ(provider->GetURLsManager(1, &manager), S_OK);
    ComPtr<ICommonUseURLsManager> common = Query<ICommonUseURLsManager>(manager, IID_ICommonUseURLsManager);
    manager->Release();
    IUnknown* array = nullptr;
    ASSERT_EQ(common->GetRecomURLs(0, 5, &array, 0), S_OK);
    ComPtr<IUnknown> recommended(array);
    ASSERT_GE(CountOf(recommended.Get()), 2u);
    // The promoted main record, with the old record and the mail site in
    // its "SubDomain" array; the host keeps one of them beyond the rest.
    IUnknown* item = nullptr;
    ASSERT_EQ(Query<IURLArray>(recommended.Get(), IID_IURLArray)->GetItem(0, &item), S_OK);
    ComPtr<IURLInfo2> main = Query<IURLInfo2>(item, IID_IURLInfo2);
    item->Release();
    Bstr key(u"SubDomain");
    IUnknown* subSites = nullptr;
    ASSERT_EQ(main->GetExtraInfoUnknown(key.Get(), &subSites), S_OK);
    ComPtr<IUnknown> subs(subSites);
    ASSERT_EQ(CountOf(subs.Get()), 2u);
    ASSERT_EQ(Query<IURLArray>(subs.Get(), IID_IURLArray)->GetItem(1, &item), S_OK);
    keptSubSite = ComPtr<IUnknown>(item);
    ASSERT_EQ(common->GetRecentHistory(0, 5, &array, 0), S_OK);
    ComPtr<IUnknown> recent(array);
    EXPECT_EQ(CountOf(recent.Get()), 2u);
    for (const ClassCase& entry : Classes()) static_cast<void>(CreateByClsid(*entry.clsid));
    EXPECT_EQ(component.DllCanUnloadNow(), S_FALSE);
  }
  // A record of a "SubDomain" array outlives the array and the provider.
  EXPECT_EQ(component.DllCanUnloadNow(), S_FALSE);
  Bstr name;
  ASSERT_EQ(Query<IURLInfo2>(keptSubSite.Get(), IID_IURLInfo2)->GetName(name.Put()), S_OK);
  EXPECT_EQ(name.Text(), u"Example Mail");
  keptSubSite.Reset();
  EXPECT_EQ(component.DllCanUnloadNow(), S_OK);
}

TEST_F(CatalogueTest, RegistrationChangesNothing) {
  EXPECT_EQ(LoadComponent().DllInstall(1, u"user"), S_OK);
  EXPECT_EQ(LoadComponent().DllInstall(0, nullptr), S_OK);
}

}  // namespace
}  // namespace corvane::test
