#include "platform/file_notes.h"

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "common/debug_log.h"
#include "common/local_clock.h"
#include "common/text_util.h"
#include "common/time_stamp.h"
#include "common/utf.h"
#include "platform/app_data.h"
#include "platform/ini_file.h"
#include "platform/paths.h"

namespace corvane {
namespace {

constexpr char16_t kConfigFileName[] = u"DBConfig.ini";
constexpr char16_t kConfigSection[] = u"DBConfig";
// DBConfig.ini is a few hundred bytes; more than this is read no further.
constexpr size_t kConfigReadLimit = 1 << 20;

}  // namespace

void NoteFileProblem(std::u16string_view key, const std::string& sentence) {
  DebugLog("%s\r\n", sentence.c_str());
  std::u16string folder;
  if (!GetDataFolder(&folder)) return;
  const std::u16string value = StampOfNow() + u"|" + FromUtf8(sentence);
  static_cast<void>(WriteProfileString(PathJoin(folder, kConfigFileName), kConfigSection, key, &value));
}

bool ConfigFileDamaged(std::u16string_view path) {
  std::ifstream in(ToFsPath(path), std::ios::binary);
  std::string text;
  text.resize(kConfigReadLimit);
  in.read(text.data(), static_cast<std::streamsize>(text.size()));
  text.resize(static_cast<size_t>(in.gcount()));
  if (text.find_first_not_of(" \t\r\n") == std::string::npos) return false;
  return AsciiFindIgnoreCase(FromUtf8(text), u"[DBConfig]", 0) == std::u16string_view::npos;
}

std::string SetDamagedFileAside(const std::string& path, std::initializer_list<const char*> companions) {
  std::error_code error;
  const auto taken = [&](const std::string& name) {
    if (std::filesystem::exists(name, error)) return true;
    for (const char* suffix : companions) {
      if (std::filesystem::exists(name + suffix, error)) return true;
    }
    return false;
  };
  std::string aside = path + ".corrupt";
  for (int n = 1; taken(aside); ++n) aside = path + ".corrupt." + std::to_string(n);
  if (std::rename(path.c_str(), aside.c_str()) != 0) return std::string();
  for (const char* suffix : companions) {
    if (std::filesystem::exists(path + suffix, error)) std::rename((path + suffix).c_str(), (aside + suffix).c_str());
  }
  return aside;
}

}  // namespace corvane
