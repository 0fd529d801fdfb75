// elf_symbols.h: what a built shared library offers to bind to, read from
// its file, for the tests that keep each library's boundary to its exports.

#ifndef CORVANE_TESTS_SUPPORT_ELF_SYMBOLS_H_
#define CORVANE_TESTS_SUPPORT_ELF_SYMBOLS_H_

#include <set>
#include <string>

namespace corvane::test {

// The names of the symbols that a shared library defines for others to
// bind to: the global and weak entries of its dynamic symbol table. A file
// that is no 64-bit ELF image gives one name in angle brackets saying so.
std::set<std::string> DefinedDynamicSymbols(const std::string& path);

}  // namespace corvane::test

#endif  // CORVANE_TESTS_SUPPORT_ELF_SYMBOLS_H_
