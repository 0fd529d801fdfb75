// Keys a host passes to the managers' hide, remove and search operations:
// hostile text (quotes, like's wildcards, statement separators,
// comments, an embedded NUL, 100,000 characters). Every call must return a
// status its interface allows and leave every row it does not name as it
// stood.

#include <functional>

#include "common/utf.h"
#include "serving/serving_host.h"

namespace corvane::test {
namespace {

std::vector<std::u16string> HostileTexts() {
  std::vector<std::u16string> texts = {u"'", u"\"", u"%", u"_", u"/", u";", u"--", u"1' or '1'='1",
                                       u"1; delete from TFocusURL; --", u"\") or 1=1 --", u"a%b_c/d"};
  texts.push_back(std::u16string(u"1\0; drop table THistory", 23));
  texts.push_back(std::u16string(u"\0x", 2));
  texts.push_back(std::u16string(100000, u'\''));
  return texts;
}

// One operation that takes a key.
struct Call {
  const char* what;
  std::function<HRESULT(BSTR)> call;
  HRESULT forNoNumber;  // for text that is no number
};

// Rows 1 and 2 in every table that a key names, and one focus entry: a
// key read by its leading digits would name row 1.
class ManagerKeysTest : public ServingTest {
 protected:
  void SetUp() override {
    ServingTest::SetUp();
    for (const std::string r : {"1", "2"}) {
      for (const char* table : {"TRecommendDomain", "TSubDomain"}) {
        m_db.Exec(Insert(table, "d" + r + ".com", "d" + r + ".com", 1, 100, 0, 0));
      }
      m_db.Exec(Insert("TRecommendURL", "U", "http://u" + r + "/", "u", 1, "u", "u", 100, 0, 1, 1) +
                Insert("THistory", Null(), "Title http://h" + r + "/", "http://h" + r + "/", 1,
                       "2024.03.05 2 08:00:00.000", 154561, 0, 2) +
                Insert("TFavorite", "F", "http://f" + r + "/", "f", "Bar", 0));
    }
    m_db.Exec(Insert("TFocusURL", Null(), "Pinned", "pinned.example.com"));
  }

  // The calls that take an id. The focus and history ids go into their
  // statements as numbers, so other text fails; the favourite's rowid is
  // compared as text and matches no row.
  std::vector<Call> IdCalls() {
    return {
        {"HideRecommendDomain", [&](BSTR t) { return m_common->HideRecommendDomain(t, 0); }, S_OK},
        {"HideRecommendDomain until rebuild", [&](BSTR t) { return m_common->HideRecommendDomain(t, 0x00010000); }, S_OK},
        {"HideSubDomain", [&](BSTR t) { return m_common->HideSubDomain(t, 0x00010000); }, S_OK},
        {"recommendation RemoveURL", [&](BSTR t) { return m_commonUrls->RemoveURL(t, 0); }, S_OK},
        {"focus RemoveURL", [&](BSTR t) { return m_focus->RemoveURL(t, 0); }, E_FAIL},
        {"history RemoveURL", [&](BSTR t) { return m_history->RemoveURL(t, 0); }, E_FAIL},
        {"favourite RemoveURL", [&](BSTR t) { return m_favorites->RemoveURL(t, 0); }, S_OK},
    };
  }
};

// Text that names no row, as an id or as a URL, changes nothing; a pin of
// it is stored as it stands and removed again.
TEST_F(ManagerKeysTest, HostileTextChangesNothingThatItDoesNotName) {
  std::vector<Call> calls = IdCalls();
  for (IURLsManager* manager : {m_commonUrls.Get(), m_focus.Get(), m_history.Get(), m_favorites.Get()}) {
    calls.push_back({"RemoveURL by URL", [manager](BSTR t) { return manager->RemoveURL(t, 1); }, S_OK});
  }
  calls.push_back({"pin", [&](BSTR t) {
    return m_focus->AddURL(t, t, 0) == S_OK && m_focus->RemoveURL(t, 1) == S_OK ? S_OK : E_FAIL;
  }, S_OK});
  // The rows, without the counter of IDs handed out, which a pin moves on.
  const auto rows = [&] {
    const std::string dump = m_db.Dump();
    return dump.substr(0, dump.find("[sqlite_sequence]"));
  };
  for (const Call& call : calls) {
    for (const std::u16string& text : HostileTexts()) {
      SCOPED_TRACE(testing::Message() << call.what << " with a text of " << text.size() << " characters");
      const std::string before = rows();
      Bstr bstr(text);
      EXPECT_EQ(call.call(bstr.Get()), call.forNoNumber);
      EXPECT_EQ(rows(), before);
    }
  }
}

TEST_F(ManagerKeysTest, URLWithQuotesAndWildcardsHidesItsOwnRowAlone) {
  const std::string urls[] = {"http://e.com/it's", "http://e.com/\"q\"", "http://e.com/50%_off", "http://e.com/a;--b",
                              "http://e.com/a' or '1'='1"};
  for (const std::string& url : urls) m_db.Exec(Insert("TRecommendURL", "H", url, "e", 1, "e.com", "e.com", 100, 0, 1, 1));
  for (const std::string& url : urls) {
    SCOPED_TRACE(url);
    const std::string before = m_db.Dump();
    Bstr key(FromUtf8(url));
    ASSERT_EQ(m_commonUrls->RemoveURL(key.Get(), 1), S_OK);
    EXPECT_EQ(m_db.Scalar("select Hide || ':' || Weight from TRecommendURL where URL = " + Q(url)), "1:100");
    // Put back, the tables are as they were: nothing else moved.
    m_db.Exec("update TRecommendURL set Hide = 0 where URL = " + Q(url));
    EXPECT_EQ(m_db.Dump(), before);
  }
}

}  // namespace
}  // namespace corvane::test
