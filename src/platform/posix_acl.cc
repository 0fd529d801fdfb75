#include "platform/posix_acl.h"

#include <acl/libacl.h>
#include <grp.h>
#include <unistd.h>

#include <cerrno>
#include <vector>

namespace corvane {
namespace {

// The most that a group's entry in the group database may take; a group
// with more members than that is not looked up.
constexpr size_t kMaxGroupBuffer = 1 << 20;

}  // namespace

ScopedAcl::~ScopedAcl() {
  if (m_acl != nullptr) acl_free(m_acl);
}

acl_t ScopedAcl::Release() {
  acl_t acl = m_acl;
  m_acl = nullptr;
  return acl;
}

acl_entry_t FindNamedEntry(acl_t acl, acl_tag_t tag, id_t id) {
  acl_entry_t entry = nullptr;
  for (int which = ACL_FIRST_ENTRY; acl_get_entry(acl, which, &entry) == 1; which = ACL_NEXT_ENTRY) {
    acl_tag_t entryTag;
    if (acl_get_tag_type(entry, &entryTag) != 0 || entryTag != tag) continue;
    void* qualifier = acl_get_qualifier(entry);
    if (qualifier == nullptr) continue;
    const bool same = *static_cast<id_t*>(qualifier) == id;
    acl_free(qualifier);
    if (same) return entry;
  }
  return nullptr;
}

uint32_t EntryPerms(acl_entry_t entry) {
  acl_permset_t permset = nullptr;
  if (acl_get_permset(entry, &permset) != 0) return 0;
  return (acl_get_perm(permset, ACL_READ) == 1 ? 4u : 0u) | (acl_get_perm(permset, ACL_WRITE) == 1 ? 2u : 0u) |
         (acl_get_perm(permset, ACL_EXECUTE) == 1 ? 1u : 0u);
}

bool SetEntryPerms(acl_entry_t entry, uint32_t perms) {
  acl_permset_t permset = nullptr;
  if (acl_get_permset(entry, &permset) != 0 || acl_clear_perms(permset) != 0) return false;
  bool ok = true;
  if ((perms & 4) != 0) ok = ok && acl_add_perm(permset, ACL_READ) == 0;
  if ((perms & 2) != 0) ok = ok && acl_add_perm(permset, ACL_WRITE) == 0;
  if ((perms & 1) != 0) ok = ok && acl_add_perm(permset, ACL_EXECUTE) == 0;
  return ok && acl_set_permset(entry, permset) == 0;
}

bool PutNamedEntry(acl_t* acl, acl_tag_t tag, id_t id, uint32_t perms) {
  acl_entry_t entry = FindNamedEntry(*acl, tag, id);
  if (entry == nullptr &&
      (acl_create_entry(acl, &entry) != 0 || acl_set_tag_type(entry, tag) != 0 || acl_set_qualifier(entry, &id) != 0)) {
    return false;
  }
  return SetEntryPerms(entry, perms);
}

bool DropNamedEntry(acl_t acl, acl_tag_t tag, id_t id) {
  acl_entry_t entry = FindNamedEntry(acl, tag, id);
  return entry != nullptr && acl_delete_entry(acl, entry) == 0;
}

// A mask entry is needed only beside named entries; one left without them
// would show as an extended list ("+") that adds nothing.
bool FinishAcl(acl_t* acl) {
  bool named = false;
  acl_entry_t mask = nullptr;
  acl_entry_t entry = nullptr;
  for (int which = ACL_FIRST_ENTRY; acl_get_entry(*acl, which, &entry) == 1; which = ACL_NEXT_ENTRY) {
    acl_tag_t tag;
    if (acl_get_tag_type(entry, &tag) != 0) continue;
    if (tag == ACL_USER || tag == ACL_GROUP) named = true;
    if (tag == ACL_MASK) mask = entry;
  }
  if (named) {
    if (acl_calc_mask(acl) != 0) return false;
  } else if (mask != nullptr && acl_delete_entry(*acl, mask) != 0) {
    return false;
  }
  return acl_valid(*acl) == 0;
}

bool SharedUsersGroup(gid_t* lpGid) {
  long size = sysconf(_SC_GETGR_R_SIZE_MAX);
  std::vector<char> buffer(size > 0 ? static_cast<size_t>(size) : 1024);
  struct group entry;
  struct group* found = nullptr;
  int rc = 0;
  while ((rc = getgrnam_r("users", &entry, buffer.data(), buffer.size(), &found)) == ERANGE &&
         buffer.size() < kMaxGroupBuffer) {
    buffer.resize(buffer.size() * 2);
  }
  if (rc != 0 || found == nullptr) return false;
  *lpGid = found->gr_gid;
  return true;
}

}  // namespace corvane
