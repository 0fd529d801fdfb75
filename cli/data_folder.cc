#include "cli/data_folder.h"

#include <acl/libacl.h>
#include <fcntl.h>
#include <stdlib.h>
#include <sys/acl.h>
#include <sys/stat.h>
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

// Whether the owning group, other accounts or a named group hold any right
// on the file (without access lists: its mode bits).
bool OpenToOthers(const std::string& path) {
  acl_t acl = acl_get_file(path.c_str(), ACL_TYPE_ACCESS);
  if (acl == nullptr) {
    struct stat info;
    return stat(path.c_str(), &info) == 0 && (info.st_mode & (S_IRWXG | S_IRWXO)) != 0;
  }
  bool open = false;
  acl_entry_t entry = nullptr;
  for (int which = ACL_FIRST_ENTRY; !open && acl_get_entry(acl, which, &entry) == 1; which = ACL_NEXT_ENTRY) {
    acl_tag_t tag;
    acl_permset_t perms = nullptr;
    if (acl_get_tag_type(entry, &tag) != 0 || acl_get_permset(entry, &perms) != 0) continue;
    const bool any = acl_get_perm(perms, ACL_READ) == 1 || acl_get_perm(perms, ACL_WRITE) == 1 ||
                     acl_get_perm(perms, ACL_EXECUTE) == 1;
    open = any && (tag == ACL_GROUP_OBJ || tag == ACL_OTHER || tag == ACL_GROUP);
  }
  acl_free(acl);
  return open;
}

// The folder, or any file directly in it, is open to other accounts.
bool FolderOpenToOthers(const std::string& folder) {
  if (OpenToOthers(folder)) return true;
  std::error_code error;
  for (const fs::directory_entry& entry : fs::directory_iterator(folder, error)) {
    if (entry.is_regular_file(error) && OpenToOthers(entry.path().string())) return true;
  }
  return false;
}

// The data folder with mode 0700; its parents as usual.
void CreateDataFolder(const std::string& folder, std::error_code* lpError) {
  fs::create_directories(fs::path(folder).parent_path(), *lpError);
  if (*lpError) return;
  if (mkdir(folder.c_str(), S_IRWXU) != 0 && errno != EEXIST) *lpError = std::error_code(errno, std::generic_category());
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

bool PrepareDataFolder(std::string* lpError, bool* lpOpenToOthers) {
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
  *lpOpenToOthers = fs::is_directory(folder, error) && FolderOpenToOthers(folder);
  CreateDataFolder(folder, &error);
  if (error) {
    *lpError = "cannot create the data folder " + folder + ": " + error.message();
    return false;
  }
  return TakesNewFiles(folder, lpError) && DatabaseWritable(folder, lpError);
}

}  // namespace corvane::cli
