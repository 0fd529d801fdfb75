// The component catalogue as a host sees it: every class by its CLSID, the
// interfaces each one offers, managers handed out by the provider, and the
// unload test while objects live.

#include <gtest/gtest.h>

#include <vector>

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

TEST_F(CatalogueTest, HostThatReleasesEverythingLetsTheLibraryGo) {
  const Component& component = LoadComponent();
  {
    ComPtr<ICorvaneDataProviderObject> provider = CreateProvider();
    ASSERT_EQ(provider->Initialize(nullptr), S_OK);
    for (uint32_t id = 1; id <= 4; ++id) {
      IUnknown* manager = nullptr;
      ASSERT_EQ(provider->GetURLsManager(id, &manager), S_OK);
      ComPtr<IUnknown> holder(manager);
      ComPtr<IURLsManager> urls = Query<IURLsManager>(manager, IID_IURLsManager);
      IUnknown* array = nullptr;
      if (SUCCEEDED(urls->GetURLs(0, &array))) array->Release();
    }
    IUnknown* manager = nullptr;
    ASSERT_EQ(provider->GetURLsManager(1, &manager), S_OK);
    ComPtr<ICommonUseURLsManager> common = Query<ICommonUseURLsManager>(manager, IID_ICommonUseURLsManager);
    manager->Release();
    // Without an update the run-time tables may be missing; either way
    // whatever was handed out goes back.
    IUnknown* array = nullptr;
    if (SUCCEEDED(common->GetRecomURLs(0, 5, &array, 1))) array->Release();
    array = nullptr;
    if (SUCCEEDED(common->GetRecentHistory(0, 5, &array, 0))) array->Release();
    for (const ClassCase& entry : Classes()) static_cast<void>(CreateByClsid(*entry.clsid));
    EXPECT_EQ(component.DllCanUnloadNow(), S_FALSE);
  }
  EXPECT_EQ(component.DllCanUnloadNow(), S_OK);
}

TEST_F(CatalogueTest, RegistrationChangesNothing) {
  EXPECT_EQ(LoadComponent().DllInstall(1, u"user"), S_OK);
  EXPECT_EQ(LoadComponent().DllInstall(0, nullptr), S_OK);
}

}  // namespace
}  // namespace corvane::test
