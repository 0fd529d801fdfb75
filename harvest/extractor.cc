// The extraction object and the three exports of libVisitHarvest.so.

#include <time.h>

#include <cstdlib>
#include <set>

#include "common/debug_log.h"
#include "corvane/VisitHarvest.h"
#include "harvest/default_browser.h"
#include "harvest/profile_readers.h"
#include "harvest/sources.h"

namespace corvane::harvest {
namespace {

// The profiles an extraction of a browser value reads; empty for a value of
// no family we read.
std::vector<const BrowserProfile*> SourcesOf(uint32_t browser, const std::vector<BrowserProfile>& profiles) {
  Family family;
  if (!FamilyOfValue(browser, &family)) return {};
  std::vector<std::string> problems;
  std::vector<const BrowserProfile*> sources =
      ChosenProfiles(ReadSourceChoice(), profiles, family, ProductsOfDesktopFile(DefaultDesktopFile()), &problems);
  for (const std::string& problem : problems) DebugLog("harvest: Harvest.ini: %s: passed over\n", problem.c_str());
  return sources;
}

// What leads a favourite's folder path when the profiles of a delivery
// differ: the browser's name, and the profile's where the browser gives
// more than one.
std::string PathPrefix(const BrowserProfile& source, const std::vector<const BrowserProfile*>& sources) {
  if (sources.size() < 2) return std::string();
  size_t sameProduct = 0;
  for (const BrowserProfile* other : sources) sameProduct += other->product == source.product ? 1 : 0;
  return std::string(source.product->name) + (sameProduct > 1 ? " (" + source.label + ")" : "") + "/";
}

bool ReadSource(const BrowserProfile& source, uint32_t kind, ItemStore* lpItems) {
  const bool chromium = source.product->family == Family::kChromium;
  if (kind == EXTRACT_HISTORY) {
    return chromium ? ReadChromiumHistory(source.folder, lpItems) : ReadFirefoxHistory(source.folder, lpItems);
  }
  return chromium ? ReadChromiumBookmarks(source.folder, lpItems) : ReadFirefoxBookmarks(source.folder, lpItems);
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
    if (uKind != EXTRACT_HISTORY && uKind != EXTRACT_FAVORITES) {
      DebugLog("harvest: no kind %u to extract\n", uKind);
      return false;
    }
    // The local zone, read once for every visit time of this delivery.
    tzset();
    Family family;
    if (!FamilyOfValue(uBrowser, &family)) {
      DebugLog("harvest: browser 0x%x is none this library reads\n", uBrowser);
      return false;
    }
    const std::vector<BrowserProfile> profiles = FindProfiles();
    const std::vector<const BrowserProfile*> sources = SourcesOf(uBrowser, profiles);
    if (sources.empty()) {
      DebugLog("harvest: no profile of %s under HOME=%s\n",
               family == Family::kChromium ? "Chrome or another browser of its family" : "Firefox or its family",
               std::getenv("HOME") != nullptr ? std::getenv("HOME") : "(unset)");
      RecordLastRead(uKind, {});
      return false;
    }
    ReadCounts counts;
    for (const BrowserProfile* source : sources) {
      m_items.StartSource(FamilyValue(source->product->family), PathPrefix(*source, sources));
      // A source that can't be read says why and adds nothing; the others
      // are still read.
      if (!ReadSource(*source, uKind, &m_items)) continue;
      counts.emplace_back(source->SourceName(), static_cast<uint32_t>(m_items.SourceSize()));
      DebugLog("harvest: %zu items of kind %u from %s (%s)\n", m_items.SourceSize(), uKind,
               source->SourceName().c_str(), source->folder.c_str());
    }
    m_items.MergeSources();
    RecordLastRead(uKind, counts);
    return true;
  }

 private:
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
  return !corvane::harvest::SourcesOf(uBrowser, corvane::harvest::FindProfiles()).empty();
}

}  // extern "C"
