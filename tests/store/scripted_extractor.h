// scripted_extractor.h: an in-process IExtractor over a list of items, for
// the store tests that feed deliveries to the storing operations.

#ifndef CORVANE_TESTS_STORE_SCRIPTED_EXTRACTOR_H_
#define CORVANE_TESTS_STORE_SCRIPTED_EXTRACTOR_H_

#include <memory>
#include <string>
#include <vector>

#include "corvane/VisitHarvest.h"

namespace corvane::testing {

class ScriptedItem final : public IExtractItem {
 public:
  ScriptedItem(std::u16string name, std::u16string url, SYSTEMTIME time, int32_t count, uint32_t browser,
               std::u16string path = u"")
      : m_name(std::move(name)), m_url(std::move(url)), m_path(std::move(path)), m_time(time), m_count(count),
        m_browser(browser) {}

  uint32_t GetKind() override { return 0; }
  uint32_t GetBrowser() override { return m_browser; }
  uint32_t GetTypedCount() override { return 0; }
  void GetVisitTime(SYSTEMTIME* lpTime) override { *lpTime = m_time; }
  const char16_t* GetName() override { return m_nullTexts ? nullptr : m_name.c_str(); }
  const char16_t* GetURL() override { return m_nullTexts ? nullptr : m_url.c_str(); }
  const char16_t* GetPath() override { return m_nullTexts ? nullptr : m_path.c_str(); }
  int32_t GetVisitCount() override { return m_count; }

  // Makes every text of the item a null pointer.
  void SetNullTexts() { m_nullTexts = true; }

 private:
  std::u16string m_name;
  std::u16string m_url;
  std::u16string m_path;
  SYSTEMTIME m_time;
  int32_t m_count;
  uint32_t m_browser;
  bool m_nullTexts = false;
};

// Hands out its items in order; a null entry is handed out as a null item.
class ScriptedExtractor final : public IExtractor {
 public:
  void Add(std::unique_ptr<ScriptedItem> item) { m_items.push_back(std::move(item)); }
  void AddNull() { m_items.push_back(nullptr); }
  void Clear() { m_items.clear(); }
  // Starts the hand-out again, as a new delivery of the same items.
  void Rewind() { m_next = 0; }

  void Destroy() override {}
  uint32_t GetCount() override { return static_cast<uint32_t>(m_items.size()); }
  uint32_t GetBrowser() override { return 0; }
  bool GetNextItem(IExtractItem** lppItem) override { return GetItem(m_next++, lppItem); }
  bool GetItem(uint32_t uIndex, IExtractItem** lppItem) override {
    if (uIndex >= m_items.size()) return false;
    *lppItem = m_items[uIndex].get();
    return true;
  }
  void FreeItems() override { m_next = 0; }
  bool Extract(uint32_t, uint32_t) override { return true; }

 private:
  std::vector<std::unique_ptr<ScriptedItem>> m_items;
  uint32_t m_next = 0;
};

// A calendar record from its fields; the weekday is left 0.
inline SYSTEMTIME Time(uint16_t year, uint16_t month, uint16_t day, uint16_t hour = 0, uint16_t minute = 0,
                       uint16_t second = 0, uint16_t ms = 0) {
  return SYSTEMTIME{year, month, 0, day, hour, minute, second, ms};
}

}  // namespace corvane::testing

#endif  // CORVANE_TESTS_STORE_SCRIPTED_EXTRACTOR_H_
