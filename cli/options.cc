#include "cli/options.h"

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <system_error>

namespace corvane::cli {

bool ApplyGlobalOptions(const GlobalOptions& options, std::string* lpError) {
  if (options.dataDir.empty()) return true;
  std::error_code error;
  std::filesystem::path absolute;
  std::filesystem::create_directories(options.dataDir, error);
  if (!error && !std::filesystem::is_directory(options.dataDir, error)) {
    error = std::make_error_code(std::errc::not_a_directory);
  }
  if (!error) absolute = std::filesystem::absolute(options.dataDir, error);
  if (error) {
    *lpError = "cannot use the data folder " + options.dataDir + ": " + error.message();
    return false;
  }
  return setenv("CORVANE_APPDATA", absolute.c_str(), 1) == 0;
}

int Failure(const std::string& message) {
  std::fprintf(stderr, "corvane: %s\n", message.c_str());
  return kExitFailure;
}

int UsageError(const std::string& message) {
  std::fprintf(stderr, "corvane: %s\n", message.c_str());
  return kExitUsage;
}

int ComponentFailure(const std::string& message) { return Failure(message); }

}  // namespace corvane::cli
