// Rights on the data folder: the person's entry (a named account, or the
// owner of the data folder's parent for "Users"), its default twin on
// folders, the shared group's entry of earlier versions gone, and the
// narrowing of a folder that other accounts could read.

#include "platform/folder_access.h"

#include <acl/libacl.h>
#include <gtest/gtest.h>
#include <pwd.h>
#include <sys/acl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <fstream>
#include <string>

#include "common/utf.h"
#include "platform/data_folder_rights.h"
#include "support/test_host.h"

namespace corvane {
namespace {

// The list in text form, one entry a line ("user:nobody:rwx").
std::string AclText(const std::string& path, acl_type_t type = ACL_TYPE_ACCESS) {
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
    if (getpwnam("nobody") == nullptr) GTEST_SKIP() << "this machine has no user named nobody";
    m_folder = m_dir.File("CorvaneApp");
    std::filesystem::create_directory(m_folder);
  }

  void SetAcl(const std::string& path, const char* text, acl_type_t type = ACL_TYPE_ACCESS) {
    acl_t acl = acl_from_text(text);
    ASSERT_NE(acl, nullptr);
    ASSERT_EQ(acl_set_file(path.c_str(), type, acl), 0);
    acl_free(acl);
  }

  static bool Grant(const std::string& path, std::u16string_view account = kUsersAccount) {
    return GrantFolderAccess(std::u16string(path.begin(), path.end()), account, kGenericAll);
  }

  test::TempDir m_dir;
  std::string m_folder;
};

// Other entries stay; the person's is replaced, not doubled; the shared
// group's goes. A folder's new default list starts from the owner alone.
TEST_F(FolderAccessTest, NamedPersonGetsAccessAndDefaultEntriesOnce) {
  SetAcl(m_folder, "u::rwx,g::r-x,o::---,g:root:r--,u:nobody:r--,g:users:rwx,m::rwx");
  ASSERT_TRUE(Grant(m_folder, u"nobody"));
  const std::string access = AclText(m_folder), defaults = AclText(m_folder, ACL_TYPE_DEFAULT);
  for (const char* entry : {"user:nobody:rwx", "group:root:r--", "mask::rwx", "user::rwx"}) {
    EXPECT_TRUE(Has(access, entry)) << entry << " in" << access;
  }
  EXPECT_EQ(access.find("group:users"), std::string::npos) << access;
  for (const char* entry : {"user:nobody:rwx", "group::---", "other::---"}) {
    EXPECT_TRUE(Has(defaults, entry)) << entry << " in" << defaults;
  }
  ASSERT_TRUE(Grant(m_folder, u"nobody"));
  EXPECT_EQ(AclText(m_folder) + AclText(m_folder, ACL_TYPE_DEFAULT), access + defaults);
  // A file made in the folder inherits the entry; a file gets no execute.
  std::ofstream(m_folder + "/CorvaneAppDB.db") << "x";
  EXPECT_NE(AclText(m_folder + "/CorvaneAppDB.db").find("user:nobody:"), std::string::npos);
  ASSERT_TRUE(Grant(m_folder + "/CorvaneAppDB.db", u"nobody"));
  EXPECT_TRUE(Has(AclText(m_folder + "/CorvaneAppDB.db"), "user:nobody:rw-"));
}

}  // namespace
}  // namespace corvane
