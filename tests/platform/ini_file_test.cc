#include "platform/ini_file.h"

#include <acl/libacl.h>
#include <gtest/gtest.h>
#include <sys/acl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <memory>
#include <sstream>

#include "common/utf.h"
#include "support/test_host.h"

namespace corvane {
namespace {

// Owns what the ACL library hands out.
using AclPtr = std::unique_ptr<void, int (*)(void*)>;

class IniFileTest : public ::testing::Test {
 protected:
  std::string File() const { return m_dir.File("state.ini"); }
  std::u16string Path() const { return FromUtf8(File()); }
  std::string Content() const {
    std::stringstream text;
    text << std::ifstream(File()).rdbuf();
    return text.str();
  }
  void WriteRaw(const std::string& content) const { std::ofstream(File(), std::ios::binary) << content; }
  std::u16string Read(std::u16string_view key, std::u16string_view section = u"DBConfig") const {
    return ReadProfileString(Path(), section, key, u"<absent>", 260);
  }
  // Sets the key in [DBConfig]; a null value deletes it.
  bool Write(std::u16string_view key, const char16_t* value) const {
    const std::u16string text = value != nullptr ? value : u"";
    return WriteProfileString(Path(), u"DBConfig", key, value != nullptr ? &text : nullptr);
  }
  // The entries of a folder, so that a test sees no temporary file is left.
  static auto Entries(const std::string& folder) {
    return std::distance(std::filesystem::directory_iterator(folder), std::filesystem::directory_iterator());
  }
  test::TempDir m_dir;
};

// Sets the process umask for the length of a scope.
struct ScopedUmask {
  explicit ScopedUmask(mode_t mask) : old(umask(mask)) {}
  ~ScopedUmask() { umask(old); }
  mode_t old;
};

// Runs the check without the rights of root, which reads any file: in a
// child process under the id of nobody when this process is root. The
// check's result is the child's exit status.
bool RunUnprivileged(const std::function<bool()>& check) {
  if (geteuid() != 0) return check();
  pid_t child = fork();
  if (child == 0) _exit(setgid(65534) == 0 && setuid(65534) == 0 && check() ? 0 : 1);
  int status = 0;
  return child > 0 && waitpid(child, &status, 0) == child && WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

// Like a buffer of 260 characters: 259 and the terminator; a zero ends it.
TEST_F(IniFileTest, ValueIsCutAt259CharactersAndAtTheFirstZero) {
  std::u16string longValue(300, u'x');
  ASSERT_TRUE(Write(u"Long", longValue.c_str()));
  EXPECT_EQ(Read(u"Long"), std::u16string(259, u'x'));
  WriteRaw(std::string("[DBConfig]\nLastUpdate=ab\0cd\nQuoted=\"x\0y\"\n", 40));
  EXPECT_EQ(Read(u"LastUpdate"), u"ab");
  EXPECT_EQ(Read(u"Quoted"), u"x");
  EXPECT_EQ(ReadProfileString(Path(), u"DBConfig", u"Missing", std::u16string(u"d\0e", 3), 260), u"d");
}

TEST_F(IniFileTest, GarbageLinesAreKeptAndOtherKeysStillRead) {
  WriteRaw("\x01\x02 garbage\n[Other]\nLastUpdate=wrong section\n[ dbconfig ]\nno equals sign here\n"
           "  LastUpdate =  \"x y\"  \n=empty key\n; Note=a comment\nH2=7\n");
  EXPECT_EQ(Read(u"LastUpdate") + Read(u"; Note"), u"x y<absent>");
  EXPECT_EQ(Read(u"H2"), u"7");
  ASSERT_TRUE(Write(u"H2", u"8"));
  EXPECT_EQ(Read(u"H2"), u"8");
  EXPECT_NE(Content().find("no equals sign here"), std::string::npos);
  EXPECT_EQ(Read(u"LastUpdate", u"Other"), u"wrong section");
}

// A file that is there but can't be read was taken for an empty one, and the
// write replaced it with a file that held the new key alone.
TEST_F(IniFileTest, WriteRefusesAFileThatCannotBeRead) {
  const std::string content = "[DBConfig]\nLastUpdate=2024.03.05 2 09:07:03.041\nH2=7\n";
  WriteRaw(content);
  ASSERT_EQ(chmod(m_dir.Path().c_str(), 0777), 0);
  ASSERT_EQ(chmod(File().c_str(), 0), 0);
  EXPECT_TRUE(RunUnprivileged([this] { return !Write(u"H2", u"8") && !Write(u"H2", nullptr); }));
  ASSERT_EQ(chmod(File().c_str(), 0600), 0);
  EXPECT_EQ(Content(), content);
  EXPECT_EQ(Entries(m_dir.Path()), 1);
  // A link that leads nowhere readable is refused the same way.
  std::filesystem::remove(File());
  std::filesystem::create_symlink("state.ini", File());
  EXPECT_FALSE(Write(u"H2", u"8"));
  EXPECT_TRUE(std::filesystem::is_symlink(File()));
}

// In a folder with a default ACL the umask plays no part and the new file's
// ACL mask comes from the default one. A temporary file made for its owner
// alone and widened by chmod afterwards got a mask narrowed to the umask.
TEST_F(IniFileTest, NewFileInAFolderWithADefaultAclKeepsTheInheritedMask) {
  const std::string folder = m_dir.File("shared"), file = folder + "/state.ini";
  std::filesystem::create_directory(folder);
  const AclPtr defaults(acl_from_text("u::rwx,g::r-x,g:root:rwx,m::rwx,o::---"), acl_free);
  ASSERT_NE(defaults, nullptr);
  const int set = acl_set_file(folder.c_str(), ACL_TYPE_DEFAULT, static_cast<acl_t>(defaults.get()));
  if (set != 0 && errno == ENOTSUP) GTEST_SKIP() << "the temporary folder's file system has no ACL support";
  ASSERT_EQ(set, 0);
  ScopedUmask mask(022);
  const std::u16string value = u"1";
  ASSERT_TRUE(WriteProfileString(FromUtf8(file), u"DBConfig", u"A", &value));
  const AclPtr acl(acl_get_file(file.c_str(), ACL_TYPE_ACCESS), acl_free);
  ASSERT_NE(acl, nullptr);
  const AclPtr text(acl_to_text(static_cast<acl_t>(acl.get()), nullptr), acl_free);
  const std::string access = text != nullptr ? static_cast<const char*>(text.get()) : "";
  for (const char* entry : {"group:root:rwx", "mask::rw-", "other::---"}) {
    EXPECT_NE(access.find(entry), std::string::npos) << access;
  }
  EXPECT_EQ(Entries(folder), 1);
}

}  // namespace
}  // namespace corvane
