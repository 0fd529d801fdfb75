// A browser's history database given as bytes: the first byte picks a
// Chromium History or a Firefox places.sqlite, the rest is the file. The
// readers copy it privately, check it and read what they can.

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
    std::string folder = "/tmp/corvane-fuzz-profile-" + std::to_string(getpid());
    std::filesystem::create_directories(folder);
    return folder;
  }();
  return profile;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  using namespace corvane::harvest;
  if (size == 0) return 0;
  const bool firefox = (data[0] & 1) != 0;
  const std::string file = Profile() + (firefox ? "/places.sqlite" : "/History");
  std::ofstream(file, std::ios::binary | std::ios::trunc)
      .write(reinterpret_cast<const char*>(data + 1), static_cast<std::streamsize>(size - 1));
  ItemStore store;
  store.StartSource(firefox ? BROWSER_FIREFOX : BROWSER_CHROME);
  if (firefox) {
    static_cast<void>(ReadFirefoxHistory(Profile(), &store));
    static_cast<void>(ReadFirefoxBookmarks(Profile(), &store));
  } else {
    static_cast<void>(ReadChromiumHistory(Profile(), &store));
  }
  store.MergeSources();
  for (size_t i = 0; i < store.Size(); ++i) static_cast<void>(store.At(i));
  return 0;
}
