// A browser's history database given as bytes: the first byte picks a
// Chromium History or a Firefox places.sqlite, the rest is the file. The
// readers copy it privately, check it and read what they can.

#include <cstddef>
#include <cstdint>
#include <string>

#include "corvane/VisitHarvest.h"
#include "fuzz/fuzz_scratch.h"
#include "harvest/item_store.h"
#include "harvest/profile_readers.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  using namespace corvane::harvest;
  if (size == 0) return 0;
  const bool firefox = (data[0] & 1) != 0;
  const std::string& profile = ScratchFolder("profile");
  const std::string file = profile + (firefox ? "/places.sqlite" : "/History");
  WriteInput(file, data + 1, size - 1);
  ItemStore store;
  store.StartSource(firefox ? BROWSER_FIREFOX : BROWSER_CHROME);
  if (firefox) {
    static_cast<void>(ReadFirefoxHistory(profile, &store));
    static_cast<void>(ReadFirefoxBookmarks(profile, &store));
  } else {
    static_cast<void>(ReadChromiumHistory(profile, &store));
  }
  store.MergeSources();
  for (size_t i = 0; i < store.Size(); ++i) static_cast<void>(store.At(i));
  return 0;
}
