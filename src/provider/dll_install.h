// dll_install.h: the logic of the DllInstall export.
//
// There is no registry: registering and unregistering change nothing.
// What remains is the choice of per-user registration, kept for the rest of
// the process, and the order of the steps around a failed install.

#ifndef CORVANE_PROVIDER_DLL_INSTALL_H_
#define CORVANE_PROVIDER_DLL_INSTALL_H_

#include <cstdint>

#include "corvane/CorvaneDataProvider.h"

namespace corvane {

using RegistrationStep = HRESULT (*)();

// A command line equal to "user" in any case (the terminator is part of the
// comparison, so "users" doesn't count) switches to per-user registration.
// bInstall 0 unregisters; otherwise registers, unregistering again when
// that fails, and returns the first status.
HRESULT InstallServer(int32_t bInstall, const OLECHAR* pszCmdLine, RegistrationStep registerStep,
                      RegistrationStep unregisterStep);

// True once a DllInstall call asked for per-user registration.
bool IsPerUserRegistration();

}  // namespace corvane

#endif  // CORVANE_PROVIDER_DLL_INSTALL_H_
