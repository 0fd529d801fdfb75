#include "intake/harvest_library.h"

#include <dlfcn.h>

#include <cstdlib>
#include <filesystem>

#include "common/debug_log.h"

namespace corvane {
namespace {

constexpr char kLibraryName[] = "libVisitHarvest.so";
constexpr char kLibraryVariable[] = "CORVANE_HARVEST_LIBRARY";

// The folder of the file that holds this code: the component.
std::string OwnFolder() {
  Dl_info info{};
  if (dladdr(reinterpret_cast<const void*>(&OwnFolder), &info) == 0 || info.dli_fname == nullptr) return ".";
  return std::filesystem::path(info.dli_fname).parent_path().string();
}

}  // namespace

CHarvestLibrary::~CHarvestLibrary() {
  if (m_handle != nullptr) dlclose(m_handle);
}

std::string CHarvestLibrary::LibraryPath() {
  const char* named = std::getenv(kLibraryVariable);
  if (named != nullptr && *named != '\0') return named;
  std::string folder = OwnFolder();
  const std::string path = (folder.empty() ? std::string(".") : folder) + "/" + kLibraryName;
  // An install without the development link still has the versioned name.
  std::error_code error;
  if (!std::filesystem::exists(path, error) && std::filesystem::exists(path + ".1", error)) return path + ".1";
  return path;
}

bool CHarvestLibrary::Load() {
  if (m_handle != nullptr) return true;
  std::string path = LibraryPath();
  m_handle = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
  if (m_handle == nullptr) {
    const char* error = dlerror();
    DebugLog("can't load the extraction library %s: %s\n", path.c_str(), error != nullptr ? error : "");
  }
  return m_handle != nullptr;
}

void* CHarvestLibrary::Lookup(const char* name) const {
  return m_handle != nullptr ? dlsym(m_handle, name) : nullptr;
}

CreateVisitHarvestObjFn CHarvestLibrary::CreateFunction() const {
  return reinterpret_cast<CreateVisitHarvestObjFn>(Lookup("CreateVisitHarvestObj"));
}

GetDefautBrowserFn CHarvestLibrary::DefaultBrowserFunction() const {
  return reinterpret_cast<GetDefautBrowserFn>(Lookup("GetDefautBrowser"));
}

IsBrowserInstalledFn CHarvestLibrary::InstalledFunction() const {
  return reinterpret_cast<IsBrowserInstalledFn>(Lookup("IsBrowserInstalled"));
}

}  // namespace corvane
