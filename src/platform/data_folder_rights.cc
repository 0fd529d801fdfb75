#include "platform/data_folder_rights.h"

#include <acl/libacl.h>
#include <sys/stat.h>

#include <cerrno>
#include <filesystem>
#include <string>
#include <vector>

#include "common/debug_log.h"
#include "common/utf.h"
#include "platform/folder_access.h"
#include "platform/paths.h"
#include "platform/posix_acl.h"

namespace corvane {
namespace {

namespace fs = std::filesystem;

// Takes every right from the owning group's and the others' entries and
// drops the shared group's entry; true when the list changed.
bool TakeFromOthers(acl_t acl) {
  bool changed = false;
  gid_t shared = 0;
  if (SharedUsersGroup(&shared) && DropNamedEntry(acl, ACL_GROUP, shared)) changed = true;
  acl_entry_t entry = nullptr;
  for (int which = ACL_FIRST_ENTRY; acl_get_entry(acl, which, &entry) == 1; which = ACL_NEXT_ENTRY) {
    acl_tag_t tag;
    if (acl_get_tag_type(entry, &tag) != 0 || (tag != ACL_GROUP_OBJ && tag != ACL_OTHER)) continue;
    if (EntryPerms(entry) == 0) continue;
    changed = SetEntryPerms(entry, 0) || changed;
  }
  return changed;
}

// Narrows one list of the file; true when it was open to others. Without
// access lists on the file system, the mode bits are narrowed instead.
bool NarrowList(const std::string& path, acl_type_t type, mode_t mode) {
  ScopedAcl acl(acl_get_file(path.c_str(), type));
  if (acl.Get() == nullptr) {
    if (type != ACL_TYPE_ACCESS || (mode & (S_IRWXG | S_IRWXO)) == 0) return false;
    return chmod(path.c_str(), mode & ~(S_IRWXG | S_IRWXO) & 07777) == 0;
  }
  if (acl_entries(acl.Get()) <= 0 || !TakeFromOthers(acl.Get())) return false;
  if (FinishAcl(acl.Put()) && acl_set_file(path.c_str(), type, acl.Get()) == 0) return true;
  DebugLog("SetFileSecurity() failed. Error %d\n", errno);
  return false;
}

bool Narrow(const std::string& path) {
  struct stat info;
  if (lstat(path.c_str(), &info) != 0) return false;
  bool open = NarrowList(path, ACL_TYPE_ACCESS, info.st_mode);
  if (S_ISDIR(info.st_mode)) open = NarrowList(path, ACL_TYPE_DEFAULT, info.st_mode) || open;
  return open;
}

// The folder and the regular files directly in it; links are not followed.
std::vector<std::string> FolderAndFiles(const std::string& folder) {
  std::vector<std::string> paths{folder};
  std::error_code error;
  for (const fs::directory_entry& entry : fs::directory_iterator(folder, error)) {
    if (entry.is_regular_file(error) && !entry.is_symlink(error)) paths.push_back(entry.path().string());
  }
  return paths;
}

}  // namespace

bool CreatePrivateFolder(std::u16string_view path) {
  const fs::path folder = ToFsPath(path);
  std::error_code error;
  if (folder.has_parent_path()) fs::create_directories(folder.parent_path(), error);
  if (mkdir(folder.c_str(), S_IRWXU) != 0 && errno != EEXIST) return false;
  return fs::is_directory(folder, error);
}

int KeepDataFolderPrivate(std::u16string_view folder) {
  int open = 0;
  for (const std::string& path : FolderAndFiles(ToUtf8(folder))) {
    if (Narrow(path)) ++open;
    static_cast<void>(GrantFolderAccess(FromUtf8(path), kUsersAccount, kGenericAll));
  }
  if (open > 0) {
    DebugLog("%d of %s and its files were open to other accounts: now the owner's alone\r\n", open,
             ToUtf8(folder).c_str());
  }
  return open;
}

}  // namespace corvane
