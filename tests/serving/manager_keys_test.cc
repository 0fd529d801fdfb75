// Keys a host passes to the managers' hide, remove and search operations:
// ids as text, hostile text (quotes, like's wildcards, statement separators,
// comments, an embedded NUL, 100,000 characters). Every call must return a
// status its interface allows and leave every row it does not name as it
// stood.

#include <functional>

#include "common/utf.h"
#include "serving/serving_host.h"

namespace corvane::test {
namespace {

constexpr char kMax[] = "9223372036854775807";

std::vector<std::u16string> HostileTexts() {
  std::vector<std::u16string> texts = {u"'", u"\"", u"%", u"_", u"/", u";", u"--", u"1' or '1'='1",
                                       u"1; delete from TFocusURL; --", u"\") or 1=1 --", u"a%b_c/d"};
  texts.push_back(std::u16string(u"1\0; drop table THistory", 23));
  texts.push_back(std::u16string(u"\0x", 2));
  texts.push_back(std::u16string(100000, u'\''));
  return texts;
}

// One operation that takes a key, with the table it works on.
struct Call {
  const char* what;
  std::function<HRESULT(BSTR)> call;
  HRESULT forNoNumber;  // for text that is no number; a number gives S_OK
  std::string reset = "";    // puts the table back
  std::string touched = "";  // the ids of the rows that the call changed, joined by ","
};

// Rows 1, 2, -1 and the largest rowid in every table that a key names, and
// one focus entry.
class ManagerKeysTest : public ServingTest {
 protected:
  void SetUp() override {
    ServingTest::SetUp();
    for (const std::string r : {"1", "2", "-1", kMax}) {
      const auto at = [&](const char* table) {
        return std::string("update ") + table + " set rowid = " + r + " where rowid = last_insert_rowid();";
      };
      for (const char* table : {"TRecommendDomain", "TSubDomain"}) {
        m_db.Exec(Insert(table, "d" + r + ".com", "d" + r + ".com", 1, 100, 0, 0) + at(table));
      }
      m_db.Exec(Insert("TRecommendURL", "U", "http://u" + r + "/", "u", 1, "u", "u", 100, 0, 1, 1) + at("TRecommendURL") +
                Insert("THistory", Null(), "Title http://h" + r + "/", "http://h" + r + "/", 1,
                       "2024.03.05 2 08:00:00.000", 154561, 0, 2) + at("THistory") +
                Insert("TFavorite", "F", "http://f" + r + "/", "f", "Bar", 0) + at("TFavorite"));
    }
    m_db.Exec(Insert("TFocusURL", Null(), "Pinned", "pinned.example.com"));
  }

  static std::string HiddenIds(const char* table, const char* column) {
    return std::string("select ifnull(group_concat(rowid), '') from (select rowid from ") + table + " where " + column +
           " != 0 order by rowid)";
  }

  // The calls that take an id. The focus and history ids go into their
  // statements as numbers, so other text fails; the favourite's rowid is
  // compared as text and matches no row.
  std::vector<Call> IdCalls() {
    const std::string focusGone = "select ifnull(group_concat(v), '') from (select column1 as v from (values (1), (2), "
                                  "(-1), (" + std::string(kMax) + ")) where column1 not in (select ID from TFocusURL) "
                                  "order by column1)";
    // After the largest focus ID no entry can be added: these rows are put
    // in for the focus call only.
    const std::string focusRows = "delete from TFocusURL; insert into TFocusURL values(1, 'P', 'p1'), (2, 'P', 'p2'), "
                                  "(-1, 'P', 'p-1'), (" + std::string(kMax) + ", 'P', 'pmax');";
    return {
        {"HideRecommendDomain", [&](BSTR t) { return m_common->HideRecommendDomain(t, 0); }, S_OK,
         "update TRecommendDomain set Hide = 0;", HiddenIds("TRecommendDomain", "Hide")},
        {"HideRecommendDomain until rebuild", [&](BSTR t) { return m_common->HideRecommendDomain(t, 0x00010000); },
         S_OK, "update TRecommendDomain set Hide = 0;", HiddenIds("TRecommendDomain", "Hide")},
        {"HideSubDomain", [&](BSTR t) { return m_common->HideSubDomain(t, 0x00010000); }, S_OK,
         "update TSubDomain set Hide = 0, Score = 100;", HiddenIds("TSubDomain", "Hide")},
        {"recommendation RemoveURL", [&](BSTR t) { return m_commonUrls->RemoveURL(t, 0); }, S_OK,
         "update TRecommendURL set Hide = 0;", HiddenIds("TRecommendURL", "Hide")},
        {"focus RemoveURL", [&](BSTR t) { return m_focus->RemoveURL(t, 0); }, E_FAIL, focusRows, focusGone},
        {"history RemoveURL", [&](BSTR t) { return m_history->RemoveURL(t, 0); }, E_FAIL,
         "update THistory set HideDate = 0;", HiddenIds("THistory", "HideDate")},
        {"favourite RemoveURL", [&](BSTR t) { return m_favorites->RemoveURL(t, 0); }, S_OK,
         "update TFavorite set HideDate = 0;", HiddenIds("TFavorite", "HideDate")},
    };
  }
};

// Each text that reads as a 64-bit integer (blanks around it, a sign,
// leading zeros, 19 digits) names the row with that number; any other text
// names none and gives the status of a text that is no number.
TEST_F(ManagerKeysTest, TextThatReadsAsANumberNamesItsRowAndNothingElseDoes) {
  // The row each text names; "" for a number that names none, null for no number.
  const std::pair<std::u16string, const char*> ids[] = {
      {u"2", "2"}, {u" 2", "2"}, {u"2 ", "2"}, {u"\t2\r\n", "2"}, {u"+2", "2"}, {u"0002", "2"}, {u" +0002 ", "2"},
      {u"-1", "-1"}, {u" -01", "-1"}, {u"9223372036854775807", kMax}, {u"+09223372036854775807", kMax},
      {u"-9223372036854775808", ""}, {u"-0", ""}, {u"7", ""}, {u"", nullptr}, {u"   ", nullptr}, {u"+", nullptr},
      {u"-", nullptr}, {u"2x", nullptr}, {u"2 2", nullptr}, {u"+-2", nullptr}, {u"--2", nullptr}, {u"2-", nullptr},
      {u"0x2", nullptr}, {u"2.0", nullptr}, {u"1e1", nullptr}, {u"9223372036854775808", nullptr},
      {u"-9223372036854775809", nullptr}, {u"99999999999999999999", nullptr}, {u"\uFF12", nullptr},
  };
  for (const Call& target : IdCalls()) {
    for (const auto& [text, names] : ids) {
      // The favourite compares its rowid with the text as SQLite reads a
      // quoted value, which takes "2.0" for row 2 as well.
      if (std::string(target.what) == "favourite RemoveURL" && text == u"2.0") continue;
      SCOPED_TRACE(testing::Message() << target.what << " with \"" << std::string(text.begin(), text.end()) << "\"");
      m_db.Exec(target.reset);
      Bstr id(text);
      EXPECT_EQ(target.call(id.Get()), names != nullptr ? S_OK : target.forNoNumber);
      EXPECT_EQ(m_db.Scalar(target.touched), names != nullptr ? names : "");
    }
  }
}

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
