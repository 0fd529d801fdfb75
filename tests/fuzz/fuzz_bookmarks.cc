// A Chromium Bookmarks file, as the extraction library reads it from a
// profile.

#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <string>

#include "corvane/VisitHarvest.h"
#include "harvest/item_store.h"
#include "harvest/profile_readers.h"

namespace {

const std::string& Profile() {
  static const std::string profile = [] {
    std::string folder = "/tmp/corvane-fuzz-bookmarks-" + std::to_string(getpid());
    std::filesystem::create_directories(folder);
    return folder;
  }();
  return profile;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  std::ofstream(Profile() + "/Bookmarks", std::ios::binary | std::ios::trunc)
      .write(reinterpret_cast<const char*>(data), static_cast<std::streamsize>(size));
  corvane::harvest::ItemStore store;
  store.StartSource(BROWSER_CHROME);
  static_cast<void>(corvane::harvest::ReadChromiumBookmarks(Profile(), &store));
  store.MergeSources();
  for (size_t i = 0; i < store.Size(); ++i) static_cast<void>(store.At(i));
  return 0;
}
