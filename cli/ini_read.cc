#include "cli/ini_read.h"

#include <algorithm>
#include <fstream>
#include <functional>

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

// Calls visit(key, value) for each key line of the section, in file order,
// until it returns false.
void ForEachKey(const std::string& path, std::string_view section,
                const std::function<bool(std::string_view, std::string_view)>& visit) {
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
    if (!inSection || equals == std::string_view::npos) continue;
    if (!visit(Trim(text.substr(0, equals)), Unquoted(Trim(text.substr(equals + 1))))) return;
  }
}

}  // namespace

bool ReadIniValue(const std::string& path, std::string_view section, std::string_view key, std::string* lpValue) {
  bool found = false;
  ForEachKey(path, section, [&](std::string_view name, std::string_view value) {
    found = SameName(name, key);
    if (found) *lpValue = std::string(value);
    return !found;
  });
  return found;
}

std::vector<std::string> ReadIniKeys(const std::string& path, std::string_view section) {
  std::vector<std::string> keys;
  ForEachKey(path, section, [&](std::string_view name, std::string_view) {
    if (std::none_of(keys.begin(), keys.end(), [&](const std::string& key) { return SameName(key, name); })) {
      keys.emplace_back(name);
    }
    return true;
  });
  return keys;
}

}  // namespace corvane::cli
