#include "support/elf_symbols.h"

#include <elf.h>

#include <fstream>
#include <iterator>
#include <vector>

namespace corvane::test {

std::set<std::string> DefinedDynamicSymbols(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  const std::vector<char> image((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
  std::set<std::string> names;
  if (image.size() < sizeof(Elf64_Ehdr)) return {"<unreadable>"};
  const auto* header = reinterpret_cast<const Elf64_Ehdr*>(image.data());
  if (header->e_ident[EI_CLASS] != ELFCLASS64 || header->e_shoff + header->e_shnum * sizeof(Elf64_Shdr) > image.size()) {
    return {"<not a 64-bit ELF file>"};
  }
  const auto* sections = reinterpret_cast<const Elf64_Shdr*>(image.data() + header->e_shoff);
  for (uint16_t i = 0; i < header->e_shnum; ++i) {
    if (sections[i].sh_type != SHT_DYNSYM) continue;
    const Elf64_Shdr& strings = sections[sections[i].sh_link];
    const auto* symbols = reinterpret_cast<const Elf64_Sym*>(image.data() + sections[i].sh_offset);
    for (size_t k = 0; k < sections[i].sh_size / sizeof(Elf64_Sym); ++k) {
      const Elf64_Sym& symbol = symbols[k];
      const unsigned char binding = ELF64_ST_BIND(symbol.st_info);
      if (symbol.st_shndx == SHN_UNDEF || binding == STB_LOCAL) continue;
      names.insert(std::string(image.data() + strings.sh_offset + symbol.st_name));
    }
  }
  return names;
}

}  // namespace corvane::test
