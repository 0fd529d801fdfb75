#include "support/elf_symbols.h"

#include <elf.h>

#include <fstream>
#include <iterator>
#include <vector>

namespace corvane::test {

std::set<std::string> DefinedDynamicSymbols(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  const std::vector<char> image((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
  if (image.size() < sizeof(Elf64_Ehdr)) return {"<unreadable>"};
  const auto* header = reinterpret_cast<const Elf64_Ehdr*>(image.data());
  const size_t sectionsEnd = header->e_shoff + header->e_shnum * sizeof(Elf64_Shdr);
  if (header->e_ident[EI_CLASS] != ELFCLASS64 || sectionsEnd > image.size()) return {"<not a 64-bit ELF file>"};
  const auto* sections = reinterpret_cast<const Elf64_Shdr*>(image.data() + header->e_shoff);
  std::set<std::string> names;
  for (uint16_t i = 0; i < header->e_shnum; ++i) {
    if (sections[i].sh_type != SHT_DYNSYM) continue;
    const char* strings = image.data() + sections[sections[i].sh_link].sh_offset;
    const auto* symbols = reinterpret_cast<const Elf64_Sym*>(image.data() + sections[i].sh_offset);
    for (size_t k = 0; k < sections[i].sh_size / sizeof(Elf64_Sym); ++k) {
      // Defined here, and global or weak: what others bind to.
      if (symbols[k].st_shndx != SHN_UNDEF && ELF64_ST_BIND(symbols[k].st_info) != STB_LOCAL) {
        names.insert(strings + symbols[k].st_name);
      }
    }
  }
  return names;
}

}  // namespace corvane::test
