// A URL from a browser or a host: its fixed form and back, its full and
// its main domain.

#include <cstddef>
#include <cstdint>
#include <string>

#include "common/url_util.h"
#include "common/utf.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const std::u16string url = corvane::FromUtf8(std::string_view(reinterpret_cast<const char*>(data), size));
  std::u16string fixed = url, restored, host, mainDomain;
  int32_t hadWww = 0, hadSlash = 0;
  corvane::MakeFixedURL(fixed, &hadWww, &hadSlash);
  corvane::RestoreURL(fixed, hadWww, hadSlash, &restored);
  if (corvane::GetFullDomain(url, &host)) static_cast<void>(corvane::GetMainDomain(host, &mainDomain));
  corvane::GetMainDomainOfURL(url, &mainDomain);
  return 0;
}
