#include "platform/bstr.h"

#include <cstdlib>
#include <cstring>
#include <limits>

namespace corvane {
namespace {

uint32_t* LengthField(BSTR bstr) { return reinterpret_cast<uint32_t*>(reinterpret_cast<char*>(bstr) - 4); }

}  // namespace

BSTR BstrAlloc(std::u16string_view text) {
  if (text.size() > (std::numeric_limits<uint32_t>::max() - 8) / 2) return nullptr;
  uint32_t bytes = static_cast<uint32_t>(text.size() * sizeof(char16_t));
  char* block = static_cast<char*>(std::malloc(4 + bytes + sizeof(char16_t)));
  if (block == nullptr) return nullptr;
  std::memcpy(block, &bytes, 4);
  BSTR bstr = reinterpret_cast<BSTR>(block + 4);
  if (bytes != 0) std::memcpy(bstr, text.data(), bytes);
  bstr[text.size()] = 0;
  return bstr;
}

void BstrFree(BSTR bstr) {
  if (bstr != nullptr) std::free(reinterpret_cast<char*>(bstr) - 4);
}

uint32_t BstrLength(BSTR bstr) { return bstr == nullptr ? 0 : *LengthField(bstr) / sizeof(char16_t); }

std::u16string BstrToString(BSTR bstr) {
  return bstr == nullptr ? std::u16string() : std::u16string(bstr, BstrLength(bstr));
}

HRESULT BstrOut(std::u16string_view text, BSTR* lpbstr) {
  BSTR bstr = BstrAlloc(text);
  if (bstr == nullptr) return E_OUTOFMEMORY;
  *lpbstr = bstr;
  return S_OK;
}

}  // namespace corvane
