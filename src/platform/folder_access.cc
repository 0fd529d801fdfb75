#include "platform/folder_access.h"

#include <acl/libacl.h>
#include <grp.h>
#include <sys/acl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <string>
#include <vector>

#include "common/debug_log.h"
#include "common/text_util.h"
#include "common/utf.h"

namespace corvane {
namespace {

// The most that a group's entry in the group database may take; a group
// with more members than that is not looked up.
constexpr size_t kMaxGroupBuffer = 1 << 20;

// The generic rights of an access mask, as POSIX permission bits.
constexpr uint32_t kGenericRead = 0x80000000;
constexpr uint32_t kGenericWrite = 0x40000000;
constexpr uint32_t kGenericExecute = 0x20000000;

// Owns one acl_t.
class ScopedAcl {
 public:
  explicit ScopedAcl(acl_t acl) : m_acl(acl) {}
  ~ScopedAcl() {
    if (m_acl != nullptr) acl_free(m_acl);
  }
  ScopedAcl(const ScopedAcl&) = delete;
  ScopedAcl& operator=(const ScopedAcl&) = delete;
  acl_t Get() const { return m_acl; }
  acl_t* Put() { return &m_acl; }
  // Hands the list to the caller, who frees it.
  acl_t Release() {
    acl_t acl = m_acl;
    m_acl = nullptr;
    return acl;
  }

 private:
  acl_t m_acl;
};

bool WantsAll(uint32_t mask) { return (mask & kGenericAll) != 0; }

// The permissions that the entry for the group gets.
bool SetPermissions(acl_entry_t entry, uint32_t mask) {
  acl_permset_t permset = nullptr;
  if (acl_get_permset(entry, &permset) != 0 || acl_clear_perms(permset) != 0) return false;
  bool ok = true;
  if (WantsAll(mask) || (mask & kGenericRead) != 0) ok = ok && acl_add_perm(permset, ACL_READ) == 0;
  if (WantsAll(mask) || (mask & kGenericWrite) != 0) ok = ok && acl_add_perm(permset, ACL_WRITE) == 0;
  if (WantsAll(mask) || (mask & kGenericExecute) != 0) ok = ok && acl_add_perm(permset, ACL_EXECUTE) == 0;
  return ok && acl_set_permset(entry, permset) == 0;
}

// The entry of the named group, or null when the list has none.
acl_entry_t FindGroupEntry(acl_t acl, gid_t gid) {
  acl_entry_t entry = nullptr;
  for (int which = ACL_FIRST_ENTRY; acl_get_entry(acl, which, &entry) == 1; which = ACL_NEXT_ENTRY) {
    acl_tag_t tag;
    if (acl_get_tag_type(entry, &tag) != 0 || tag != ACL_GROUP) continue;
    void* qualifier = acl_get_qualifier(entry);
    if (qualifier == nullptr) continue;
    const bool same = *static_cast<gid_t*>(qualifier) == gid;
    acl_free(qualifier);
    if (same) return entry;
  }
  return nullptr;
}

// Gives the group its entry (a former entry of the group is replaced, all
// others stay) and recomputes the mask entry.
bool GrantGroup(acl_t* acl, gid_t gid, uint32_t mask) {
  acl_entry_t entry = FindGroupEntry(*acl, gid);
  if (entry == nullptr) {
    if (acl_create_entry(acl, &entry) != 0 || acl_set_tag_type(entry, ACL_GROUP) != 0 ||
        acl_set_qualifier(entry, &gid) != 0) {
      return false;
    }
  }
  return SetPermissions(entry, mask) && acl_calc_mask(acl) == 0 && acl_valid(*acl) == 0;
}

bool WriteAcl(const std::string& path, acl_type_t type, acl_t acl) {
  if (acl_set_file(path.c_str(), type, acl) == 0) return true;
  DebugLog("SetFileSecurity() failed. Error %d\n", errno);
  return false;
}

// A list of the file; null with a debug line when it can't be read
// (ENOTSUP: the file system keeps no access lists).
acl_t ReadAcl(const std::string& path, acl_type_t type) {
  acl_t acl = acl_get_file(path.c_str(), type);
  if (acl == nullptr) DebugLog("GetFileSecurity() failed. Error %d\n", errno);
  return acl;
}

// A copy of the list with the group's entry added; a default list that is
// empty starts from the base entries of the folder's mode. Null with a
// debug line when it can't be made.
acl_t WithGroup(acl_t acl, acl_type_t type, mode_t mode, gid_t gid, uint32_t mask) {
  const bool fromMode = type == ACL_TYPE_DEFAULT && acl_entries(acl) <= 0;
  ScopedAcl granted(fromMode ? acl_from_mode(mode) : acl_dup(acl));
  if (granted.Get() == nullptr || !GrantGroup(granted.Put(), gid, mask)) {
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

// The id of the group named by the account ("Users" is the group "users").
bool LookUpGroup(std::u16string_view account, gid_t* lpGid) {
  const std::string groupName = ToUtf8(AsciiLowerCopy(account));
  long size = sysconf(_SC_GETGR_R_SIZE_MAX);
  std::vector<char> buffer(size > 0 ? static_cast<size_t>(size) : 1024);
  struct group entry;
  struct group* found = nullptr;
  int rc = 0;
  while ((rc = getgrnam_r(groupName.c_str(), &entry, buffer.data(), buffer.size(), &found)) == ERANGE &&
         buffer.size() < kMaxGroupBuffer) {
    buffer.resize(buffer.size() * 2);
  }
  if (rc != 0 || found == nullptr) {
    DebugLog("LookupAccountName() failed. ErrorCode:%08X\r\n", static_cast<unsigned>(rc));
    return false;
  }
  *lpGid = found->gr_gid;
  return true;
}

}  // namespace

// Both lists are worked out before anything is written. On a folder the
// default list goes first and the access list last; if the access list
// can't be written, the default list is put back, so that a failure leaves
// the object as it was.
bool GrantFolderAccess(std::u16string_view path, std::u16string_view account, uint32_t mask) {
  gid_t gid = 0;
  if (!LookUpGroup(account, &gid)) return false;
  const std::string file = ToUtf8(path);
  struct stat info;
  if (stat(file.c_str(), &info) != 0) {
    DebugLog("GetFileSecurity() failed. Error %d\n", errno);
    return false;
  }
  ScopedAcl access(ReadAcl(file, ACL_TYPE_ACCESS));
  if (access.Get() == nullptr) return false;
  ScopedAcl newAccess(WithGroup(access.Get(), ACL_TYPE_ACCESS, info.st_mode, gid, mask));
  if (newAccess.Get() == nullptr) return false;
  if (!S_ISDIR(info.st_mode)) return WriteAcl(file, ACL_TYPE_ACCESS, newAccess.Get());

  ScopedAcl defaults(ReadAcl(file, ACL_TYPE_DEFAULT));
  if (defaults.Get() == nullptr) return false;
  ScopedAcl newDefaults(WithGroup(defaults.Get(), ACL_TYPE_DEFAULT, info.st_mode, gid, mask));
  if (newDefaults.Get() == nullptr || !WriteAcl(file, ACL_TYPE_DEFAULT, newDefaults.Get())) return false;
  if (WriteAcl(file, ACL_TYPE_ACCESS, newAccess.Get())) return true;
  RestoreDefaults(file, defaults.Get());
  return false;
}

}  // namespace corvane
