#include "harvest/harvest_host.h"

#include <dlfcn.h>
#include <poll.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <fstream>
#include <iterator>

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
      m_desktop("XDG_CURRENT_DESKTOP", nullptr),
      m_debug("CORVANE_DEBUG", m_scratch.File("debug.log").c_str()) {}

std::string HarvestTest::TakeDebugLog() {
  std::string path = m_scratch.File("debug.log");
  std::ifstream in(path, std::ios::binary);
  std::string text((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
  std::ofstream(path, std::ios::trunc);
  return text;
}

std::vector<std::string> URLs(const std::vector<Delivered>& items) {
  std::vector<std::string> urls;
  for (const Delivered& item : items) urls.push_back(item.url);
  return urls;
}

bool RunWithin(int seconds, const std::function<std::string()>& body, std::string* lpOut) {
  int channel[2];
  if (pipe(channel) != 0) return false;
  pid_t child = fork();
  if (child == 0) {
    close(channel[0]);
    std::string out = body();
    static_cast<void>(write(channel[1], out.data(), out.size()));
    _exit(0);
  }
  close(channel[1]);
  lpOut->clear();
  auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(seconds);
  bool ended = false;
  while (!ended) {
    auto left = std::chrono::duration_cast<std::chrono::milliseconds>(deadline - std::chrono::steady_clock::now());
    if (left.count() <= 0) break;
    pollfd wait{channel[0], POLLIN, 0};
    if (poll(&wait, 1, static_cast<int>(left.count())) <= 0) continue;
    char buffer[4096];
    ssize_t got = read(channel[0], buffer, sizeof(buffer));
    if (got > 0) lpOut->append(buffer, static_cast<size_t>(got));
    ended = got <= 0;
  }
  close(channel[0]);
  if (!ended) kill(child, SIGKILL);
  int status = 0;
  waitpid(child, &status, 0);
  return ended && WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

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
