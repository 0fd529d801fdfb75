#include "cli/white_list_install.h"

#include <filesystem>
#include <system_error>

#include "cli/data_folder.h"

namespace corvane::cli {
namespace {

namespace fs = std::filesystem;

fs::path ExecutableFolder() {
  std::error_code error;
  fs::path self = fs::read_symlink("/proc/self/exe", error);
  return error ? fs::path() : self.parent_path();
}

}  // namespace

std::string SampleWhiteListPath() {
  std::error_code error;
  fs::path installed = ExecutableFolder() / ".." / "share" / "corvane" / kWhiteListFile;
  if (fs::is_regular_file(installed, error)) return fs::weakly_canonical(installed, error).string();
  fs::path source = fs::path(CORVANE_SOURCE_DATA_DIR) / kWhiteListFile;
  if (fs::is_regular_file(source, error)) return source.string();
  return std::string();
}

bool InstallSampleWhiteList() {
  std::string folder = DataFolderPath();
  if (folder.empty()) return false;
  std::error_code error;
  fs::path target = fs::path(folder) / kWhiteListFile;
  if (fs::exists(target, error)) return true;
  std::string sample = SampleWhiteListPath();
  if (sample.empty()) return false;
  return fs::copy_file(sample, target, fs::copy_options::skip_existing, error) && !error;
}

}  // namespace corvane::cli
