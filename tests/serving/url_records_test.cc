// The record classes: reference counting of arrays and extra objects, the
// separate name spaces of the extra maps, and the fillers' rules.

#include <gtest/gtest.h>

#include "common/utf.h"
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

// A BSTR for the length of one test.
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

TEST(URLInfoTest, FillersTakeAnyIdAndGettersCopy) {
  ComPtr<CURLInfo> info(CreateObject<CURLInfo>());
  info->SetInfo(0, u"", u"http://a.com/", u"Bookmarks bar", u"2024.03.05 2 09:07:03.041");
  uint32_t id = 7;
  BSTR name = nullptr, url = nullptr, path = nullptr, visit = nullptr;
  ASSERT_TRUE(info->GetID(&id) == S_OK && info->GetName(&name) == S_OK && info->GetURL(&url) == S_OK &&
              info->GetPath(&path) == S_OK && info->GetLastVisitTime(&visit) == S_OK);
  ASSERT_NE(name, nullptr);  // an empty field is an empty string, not a null one
  EXPECT_EQ(std::to_string(id) + ToUtf8(u"|" + Take(name) + u"|" + Take(url) + u"|" + Take(path) + u"|" + Take(visit)),
            "0||http://a.com/|Bookmarks bar|2024.03.05 2 09:07:03.041");
  EXPECT_EQ(info->GetURL(nullptr), E_INVALIDARG);
  EXPECT_EQ(info->GetID(nullptr), E_INVALIDARG);
}

class URLInfo2Test : public ::testing::Test {
 protected:
  URLInfo2Test() : m_info(CreateObject<CURLInfo2>()) { EXPECT_TRUE(m_info->SetInfo(3, u"Name", u"www.example.com")); }

  // What each of the three maps holds for the key: the text, the number and
  // the object's reference count, "-" where the map has no such key.
  std::string Lookup(std::u16string_view key) {
    Bs name(key);
    BSTR text = nullptr;
    uint32_t number = 0;
    IUnknown* object = nullptr;
    const auto value = [](HRESULT hr, const std::string& found) {
      return hr == S_OK ? found : hr == E_NOINTERFACE ? "-" : "error";
    };
    HRESULT hr = m_info->GetExtraInfo(name.Get(), &text);
    std::string out = value(hr, hr == S_OK ? ToUtf8(Take(text)) : "");
    hr = m_info->GetExtraInfoULong(name.Get(), &number);
    out += " " + value(hr, std::to_string(number));
    hr = m_info->GetExtraInfoUnknown(name.Get(), &object);
    out += " " + value(hr, hr == S_OK ? std::to_string(object->Release()) : "");
    return out;
  }

  ComPtr<CURLInfo2> m_info;
};

TEST_F(URLInfo2Test, MapsAreSeparateAndKeysExact) {
  EXPECT_FALSE(m_info->SetInfo(0, u"Other", u"other"));  // ID 0 is refused, and nothing changes
  m_info->AddExtraInfo(u"Domain", u"example.com");
  m_info->AddExtraInfo(u"FixedURL", u"example.com/fixed");
  m_info->AddExtraInfoULong(u"Weight", 42);
  EXPECT_EQ(Lookup(u"Domain"), "example.com - -");
  EXPECT_EQ(Lookup(u"Weight"), "- 42 -");
  EXPECT_EQ(Lookup(u"domain"), "- - -");
  EXPECT_EQ(Lookup(u""), "- - -");
  BSTR value = nullptr;
  Bs domain(u"Domain");
  EXPECT_EQ(m_info->GetExtraInfo(nullptr, &value), E_INVALIDARG);
  EXPECT_EQ(m_info->GetExtraInfo(domain.Get(), nullptr), E_INVALIDARG);
  uint32_t id = 0;
  ASSERT_EQ(m_info->GetID(&id), S_OK);
  EXPECT_EQ(id, 3u);
  // bFixed changes nothing, even with a "FixedURL" present.
  BSTR plain = nullptr, fixed = nullptr;
  ASSERT_EQ(m_info->GetURL(&plain, 0), S_OK);
  ASSERT_EQ(m_info->GetURL(&fixed, 1), S_OK);
  EXPECT_EQ(Take(plain), u"www.example.com");
  EXPECT_EQ(Take(fixed), u"www.example.com");
}

TEST_F(URLInfo2Test, AddNeverReplacesRemoveThenAddDoes) {
  ComPtr<CURLArray> subs(CreateObject<CURLArray>());
  m_info->AddExtraInfoULong(u"WhiteList", 1);
  EXPECT_FALSE(m_info->AddExtraInfoULong(u"WhiteList", 3));
  m_info->AddExtraInfoUnknown(u"WhiteList", subs->AsUnknown());
  m_info->AddExtraInfoUnknown(u"WhiteList", subs->AsUnknown());  // not replaced, no second reference
  EXPECT_EQ(Lookup(u"WhiteList"), "- 1 2");
  // Removing takes the key from every map and gives the object up.
  m_info->RemoveExtraInfo(u"WhiteList");
  EXPECT_EQ(Lookup(u"WhiteList"), "- - -");
  EXPECT_EQ(RefCount(subs->AsUnknown()), 1u);
  EXPECT_TRUE(m_info->AddExtraInfoULong(u"WhiteList", 3));
  EXPECT_EQ(Lookup(u"WhiteList"), "- 3 -");
}

TEST_F(URLInfo2Test, ExtraObjectsHoldAReferenceAndOutliveTheirHolder) {
  ComPtr<CURLArray> subs(CreateObject<CURLArray>());
  ComPtr<CURLInfo2> entry(CreateObject<CURLInfo2>());
  static_cast<void>(subs->AddItem(entry->AsUnknown()));
  m_info->AddExtraInfoUnknown(u"SubDomain", subs->AsUnknown());
  m_info->AddExtraInfoUnknown(u"Other", nullptr);
  EXPECT_EQ(Lookup(u"Other"), "- - -");
  Bs key(u"SubDomain");
  IUnknown* object = nullptr;
  ASSERT_EQ(m_info->GetExtraInfoUnknown(key.Get(), &object), S_OK);
  EXPECT_EQ(object, subs->AsUnknown());
  EXPECT_EQ(object->Release(), 2u);
  // The record dies first: the array and its entry stay with their holders.
  m_info.Reset();
  EXPECT_EQ(RefCount(subs->AsUnknown()), 1u);
  EXPECT_EQ(RefCount(entry->AsUnknown()), 2u);
}

}  // namespace
}  // namespace corvane
