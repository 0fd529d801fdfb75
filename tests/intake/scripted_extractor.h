// scripted_extractor.h: an extractor over items held in memory. The store
// tests hand it to the storing operations as a delivery; the scripted
// extraction library fills it from its fixture file on each Extract.

#ifndef CORVANE_TESTS_INTAKE_SCRIPTED_EXTRACTOR_H_
#define CORVANE_TESTS_INTAKE_SCRIPTED_EXTRACTOR_H_

#include <memory>
#include <string>
#include <vector>

#include "corvane/VisitHarvest.h"

namespace corvane::testing {

class ScriptedItem final : public IExtractItem {
 public:
  ScriptedItem(std::u16string strName, std::u16string strURL, SYSTEMTIME stTime = {}, int32_t nCount = 1,
               uint32_t uBrowser = BROWSER_CHROME, std::u16string strPath = u"")
      : name(std::move(strName)), url(std::move(strURL)), path(std::move(strPath)), time(stTime), count(nCount),
        browser(uBrowser) {}

  uint32_t GetKind() override { return 0; }
  uint32_t GetBrowser() override { return browser; }
  uint32_t GetTypedCount() override { return 0; }
  void GetVisitTime(SYSTEMTIME* lpTime) override { *lpTime = time; }
  const char16_t* GetName() override { return Text(name); }
  const char16_t* GetURL() override { return Text(url); }
  const char16_t* GetPath() override { return Text(path); }
  int32_t GetVisitCount() override { return count; }

  std::u16string name, url, path;
  SYSTEMTIME time;
  int32_t count;
  uint32_t browser;
  bool nullTexts = false;  // every text a null pointer

 private:
  const char16_t* Text(const std::u16string& text) const { return nullTexts ? nullptr : text.c_str(); }
};

// Hands out its items in order, a null entry as a null item. Extract starts
// the hand-out again, as a new delivery of the same items.
class ScriptedExtractor : public IExtractor {
 public:
  void Destroy() override {}
  uint32_t GetCount() override { return static_cast<uint32_t>(items.size()); }
  uint32_t GetBrowser() override { return m_browser; }
  bool GetNextItem(IExtractItem** lppItem) override { return GetItem(m_next++, lppItem); }
  bool GetItem(uint32_t uIndex, IExtractItem** lppItem) override {
    if (lppItem == nullptr || uIndex >= items.size()) return false;
    *lppItem = items[uIndex].get();
    return true;
  }
  void FreeItems() override { items.clear(); }
  bool Extract(uint32_t uBrowser, uint32_t /*uKind*/) override {
    m_browser = uBrowser;
    m_next = 0;
    return true;
  }

  std::vector<std::unique_ptr<ScriptedItem>> items;

 private:
  uint32_t m_browser = 0;
  uint32_t m_next = 0;
};

// A calendar record from its fields; the weekday is left 0.
inline SYSTEMTIME Time(uint16_t year, uint16_t month, uint16_t day, uint16_t hour = 0, uint16_t minute = 0,
                       uint16_t second = 0, uint16_t ms = 0) {
  return SYSTEMTIME{year, month, 0, day, hour, minute, second, ms};
}

}  // namespace corvane::testing

#endif  // CORVANE_TESTS_INTAKE_SCRIPTED_EXTRACTOR_H_
