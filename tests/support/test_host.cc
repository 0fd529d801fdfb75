#include "support/test_host.h"

#include <dlfcn.h>
#include <unistd.h>
#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <utility>

namespace corvane::test {

ScopedEnv::ScopedEnv(const char* name, const char* value) : m_name(name), m_hadOld(std::getenv(name) != nullptr) {
  if (m_hadOld) m_old = std::getenv(name);
  static_cast<void>(value == nullptr ? unsetenv(name) : setenv(name, value, 1));
}

ScopedEnv::~ScopedEnv() {
  static_cast<void>(m_hadOld ? setenv(m_name.c_str(), m_old.c_str(), 1) : unsetenv(m_name.c_str()));
}

TempDir::TempDir() : m_path((std::filesystem::temp_directory_path() / "corvane-test-XXXXXX").string()) {
  if (mkdtemp(m_path.data()) == nullptr) std::abort();
}

TempDir::~TempDir() {
  std::error_code error;
  std::filesystem::remove_all(m_path, error);
}

std::set<std::string> DefinedDynamicSymbols(const std::string& path) {
  std::set<std::string> names;
  FILE* listing = popen(("nm -D --defined-only '" + path + "' 2>&1").c_str(), "r");
  char line[1024];
  while (listing != nullptr && std::fgets(line, sizeof(line), listing) != nullptr) {
    std::istringstream fields(line);
    std::string address, type, name;
    names.insert(fields >> address >> type >> name ? name : "<" + std::string(line) + ">");
  }
  if (listing == nullptr || pclose(listing) != 0) names.insert("<nm failed on " + path + ">");
  return names;
}

void DamageDatabasePage(const std::string& path, int page, int pageSize) {
  std::fstream file(path, std::ios::in | std::ios::out | std::ios::binary);
  file.seekp(static_cast<std::streamoff>(page - 1) * pageSize);
  file << std::string(static_cast<size_t>(pageSize), '\x5a');
  unsigned char counter[4];
  file.seekg(24);
  file.read(reinterpret_cast<char*>(counter), 4);
  counter[3] = static_cast<unsigned char>(counter[3] + 1);
  file.seekp(24);
  file.write(reinterpret_cast<const char*>(counter), 4);
  EXPECT_TRUE(file.good()) << path;
}

std::string BuildLibDir() {
  const char* dir = std::getenv("CORVANE_BUILD_LIB_DIR");
  return dir != nullptr ? dir : "lib";
}

// A test can't go on without the component: the failure is reported and the
// process ends.
[[noreturn]] static void Abort(const std::string& what) {
  ADD_FAILURE() << what;
  std::abort();
}

template <class Fn>
static Fn Resolve(void* library, const char* name) {
  void* symbol = dlsym(library, name);
  if (symbol == nullptr) Abort(std::string("missing export ") + name);
  return reinterpret_cast<Fn>(symbol);
}

const Component& LoadComponent() {
  static const Component component = [] {
    std::string path = BuildLibDir() + "/libCorvaneDataProvider.so";
    void* library = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (library == nullptr) Abort("dlopen " + path + ": " + dlerror());
    return Component{Resolve<PFN_DllGetClassObject>(library, "DllGetClassObject"),
                     Resolve<PFN_DllCanUnloadNow>(library, "DllCanUnloadNow"),
                     Resolve<PFN_DllInstall>(library, "DllInstall"),
                     Resolve<PFN_SysAllocString>(library, "SysAllocString"),
                     Resolve<PFN_SysAllocStringLen>(library, "SysAllocStringLen"),
                     Resolve<PFN_SysFreeString>(library, "SysFreeString"),
                     Resolve<PFN_SysStringLen>(library, "SysStringLen")};
  }();
  return component;
}

Bstr::Bstr(std::u16string_view text)
    : m_bstr(LoadComponent().SysAllocStringLen(text.data(), static_cast<uint32_t>(text.size()))) {}

Bstr::~Bstr() { LoadComponent().SysFreeString(m_bstr); }

BSTR* Bstr::Put() {
  LoadComponent().SysFreeString(std::exchange(m_bstr, nullptr));
  return &m_bstr;
}

std::u16string Bstr::Text() const {
  return m_bstr == nullptr ? std::u16string() : std::u16string(m_bstr, LoadComponent().SysStringLen(m_bstr));
}

ComPtr<ICorvaneDataProviderObject> CreateProvider() {
  IClassFactory* factory = nullptr;
  EXPECT_EQ(LoadComponent().DllGetClassObject(CLSID_CorvaneDataProviderObject, IID_IClassFactory,
                                              reinterpret_cast<void**>(&factory)),
            S_OK);
  if (factory == nullptr) return ComPtr<ICorvaneDataProviderObject>();
  ICorvaneDataProviderObject* provider = nullptr;
  EXPECT_EQ(factory->CreateInstance(nullptr, IID_ICorvaneDataProviderObject, reinterpret_cast<void**>(&provider)),
            S_OK);
  factory->Release();
  return ComPtr<ICorvaneDataProviderObject>(provider);
}

std::u16string GetValue(ICorvaneDataProviderObject* provider, std::u16string_view key) {
  Bstr name(key), value;
  return provider->GetValue(name.Get(), value.Put()) == S_OK ? value.Text() : std::u16string();
}

std::string FindProgram(std::initializer_list<const char*> names) {
  const char* path = std::getenv("PATH");
  std::string folders = path != nullptr ? path : "";
  for (size_t start = 0; start <= folders.size();) {
    size_t end = folders.find(':', start);
    if (end == std::string::npos) end = folders.size();
    const std::string folder = folders.substr(start, end - start);
    for (const char* name : names) {
      const std::string candidate = folder + "/" + name;
      if (!folder.empty() && access(candidate.c_str(), X_OK) == 0) return candidate;
    }
    start = end + 1;
  }
  return "";
}

bool InCi() {
  const char* ci = std::getenv("CI");
  return ci != nullptr && std::string(ci) == "true";
}

}  // namespace corvane::test
