// An INI file of the data folder (DBConfig.ini, Settings.ini, Harvest.ini):
// keys read from it, and a key written into it and read back.

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

#include "common/utf.h"
#include "platform/ini_file.h"
#include "fuzz/fuzz_scratch.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const std::string file = ScratchFolder("ini") + "/DBConfig.ini";
  WriteInput(file, data, size);
  const std::u16string path = corvane::FromUtf8(file);
  for (const char16_t* key : {u"LastUpdate", u"Read", u"Score"}) {
    static_cast<void>(corvane::ReadProfileString(path, u"DBConfig", key, u"", 260));
  }
  const std::u16string value = u"2024.03.05 2 09:07:03.041";
  if (corvane::WriteProfileString(path, u"DBConfig", u"LastUpdate", &value) &&
      corvane::ReadProfileString(path, u"DBConfig", u"LastUpdate", u"", 260) != value) {
    std::abort();  // a key written must read back as written
  }
  return 0;
}
