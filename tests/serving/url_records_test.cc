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
    EXPECT_EQ(array->AddItem(info->AsUnknown()), S_OK);
    EXPECT_EQ(array->AddItem(info->AsUnknown()), S_OK);  // twice: two entries, two references
    EXPECT_EQ(array->AddItem(nullptr), S_OK);
    uint32_t count = 0;
    ASSERT_EQ(array->GetCount(&count), S_OK);
    EXPECT_EQ(count, 2u);
    EXPECT_EQ(RefCount(info->AsUnknown()), 3u);
    IUnknown* item = reinterpret_cast<IUnknown*>(0x2);
    EXPECT_EQ(array->GetItem(2, &item), E_INVALIDARG);
    EXPECT_EQ(item, reinterpret_cast<IUnknown*>(0x2));
    ASSERT_EQ(array->GetItem(1, &item), S_OK);
    EXPECT_EQ(item, info->AsUnknown());
    item->Release();
    EXPECT_EQ(array->GetItem(0, nullptr), E_INVALIDARG);
    EXPECT_EQ(array->Clear(), S_OK);
    EXPECT_EQ(RefCount(info->AsUnknown()), 1u);
    // An array inside an array is released with its holder.
    ComPtr<CURLArray> inner(CreateObject<CURLArray>());
    static_cast<void>(inner->AddItem(info->AsUnknown()));
    static_cast<void>(array->AddItem(inner->AsUnknown()));
  }
  EXPECT_EQ(ModuleLockCount(), locksBefore);
}

// An empty field is an empty string, never a null one.
TEST(URLInfoTest, GettersCopyAndAnEmptyFieldIsAnEmptyString) {
  ComPtr<CURLInfo> info(CreateObject<CURLInfo>());
  info->SetInfo(0, u"", u"http://a.com/", u"Bookmarks bar", u"2024.03.05 2 09:07:03.041");
  BSTR name = nullptr, path = nullptr;
  ASSERT_TRUE(info->GetName(&name) == S_OK && info->GetPath(&path) == S_OK);
  ASSERT_NE(name, nullptr);
  EXPECT_EQ(Take(name) + u"|" + Take(path), u"|Bookmarks bar");
  EXPECT_EQ(info->GetID(nullptr), E_INVALIDARG);
}

// What the three extra maps of a record hold for a key: the text, the
// number and the object's reference count, "-" where the map has none.
std::string Lookup(CURLInfo2* info, std::u16string_view key) {
  BSTR name = BstrAlloc(key), text = nullptr;
  uint32_t number = 0;
  IUnknown* object = nullptr;
  const auto value = [](HRESULT hr, const std::string& found) { return hr == S_OK ? found : hr == E_NOINTERFACE ? "-" : "error"; };
  HRESULT hr = info->GetExtraInfo(name, &text);
  std::string out = value(hr, hr == S_OK ? ToUtf8(Take(text)) : "");
  hr = info->GetExtraInfoULong(name, &number);
  out += " " + value(hr, std::to_string(number));
  hr = info->GetExtraInfoUnknown(name, &object);
  out += " " + value(hr, hr == S_OK ? std::to_string(object->Release()) : "");
  BstrFree(name);
  return out;
}

// Keys are exact and each map is its own; adding never replaces, removing
// empties every map and gives the object up; an object outlives its holder.
TEST(URLInfo2Test, ExtraMapsAreSeparateAndAddNeverReplaces) {
  ComPtr<CURLInfo2> info(CreateObject<CURLInfo2>());
  ASSERT_TRUE(info->SetInfo(3, u"Name", u"www.example.com"));
  EXPECT_FALSE(info->SetInfo(0, u"Other", u"other"));  // ID 0 is refused
  info->AddExtraInfo(u"Domain", u"example.com");
  info->AddExtraInfo(u"FixedURL", u"example.com/fixed");
  info->AddExtraInfoULong(u"Domain", 42);
  EXPECT_EQ(Lookup(info.Get(), u"Domain"), "example.com 42 -");
  EXPECT_EQ(Lookup(info.Get(), u"domain"), "- - -");
  EXPECT_FALSE(info->AddExtraInfoULong(u"Domain", 3));
  ComPtr<CURLArray> subs(CreateObject<CURLArray>());
  ComPtr<CURLInfo2> entry(CreateObject<CURLInfo2>());
  static_cast<void>(subs->AddItem(entry->AsUnknown()));
  info->AddExtraInfoUnknown(u"SubDomain", subs->AsUnknown());
  info->AddExtraInfoUnknown(u"SubDomain", subs->AsUnknown());  // not replaced, no second reference
  info->AddExtraInfoUnknown(u"Other", nullptr);
  EXPECT_EQ(Lookup(info.Get(), u"SubDomain") + " / " + Lookup(info.Get(), u"Other"), "- - 2 / - - -");
  info->RemoveExtraInfo(u"Domain");
  EXPECT_EQ(Lookup(info.Get(), u"Domain"), "- - -");
  EXPECT_TRUE(info->AddExtraInfoULong(u"Domain", 3));
  // bFixed changes nothing, even with a "FixedURL" present.
  BSTR plain = nullptr, fixed = nullptr;
  ASSERT_TRUE(info->GetURL(&plain, 0) == S_OK && info->GetURL(&fixed, 1) == S_OK);
  EXPECT_EQ(Take(plain) + u" " + Take(fixed), u"www.example.com www.example.com");
  EXPECT_EQ(info->GetExtraInfo(nullptr, &plain), E_INVALIDARG);
  info.Reset();
  EXPECT_EQ(RefCount(subs->AsUnknown()), 1u);
  EXPECT_EQ(RefCount(entry->AsUnknown()), 2u);
}

}  // namespace
}  // namespace corvane
