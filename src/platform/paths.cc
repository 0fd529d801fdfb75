#include "platform/paths.h"

#include <system_error>

#include "common/utf.h"

namespace corvane {

std::filesystem::path ToFsPath(std::u16string_view path) { return std::filesystem::path(ToUtf8(path)); }

std::u16string PathJoin(std::u16string_view base, std::u16string_view more) {
  std::u16string out(base);
  if (!out.empty() && out.back() != u'/') out.push_back(u'/');
  size_t skip = 0;
  while (skip < more.size() && more[skip] == u'/') ++skip;
  out.append(more.substr(skip));
  return out;
}

std::u16string PathAddExtension(std::u16string_view path, std::u16string_view extension) {
  size_t slash = path.rfind(u'/');
  size_t dot = path.rfind(u'.');
  bool hasExtension = dot != std::u16string_view::npos && (slash == std::u16string_view::npos || dot > slash);
  std::u16string out(path);
  if (!hasExtension) out.append(extension);
  return out;
}

bool PathFileExists(std::u16string_view path) {
  std::error_code error;
  return std::filesystem::exists(ToFsPath(path), error);
}

bool CreateDirectories(std::u16string_view path) {
  std::error_code error;
  std::filesystem::path fsPath = ToFsPath(path);
  std::filesystem::create_directories(fsPath, error);
  return std::filesystem::is_directory(fsPath, error);
}

bool DeleteFileAt(std::u16string_view path) {
  std::error_code error;
  std::filesystem::remove(ToFsPath(path), error);
  return !std::filesystem::exists(ToFsPath(path), error);
}

}  // namespace corvane
