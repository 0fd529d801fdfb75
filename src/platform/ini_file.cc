#include "platform/ini_file.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <fstream>
#include <sstream>
#include <vector>

#include "common/utf.h"
#include "platform/paths.h"

namespace corvane {
namespace {

std::string_view Trim(std::string_view text) {
  size_t begin = 0;
  size_t end = text.size();
  while (begin < end && (text[begin] == ' ' || text[begin] == '\t' || text[begin] == '\r')) ++begin;
  while (end > begin && (text[end - 1] == ' ' || text[end - 1] == '\t' || text[end - 1] == '\r')) --end;
  return text.substr(begin, end - begin);
}

bool EqualsIgnoreCase(std::string_view a, std::string_view b) {
  if (a.size() != b.size()) return false;
  for (size_t i = 0; i < a.size(); ++i) {
    char ca = (a[i] >= 'A' && a[i] <= 'Z') ? static_cast<char>(a[i] + 32) : a[i];
    char cb = (b[i] >= 'A' && b[i] <= 'Z') ? static_cast<char>(b[i] + 32) : b[i];
    if (ca != cb) return false;
  }
  return true;
}

// "[name]" gives true and the name.
bool ParseSectionHeader(std::string_view line, std::string_view* name) {
  std::string_view trimmed = Trim(line);
  if (trimmed.size() < 2 || trimmed.front() != '[') return false;
  size_t close = trimmed.find(']');
  if (close == std::string_view::npos) return false;
  *name = Trim(trimmed.substr(1, close - 1));
  return true;
}

// "key=value" gives true with both parts trimmed.
bool ParseKeyLine(std::string_view line, std::string_view* key, std::string_view* value) {
  size_t equals = line.find('=');
  if (equals == std::string_view::npos) return false;
  *key = Trim(line.substr(0, equals));
  if (key->empty() || key->front() == ';') return false;
  *value = Trim(line.substr(equals + 1));
  return true;
}

std::string_view StripQuotes(std::string_view value) {
  if (value.size() >= 2 && (value.front() == '"' || value.front() == '\'') && value.back() == value.front()) {
    return value.substr(1, value.size() - 2);
  }
  return value;
}

std::vector<std::string> ReadLines(std::u16string_view path) {
  std::vector<std::string> lines;
  std::ifstream file(ToFsPath(path), std::ios::binary);
  std::string line;
  while (std::getline(file, line)) lines.push_back(line);
  return lines;
}

// Index of the key's line inside the section, and of the line after the
// section's last line; npos for a missing section.
struct KeyPosition {
  size_t keyLine = std::string::npos;
  size_t sectionEnd = std::string::npos;
};

KeyPosition FindKey(const std::vector<std::string>& lines, std::string_view section, std::string_view key) {
  KeyPosition position;
  bool inSection = false;
  for (size_t i = 0; i < lines.size(); ++i) {
    std::string_view name;
    if (ParseSectionHeader(lines[i], &name)) {
      if (inSection) break;
      inSection = EqualsIgnoreCase(name, section);
      if (inSection) position.sectionEnd = i + 1;
      continue;
    }
    if (!inSection) continue;
    position.sectionEnd = i + 1;
    std::string_view lineKey, value;
    if (position.keyLine == std::string::npos && ParseKeyLine(lines[i], &lineKey, &value) &&
        EqualsIgnoreCase(lineKey, key)) {
      position.keyLine = i;
    }
  }
  return position;
}

mode_t CurrentUmask() {
  mode_t mask = umask(0);
  umask(mask);
  return mask;
}

bool WriteFileAtomically(std::u16string_view path, const std::vector<std::string>& lines) {
  std::string target = ToFsPath(path).string();
  std::string temporary = target + ".tmpXXXXXX";
  int fd = mkstemp(temporary.data());
  if (fd < 0) return false;
  std::string content;
  for (const std::string& line : lines) content.append(line).append("\n");
  bool ok = write(fd, content.data(), content.size()) == static_cast<ssize_t>(content.size());
  ok = (fsync(fd) == 0) && ok;
  ok = (close(fd) == 0) && ok;
  // mkstemp creates the file for its owner only; give it the mode that a
  // plain create would, so that other accounts keep the access they had.
  ok = ok && chmod(temporary.c_str(), 0666 & ~CurrentUmask()) == 0;
  ok = ok && std::rename(temporary.c_str(), target.c_str()) == 0;
  if (!ok) unlink(temporary.c_str());
  return ok;
}

std::string OneLine(const std::u16string& value) {
  std::string text = ToUtf8(value);
  for (char& c : text) {
    if (c == '\n' || c == '\r') c = ' ';
  }
  return text;
}

}  // namespace

std::u16string ReadProfileString(std::u16string_view path, std::u16string_view section, std::u16string_view key,
                                 std::u16string_view defaultValue, size_t bufferChars) {
  std::vector<std::string> lines = ReadLines(path);
  KeyPosition position = FindKey(lines, ToUtf8(section), ToUtf8(key));
  std::u16string result(defaultValue);
  std::string_view lineKey, value;
  if (position.keyLine != std::string::npos && ParseKeyLine(lines[position.keyLine], &lineKey, &value)) {
    result = FromUtf8(StripQuotes(value));
  }
  size_t cap = bufferChars == 0 ? 0 : bufferChars - 1;
  if (result.size() > cap) result.resize(cap);
  return result;
}

bool WriteProfileString(std::u16string_view path, std::u16string_view section, std::u16string_view key,
                        const std::u16string* value) {
  std::vector<std::string> lines = ReadLines(path);
  std::string sectionName = ToUtf8(section);
  std::string keyName = ToUtf8(key);
  KeyPosition position = FindKey(lines, sectionName, keyName);
  if (value == nullptr) {
    if (position.keyLine == std::string::npos) return true;  // nothing to delete
    lines.erase(lines.begin() + static_cast<std::ptrdiff_t>(position.keyLine));
    return WriteFileAtomically(path, lines);
  }
  std::string line = keyName + "=" + OneLine(*value);
  if (position.keyLine != std::string::npos) {
    lines[position.keyLine] = line;
  } else if (position.sectionEnd != std::string::npos) {
    lines.insert(lines.begin() + static_cast<std::ptrdiff_t>(position.sectionEnd), line);
  } else {
    lines.push_back("[" + sectionName + "]");
    lines.push_back(line);
  }
  return WriteFileAtomically(path, lines);
}

}  // namespace corvane
