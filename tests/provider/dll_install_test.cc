// DllInstall's logic: the per-user switch and the order of the steps.

#include "provider/dll_install.h"

#include <gtest/gtest.h>

#include <string>

namespace corvane {
namespace {

std::string g_calls;
HRESULT g_registerResult = S_OK;

HRESULT FakeRegister() {
  g_calls += "R";
  return g_registerResult;
}

HRESULT FakeUnregister() {
  g_calls += "U";
  return static_cast<HRESULT>(0x80070005u);
}

TEST(DllInstallTest, StepsAndPerUserSwitch) {
  // The switch only ever turns on, so the cases that leave it off come first.
  for (const char16_t* text : {static_cast<const char16_t*>(nullptr), u"", u"use", u"users", u"usr", u"user "}) {
    g_calls.clear();
    EXPECT_EQ(InstallServer(1, text, &FakeRegister, &FakeUnregister), S_OK);
    EXPECT_EQ(g_calls, "R");
    EXPECT_FALSE(IsPerUserRegistration());
  }
  // Flag 0 only unregisters and returns its status.
  g_calls.clear();
  EXPECT_EQ(InstallServer(0, u"UsEr", &FakeRegister, &FakeUnregister), static_cast<HRESULT>(0x80070005u));
  EXPECT_EQ(g_calls, "U");
  EXPECT_TRUE(IsPerUserRegistration());
  // A failed install is undone, and the first status is returned.
  g_calls.clear();
  g_registerResult = E_FAIL;
  EXPECT_EQ(InstallServer(1, nullptr, &FakeRegister, &FakeUnregister), E_FAIL);
  EXPECT_EQ(g_calls, "RU");
  EXPECT_TRUE(IsPerUserRegistration());
}

}  // namespace
}  // namespace corvane
