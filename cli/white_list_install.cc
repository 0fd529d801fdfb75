#include "cli/white_list_install.h"

#include <filesystem>
#include <system_error>

#include "common/utf.h"
#include "platform/app_data.h"

namespace corvane::cli {
namespace {

namespace fs = std::filesystem;

constexpr char kWhiteListName[] = "WhiteList.js";

fs::path ExecutableFolder() {
  std::error_code error;
  fs::path self = fs::read_symlink("/proc/self/exe", error);
  return error ? fs::path() : self.parent_path();
}

}  // namespace

std::string SampleWhiteListPath() {
  std::error_code error;
  fs::path installed = ExecutableFolder() / ".." / "share" / "corvane" / kWhiteListName;
  if (fs::is_regular_file(installed, error)) return fs::weakly_canonical(installed, error).string();
  fs::path source = fs::path(CORVANE_SOURCE_DATA_DIR) / kWhiteListName;
  if (fs::is_regular_file(source, error)) return source.string();
  return std::string();
}

std::string DataFolderPath() {
  std::u16string folder;
  if (!GetDataFolder(&folder)) return std::string();
  return ToUtf8(folder);
}

bool InstallSampleWhiteList() {
  std::string folder = DataFolderPath();
  if (folder.empty()) return false;
  std::error_code error;
  fs::path target = fs::path(folder) / kWhiteListName;
  if (fs::exists(target, error)) return true;
  std::string sample = SampleWhiteListPath();
  if (sample.empty()) return false;
  return fs::copy_file(sample, target, fs::copy_options::skip_existing, error) && !error;
}

}  // namespace corvane::cli
