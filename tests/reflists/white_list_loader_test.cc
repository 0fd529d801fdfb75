// The white-list file into the four reference tables; damaged files change
// nothing.

#include "reflists/white_list_loader.h"

#include <gtest/gtest.h>

#include <fstream>

#include "common/utf.h"
#include "store/corvane_db.h"
#include "support/test_host.h"

namespace corvane {
namespace {

class WhiteListTest : public ::testing::Test {
 protected:
  WhiteListTest() : m_appData("CORVANE_APPDATA", m_dir.Path().c_str()) {
    EXPECT_EQ(m_db.Open(FromUtf8(m_dir.File("db.sqlite")), false), S_OK);
  }

  HRESULT Load(const std::string& content) {
    std::ofstream(m_dir.File("WhiteList.js"), std::ios::binary) << content;
    return LoadWhiteListFrom(&m_db, FromUtf8(m_dir.File("WhiteList.js")));
  }

  std::vector<std::string> Rows(const std::string& sql) {
    std::vector<std::string> rows;
    StatementPtr stmt = m_db.Prepare(FromUtf8(sql));
    while (stmt && stmt->Step()) rows.push_back(ToUtf8(stmt->ColumnText16(0)));
    return rows;
  }

  std::string Dump() {
    std::string all;
    for (const char* table : {"TWhiteList", "TBlackList", "TSubList", "TNames"}) {
      for (const std::string& row : Rows(std::string("select quote(Name) || quote(Domain) from ") + table)) all += row;
      all += "|";
    }
    return all;
  }

  test::TempDir m_dir;
  test::ScopedEnv m_appData;
  CCorvaneDB m_db;
};

constexpr char kGoodFile[] = R"(// sample
{
  "whitelist": [
    {"maindomain": "news.com", "name": "News", "domains": [{"domain": "sport.news.com", "name": "Sport"},
                                                           {"domain": "mail.news.com"}]},
    {"maindomain": "solo.org", "domains": []}
  ],
  "blacklist": [{"maindomain": "bad.com", "name": "Bad", "domains": []},
                {"maindomain": "worse.com", "domains": [{"domain": "worse.com", "name": "W"}]}],
  "sublist": [{"maindomain": "blog.com", "name": "Blogs", "domains": [{"domain": "[a-z]+\\.blog\\.com"}]}],
  "names": [{"domain": "a.blog.com", "name": "A blog"}, {"domain": "b.blog.com", "name": 5}]
})";

TEST_F(WhiteListTest, GoodFileFillsTheFourTables) {
  ASSERT_EQ(Load(kGoodFile), S_OK);
  EXPECT_EQ(Rows("select Name || '/' || MainDomain || '/' || Domain || '/' || SubName from TWhiteList"),
            (std::vector<std::string>{"News/news.com/sport.news.com/Sport", "News/news.com/mail.news.com/Unknown",
                                      "News/news.com/news.com/News", "Unknown/solo.org/solo.org/Unknown"}));
  EXPECT_EQ(Rows("select Domain from TBlackList"), std::vector<std::string>{"worse.com"});
  EXPECT_EQ(Rows("select Domain from TSubList"), std::vector<std::string>{"[a-z]+\\.blog\\.com"});
  EXPECT_EQ(Rows("select Domain || '=' || Name from TNames"), std::vector<std::string>{"a.blog.com=A blog"});
}

TEST_F(WhiteListTest, AbsentOrEmptyMembersKeepTheirTablesAndByteOrderMarkIsAccepted) {
  ASSERT_EQ(Load(kGoodFile), S_OK);
  ASSERT_EQ(Load("\xEF\xBB\xBF{\"whitelist\": [], \"names\": [{\"domain\": \"x.com\", \"name\": \"X\"}]}"), S_OK);
  EXPECT_EQ(Rows("select count(*) from TWhiteList"), std::vector<std::string>{"4"});
  EXPECT_EQ(Rows("select Name from TNames"), std::vector<std::string>{"X"});
}

TEST_F(WhiteListTest, DamagedFilesChangeNothing) {
  ASSERT_EQ(Load(kGoodFile), S_OK);
  const std::string before = Dump();
  std::string deep(100000, '[');
  const std::string kDamaged[] = {
      std::string(kGoodFile).substr(0, 200),                       // truncated
      deep,                                                        // nested far too deep
      "[1, 2, 3]",                                                 // root is no object
      "",                                                          // empty
      "{\"whitelist\": {\"maindomain\": 5}} trailing",             // wrong member types
      std::string("\0{\"whitelist\": []}", 18),                    // text ends at the zero byte
  };
  for (const std::string& content : kDamaged) {
    HRESULT hr = Load(content);
    EXPECT_EQ(Dump(), before) << content.substr(0, 40);
    if (content.find("wrong") == std::string::npos && content.find("trailing") == std::string::npos) {
      EXPECT_EQ(hr, E_FAIL) << content.substr(0, 40);
    }
  }
  // A member of the wrong type is no array: its table stays.
  EXPECT_EQ(Load("{\"whitelist\": {\"maindomain\": 5}, \"blacklist\": \"x\"}"), S_OK);
  EXPECT_EQ(Dump(), before);
  // A group whose main domain or domain is no text adds no row of its own.
  EXPECT_EQ(Load(R"({"blacklist": [{"maindomain": 7, "domains": [{"domain": "x.com"}]},
                                   {"maindomain": "ok.com", "domains": [{"domain": 9}, {"domain": "ok.com"}]}]})"),
            S_OK);
  EXPECT_EQ(Rows("select Domain from TBlackList"), std::vector<std::string>{"ok.com"});
  std::remove(m_dir.File("WhiteList.js").c_str());
  EXPECT_EQ(LoadWhiteListFrom(&m_db, FromUtf8(m_dir.File("WhiteList.js"))), E_FAIL);
}

TEST_F(WhiteListTest, TrailingCommasAndOtherLooseSyntaxAreSyntaxErrors) {
  ASSERT_EQ(Load(kGoodFile), S_OK);
  const std::string before = Dump();
  const std::string kLoose[] = {
      R"({"names": [{"domain": "x.com", "name": "X"},]})",                  // comma behind the last element
      R"({"names": [{"domain": "x.com", "name": "X",}]})",                  // comma behind the last member
      R"({"names": [{"domain": "x.com", "name": "X"}],})",                  // the same at the root
      R"({"names": [{'domain': 'x.com', 'name': 'X'}]})",                   // single quotes
      R"({"names": [{"domain": "x.com", "name": "X"}], "n": NaN})",         // special floats
      R"({"names": [, {"domain": "x.com", "name": "X"}]})",                 // dropped placeholder
      "\xEF\xBB\xBF\xEF\xBB\xBF{\"names\": [{\"domain\": \"x.com\", \"name\": \"X\"}]}",  // a second mark
  };
  for (const std::string& content : kLoose) {
    EXPECT_EQ(Load(content), E_FAIL) << content;
    EXPECT_EQ(Dump(), before) << content;
  }
  // Comments are the one extension read, before, inside and after the object.
  EXPECT_EQ(Load("/* lead */ {\"names\": [ // one\n {\"domain\": \"x.com\", \"name\": \"X\"}]} // tail"), S_OK);
  EXPECT_EQ(Rows("select Domain from TNames"), std::vector<std::string>{"x.com"});
}

TEST_F(WhiteListTest, FileOverTheSizeCapIsNotRead) {
  ASSERT_EQ(Load(kGoodFile), S_OK);
  const std::string before = Dump();
  const std::string json = R"({"names": [{"domain": "big.com", "name": "Big"}]})";
  std::string padded = json;
  padded.resize(static_cast<size_t>(kMaxWhiteListBytes) + 1, ' ');
  EXPECT_EQ(Load(padded), E_FAIL);
  EXPECT_EQ(Dump(), before);
  // One byte less is read.
  padded.pop_back();
  EXPECT_EQ(Load(padded), S_OK);
  EXPECT_EQ(Rows("select Domain from TNames"), std::vector<std::string>{"big.com"});
}

TEST_F(WhiteListTest, FileWithOnlyNamesKeepsTheThreeListTables) {
  ASSERT_EQ(Load(kGoodFile), S_OK);
  const std::vector<std::string> whiteList = Rows("select Name || MainDomain || Domain || SubName from TWhiteList");
  ASSERT_EQ(Load(R"({"names": [{"domain": "n.com", "name": "N"}]})"), S_OK);
  EXPECT_EQ(Rows("select Name || MainDomain || Domain || SubName from TWhiteList"), whiteList);
  EXPECT_EQ(Rows("select Domain from TBlackList"), std::vector<std::string>{"worse.com"});
  EXPECT_EQ(Rows("select MainDomain || ' ' || Domain from TSubList"),
            std::vector<std::string>{"blog.com [a-z]+\\.blog\\.com"});
  EXPECT_EQ(Rows("select Domain || '=' || Name from TNames"), std::vector<std::string>{"n.com=N"});
}

TEST_F(WhiteListTest, GroupsWithoutDomainsOrWithoutMainDomainAndDomainObjectsWithoutDomain) {
  ASSERT_EQ(Load(kGoodFile), S_OK);
  ASSERT_EQ(Load(R"({
    "whitelist": [
      {"maindomain": "bare.com", "name": "Bare"},
      {"name": "NoMain", "domains": [{"domain": "x.nomain.com", "name": "X"}]},
      {"maindomain": "part.com", "domains": [{"name": "NoDomain"}, {"domain": "ok.part.com"}]}
    ],
    "blacklist": [{"maindomain": "b.com", "name": "B"}],
    "sublist": [{"domains": [{"domain": "[a-z]+\\.s\\.com"}]}]
  })"),
            S_OK);
  // A group without "domains" keeps its main-domain row; a group without
  // "maindomain" adds no row at all, not even the extra one; a domain
  // object without "domain" is skipped and its siblings stay.
  EXPECT_EQ(Rows("select Name || '/' || MainDomain || '/' || Domain || '/' || SubName from TWhiteList"),
            (std::vector<std::string>{"Bare/bare.com/bare.com/Bare", "Unknown/part.com/ok.part.com/Unknown",
                                      "Unknown/part.com/part.com/Unknown"}));
  // The black and sub lists are rebuilt from their arrays, which give no row.
  EXPECT_EQ(Rows("select count(*) from TBlackList"), std::vector<std::string>{"0"});
  EXPECT_EQ(Rows("select count(*) from TSubList"), std::vector<std::string>{"0"});
  EXPECT_EQ(Rows("select count(*) from TWhiteList where MainDomain is null or Domain is null"),
            std::vector<std::string>{"0"});
}

}  // namespace
}  // namespace corvane
