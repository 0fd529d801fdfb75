// The extraction object and the three exports of libVisitHarvest.so.

#include <time.h>

#include "common/debug_log.h"
#include "corvane/VisitHarvest.h"
#include "harvest/default_browser.h"
#include "harvest/profile_locator.h"
#include "harvest/profile_readers.h"

namespace corvane::harvest {
namespace {

// The profile folder of a browser value we read; empty otherwise.
std::string ProfileOf(uint32_t browser) {
  if (browser == BROWSER_CHROME) return FindChromiumProfile();
  if (browser == BROWSER_FIREFOX) return FindFirefoxProfile();
  return std::string();
}

class HarvestExtractor final : public IExtractor {
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
    // The local zone, read once for every visit time of this delivery.
    tzset();
    std::string profile = ProfileOf(uBrowser);
    if (profile.empty()) return false;
    bool chromium = uBrowser == BROWSER_CHROME;
    if (uKind == EXTRACT_HISTORY) {
      chromium ? ReadChromiumHistory(profile, uBrowser, &m_items) : ReadFirefoxHistory(profile, uBrowser, &m_items);
    } else if (uKind == EXTRACT_FAVORITES) {
      chromium ? ReadChromiumBookmarks(profile, uBrowser, &m_items) : ReadFirefoxBookmarks(profile, uBrowser, &m_items);
    }
    DebugLog("harvest: %zu items of kind %u from %s\n", m_items.size(), uKind, profile.c_str());
    return true;
  }

 private:
  ItemList m_items;
  uint32_t m_next = 0;
  uint32_t m_browser = 0;
};

}  // namespace
}  // namespace corvane::harvest

extern "C" {

__attribute__((visibility("default"))) bool CreateVisitHarvestObj(IExtractor** lppExtractor) {
  if (lppExtractor == nullptr) return false;
  *lppExtractor = new corvane::harvest::HarvestExtractor();
  return true;
}

__attribute__((visibility("default"))) uint32_t GetDefautBrowser() {
  return corvane::harvest::DefaultBrowserFromMimeApps();
}

__attribute__((visibility("default"))) bool IsBrowserInstalled(uint32_t uBrowser) {
  return !corvane::harvest::ProfileOf(uBrowser).empty();
}

}  // extern "C"
