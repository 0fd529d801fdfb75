// A Chromium Bookmarks file, as the extraction library reads it from a
// profile.

#include <cstddef>
#include <cstdint>
#include <string>

#include "corvane/VisitHarvest.h"
#include "fuzz/fuzz_scratch.h"
#include "harvest/item_store.h"
#include "harvest/profile_readers.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  WriteInput(ScratchFolder("bookmarks") + "/Bookmarks", data, size);
  corvane::harvest::ItemStore store;
  store.StartSource(BROWSER_CHROME);
  static_cast<void>(corvane::harvest::ReadChromiumBookmarks(ScratchFolder("bookmarks"), &store));
  store.MergeSources();
  for (size_t i = 0; i < store.Size(); ++i) static_cast<void>(store.At(i));
  return 0;
}
