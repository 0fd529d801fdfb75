// bstr.h: counted UTF-16 strings that cross the component boundary.
//
// A BSTR points at UTF-16 text; the 4 bytes before it hold the text's length
// in bytes, and a zero character follows it. A null BSTR reads as the empty
// string. The exported SysAllocString family of the component wraps these.

#ifndef CORVANE_PLATFORM_BSTR_H_
#define CORVANE_PLATFORM_BSTR_H_

#include <string>
#include <string_view>

#include "corvane/CorvaneDataProvider.h"

namespace corvane {

// A new BSTR holding the text; null when it is too long for the length
// prefix or memory runs out.
BSTR BstrAlloc(std::u16string_view text);
// A new BSTR of cch characters, copied from pch or, for a null pch, all
// zero. Null when cch * 2 bytes do not fit the 4-byte length prefix or
// memory runs out; nothing here throws, so the exports that wrap it never
// let an exception reach the host.
BSTR BstrAllocLen(const char16_t* pch, size_t cch);
void BstrFree(BSTR bstr);
uint32_t BstrLength(BSTR bstr);

// The text of a BSTR, taken by its stored length (so a NUL inside stays).
std::u16string BstrToString(BSTR bstr);

// Writes a new BSTR into *lpbstr; E_OUTOFMEMORY when allocation fails.
HRESULT BstrOut(std::u16string_view text, BSTR* lpbstr);

}  // namespace corvane

#endif  // CORVANE_PLATFORM_BSTR_H_
