#include "platform/folder_access.h"

#include <acl/libacl.h>
#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <string>
#include <vector>

#include "common/debug_log.h"
#include "common/text_util.h"
#include "common/utf.h"
#include "platform/app_data.h"
#include "platform/posix_acl.h"

namespace corvane {
namespace {

// The most that a user's entry in the password database may take.
constexpr size_t kMaxUserBuffer = 1 << 20;

// The generic rights of an access mask, as permission bits.
constexpr uint32_t kGenericRead = 0x80000000;
constexpr uint32_t kGenericWrite = 0x40000000;
constexpr uint32_t kGenericExecute = 0x20000000;

// The data folder holds no programs: on a file the entry never carries the
// execute right, so a file's group bits never show one either.
uint32_t PermsOf(uint32_t mask, bool folder) {
  const bool all = (mask & kGenericAll) != 0;
  uint32_t perms = (all || (mask & kGenericRead) != 0 ? 4u : 0u) | (all || (mask & kGenericWrite) != 0 ? 2u : 0u);
  if (folder && (all || (mask & kGenericExecute) != 0)) perms |= 1u;
  return perms;
}

bool LookUpUserName(const std::string& name, uid_t* lpUid) {
  long size = sysconf(_SC_GETPW_R_SIZE_MAX);
  std::vector<char> buffer(size > 0 ? static_cast<size_t>(size) : 1024);
  struct passwd entry;
  struct passwd* found = nullptr;
  int rc = 0;
  while ((rc = getpwnam_r(name.c_str(), &entry, buffer.data(), buffer.size(), &found)) == ERANGE &&
         buffer.size() < kMaxUserBuffer) {
    buffer.resize(buffer.size() * 2);
  }
  if (rc != 0 || found == nullptr) return false;
  *lpUid = found->pw_uid;
  return true;
}

// "Users" is the owner of the folder that holds the data folder; any other
// account is a user of that name.
bool LookUpAccount(std::u16string_view account, uid_t* lpUid) {
  bool found = false;
  if (AsciiEqualsIgnoreCase(account, kUsersAccount)) {
    std::u16string appData;
    struct stat info;
    found = GetAppDataFolder(&appData) && stat(ToUtf8(appData).c_str(), &info) == 0;
    if (found) *lpUid = info.st_uid;
  } else {
    found = LookUpUserName(ToUtf8(account), lpUid);
  }
  if (!found) DebugLog("LookupAccountName() failed. ErrorCode:%08X\r\n", static_cast<unsigned>(errno));
  return found;
}

acl_t ReadAcl(const std::string& path, acl_type_t type) {
  acl_t acl = acl_get_file(path.c_str(), type);
  if (acl == nullptr) DebugLog("GetFileSecurity() failed. Error %d\n", errno);
  return acl;
}

bool WriteAcl(const std::string& path, acl_type_t type, acl_t acl) {
  if (acl_set_file(path.c_str(), type, acl) == 0) return true;
  DebugLog("SetFileSecurity() failed. Error %d\n", errno);
  return false;
}

// A copy of the list without the shared group's entry and with the
// person's, unless the person owns the object. An empty default list
// starts from the owner's rights alone. Null with a debug line when it
// can't be made.
acl_t WithPerson(acl_t acl, acl_type_t type, const struct stat& info, uid_t person, uint32_t perms) {
  const bool fromMode = type == ACL_TYPE_DEFAULT && acl_entries(acl) <= 0;
  ScopedAcl granted(fromMode ? acl_from_mode(info.st_mode & S_IRWXU) : acl_dup(acl));
  gid_t shared = 0;
  if (granted.Get() != nullptr && SharedUsersGroup(&shared)) DropNamedEntry(granted.Get(), ACL_GROUP, shared);
  const bool ok = granted.Get() != nullptr &&
                  (person == info.st_uid || PutNamedEntry(granted.Put(), ACL_USER, person, perms)) &&
                  FinishAcl(granted.Put());
  if (!ok) {
    DebugLog("AddAccessAllowedAceEx() failed. Error %d\n", errno);
    return nullptr;
  }
  return granted.Release();
}

// Puts a folder's default list back as it was read: an empty one is
// removed, since an empty list can't be written.
void RestoreDefaults(const std::string& path, acl_t previous) {
  const int rc = acl_entries(previous) > 0 ? acl_set_file(path.c_str(), ACL_TYPE_DEFAULT, previous)
                                           : acl_delete_def_file(path.c_str());
  if (rc != 0) DebugLog("SetFileSecurity() failed. Error %d\n", errno);
}

}  // namespace

// Both lists are worked out before anything is written. On a folder the
// default list goes first and the access list last; if the access list
// can't be written, the default list is put back, so that a failure leaves
// the object as it was.
bool GrantFolderAccess(std::u16string_view path, std::u16string_view account, uint32_t mask) {
  uid_t person = 0;
  if (!LookUpAccount(account, &person)) return false;
  const std::string file = ToUtf8(path);
  struct stat info;
  if (stat(file.c_str(), &info) != 0) {
    DebugLog("GetFileSecurity() failed. Error %d\n", errno);
    return false;
  }
  const bool folder = S_ISDIR(info.st_mode);
  const uint32_t perms = PermsOf(mask, folder);
  ScopedAcl access(ReadAcl(file, ACL_TYPE_ACCESS));
  if (access.Get() == nullptr) return false;
  ScopedAcl newAccess(WithPerson(access.Get(), ACL_TYPE_ACCESS, info, person, perms));
  if (newAccess.Get() == nullptr) return false;
  if (!folder) return WriteAcl(file, ACL_TYPE_ACCESS, newAccess.Get());

  ScopedAcl defaults(ReadAcl(file, ACL_TYPE_DEFAULT));
  if (defaults.Get() == nullptr) return false;
  ScopedAcl newDefaults(WithPerson(defaults.Get(), ACL_TYPE_DEFAULT, info, person, perms));
  if (newDefaults.Get() == nullptr || !WriteAcl(file, ACL_TYPE_DEFAULT, newDefaults.Get())) return false;
  if (WriteAcl(file, ACL_TYPE_ACCESS, newAccess.Get())) return true;
  RestoreDefaults(file, defaults.Get());
  return false;
}

}  // namespace corvane
