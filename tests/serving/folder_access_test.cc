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
#include <sstream>
#include <string>

#include "support/test_host.h"

namespace corvane {
namespace {

std::string AclText(const std::string& path, acl_type_t type) {
  acl_t acl = acl_get_file(path.c_str(), type);
  if (acl == nullptr) return "<error>";
  char* text = acl_to_text(acl, nullptr);
  std::string out = text != nullptr ? text : "";
  acl_free(text);
  acl_free(acl);
  return out;
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

  test::TempDir m_dir;
  std::string m_folder;
};

TEST_F(FolderAccessTest, FolderGetsAccessAndDefaultEntries) {
  // An entry of another group stands before and after.
  acl_t start = acl_from_text("u::rwx,g::r-x,o::---,g:root:r--,m::r-x");
  ASSERT_NE(start, nullptr);
  ASSERT_EQ(acl_set_file(m_folder.c_str(), ACL_TYPE_ACCESS, start), 0);
  acl_free(start);

  ASSERT_TRUE(GrantFolderAccess(std::u16string(m_folder.begin(), m_folder.end()), kUsersAccount, kGenericAll));
  const std::string access = AclText(m_folder, ACL_TYPE_ACCESS);
  EXPECT_NE(access.find("group:users:rwx"), std::string::npos) << access;
  EXPECT_NE(access.find("group:root:r--"), std::string::npos) << access;
  EXPECT_NE(access.find("mask::rwx"), std::string::npos) << access;
  EXPECT_NE(access.find("user::rwx"), std::string::npos) << access;
  const std::string defaults = AclText(m_folder, ACL_TYPE_DEFAULT);
  EXPECT_NE(defaults.find("group:users:rwx"), std::string::npos) << defaults;
  EXPECT_NE(defaults.find("user::rwx"), std::string::npos) << defaults;

  // A second call changes nothing.
  ASSERT_TRUE(GrantFolderAccess(std::u16string(m_folder.begin(), m_folder.end()), kUsersAccount, kGenericAll));
  EXPECT_EQ(AclText(m_folder, ACL_TYPE_ACCESS), access);
  EXPECT_EQ(AclText(m_folder, ACL_TYPE_DEFAULT), defaults);

  // A file made in the folder inherits the entry.
  const std::string file = m_folder + "/CorvaneAppDB.db";
  std::ofstream(file) << "x";
  EXPECT_NE(AclText(file, ACL_TYPE_ACCESS).find("group:users:"), std::string::npos);
}

TEST_F(FolderAccessTest, ExistingDefaultEntriesStay) {
  acl_t start = acl_from_text("u::rwx,g::r-x,o::---,g:root:r-x,u:root:rw-,m::rwx");
  ASSERT_NE(start, nullptr);
  ASSERT_EQ(acl_set_file(m_folder.c_str(), ACL_TYPE_DEFAULT, start), 0);
  acl_free(start);

  ASSERT_TRUE(GrantFolderAccess(std::u16string(m_folder.begin(), m_folder.end()), kUsersAccount, kGenericAll));
  const std::string defaults = AclText(m_folder, ACL_TYPE_DEFAULT);
  EXPECT_NE(defaults.find("group:users:rwx"), std::string::npos) << defaults;
  EXPECT_NE(defaults.find("group:root:r-x"), std::string::npos) << defaults;
  EXPECT_NE(defaults.find("user:root:rw-"), std::string::npos) << defaults;
  EXPECT_NE(defaults.find("other::---"), std::string::npos) << defaults;
  // The access list got its entry too, and kept its own base entries.
  const std::string access = AclText(m_folder, ACL_TYPE_ACCESS);
  EXPECT_NE(access.find("group:users:rwx"), std::string::npos) << access;
  EXPECT_EQ(access.find("group:root:"), std::string::npos) << access;
}

TEST_F(FolderAccessTest, ExistingEntryOfTheGroupIsReplacedNotDoubled) {
  acl_t start = acl_from_text("u::rwx,g::r-x,o::---,g:users:r--,m::r-x");
  ASSERT_EQ(acl_set_file(m_folder.c_str(), ACL_TYPE_ACCESS, start), 0);
  acl_free(start);
  ASSERT_TRUE(GrantFolderAccess(std::u16string(m_folder.begin(), m_folder.end()), u"USERS", kGenericAll));
  const std::string access = AclText(m_folder, ACL_TYPE_ACCESS);
  EXPECT_NE(access.find("group:users:rwx"), std::string::npos) << access;
  EXPECT_EQ(access.find("group:users:r--"), std::string::npos) << access;
}

TEST_F(FolderAccessTest, FileGetsNoDefaultList) {
  const std::string file = m_dir.File("plain.db");
  std::ofstream(file) << "x";
  ASSERT_TRUE(GrantFolderAccess(std::u16string(file.begin(), file.end()), kUsersAccount, kGenericAll));
  EXPECT_NE(AclText(file, ACL_TYPE_ACCESS).find("group:users:rwx"), std::string::npos);
}

TEST_F(FolderAccessTest, UnknownGroupLogsAndFails) {
  const std::string log = m_dir.File("debug.log");
  test::ScopedEnv debug("CORVANE_DEBUG", log.c_str());
  const std::string before = AclText(m_folder, ACL_TYPE_ACCESS);
  EXPECT_FALSE(GrantFolderAccess(std::u16string(m_folder.begin(), m_folder.end()), u"NoSuchGroupQz", kGenericAll));
  EXPECT_EQ(AclText(m_folder, ACL_TYPE_ACCESS), before);
  std::stringstream text;
  text << std::ifstream(log).rdbuf();
  EXPECT_NE(text.str().find("LookupAccountName() failed."), std::string::npos);
}

TEST_F(FolderAccessTest, MissingPathFails) {
  EXPECT_FALSE(GrantFolderAccess(u"/nonexistent/CorvaneApp", kUsersAccount, kGenericAll));
}

}  // namespace
}  // namespace corvane
