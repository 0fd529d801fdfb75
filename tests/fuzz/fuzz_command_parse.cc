// The parameter text that a host passes to Initialize.

#include <cstddef>
#include <cstdint>
#include <string>

#include "common/utf.h"
#include "provider/command_parse.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const std::u16string text = corvane::FromUtf8(std::string_view(reinterpret_cast<const char*>(data), size));
  corvane::CCommandParse parser;
  static_cast<void>(parser.Parse(text.c_str()));
  for (const char16_t* name : {u"Settings", u"ForceSettings"}) {
    if (const corvane::CCommand* command = parser.FindCommand(name)) static_cast<void>(command->GetCommandValue(0));
  }
  return 0;
}
