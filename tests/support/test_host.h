// test_host.h: what the end-to-end suites need to drive the component as a
// host does: the library loaded by path, BSTRs from its own exports, a
// temporary data folder and environment variables that restore themselves.

#ifndef CORVANE_TESTS_SUPPORT_TEST_HOST_H_
#define CORVANE_TESTS_SUPPORT_TEST_HOST_H_

#include <initializer_list>
#include <set>
#include <string>

#include "corvane/CorvaneDataProvider.h"
#include "platform/com_object.h"

namespace corvane::test {

// Sets (or, with null, unsets) a variable and restores the old value.
class ScopedEnv {
 public:
  ScopedEnv(const char* name, const char* value);
  ~ScopedEnv();
  ScopedEnv(const ScopedEnv&) = delete;
  ScopedEnv& operator=(const ScopedEnv&) = delete;

 private:
  std::string m_name;
  std::string m_old;
  bool m_hadOld;
};

// A fresh folder, removed with everything in it at the end.
class TempDir {
 public:
  TempDir();
  ~TempDir();
  TempDir(const TempDir&) = delete;
  TempDir& operator=(const TempDir&) = delete;
  const std::string& Path() const { return m_path; }
  std::string File(const std::string& name) const { return m_path + "/" + name; }

 private:
  std::string m_path;
};

// Overwrites page number `page` (from 1) of a database file with garbage and
// bumps the file's change counter, so that a connection that cached the
// page reads the damage.
void DamageDatabasePage(const std::string& path, int page, int pageSize);

// The folder of the built shared libraries ($CORVANE_BUILD_LIB_DIR).
std::string BuildLibDir();

// The component, loaded once per process with dlopen, as a host loads it.
struct Component {
  PFN_DllGetClassObject DllGetClassObject;
  PFN_DllCanUnloadNow DllCanUnloadNow;
  PFN_DllInstall DllInstall;
  PFN_SysAllocString SysAllocString;
  PFN_SysAllocStringLen SysAllocStringLen;
  PFN_SysFreeString SysFreeString;
  PFN_SysStringLen SysStringLen;
};
const Component& LoadComponent();

// A BSTR made and freed by the component's own functions.
class Bstr {
 public:
  explicit Bstr(std::u16string_view text);
  Bstr() = default;
  ~Bstr();
  Bstr(const Bstr&) = delete;
  Bstr& operator=(const Bstr&) = delete;
  BSTR Get() const { return m_bstr; }
  BSTR* Put();  // for out arguments
  std::u16string Text() const;

 private:
  BSTR m_bstr = nullptr;
};

// A new provider through DllGetClassObject and IClassFactory, as a host
// creates one.
ComPtr<ICorvaneDataProviderObject> CreateProvider();

// Queries an interface and wraps the result.
template <class I>
ComPtr<I> Query(IUnknown* object, const IID& iid) {
  I* result = nullptr;
  if (object == nullptr || object->QueryInterface(iid, reinterpret_cast<void**>(&result)) < 0) return ComPtr<I>();
  return ComPtr<I>(result);
}

// GetValue as text; empty when it fails.
std::u16string GetValue(ICorvaneDataProviderObject* provider, std::u16string_view key);

// The symbols a shared library defines for others to bind to, as
// "nm -D --defined-only" lists them; a line nm writes that names no symbol
// is kept whole, in angle brackets.
std::set<std::string> DefinedDynamicSymbols(const std::string& path);

// The first of names found on PATH; empty when none is.
std::string FindProgram(std::initializer_list<const char*> names);
// True where $CI is "true": there scripts/test.sh has installed every
// program a test needs, so a missing one is a failure, not a skip.
bool InCi();

}  // namespace corvane::test

// Skips the test when path (from FindProgram) is empty, with a message
// naming what is missing; in CI the test fails instead.
#define CORVANE_REQUIRE_PROGRAM(path, what)                                                          \
  do {                                                                                               \
    if ((path).empty()) {                                                                            \
      if (::corvane::test::InCi()) FAIL() << (what) << " is not installed; CI runs every test";      \
      GTEST_SKIP() << (what) << " is not installed: this test needs it";                             \
    }                                                                                                \
  } while (false)

#endif  // CORVANE_TESTS_SUPPORT_TEST_HOST_H_
