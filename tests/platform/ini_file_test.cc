#include "platform/ini_file.h"

#include <gtest/gtest.h>

#include <fstream>
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
  test::TempDir m_dir;
};

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

}  // namespace
}  // namespace corvane
