#include "cli/options.h"

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <system_error>

namespace corvane::cli {

bool ApplyGlobalOptions(const GlobalOptions& options) {
  if (options.dataDir.empty()) return true;
  std::error_code error;
  std::filesystem::create_directories(options.dataDir, error);
  if (error || !std::filesystem::is_directory(options.dataDir, error)) return false;
  std::filesystem::path absolute = std::filesystem::absolute(options.dataDir, error);
  if (error) return false;
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
