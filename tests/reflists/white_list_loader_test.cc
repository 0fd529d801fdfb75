// The white-list file into the four reference tables: damaged files change
// nothing.

#include "reflists/white_list_loader.h"

#include <fstream>

#include "store/db_fixture.h"

namespace corvane::testing {
namespace {

class WhiteListTest : public DBTest {
 protected:
  WhiteListTest() { EXPECT_EQ(Load(kGoodFile), S_OK); }

  HRESULT Load(const std::string& content) {
    std::ofstream(m_dir.File("WhiteList.js"), std::ios::binary) << content;
    return LoadWhiteListFrom(&m_db, FromUtf8(m_dir.File("WhiteList.js")));
  }
  std::vector<std::string> Dump() {
    std::vector<std::string> all;
    for (const char* table : {"TWhiteList", "TBlackList", "TSubList", "TNames"}) {
      for (const std::string& row : Rows(std::string("select '") + table + "', quote(Name), quote(Domain), * from " + table)) {
        all.push_back(row);
      }
    }
    return all;
  }

  static constexpr char kGoodFile[] = R"(// sample
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
};

TEST_F(WhiteListTest, DamagedOrLooseFilesFailAndChangeNothing) {
  const std::vector<std::string> before = Dump();
  auto padded = [](std::string text, size_t size) {
    text.resize(size, ' ');
    return text;
  };
  const std::string kBad[] = {
      std::string(kGoodFile).substr(0, 200),                                // truncated
      std::string(100000, '['),                                             // nested far too deep
      "[1, 2, 3]",                                                          // root is no object
      "",                                                                   // empty
      std::string("\0{\"whitelist\": []}", 18),                             // text ends at the zero byte
      R"({"names": [{"domain": "x.com", "name": "X"},]})",                  // comma behind the last element
      R"({"names": [{"domain": "x.com", "name": "X",}]})",                  // comma behind the last member
      R"({"names": [{"domain": "x.com", "name": "X"}],})",                  // the same at the root
      R"({"names": [{'domain': 'x.com', 'name': 'X'}]})",                   // single quotes
      R"({"names": [{"domain": "x.com", "name": "X"}], "n": NaN})",         // special floats
      R"({"names": [, {"domain": "x.com", "name": "X"}]})",                 // dropped placeholder
      "\xEF\xBB\xBF\xEF\xBB\xBF{\"names\": [{\"domain\": \"x.com\", \"name\": \"X\"}]}",  // a second mark
      padded(R"({"names": [{"domain": "big.com", "name": "Big"}]})", kMaxWhiteListBytes + 1),  // over the cap
  };
  for (const std::string& content : kBad) {
    SCOPED_TRACE(content.substr(0, 40));
    EXPECT_EQ(Load(content), E_FAIL);
    EXPECT_EQ(Dump(), before);
  }
  // Members of the wrong type are no arrays: their tables stay.
  EXPECT_EQ(Load("{\"whitelist\": {\"maindomain\": 5}, \"blacklist\": \"x\"} trailing"), S_OK);
  EXPECT_EQ(Dump(), before);
  std::remove(m_dir.File("WhiteList.js").c_str());
  EXPECT_EQ(LoadWhiteListFrom(&m_db, FromUtf8(m_dir.File("WhiteList.js"))), E_FAIL);
}

}  // namespace
}  // namespace corvane::testing
