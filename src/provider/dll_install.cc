#include "provider/dll_install.h"

#include "common/text_util.h"
#include "common/utf.h"

namespace corvane {
namespace {

// The module's registration mode; it only ever switches on.
bool g_bPerUser = false;

// "user" plus its terminator.
constexpr size_t kUserCompareLength = 5;

}  // namespace

HRESULT InstallServer(int32_t bInstall, const OLECHAR* pszCmdLine, RegistrationStep registerStep,
                      RegistrationStep unregisterStep) {
  if (pszCmdLine != nullptr &&
      AsciiCompareIgnoreCaseN(std::u16string_view(pszCmdLine, U16Length(pszCmdLine)), u"user", kUserCompareLength) ==
          0) {
    g_bPerUser = true;
  }
  if (bInstall == 0) return unregisterStep();
  HRESULT hr = registerStep();
  if (FAILED(hr)) static_cast<void>(unregisterStep());
  return hr;
}

bool IsPerUserRegistration() { return g_bPerUser; }

}  // namespace corvane
