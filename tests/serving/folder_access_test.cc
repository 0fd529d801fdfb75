// Folder rights on POSIX access lists: the entry for the group named by the
// account, its default twin on folders, and what stays untouched.

#include "platform/folder_access.h"

#include <acl/libacl.h>
#include <gtest/gtest.h>
#include <grp.h>
#include <sys/acl.h>

#include <cerrno>
#include <filesystem>
#include <fstream>
#include <string>

#include "support/test_host.h"

namespace corvane {
namespace {

// The list in text form, one entry a line ("group:users:rwx").
std::string AclText(const std::string& path, acl_type_t type) {
  acl_t acl = acl_get_file(path.c_str(), type);
  if (acl == nullptr) return "<error>";
  char* text = acl_to_text(acl, nullptr);
  std::string out = text != nullptr ? "\n" + std::string(text) : "";
  acl_free(text);
  acl_free(acl);
  return out;
}

bool Has(const std::string& aclText, const std::string& entry) {
  return aclText.find("\n" + entry + "\n") != std::string::npos;
}

class FolderAccessTest : public ::testing::Test {
 protected:
  void SetUp() override {
    acl_t probe = acl_get_file(m_dir.Path().c_str(), ACL_TYPE_ACCESS);
    if (probe == nullptr && errno == ENOTSUP) GTEST_SKIP() << "the temporary folder's file system has no ACL support";
    if (probe != nullptr) acl_free(probe);
    if (getgrnam("users") == nullptr) GTEST_SKIP() << "this machine has no group named users";
    m_folder = m_dir.File("CorvaneApp");
    std::filesystem::create_directory(m_folder);
  }

  void SetAcl(acl_type_t type, const char* text) {
    acl_t acl = acl_from_text(text);
    ASSERT_NE(acl, nullptr);
    ASSERT_EQ(acl_set_file(m_folder.c_str(), type, acl), 0);
    acl_free(acl);
  }

  static bool Grant(const std::string& path, std::u16string_view account = kUsersAccount) {
    return GrantFolderAccess(std::u16string(path.begin(), path.end()), account, kGenericAll);
  }

  test::TempDir m_dir;
  std::string m_folder;
};

// An entry of another group stands before and after; one of the group is
// replaced, not doubled, whatever the case of the account's name.
TEST_F(FolderAccessTest, FolderGetsAccessAndDefaultEntries) {
  SetAcl(ACL_TYPE_ACCESS, "u::rwx,g::r-x,o::---,g:root:r--,g:users:r--,m::r-x");
  ASSERT_TRUE(Grant(m_folder, u"USERS"));
  const std::string access = AclText(m_folder, ACL_TYPE_ACCESS), defaults = AclText(m_folder, ACL_TYPE_DEFAULT);
  for (const char* entry : {"group:users:rwx", "group:root:r--", "mask::rwx", "user::rwx"}) {
    EXPECT_TRUE(Has(access, entry)) << entry << " in" << access;
  }
  EXPECT_FALSE(Has(access, "group:users:r--")) << access;
  EXPECT_TRUE(Has(defaults, "group:users:rwx") && Has(defaults, "user::rwx")) << defaults;

  // A second call changes nothing.
  ASSERT_TRUE(Grant(m_folder));
  EXPECT_EQ(AclText(m_folder, ACL_TYPE_ACCESS), access);
  EXPECT_EQ(AclText(m_folder, ACL_TYPE_DEFAULT), defaults);
  // A file made in the folder inherits the entry; a file by itself gets it.
  std::ofstream(m_folder + "/CorvaneAppDB.db") << "x";
  EXPECT_NE(AclText(m_folder + "/CorvaneAppDB.db", ACL_TYPE_ACCESS).find("group:users:"), std::string::npos);
  std::ofstream(m_dir.File("plain.db")) << "x";
  ASSERT_TRUE(Grant(m_dir.File("plain.db")));
  EXPECT_TRUE(Has(AclText(m_dir.File("plain.db"), ACL_TYPE_ACCESS), "group:users:rwx"));
}

TEST_F(FolderAccessTest, ExistingDefaultEntriesStay) {
  SetAcl(ACL_TYPE_DEFAULT, "u::rwx,g::r-x,o::---,g:root:r-x,u:root:rw-,m::rwx");
  ASSERT_TRUE(Grant(m_folder));
  const std::string defaults = AclText(m_folder, ACL_TYPE_DEFAULT);
  for (const char* entry : {"group:users:rwx", "group:root:r-x", "user:root:rw-", "other::---"}) {
    EXPECT_TRUE(Has(defaults, entry)) << entry << " in" << defaults;
  }
  // The access list got its entry too, and kept its own base entries.
  const std::string access = AclText(m_folder, ACL_TYPE_ACCESS);
  EXPECT_TRUE(Has(access, "group:users:rwx")) << access;
  EXPECT_EQ(access.find("group:root:"), std::string::npos) << access;
}

TEST_F(FolderAccessTest, UnknownGroupOrMissingPathFails) {
  const std::string log = m_dir.File("debug.log");
  test::ScopedEnv debug("CORVANE_DEBUG", log.c_str());
  const std::string before = AclText(m_folder, ACL_TYPE_ACCESS);
  EXPECT_FALSE(Grant(m_folder, u"NoSuchGroupQz"));
  EXPECT_EQ(AclText(m_folder, ACL_TYPE_ACCESS), before);
  std::ifstream in(log);
  EXPECT_NE(std::string(std::istreambuf_iterator<char>(in), {}).find("LookupAccountName() failed."), std::string::npos);
  EXPECT_FALSE(Grant("/nonexistent/CorvaneApp"));
}

}  // namespace
}  // namespace corvane
