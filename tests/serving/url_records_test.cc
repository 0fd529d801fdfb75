// The record classes: reference counting of arrays and extra objects, the
// separate name spaces of the extra maps, and the fillers' rules.

#include <gtest/gtest.h>

#include "platform/bstr.h"
#include "platform/module_lock.h"
#include "serving/url_array.h"
#include "serving/url_info.h"
#include "serving/url_info2.h"

namespace corvane {
namespace {

// The reference count of an object, read without changing it.
ULONG RefCount(IUnknown* object) {
  object->AddRef();
  return object->Release();
}

class Bs {
 public:
  explicit Bs(std::u16string_view text) : m_bstr(BstrAlloc(text)) {}
  ~Bs() { BstrFree(m_bstr); }
  BSTR Get() const { return m_bstr; }

 private:
  BSTR m_bstr;
};

std::u16string Take(BSTR bstr) {
  std::u16string text = BstrToString(bstr);
  BstrFree(bstr);
  return text;
}

TEST(URLArrayTest, HoldsOneReferencePerStoredItem) {
  const long locksBefore = ModuleLockCount();
  {
    ComPtr<CURLArray> array(CreateObject<CURLArray>());
    ComPtr<CURLInfo> info(CreateObject<CURLInfo>());
    EXPECT_EQ(RefCount(info->AsUnknown()), 1u);
    EXPECT_EQ(array->AddItem(info->AsUnknown()), S_OK);
    EXPECT_EQ(array->AddItem(info->AsUnknown()), S_OK);  // twice: two entries, two references
    EXPECT_EQ(array->AddItem(nullptr), S_OK);
    uint32_t count = 0;
    ASSERT_EQ(array->GetCount(&count), S_OK);
    EXPECT_EQ(count, 2u);
    EXPECT_EQ(RefCount(info->AsUnknown()), 3u);

    IUnknown* item = nullptr;
    ASSERT_EQ(array->GetItem(1, &item), S_OK);
    EXPECT_EQ(item, info->AsUnknown());
    EXPECT_EQ(RefCount(info->AsUnknown()), 4u);
    item->Release();

    IUnknown* untouched = reinterpret_cast<IUnknown*>(0x2);
    EXPECT_EQ(array->GetItem(2, &untouched), E_INVALIDARG);
    EXPECT_EQ(array->GetItem(100, &untouched), E_INVALIDARG);
    EXPECT_EQ(untouched, reinterpret_cast<IUnknown*>(0x2));
    EXPECT_EQ(array->GetItem(0, nullptr), E_INVALIDARG);
    EXPECT_EQ(array->GetCount(nullptr), E_INVALIDARG);

    EXPECT_EQ(array->Clear(), S_OK);
    EXPECT_EQ(RefCount(info->AsUnknown()), 1u);
    EXPECT_EQ(array->Clear(), S_OK);
    // An array inside an array is released with its holder.
    ComPtr<CURLArray> inner(CreateObject<CURLArray>());
    static_cast<void>(inner->AddItem(info->AsUnknown()));
    static_cast<void>(array->AddItem(inner->AsUnknown()));
  }
  EXPECT_EQ(ModuleLockCount(), locksBefore);
}

TEST(URLArrayTest, QueryInterfaceOffersOnlyItsOwnInterface) {
  ComPtr<CURLArray> array(CreateObject<CURLArray>());
  void* out = nullptr;
  EXPECT_EQ(array->QueryInterface(IID_IURLInfo, &out), E_NOINTERFACE);
  EXPECT_EQ(out, nullptr);
  ASSERT_EQ(array->QueryInterface(IID_IURLArray, &out), S_OK);
  static_cast<IURLArray*>(out)->Release();
}

TEST(URLInfoTest, FillersTakeAnyIdAndGettersCopy) {
  ComPtr<CURLInfo> info(CreateObject<CURLInfo>());
  info->SetInfo(0, u"Title", u"", u"");
  uint32_t id = 7;
  ASSERT_EQ(info->GetID(&id), S_OK);
  EXPECT_EQ(id, 0u);
  info->SetInfo(5, u"Name", u"http://a.com/", u"Bookmarks bar", u"2024.03.05 2 09:07:03.041");
  BSTR text = nullptr;
  ASSERT_EQ(info->GetPath(&text), S_OK);
  EXPECT_EQ(Take(text), u"Bookmarks bar");
  ASSERT_EQ(info->GetLastVisitTime(&text), S_OK);
  EXPECT_EQ(Take(text), u"2024.03.05 2 09:07:03.041");
  // An empty field is an empty string, not a null one.
  info->SetInfo(6, u"", u"x", u"");
  ASSERT_EQ(info->GetName(&text), S_OK);
  ASSERT_NE(text, nullptr);
  EXPECT_EQ(Take(text), u"");
  EXPECT_EQ(info->GetURL(nullptr), E_INVALIDARG);
  EXPECT_EQ(info->GetID(nullptr), E_INVALIDARG);
}

class URLInfo2Test : public ::testing::Test {
 protected:
  URLInfo2Test() : m_info(CreateObject<CURLInfo2>()) {
    EXPECT_TRUE(m_info->SetInfo(3, u"Name", u"www.example.com"));
  }
  ComPtr<CURLInfo2> m_info;
};

TEST_F(URLInfo2Test, IdZeroIsRefused) {
  EXPECT_FALSE(m_info->SetInfo(0, u"Other", u"other"));
  uint32_t id = 0;
  ASSERT_EQ(m_info->GetID(&id), S_OK);
  EXPECT_EQ(id, 3u);
  BSTR url = nullptr;
  ASSERT_EQ(m_info->GetURL(&url, 0), S_OK);
  EXPECT_EQ(Take(url), u"www.example.com");
}

TEST_F(URLInfo2Test, MapsAreSeparateAndKeysExact) {
  m_info->AddExtraInfo(u"Domain", u"example.com");
  m_info->AddExtraInfo(u"FixedURL", u"example.com/fixed");
  m_info->AddExtraInfoULong(u"Weight", 42);
  BSTR value = nullptr;
  Bs weight(u"Weight"), domain(u"Domain"), lower(u"domain"), empty(u"");
  EXPECT_EQ(m_info->GetExtraInfo(weight.Get(), &value), E_NOINTERFACE);
  uint32_t number = 0;
  ASSERT_EQ(m_info->GetExtraInfoULong(weight.Get(), &number), S_OK);
  EXPECT_EQ(number, 42u);
  EXPECT_EQ(m_info->GetExtraInfoULong(domain.Get(), &number), E_NOINTERFACE);
  EXPECT_EQ(m_info->GetExtraInfo(lower.Get(), &value), E_NOINTERFACE);
  EXPECT_EQ(m_info->GetExtraInfo(empty.Get(), &value), E_NOINTERFACE);
  EXPECT_EQ(m_info->GetExtraInfo(nullptr, &value), E_INVALIDARG);
  EXPECT_EQ(m_info->GetExtraInfo(domain.Get(), nullptr), E_INVALIDARG);
  ASSERT_EQ(m_info->GetExtraInfo(domain.Get(), &value), S_OK);
  EXPECT_EQ(Take(value), u"example.com");
  // bFixed changes nothing, even with a "FixedURL" present.
  BSTR plain = nullptr, fixed = nullptr;
  ASSERT_EQ(m_info->GetURL(&plain, 0), S_OK);
  ASSERT_EQ(m_info->GetURL(&fixed, 1), S_OK);
  EXPECT_EQ(Take(plain), Take(fixed));
}

TEST_F(URLInfo2Test, AddNeverReplacesRemoveThenAddDoes) {
  Bs key(u"WhiteList");
  m_info->AddExtraInfoULong(u"WhiteList", 1);
  EXPECT_FALSE(m_info->AddExtraInfoULong(u"WhiteList", 3));
  uint32_t value = 0;
  ASSERT_EQ(m_info->GetExtraInfoULong(key.Get(), &value), S_OK);
  EXPECT_EQ(value, 1u);
  m_info->RemoveExtraInfo(u"WhiteList");
  EXPECT_EQ(m_info->GetExtraInfoULong(key.Get(), &value), E_NOINTERFACE);
  EXPECT_TRUE(m_info->AddExtraInfoULong(u"WhiteList", 3));
  ASSERT_EQ(m_info->GetExtraInfoULong(key.Get(), &value), S_OK);
  EXPECT_EQ(value, 3u);
}

TEST_F(URLInfo2Test, ExtraObjectsHoldAReferenceAndOutliveTheirHolder) {
  ComPtr<CURLArray> subs(CreateObject<CURLArray>());
  ComPtr<CURLInfo2> entry(CreateObject<CURLInfo2>());
  static_cast<void>(subs->AddItem(entry->AsUnknown()));
  m_info->AddExtraInfoUnknown(u"SubDomain", subs->AsUnknown());
  m_info->AddExtraInfoUnknown(u"SubDomain", subs->AsUnknown());  // not replaced, no second reference
  m_info->AddExtraInfoUnknown(u"Other", nullptr);
  EXPECT_EQ(RefCount(subs->AsUnknown()), 2u);

  Bs key(u"SubDomain");
  IUnknown* object = nullptr;
  ASSERT_EQ(m_info->GetExtraInfoUnknown(key.Get(), &object), S_OK);
  EXPECT_EQ(object, subs->AsUnknown());
  EXPECT_EQ(RefCount(subs->AsUnknown()), 3u);
  object->Release();

  // The record dies first: the array and its entry stay with their holders.
  m_info.Reset();
  EXPECT_EQ(RefCount(subs->AsUnknown()), 1u);
  EXPECT_EQ(RefCount(entry->AsUnknown()), 2u);
}

TEST_F(URLInfo2Test, RemovingAnObjectEntryReleasesIt) {
  ComPtr<CURLArray> subs(CreateObject<CURLArray>());
  m_info->AddExtraInfoUnknown(u"SubDomain", subs->AsUnknown());
  m_info->RemoveExtraInfo(u"SubDomain");
  EXPECT_EQ(RefCount(subs->AsUnknown()), 1u);
  Bs key(u"SubDomain");
  IUnknown* object = nullptr;
  EXPECT_EQ(m_info->GetExtraInfoUnknown(key.Get(), &object), E_NOINTERFACE);
}

}  // namespace
}  // namespace corvane
