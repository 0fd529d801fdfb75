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
#include <sstream>

#include "common/utf.h"
#include "support/test_host.h"

namespace corvane {
namespace {

class IniFileTest : public ::testing::Test {
 protected:
  std::u16string Path() const { return FromUtf8(m_dir.File("state.ini")); }
  std::string Content() const {
    std::ifstream in(m_dir.File("state.ini"));
    std::stringstream text;
    text << in.rdbuf();
    return text.str();
  }
  std::u16string Read(std::u16string_view key) const { return ReadProfileString(Path(), u"DBConfig", key, u"", 260); }
  void WriteRaw(const std::string& content) const {
    std::ofstream(m_dir.File("state.ini"), std::ios::binary) << content;
  }
  // The names in the folder, so that a test sees no temporary file is left.
  std::vector<std::string> FolderNames(const std::string& folder) const {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(folder)) names.push_back(entry.path().filename());
    return names;
  }
  test::TempDir m_dir;
};

// Sets the process umask for the length of a scope.
class ScopedUmask {
 public:
  explicit ScopedUmask(mode_t mask) : m_old(umask(mask)) {}
  ~ScopedUmask() { umask(m_old); }
  ScopedUmask(const ScopedUmask&) = delete;
  ScopedUmask& operator=(const ScopedUmask&) = delete;

 private:
  mode_t m_old;
};

// Runs the check without the rights of root, which reads any file: in a
// child process under the id of nobody when this process is root. The
// check's result is the child's exit status.
bool RunUnprivileged(const std::function<bool()>& check) {
  if (geteuid() != 0) return check();
  pid_t child = fork();
  if (child == 0) {
    constexpr uid_t kNobody = 65534;
    bool ok = setgid(kNobody) == 0 && setuid(kNobody) == 0 && check();
    _exit(ok ? 0 : 1);
  }
  int status = 0;
  return child > 0 && waitpid(child, &status, 0) == child && WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

TEST_F(IniFileTest, MissingFileReadsDefaultsAndFirstWriteCreatesIt) {
  EXPECT_EQ(ReadProfileString(Path(), u"DBConfig", u"LastUpdate", u"fallback", 260), u"fallback");
  std::u16string value = u"2024.03.05 2 09:07:03.041";
  ASSERT_TRUE(WriteProfileString(Path(), u"DBConfig", u"LastUpdate", &value));
  EXPECT_EQ(Content(), "[DBConfig]\nLastUpdate=2024.03.05 2 09:07:03.041\n");
  EXPECT_EQ(Read(u"lastupdate"), value);
}

TEST_F(IniFileTest, NullValueDeletesOnlyThatKey) {
  std::u16string one = u"1", two = u"2";
  ASSERT_TRUE(WriteProfileString(Path(), u"DBConfig", u"A", &one));
  ASSERT_TRUE(WriteProfileString(Path(), u"DBConfig", u"B", &two));
  ASSERT_TRUE(WriteProfileString(Path(), u"DBConfig", u"A", nullptr));
  EXPECT_EQ(Read(u"A"), u"");
  EXPECT_EQ(Read(u"B"), u"2");
  EXPECT_TRUE(WriteProfileString(Path(), u"DBConfig", u"Missing", nullptr));
}

TEST_F(IniFileTest, ValuesReadBackCutToTheBuffer) {
  std::u16string longValue(300, u'x');
  ASSERT_TRUE(WriteProfileString(Path(), u"DBConfig", u"Long", &longValue));
  EXPECT_EQ(Read(u"Long"), std::u16string(259, u'x'));
}

TEST_F(IniFileTest, GarbageLinesAreKeptAndOtherKeysStillRead) {
  std::ofstream(m_dir.File("state.ini")) << "\x01\x02 garbage\n[Other]\nLastUpdate=wrong section\n"
                                         << "[ dbconfig ]\nno equals sign here\n  LastUpdate =  \"x y\"  \n=empty key\n"
                                         << "H2=7\n";
  EXPECT_EQ(Read(u"LastUpdate"), u"x y");
  EXPECT_EQ(Read(u"H2"), u"7");
  std::u16string eight = u"8";
  ASSERT_TRUE(WriteProfileString(Path(), u"DBConfig", u"H2", &eight));
  EXPECT_EQ(Read(u"H2"), u"8");
  EXPECT_NE(Content().find("no equals sign here"), std::string::npos);
  EXPECT_EQ(ReadProfileString(Path(), u"Other", u"LastUpdate", u"", 260), u"wrong section");
}

TEST_F(IniFileTest, LineBreaksInAValueCannotStartALine) {
  std::u16string hostile = u"a\n[DBConfig]\nLastUpdate=forged";
  ASSERT_TRUE(WriteProfileString(Path(), u"DBConfig", u"Name", &hostile));
  EXPECT_EQ(Read(u"LastUpdate"), u"");
}

TEST_F(IniFileTest, WriteIntoMissingFolderFailsAndLeavesNothing) {
  std::u16string path = FromUtf8(m_dir.File("no/such/folder/state.ini"));
  std::u16string value = u"1";
  EXPECT_FALSE(WriteProfileString(path, u"DBConfig", u"A", &value));
}

// ---- Files from elsewhere ----

TEST_F(IniFileTest, ValueEndsAtTheFirstZeroCharacter) {
  WriteRaw(std::string("[DBConfig]\nLastUpdate=ab\0cd\nQuoted=\"x\0y\"\n", 40));
  EXPECT_EQ(Read(u"LastUpdate"), u"ab");
  EXPECT_EQ(Read(u"Quoted"), u"x");
  EXPECT_EQ(ReadProfileString(Path(), u"DBConfig", u"Missing", std::u16string(u"d\0e", 3), 260), u"d");
}

TEST_F(IniFileTest, ByteOrderMarkAndEveryKindOfLineEndRead) {
  struct Case {
    const char* what;
    std::string content;
  };
  const Case cases[] = {
      {"mark, LF", "\xEF\xBB\xBF[DBConfig]\nA=1\nB=2\n"},
      {"mark, CRLF", "\xEF\xBB\xBF[DBConfig]\r\nA=1\r\nB=2\r\n"},
      {"CR only", "[DBConfig]\rA=1\rB=2\r"},
      {"mark, CR only, no last end", "\xEF\xBB\xBF[DBConfig]\rA=1\rB=2"},
      {"mixed", "[Other]\r\nA=9\r[DBConfig]\nA=1\r\n\rB=2"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    WriteRaw(c.content);
    EXPECT_EQ(Read(u"A"), u"1");
    EXPECT_EQ(Read(u"B"), u"2");
    // A write keeps every key, each on a line of its own.
    std::u16string three = u"3";
    ASSERT_TRUE(WriteProfileString(Path(), u"DBConfig", u"C", &three));
    EXPECT_EQ(Read(u"A"), u"1");
    EXPECT_EQ(Read(u"B"), u"2");
    EXPECT_EQ(Read(u"C"), u"3");
    EXPECT_EQ(ReadProfileString(Path(), u"Other", u"A", u"", 260), c.content.find("[Other]") == 0 ? u"9" : u"");
  }
}

// A damaged file may hold a key twice. Deleting it once left the second
// line, which a later read then took for the key.
TEST_F(IniFileTest, NullValueDeletesEveryLineOfTheKeyInTheSection) {
  WriteRaw("[DBConfig]\nA=1\nB=2\na = 3\n[Other]\nA=9\n[DBConfig]\nA=4\n");
  ASSERT_TRUE(WriteProfileString(Path(), u"DBConfig", u"A", nullptr));
  EXPECT_EQ(ReadProfileString(Path(), u"DBConfig", u"A", u"<absent>", 260), u"<absent>");
  EXPECT_EQ(Read(u"B"), u"2");
  EXPECT_EQ(ReadProfileString(Path(), u"Other", u"A", u"", 260), u"9");
  EXPECT_EQ(Content(), "[DBConfig]\nB=2\n[Other]\nA=9\n[DBConfig]\nA=4\n");
}

// A file that is there but can't be read was taken for an empty one, and the
// write replaced it with a file that held the new key alone.
TEST_F(IniFileTest, WriteRefusesAFileThatCannotBeRead) {
  WriteRaw("[DBConfig]\nLastUpdate=2024.03.05 2 09:07:03.041\nH2=7\n");
  ASSERT_EQ(chmod(m_dir.Path().c_str(), 0777), 0);
  ASSERT_EQ(chmod(m_dir.File("state.ini").c_str(), 0), 0);
  const std::u16string path = Path();
  EXPECT_TRUE(RunUnprivileged([&path] {
    std::u16string value = u"8";
    bool wrote = WriteProfileString(path, u"DBConfig", u"H2", &value);
    bool deleted = WriteProfileString(path, u"DBConfig", u"H2", nullptr);
    return !wrote && !deleted;
  }));
  ASSERT_EQ(chmod(m_dir.File("state.ini").c_str(), 0600), 0);
  EXPECT_EQ(Content(), "[DBConfig]\nLastUpdate=2024.03.05 2 09:07:03.041\nH2=7\n");
  EXPECT_EQ(FolderNames(m_dir.Path()), std::vector<std::string>{"state.ini"});

  // A link that leads nowhere readable is refused the same way.
  std::filesystem::remove(m_dir.File("state.ini"));
  std::filesystem::create_symlink("state.ini", m_dir.File("state.ini"));
  std::u16string value = u"8";
  EXPECT_FALSE(WriteProfileString(Path(), u"DBConfig", u"H2", &value));
  EXPECT_TRUE(std::filesystem::is_symlink(m_dir.File("state.ini")));
}

// ---- Permissions of the replaced file ----

TEST_F(IniFileTest, NewFileTakesItsModeFromTheUmaskAndLeavesTheUmaskAlone) {
  ScopedUmask mask(027);
  std::u16string value = u"1";
  ASSERT_TRUE(WriteProfileString(Path(), u"DBConfig", u"A", &value));
  struct stat info {};
  ASSERT_EQ(stat(m_dir.File("state.ini").c_str(), &info), 0);
  EXPECT_EQ(info.st_mode & 0777, 0640u);
  EXPECT_EQ(umask(027), 027u);
  // A replacement is a new file as well, and no temporary file stays.
  ScopedUmask wider(002);
  ASSERT_TRUE(WriteProfileString(Path(), u"DBConfig", u"A", &value));
  ASSERT_EQ(stat(m_dir.File("state.ini").c_str(), &info), 0);
  EXPECT_EQ(info.st_mode & 0777, 0664u);
  EXPECT_EQ(FolderNames(m_dir.Path()), std::vector<std::string>{"state.ini"});
}

// In a folder with a default ACL the umask plays no part and the new file's
// ACL mask comes from the default one. A temporary file made for its owner
// alone and widened by chmod afterwards got a mask narrowed to the umask.
TEST_F(IniFileTest, NewFileInAFolderWithADefaultAclKeepsTheInheritedMask) {
  const std::string folder = m_dir.File("shared");
  std::filesystem::create_directory(folder);
  acl_t defaults = acl_from_text("u::rwx,g::r-x,g:root:rwx,m::rwx,o::---");
  ASSERT_NE(defaults, nullptr);
  int set = acl_set_file(folder.c_str(), ACL_TYPE_DEFAULT, defaults);
  acl_free(defaults);
  if (set != 0 && errno == ENOTSUP) GTEST_SKIP() << "the temporary folder's file system has no ACL support";
  ASSERT_EQ(set, 0);

  ScopedUmask mask(022);
  const std::string file = folder + "/state.ini";
  std::u16string value = u"1";
  ASSERT_TRUE(WriteProfileString(FromUtf8(file), u"DBConfig", u"A", &value));
  acl_t acl = acl_get_file(file.c_str(), ACL_TYPE_ACCESS);
  ASSERT_NE(acl, nullptr);
  char* text = acl_to_text(acl, nullptr);
  std::string access = text != nullptr ? text : "";
  acl_free(text);
  acl_free(acl);
  EXPECT_NE(access.find("group:root:rwx"), std::string::npos) << access;
  EXPECT_NE(access.find("mask::rw-"), std::string::npos) << access;
  EXPECT_NE(access.find("other::---"), std::string::npos) << access;
  EXPECT_EQ(FolderNames(folder), std::vector<std::string>{"state.ini"});
}

}  // namespace
}  // namespace corvane
