#include "platform/bstr.h"

#include <cstdlib>
#include <cstring>
#include <limits>

namespace corvane {
namespace {

uint32_t* LengthField(BSTR bstr) { return reinterpret_cast<uint32_t*>(reinterpret_cast<char*>(bstr) - 4); }

}  // namespace

BSTR BstrAllocLen(const char16_t* pch, size_t cch) {
  // The byte length is stored in 4 bytes before the text.
  if (cch > std::numeric_limits<uint32_t>::max() / sizeof(char16_t)) return nullptr;
  uint32_t bytes = static_cast<uint32_t>(cch * sizeof(char16_t));
  // calloc zeroes the text of a null pch and the terminator; a large block
  // comes zeroed from the system without being written here.
  char* block = static_cast<char*>(std::calloc(1, sizeof(uint32_t) + size_t{bytes} + sizeof(char16_t)));
  if (block == nullptr) return nullptr;
  std::memcpy(block, &bytes, sizeof(uint32_t));
  BSTR bstr = reinterpret_cast<BSTR>(block + sizeof(uint32_t));
  if (pch != nullptr && bytes != 0) std::memcpy(bstr, pch, bytes);
  return bstr;
}

BSTR BstrAlloc(std::u16string_view text) { return BstrAllocLen(text.data(), text.size()); }

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
