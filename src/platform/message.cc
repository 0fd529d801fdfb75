#include "platform/message.h"

#include <cstdio>

#include "common/utf.h"

namespace corvane {

void ShowMessage(std::u16string_view text, std::u16string_view caption) {
  std::fprintf(stderr, "%s: %s\n", ToUtf8(caption).c_str(), ToUtf8(text).c_str());
}

}  // namespace corvane
