#include "platform/folder_access.h"

#include <acl/libacl.h>
#include <grp.h>
#include <sys/acl.h>
#include <sys/stat.h>

#include <cerrno>
#include <string>

#include "common/debug_log.h"
#include "common/text_util.h"
#include "common/utf.h"

namespace corvane {
namespace {

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
  void Reset(acl_t acl) {
    if (m_acl != nullptr) acl_free(m_acl);
    m_acl = acl;
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

// The default list of a folder, so that files made in it inherit the entry.
// A folder without one starts from the base entries of its mode.
bool GrantDefault(const std::string& path, mode_t mode, gid_t gid, uint32_t mask) {
  ScopedAcl defaults(acl_get_file(path.c_str(), ACL_TYPE_DEFAULT));
  if (defaults.Get() == nullptr) {
    DebugLog("GetFileSecurity() failed. Error %d\n", errno);
    return false;
  }
  if (acl_entries(defaults.Get()) <= 0) defaults.Reset(acl_from_mode(mode));
  if (defaults.Get() == nullptr || !GrantGroup(defaults.Put(), gid, mask)) {
    DebugLog("AddAccessAllowedAceEx() failed. Error %d\n", errno);
    return false;
  }
  return WriteAcl(path, ACL_TYPE_DEFAULT, defaults.Get());
}

}  // namespace

bool GrantFolderAccess(std::u16string_view path, std::u16string_view account, uint32_t mask) {
  // Accounts are groups here: "Users" is the group "users".
  const std::string groupName = ToUtf8(AsciiLowerCopy(account));
  const struct group* group = getgrnam(groupName.c_str());
  if (group == nullptr) {
    DebugLog("LookupAccountName() failed. ErrorCode:%08X\r\n", static_cast<unsigned>(errno));
    return false;
  }
  const gid_t gid = group->gr_gid;
  const std::string file = ToUtf8(path);
  struct stat info;
  ScopedAcl access(stat(file.c_str(), &info) == 0 ? acl_get_file(file.c_str(), ACL_TYPE_ACCESS) : nullptr);
  if (access.Get() == nullptr) {
    // ENOTSUP: the file system keeps no access lists.
    DebugLog("GetFileSecurity() failed. Error %d\n", errno);
    return false;
  }
  if (!GrantGroup(access.Put(), gid, mask)) {
    DebugLog("AddAccessAllowedAceEx() failed. Error %d\n", errno);
    return false;
  }
  if (!WriteAcl(file, ACL_TYPE_ACCESS, access.Get())) return false;
  if (S_ISDIR(info.st_mode)) return GrantDefault(file, info.st_mode, gid, mask);
  return true;
}

}  // namespace corvane
