#include "harvest/harvest_host.h"

#include <dlfcn.h>

#include "common/utf.h"

namespace corvane::testing {

const HarvestLibrary& LoadHarvest() {
  static const HarvestLibrary library = [] {
    std::string path = test::BuildLibDir() + "/libVisitHarvest.so";
    void* handle = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (handle == nullptr) ADD_FAILURE() << dlerror();
    HarvestLibrary loaded{};
    loaded.CreateVisitHarvestObj = reinterpret_cast<bool (*)(IExtractor**)>(dlsym(handle, "CreateVisitHarvestObj"));
    loaded.GetDefautBrowser = reinterpret_cast<uint32_t (*)()>(dlsym(handle, "GetDefautBrowser"));
    loaded.IsBrowserInstalled = reinterpret_cast<bool (*)(uint32_t)>(dlsym(handle, "IsBrowserInstalled"));
    return loaded;
  }();
  return library;
}

HarvestTest::HarvestTest()
    : m_homeEnv("HOME", m_home.Path().c_str()),
      m_config("XDG_CONFIG_HOME", nullptr),
      m_configDirs("XDG_CONFIG_DIRS", (m_home.Path() + "/etc-xdg").c_str()),
      m_dataHome("XDG_DATA_HOME", nullptr),
      m_dataDirs("XDG_DATA_DIRS", (m_home.Path() + "/usr-share").c_str()),
      m_desktop("XDG_CURRENT_DESKTOP", nullptr) {}

std::vector<Delivered> HarvestTest::Extract(uint32_t browser, uint32_t kind) {
  std::vector<Delivered> items;
  IExtractor* extractor = nullptr;
  if (!LoadHarvest().CreateVisitHarvestObj(&extractor) || extractor == nullptr) {
    ADD_FAILURE() << "no extractor";
    return items;
  }
  extractor->Extract(browser, kind);
  uint32_t count = extractor->GetCount();
  for (uint32_t i = 0; i < count; ++i) {
    IExtractItem* item = nullptr;
    extractor->GetNextItem(&item);
    if (item == nullptr) continue;
    Delivered copy;
    copy.name = ToUtf8(item->GetName());
    copy.url = ToUtf8(item->GetURL());
    copy.path = ToUtf8(item->GetPath());
    item->GetVisitTime(&copy.time);
    copy.count = item->GetVisitCount();
    copy.browser = item->GetBrowser();
    items.push_back(copy);
  }
  extractor->FreeItems();
  extractor->Destroy();
  return items;
}

}  // namespace corvane::testing
