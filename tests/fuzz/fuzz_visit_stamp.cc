// A visit stamp as the store keeps it ("2024.03.05 2 09:07:03.041"):
// parsed, and a parsed time written back and parsed again alike.

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

#include "common/time_stamp.h"
#include "common/utf.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const std::u16string text = corvane::FromUtf8(std::string_view(reinterpret_cast<const char*>(data), size));
  static_cast<void>(corvane::VisitStampToLong(text));
  uint64_t number = 0;
  if (!corvane::ParseVisitStamp(text, &number)) return 0;
  std::u16string stamp;
  uint64_t again = 0;
  if (corvane::TimeNumberToStamp(number, &stamp) && (!corvane::ParseVisitStamp(stamp, &again) || again != number)) {
    std::abort();  // a stamp the system wrote must read back as the same time
  }
  return 0;
}
