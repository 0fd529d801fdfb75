#include "cli/data_folder.h"

#include <fcntl.h>
#include <stdlib.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <system_error>

namespace corvane::cli {
namespace {

namespace fs = std::filesystem;

constexpr char kDataFolderName[] = "CorvaneApp";

const char* NonEmptyEnv(const char* name) {
  const char* value = std::getenv(name);
  return value == nullptr || *value == '\0' ? nullptr : value;
}

std::string Cause(int error) { return std::strerror(error); }

// A file of our own made and removed again: the only sure test that the
// folder takes new files (root passes every permission test, a read-only
// mount passes none of them).
bool TakesNewFiles(const std::string& folder, std::string* lpError) {
  std::string probe = folder + "/.corvane-probe-XXXXXX";
  int fd = mkstemp(probe.data());
  if (fd < 0) {
    *lpError = "the data folder " + folder + " is not writable: " + Cause(errno);
    return false;
  }
  close(fd);
  unlink(probe.c_str());
  return true;
}

// The database is opened for writing and closed again; nothing is written.
bool DatabaseWritable(const std::string& folder, std::string* lpError) {
  std::string database = folder + "/" + kDatabaseFile;
  int fd = open(database.c_str(), O_RDWR | O_CLOEXEC);
  if (fd >= 0) {
    close(fd);
    return true;
  }
  if (errno == ENOENT) return true;
  *lpError = "cannot write " + database + ": " + Cause(errno);
  return false;
}

}  // namespace

std::string DataFolderPath() {
  std::string base;
  if (const char* appData = NonEmptyEnv("CORVANE_APPDATA")) {
    base = appData;
  } else if (const char* dataHome = NonEmptyEnv("XDG_DATA_HOME")) {
    base = dataHome;
  } else if (const char* home = NonEmptyEnv("HOME")) {
    base = std::string(home) + "/.local/share";
  } else {
    return std::string();
  }
  return base + "/" + kDataFolderName;
}

bool PrepareDataFolder(std::string* lpError) {
  std::string folder = DataFolderPath();
  if (folder.empty()) {
    *lpError = "no data folder: set HOME, XDG_DATA_HOME or --data-dir";
    return false;
  }
  std::error_code error;
  if (fs::exists(folder, error) && !fs::is_directory(folder, error)) {
    *lpError = "the data folder " + folder + " is a file, not a folder";
    return false;
  }
  fs::create_directories(folder, error);
  if (error) {
    *lpError = "cannot create the data folder " + folder + ": " + error.message();
    return false;
  }
  return TakesNewFiles(folder, lpError) && DatabaseWritable(folder, lpError);
}

}  // namespace corvane::cli
