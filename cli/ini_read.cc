#include "cli/ini_read.h"

#include <fstream>

namespace corvane::cli {
namespace {

std::string_view Trim(std::string_view text) {
  size_t first = text.find_first_not_of(" \t\r");
  if (first == std::string_view::npos) return std::string_view();
  return text.substr(first, text.find_last_not_of(" \t\r") - first + 1);
}

bool SameName(std::string_view a, std::string_view b) {
  if (a.size() != b.size()) return false;
  for (size_t i = 0; i < a.size(); ++i) {
    auto lower = [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; };
    if (lower(a[i]) != lower(b[i])) return false;
  }
  return true;
}

std::string_view Unquoted(std::string_view value) {
  if (value.size() >= 2 && (value.front() == '"' || value.front() == '\'') && value.back() == value.front()) {
    return value.substr(1, value.size() - 2);
  }
  return value;
}

}  // namespace

bool ReadIniValue(const std::string& path, std::string_view section, std::string_view key, std::string* lpValue) {
  std::ifstream in(path, std::ios::binary);
  bool inSection = false;
  std::string line;
  while (std::getline(in, line)) {
    std::string_view text = Trim(line);
    if (text.size() >= 2 && text.front() == '[' && text.back() == ']') {
      inSection = SameName(Trim(text.substr(1, text.size() - 2)), section);
      continue;
    }
    size_t equals = text.find('=');
    if (!inSection || equals == std::string_view::npos || !SameName(Trim(text.substr(0, equals)), key)) continue;
    *lpValue = std::string(Unquoted(Trim(text.substr(equals + 1))));
    return true;
  }
  return false;
}

}  // namespace corvane::cli
