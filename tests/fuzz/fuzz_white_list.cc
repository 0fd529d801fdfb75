// The white-list file of the data folder, as its loader parses it.

#include <json/value.h>

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "reflists/white_list_loader.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  Json::Value root;
  if (corvane::ParseWhiteListText(std::string_view(reinterpret_cast<const char*>(data), size), &root)) {
    for (const char* list : {"whitelist", "blacklist", "sublist", "names"}) static_cast<void>(root[list].size());
  }
  return 0;
}
