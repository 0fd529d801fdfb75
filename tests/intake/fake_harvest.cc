// A scripted extraction library for the end-to-end suites.
//
// It serves what a JSON fixture file says ($CORVANE_FAKE_HARVEST_FIXTURE,
// read afresh on every call): which browsers are installed, the default
// browser, and per browser the history and favourite items, null items and
// impossible dates included. Each Extract call can be logged as a line
// "Extract <browser> <kind> <count>", so that a test sees which browsers
// were asked and in which order. Without a fixture, nothing is installed
// and every browser delivers nothing. Built a second and a third time with
// FAKE_HARVEST_WITHOUT_DEFAULT_BROWSER or FAKE_HARVEST_WITHOUT_INSTALLED, it
// lacks the export of that name, as a library may.

#include <json/json.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "corvane/VisitHarvest.h"

namespace {

Json::Value ReadFixture() {
  const char* path = std::getenv("CORVANE_FAKE_HARVEST_FIXTURE");
  if (path == nullptr) return Json::Value(Json::objectValue);
  std::ifstream in(path);
  Json::Value root;
  Json::CharReaderBuilder builder;
  std::string errors;
  if (!in || !Json::parseFromStream(builder, in, &root, &errors) || !root.isObject()) {
    return Json::Value(Json::objectValue);
  }
  return root;
}

std::u16string Widen(const std::string& utf8) {
  // Fixture texts are ASCII or UTF-8 from BMP code points.
  std::u16string out;
  for (size_t i = 0; i < utf8.size();) {
    unsigned char c = static_cast<unsigned char>(utf8[i]);
    char32_t cp = c;
    size_t len = 1;
    if (c >= 0xE0 && i + 2 < utf8.size()) {
      cp = ((c & 0x0F) << 12) | ((utf8[i + 1] & 0x3F) << 6) | (utf8[i + 2] & 0x3F);
      len = 3;
    } else if (c >= 0xC0 && i + 1 < utf8.size()) {
      cp = ((c & 0x1F) << 6) | (utf8[i + 1] & 0x3F);
      len = 2;
    }
    out.push_back(static_cast<char16_t>(cp));
    i += len;
  }
  return out;
}

// Day of the week of a valid date (Sunday 0); 0 for an invalid one.
uint16_t WeekDay(int year, int month, int day) {
  if (month < 1 || month > 12 || day < 1) return 0;
  static const int kOffsets[] = {0, 3, 2, 5, 0, 3, 5, 1, 4, 6, 2, 4};
  if (month < 3) year -= 1;
  return static_cast<uint16_t>((year + year / 4 - year / 100 + year / 400 + kOffsets[month - 1] + day) % 7);
}

SYSTEMTIME ParseTime(const std::string& text) {
  SYSTEMTIME time{};
  unsigned year = 0, month = 0, day = 0, hour = 0, minute = 0, second = 0, ms = 0;
  std::sscanf(text.c_str(), "%u-%u-%u %u:%u:%u.%u", &year, &month, &day, &hour, &minute, &second, &ms);
  time.wYear = static_cast<uint16_t>(year);
  time.wMonth = static_cast<uint16_t>(month);
  time.wDay = static_cast<uint16_t>(day);
  time.wHour = static_cast<uint16_t>(hour);
  time.wMinute = static_cast<uint16_t>(minute);
  time.wSecond = static_cast<uint16_t>(second);
  time.wMilliseconds = static_cast<uint16_t>(ms);
  time.wDayOfWeek = WeekDay(static_cast<int>(year), static_cast<int>(month), static_cast<int>(day));
  return time;
}

class FakeItem final : public IExtractItem {
 public:
  FakeItem(const Json::Value& item, uint32_t browser)
      : m_name(Widen(item.get("name", "").asString())),
        m_url(Widen(item.get("url", "").asString())),
        m_path(Widen(item.get("path", "").asString())),
        m_time(ParseTime(item.get("time", "").asString())),
        m_count(item.get("count", 1).asInt()),
        m_browser(item.get("browser", browser).asUInt()),
        m_nullTexts(item.get("null_texts", false).asBool()) {}

  uint32_t GetKind() override { return 0; }
  uint32_t GetBrowser() override { return m_browser; }
  uint32_t GetTypedCount() override { return 0; }
  void GetVisitTime(SYSTEMTIME* lpTime) override {
    if (lpTime != nullptr) *lpTime = m_time;
  }
  const char16_t* GetName() override { return m_nullTexts ? nullptr : m_name.c_str(); }
  const char16_t* GetURL() override { return m_nullTexts ? nullptr : m_url.c_str(); }
  const char16_t* GetPath() override { return m_nullTexts ? nullptr : m_path.c_str(); }
  int32_t GetVisitCount() override { return m_count; }

 private:
  std::u16string m_name;
  std::u16string m_url;
  std::u16string m_path;
  SYSTEMTIME m_time;
  int32_t m_count;
  uint32_t m_browser;
  bool m_nullTexts;  // every text a null pointer
};

class FakeExtractor final : public IExtractor {
 public:
  void Destroy() override { delete this; }
  uint32_t GetCount() override { return static_cast<uint32_t>(m_items.size()); }
  uint32_t GetBrowser() override { return m_browser; }
  bool GetNextItem(IExtractItem** lppItem) override { return GetItem(m_next++, lppItem); }
  bool GetItem(uint32_t uIndex, IExtractItem** lppItem) override {
    if (lppItem == nullptr || uIndex >= m_items.size()) return false;
    *lppItem = m_items[uIndex].get();
    return true;
  }
  void FreeItems() override {
    m_items.clear();
    m_next = 0;
  }
  bool Extract(uint32_t uBrowser, uint32_t uKind) override {
    FreeItems();
    m_browser = uBrowser;
    Json::Value fixture = ReadFixture();
    const char* member = uKind == EXTRACT_HISTORY ? "history" : "favorites";
    const Json::Value& items = fixture[member][std::to_string(uBrowser)];
    for (const Json::Value& item : items) {
      m_items.push_back(item.isNull() ? nullptr : std::make_unique<FakeItem>(item, uBrowser));
    }
    Log(fixture, uBrowser, uKind);
    return true;
  }

 private:
  void Log(const Json::Value& fixture, uint32_t uBrowser, uint32_t uKind) const {
    std::string path = fixture.get("log", "").asString();
    if (path.empty()) return;
    std::ofstream out(path, std::ios::app);
    out << "Extract " << uBrowser << " " << uKind << " " << m_items.size() << "\n";
  }

  std::vector<std::unique_ptr<FakeItem>> m_items;
  uint32_t m_next = 0;
  uint32_t m_browser = 0;
};

}  // namespace

extern "C" {

__attribute__((visibility("default"))) bool CreateVisitHarvestObj(IExtractor** lppExtractor) {
  if (lppExtractor == nullptr || ReadFixture().get("fail_create", false).asBool()) return false;
  *lppExtractor = new FakeExtractor();
  return true;
}

#ifndef FAKE_HARVEST_WITHOUT_DEFAULT_BROWSER
__attribute__((visibility("default"))) uint32_t GetDefautBrowser() {
  return ReadFixture().get("default", 0).asUInt();
}
#endif

#ifndef FAKE_HARVEST_WITHOUT_INSTALLED
__attribute__((visibility("default"))) bool IsBrowserInstalled(uint32_t uBrowser) {
  const Json::Value fixture = ReadFixture();
  for (const Json::Value& value : fixture["installed"]) {
    if (value.asUInt() == uBrowser) return true;
  }
  return false;
}
#endif

}  // extern "C"
