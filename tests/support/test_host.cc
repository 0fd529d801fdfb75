#include "support/test_host.h"

#include <dlfcn.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>

namespace corvane::test {

ScopedEnv::ScopedEnv(const char* name, const char* value) : m_name(name) {
  const char* old = std::getenv(name);
  m_hadOld = old != nullptr;
  if (m_hadOld) m_old = old;
  if (value == nullptr) {
    unsetenv(name);
  } else {
    setenv(name, value, 1);
  }
}

ScopedEnv::~ScopedEnv() {
  if (m_hadOld) {
    setenv(m_name.c_str(), m_old.c_str(), 1);
  } else {
    unsetenv(m_name.c_str());
  }
}

TempDir::TempDir() {
  std::string pattern = (std::filesystem::temp_directory_path() / "corvane-test-XXXXXX").string();
  char* made = mkdtemp(pattern.data());
  if (made == nullptr) std::abort();
  m_path = made;
}

TempDir::~TempDir() {
  std::error_code error;
  std::filesystem::remove_all(m_path, error);
}

std::string BuildLibDir() {
  const char* dir = std::getenv("CORVANE_BUILD_LIB_DIR");
  return dir != nullptr ? dir : "lib";
}

template <class Fn>
static Fn Resolve(void* library, const char* name) {
  void* symbol = dlsym(library, name);
  if (symbol == nullptr) {
    ADD_FAILURE() << "missing export " << name;
    std::abort();
  }
  return reinterpret_cast<Fn>(symbol);
}

const Component& LoadComponent() {
  static const Component component = [] {
    std::string path = BuildLibDir() + "/libCorvaneDataProvider.so";
    void* library = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (library == nullptr) {
      ADD_FAILURE() << "dlopen " << path << ": " << dlerror();
      std::abort();
    }
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
  LoadComponent().SysFreeString(m_bstr);
  m_bstr = nullptr;
  return &m_bstr;
}

std::u16string Bstr::Text() const {
  return m_bstr == nullptr ? std::u16string() : std::u16string(m_bstr, LoadComponent().SysStringLen(m_bstr));
}

ComPtr<ICorvaneDataProviderObject> CreateProvider() {
  const Component& component = LoadComponent();
  IClassFactory* factory = nullptr;
  HRESULT hr = component.DllGetClassObject(CLSID_CorvaneDataProviderObject, IID_IClassFactory,
                                           reinterpret_cast<void**>(&factory));
  EXPECT_EQ(hr, S_OK);
  if (factory == nullptr) return ComPtr<ICorvaneDataProviderObject>();
  ICorvaneDataProviderObject* provider = nullptr;
  hr = factory->CreateInstance(nullptr, IID_ICorvaneDataProviderObject, reinterpret_cast<void**>(&provider));
  EXPECT_EQ(hr, S_OK);
  factory->Release();
  return ComPtr<ICorvaneDataProviderObject>(provider);
}

std::u16string GetValue(ICorvaneDataProviderObject* provider, std::u16string_view key) {
  Bstr name(key);
  Bstr value;
  if (provider->GetValue(name.Get(), value.Put()) != S_OK) return std::u16string();
  return value.Text();
}

}  // namespace corvane::test
