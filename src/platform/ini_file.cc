#include "platform/ini_file.h"

#include <fcntl.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdio>
#include <string>
#include <vector>

#include "common/utf.h"
#include "platform/paths.h"

namespace corvane {
namespace {

std::string_view Trim(std::string_view text) {
  size_t begin = 0;
  size_t end = text.size();
  while (begin < end && (text[begin] == ' ' || text[begin] == '\t')) ++begin;
  while (end > begin && (text[end - 1] == ' ' || text[end - 1] == '\t')) --end;
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

constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

// A line ends at "\n", "\r\n" or a lone "\r", so that files written on any
// system read alike. A UTF-8 byte-order mark at the start is no part of the
// first line.
std::vector<std::string> SplitLines(std::string_view content) {
  if (content.substr(0, kByteOrderMark.size()) == kByteOrderMark) content.remove_prefix(kByteOrderMark.size());
  std::vector<std::string> lines;
  size_t begin = 0;
  while (begin < content.size()) {
    size_t end = content.find_first_of("\r\n", begin);
    if (end == std::string_view::npos) end = content.size();
    lines.emplace_back(content.substr(begin, end - begin));
    begin = end;
    if (begin < content.size() && content[begin] == '\r') ++begin;
    if (begin < content.size() && content[begin] == '\n') ++begin;
  }
  return lines;
}

// The lines of the file. A missing file has none; false when the file is
// there but can't be read (a write must then leave it alone rather than
// replace it with a file that holds only the new key).
bool ReadLines(std::u16string_view path, std::vector<std::string>* lpLines, bool* lpHadMark = nullptr) {
  lpLines->clear();
  std::string target = ToFsPath(path).string();
  int fd = open(target.c_str(), O_RDONLY | O_CLOEXEC);
  if (fd < 0) return errno == ENOENT;
  std::string content;
  char buffer[8192];
  ssize_t got = 0;
  while ((got = read(fd, buffer, sizeof(buffer))) != 0) {
    if (got < 0 && errno == EINTR) continue;
    if (got < 0) break;
    content.append(buffer, static_cast<size_t>(got));
  }
  close(fd);
  if (got < 0) return false;
  if (lpHadMark != nullptr) *lpHadMark = content.compare(0, kByteOrderMark.size(), kByteOrderMark) == 0;
  *lpLines = SplitLines(content);
  return true;
}

// The key's lines inside the section, in file order, and the index of the
// line after the section's last line (npos for a missing section). A damaged
// file may hold a key more than once; reads take the first.
struct KeyPosition {
  std::vector<size_t> keyLines;
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
    if (ParseKeyLine(lines[i], &lineKey, &value) && EqualsIgnoreCase(lineKey, key)) position.keyLines.push_back(i);
  }
  return position;
}

// Creates a file of its own beside the target. The mode 0666 lets the umask,
// or the folder's default ACL, decide the permissions as for any new file.
int CreateTemporaryBeside(const std::string& target, std::string* lpName) {
  static std::atomic<uint32_t> s_counter{0};
  // A name left behind by a process that had the same id is passed over.
  constexpr int kAttempts = 100;
  for (int attempt = 0; attempt < kAttempts; ++attempt) {
    *lpName = target + ".tmp." + std::to_string(getpid()) + "." + std::to_string(s_counter.fetch_add(1));
    int fd = open(lpName->c_str(), O_CREAT | O_EXCL | O_WRONLY | O_CLOEXEC, 0666);
    if (fd >= 0 || errno != EEXIST) return fd;
  }
  return -1;
}

bool WriteAll(int fd, const std::string& content) {
  size_t done = 0;
  while (done < content.size()) {
    ssize_t wrote = write(fd, content.data() + done, content.size() - done);
    if (wrote < 0 && errno == EINTR) continue;
    if (wrote <= 0) return false;
    done += static_cast<size_t>(wrote);
  }
  return true;
}

// A file that began with a byte-order mark keeps it: without it a second
// mark behind the first would start the first line, and change what it
// says.
bool WriteFileAtomically(std::u16string_view path, const std::vector<std::string>& lines, bool withMark) {
  std::string target = ToFsPath(path).string();
  std::string temporary;
  int fd = CreateTemporaryBeside(target, &temporary);
  if (fd < 0) return false;
  std::string content(withMark ? kByteOrderMark : std::string_view());
  for (const std::string& line : lines) content.append(line).append("\n");
  bool ok = WriteAll(fd, content);
  ok = (fsync(fd) == 0) && ok;
  ok = (close(fd) == 0) && ok;
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
  std::vector<std::string> lines;
  static_cast<void>(ReadLines(path, &lines));  // an unreadable file reads as defaults
  KeyPosition position = FindKey(lines, ToUtf8(section), ToUtf8(key));
  std::u16string result(defaultValue);
  std::string_view lineKey, value;
  if (!position.keyLines.empty() && ParseKeyLine(lines[position.keyLines.front()], &lineKey, &value)) {
    result = FromUtf8(StripQuotes(value));
  }
  // The value is handed out as text in a zero-terminated buffer: a zero
  // character in the file ends it.
  size_t zero = result.find(u'\0');
  if (zero != std::u16string::npos) result.resize(zero);
  size_t cap = bufferChars == 0 ? 0 : bufferChars - 1;
  if (result.size() > cap) result.resize(cap);
  return result;
}

bool WriteProfileString(std::u16string_view path, std::u16string_view section, std::u16string_view key,
                        const std::u16string* value) {
  std::vector<std::string> lines;
  bool hadMark = false;
  if (!ReadLines(path, &lines, &hadMark)) return false;
  std::string sectionName = ToUtf8(section);
  std::string keyName = ToUtf8(key);
  KeyPosition position = FindKey(lines, sectionName, keyName);
  if (value == nullptr) {
    if (position.keyLines.empty()) return true;  // nothing to delete
    // Every line of the key goes, from the last, so that no copy of it is
    // read once the key is deleted.
    for (auto line = position.keyLines.rbegin(); line != position.keyLines.rend(); ++line) {
      lines.erase(lines.begin() + static_cast<std::ptrdiff_t>(*line));
    }
    return WriteFileAtomically(path, lines, hadMark);
  }
  std::string line = keyName + "=" + OneLine(*value);
  if (!position.keyLines.empty()) {
    lines[position.keyLines.front()] = line;
  } else if (position.sectionEnd != std::string::npos) {
    lines.insert(lines.begin() + static_cast<std::ptrdiff_t>(position.sectionEnd), line);
  } else {
    lines.push_back("[" + sectionName + "]");
    lines.push_back(line);
  }
  return WriteFileAtomically(path, lines, hadMark);
}

}  // namespace corvane
