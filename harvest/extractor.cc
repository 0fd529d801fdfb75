// The extraction object and the three exports of libVisitHarvest.so.

#include <time.h>

#include <cstdlib>

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
  uint32_t GetCount() override { return static_cast<uint32_t>(m_items.Size()); }
  uint32_t GetBrowser() override { return m_browser; }
  bool GetNextItem(IExtractItem** lppItem) override { return GetItem(m_next++, lppItem); }
  bool GetItem(uint32_t uIndex, IExtractItem** lppItem) override {
    if (lppItem == nullptr || uIndex >= m_items.Size()) return false;
    *lppItem = m_items.At(uIndex);
    return true;
  }
  void FreeItems() override {
    m_items.Clear();
    m_next = 0;
  }
  bool Extract(uint32_t uBrowser, uint32_t uKind) override {
    FreeItems();
    m_browser = uBrowser;
    if (uBrowser != BROWSER_CHROME && uBrowser != BROWSER_FIREFOX) {
      DebugLog("harvest: browser 0x%x is none this library reads\n", uBrowser);
      return false;
    }
    if (uKind != EXTRACT_HISTORY && uKind != EXTRACT_FAVORITES) {
      DebugLog("harvest: no kind %u to extract\n", uKind);
      return false;
    }
    // The local zone, read once for every visit time of this delivery.
    tzset();
    std::string profile = ProfileOf(uBrowser);
    if (profile.empty()) {
      DebugLog("harvest: no profile of %s under HOME=%s\n", uBrowser == BROWSER_CHROME ? "Chrome" : "Firefox",
               std::getenv("HOME") != nullptr ? std::getenv("HOME") : "(unset)");
      return false;
    }
    // A reader that can't read its file says why; one that could reads
    // what it holds, possibly nothing.
    if (!Read(profile, uBrowser, uKind)) return true;
    DebugLog("harvest: %zu items of kind %u from %s\n", m_items.Size(), uKind, profile.c_str());
    return true;
  }

 private:
  bool Read(const std::string& profile, uint32_t browser, uint32_t kind) {
    bool chromium = browser == BROWSER_CHROME;
    if (kind == EXTRACT_HISTORY) {
      return chromium ? ReadChromiumHistory(profile, browser, &m_items) : ReadFirefoxHistory(profile, browser, &m_items);
    }
    return chromium ? ReadChromiumBookmarks(profile, browser, &m_items)
                    : ReadFirefoxBookmarks(profile, browser, &m_items);
  }

  ItemStore m_items;
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
