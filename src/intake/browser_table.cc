#include "intake/browser_table.h"

#include "corvane/VisitHarvest.h"

namespace corvane {
namespace {

struct BrowserEntry {
  uint32_t value;
  const char16_t* name;
};

// Searched from the top by value.
constexpr BrowserEntry kBrowsers[] = {
    {BROWSER_IE, u"IE"},           {BROWSER_CHROME, u"Chrome"},   {BROWSER_360, u"360"},
    {BROWSER_QQ, u"QQ"},           {BROWSER_LIEBAO, u"Liebao"},   {BROWSER_MAXHON, u"Maxhon"},
    {BROWSER_FIREFOX, u"FireFox"}, {BROWSER_SOUGOU, u"Sougou"},   {BROWSER_2345, u"2345"},
    {BROWSER_BAIDU, u"Baidu"},     {BROWSER_HAO123, u"Hao123"},   {BROWSER_THEWORLD, u"TheWorld"},
};

constexpr uint32_t kFallback[] = {
    BROWSER_IE,    BROWSER_360,     BROWSER_SOUGOU,   BROWSER_CHROME, BROWSER_QQ,     BROWSER_LIEBAO,
    BROWSER_FIREFOX, BROWSER_THEWORLD, BROWSER_2345, BROWSER_BAIDU,  BROWSER_HAO123,
};

}  // namespace

const char16_t* BrowserName(uint32_t uBrowser) {
  for (const BrowserEntry& entry : kBrowsers) {
    if (entry.value == uBrowser) return entry.name;
  }
  return u"Unknown";
}

std::span<const uint32_t> FallbackOrder() { return kFallback; }

}  // namespace corvane
