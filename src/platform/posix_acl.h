// posix_acl.h: small owners and edits of POSIX access lists (libacl), shared
// by the grant of the person's entry and by the narrowing of the data folder.
//
// Every function reports failure as false or null and leaves errno as the
// failing call set it; callers write the debug line.

#ifndef CORVANE_PLATFORM_POSIX_ACL_H_
#define CORVANE_PLATFORM_POSIX_ACL_H_

#include <sys/acl.h>
#include <sys/types.h>

#include <cstdint>

namespace corvane {

// Owns one acl_t.
class ScopedAcl {
 public:
  explicit ScopedAcl(acl_t acl = nullptr) : m_acl(acl) {}
  ~ScopedAcl();
  ScopedAcl(const ScopedAcl&) = delete;
  ScopedAcl& operator=(const ScopedAcl&) = delete;
  acl_t Get() const { return m_acl; }
  acl_t* Put() { return &m_acl; }
  // Hands the list to the caller, who frees it.
  acl_t Release();

 private:
  acl_t m_acl;
};

// The entry of a named user (ACL_USER) or group (ACL_GROUP) with that id;
// null when the list has none.
acl_entry_t FindNamedEntry(acl_t acl, acl_tag_t tag, id_t id);

// The permission bits (4 read, 2 write, 1 execute) of an entry.
uint32_t EntryPerms(acl_entry_t entry);
bool SetEntryPerms(acl_entry_t entry, uint32_t perms);

// Adds or replaces the named entry with the given permissions.
bool PutNamedEntry(acl_t* acl, acl_tag_t tag, id_t id, uint32_t perms);

// Removes the named entry when there is one; true when one was removed.
bool DropNamedEntry(acl_t acl, acl_tag_t tag, id_t id);

// Recomputes the mask entry where named entries need one, drops it where
// none does, and checks the list; false when it is no valid list.
bool FinishAcl(acl_t* acl);

// The group "users" that earlier versions gave an entry; false when the
// machine has no such group.
bool SharedUsersGroup(gid_t* lpGid);

}  // namespace corvane

#endif  // CORVANE_PLATFORM_POSIX_ACL_H_
