// The component catalogue as a host sees it: every class by its CLSID, the
// interfaces each one offers, the module's lock count, and the library's
// exports.

#include <gtest/gtest.h>

#include <iterator>
#include <set>
#include <string>
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

const ClassCase kClasses[] = {
    {"provider", &CLSID_CorvaneDataProviderObject, {&IID_ICorvaneDataProviderObject, &IID_ICorvaneDataProviderInner}},
    {"common use", &CLSID_CommonUseURLsManager, {&IID_IURLsManager, &IID_ICommonUseURLsManager}},
    {"focus", &CLSID_FocusURLsManager, {&IID_IURLsManager, &IID_IFocusURLsManager}},
    {"history", &CLSID_HistoryURLsManager, {&IID_IURLsManager, &IID_IHistoryURLsManager}},
    {"favorite", &CLSID_FavoriteURLsManger, {&IID_IURLsManager, &IID_IFavoriteURLsManger}},
    {"array", &CLSID_URLArray, {&IID_IURLArray}},
    {"info", &CLSID_URLInfo, {&IID_IURLInfo}},
    {"info2", &CLSID_URLInfo2, {&IID_IURLInfo2}},
};

ComPtr<IClassFactory> ClassObject(const CLSID& clsid) {
  IClassFactory* factory = nullptr;
  EXPECT_EQ(LoadComponent().DllGetClassObject(clsid, IID_IClassFactory, reinterpret_cast<void**>(&factory)), S_OK);
  return ComPtr<IClassFactory>(factory);
}

ComPtr<IUnknown> CreateByClsid(const CLSID& clsid) {
  ComPtr<IClassFactory> factory = ClassObject(clsid);
  IUnknown* object = nullptr;
  EXPECT_TRUE(factory && factory->CreateInstance(nullptr, IID_IUnknown, reinterpret_cast<void**>(&object)) == S_OK);
  return ComPtr<IUnknown>(object);
}

class CatalogueTest : public ::testing::Test {
 protected:
  CatalogueTest() : m_appData("CORVANE_APPDATA", m_dir.Path().c_str()) {}
  void TearDown() override { EXPECT_EQ(LoadComponent().DllCanUnloadNow(), S_OK) << "an object outlived its test"; }

  TempDir m_dir;
  ScopedEnv m_appData;
};

// Every class created by its CLSID, and each manager as the provider hands
// it out by its ID (1 to 4, in the order of kClasses), answers the queries
// for its own interfaces and refuses all others.
TEST_F(CatalogueTest, EveryClassOffersExactlyItsInterfaces) {
  ComPtr<ICorvaneDataProviderObject> provider = CreateProvider();
  ASSERT_TRUE(provider);
  for (uint32_t index = 0; index < std::size(kClasses); ++index) {
    std::vector<ComPtr<IUnknown>> objects;
    objects.push_back(CreateByClsid(*kClasses[index].clsid));
    IUnknown* manager = nullptr;
    if (index >= 1 && index <= 4) {
      EXPECT_EQ(provider->GetURLsManager(index, &manager), S_OK);
    }
    if (manager != nullptr) objects.emplace_back(manager);
    for (size_t source = 0; source < objects.size(); ++source) {
      SCOPED_TRACE(testing::Message() << kClasses[index].name << (source == 0 ? " by CLSID" : " from the provider"));
      ASSERT_TRUE(objects[source]);
      for (const IID* iid : kAllInterfaces) {
        bool expected = false;
        for (const IID* offered : kClasses[index].offered) expected = expected || *offered == *iid;
        void* out = reinterpret_cast<void*>(0x1);
        const HRESULT hr = objects[source]->QueryInterface(*iid, &out);
        EXPECT_EQ(hr, expected ? S_OK : E_NOINTERFACE);
        if (hr == S_OK) static_cast<IUnknown*>(out)->Release();
        EXPECT_TRUE(hr == S_OK || out == nullptr);
      }
    }
  }
  IUnknown* untouched = reinterpret_cast<IUnknown*>(0x1);
  EXPECT_EQ(provider->GetURLsManager(0, &untouched), E_NOINTERFACE);
  EXPECT_EQ(provider->GetURLsManager(5, &untouched), E_NOINTERFACE);
  EXPECT_EQ(untouched, reinterpret_cast<IUnknown*>(0x1));
}

TEST_F(CatalogueTest, TheLibraryShowsItsExportsAndNothingElse) {
  const std::set<std::string> exports = {"DllGetClassObject", "DllCanUnloadNow", "DllRegisterServer",
                                         "DllUnregisterServer", "DllInstall", "SysAllocString",
                                         "SysAllocStringLen", "SysFreeString", "SysStringLen"};
  EXPECT_EQ(DefinedDynamicSymbols(BuildLibDir() + "/libCorvaneDataProvider.so"), exports);
  // Registration changes nothing here.
  EXPECT_EQ(LoadComponent().DllInstall(1, u"user"), S_OK);
  EXPECT_EQ(LoadComponent().DllInstall(0, nullptr), S_OK);
}

// The locks of all class objects are the module's: another one unlocks. An
// unlock without a lock neither drives the count below 0 nor takes the lock
// that a live object holds.
TEST_F(CatalogueTest, LockServerMovesTheUnloadAnswer) {
  const Component& component = LoadComponent();
  ComPtr<IClassFactory> info = ClassObject(CLSID_URLInfo), array = ClassObject(CLSID_URLArray);
  ASSERT_TRUE(info && array);
  EXPECT_EQ(array->LockServer(0), S_OK);
  EXPECT_EQ(array->LockServer(0), S_OK);
  EXPECT_EQ(component.DllCanUnloadNow(), S_OK);
  EXPECT_EQ(info->LockServer(1), S_OK);
  EXPECT_EQ(component.DllCanUnloadNow(), S_FALSE);
  EXPECT_EQ(array->LockServer(1), S_OK);
  EXPECT_EQ(array->LockServer(0), S_OK);
  EXPECT_EQ(component.DllCanUnloadNow(), S_FALSE);
  EXPECT_EQ(array->LockServer(0), S_OK);
  EXPECT_EQ(component.DllCanUnloadNow(), S_OK);
  ComPtr<IUnknown> object = CreateByClsid(CLSID_URLArray);
  EXPECT_EQ(array->LockServer(0), S_OK);
  EXPECT_EQ(component.DllCanUnloadNow(), S_FALSE);
  object.Reset();
  EXPECT_EQ(component.DllCanUnloadNow(), S_OK);
}

}  // namespace
}  // namespace corvane::test
