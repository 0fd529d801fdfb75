// An extraction library that lacks its factory, for the test that such a
// library fails the update.

#include <cstdint>

extern "C" __attribute__((visibility("default"))) uint32_t GetDefautBrowser() { return 0x2; }
