#include "cli/harvest_probe.h"

#include <dlfcn.h>
#include <link.h>

#include <cstdlib>
#include <memory>

#include "corvane/VisitHarvest.h"

namespace corvane::cli {
namespace {

constexpr char kComponentFile[] = "libCorvaneDataProvider.so";
constexpr char kHarvestFile[] = "libVisitHarvest.so";
constexpr char kHarvestVariable[] = "CORVANE_HARVEST_LIBRARY";

struct NamedBrowser {
  uint32_t value;
  const char* name;
};

// The names under which the component reports the browser it read.
constexpr NamedBrowser kNames[] = {
    {BROWSER_IE, "IE"},         {BROWSER_CHROME, "Chrome"},     {BROWSER_360, "360"},
    {BROWSER_QQ, "QQ"},         {BROWSER_LIEBAO, "Liebao"},     {BROWSER_MAXHON, "Maxhon"},
    {BROWSER_FIREFOX, "FireFox"}, {BROWSER_SOUGOU, "Sougou"},   {BROWSER_THEWORLD, "TheWorld"},
    {BROWSER_BAIDU, "Baidu"},   {BROWSER_HAO123, "Hao123"},     {BROWSER_2345, "2345"},
};

// The folder of the component as this process loaded it.
std::string ComponentFolder() {
  void* handle = dlopen(kComponentFile, RTLD_LAZY | RTLD_NOLOAD);
  if (handle == nullptr) return std::string();
  link_map* map = nullptr;
  std::string folder;
  if (dlinfo(handle, RTLD_DI_LINKMAP, &map) == 0 && map != nullptr && map->l_name != nullptr) {
    std::string path = map->l_name;
    size_t slash = path.rfind('/');
    folder = slash == std::string::npos ? std::string(".") : path.substr(0, slash);
  }
  dlclose(handle);
  return folder;
}

std::string HarvestLibraryPath() {
  const char* named = std::getenv(kHarvestVariable);
  if (named != nullptr && *named != '\0') return named;
  std::string folder = ComponentFolder();
  return (folder.empty() ? std::string(".") : folder) + "/" + kHarvestFile;
}

struct LibraryCloser {
  void operator()(void* handle) const { dlclose(handle); }
};

}  // namespace

const std::vector<uint32_t>& BrowserValues() {
  static const std::vector<uint32_t> values = [] {
    std::vector<uint32_t> all;
    for (const NamedBrowser& entry : kNames) all.push_back(entry.value);
    return all;
  }();
  return values;
}

const char* BrowserName(uint32_t browser) {
  for (const NamedBrowser& entry : kNames) {
    if (entry.value == browser) return entry.name;
  }
  return browser == BROWSER_NONE ? "none" : "unknown";
}

bool ProbeBrowsers(BrowserFindings* lpOut, std::string* lpError) {
  lpOut->library = HarvestLibraryPath();
  std::unique_ptr<void, LibraryCloser> library(dlopen(lpOut->library.c_str(), RTLD_NOW | RTLD_LOCAL));
  if (!library) {
    const char* why = dlerror();
    *lpError = "cannot load the extraction library " + lpOut->library + ": " + (why != nullptr ? why : "");
    return false;
  }
  auto installed = reinterpret_cast<PFN_IsBrowserInstalled>(dlsym(library.get(), "IsBrowserInstalled"));
  auto defaultBrowser = reinterpret_cast<PFN_GetDefautBrowser>(dlsym(library.get(), "GetDefautBrowser"));
  if (installed == nullptr || defaultBrowser == nullptr) {
    *lpError = "the extraction library " + lpOut->library + " lacks IsBrowserInstalled or GetDefautBrowser";
    return false;
  }
  lpOut->defaultBrowser = defaultBrowser();
  for (uint32_t browser : BrowserValues()) {
    if (installed(browser)) lpOut->installed.push_back(browser);
  }
  return true;
}

}  // namespace corvane::cli
