// The history search through its index finds exactly the rows, in exactly
// the order, that like finds over every row: random texts of one to five
// characters (ASCII and not, %, _, /, quotes, letters in either case, a
// character outside the BMP) against titles and addresses made of the same
// characters, with hidden rows, rows of two browsers, rows stored after the
// index was last brought up to date, times of any form and dates that are
// no number, and after the history was emptied and its row numbers began
// again.

#include <random>

#include "store/db_fixture.h"
#include "store/history_search.h"

namespace corvane::testing {
namespace {

// Kelvin sign, sharp s and its capital fold onto ASCII or each other in
// the index but not in like: the index must only ever find more.
const std::vector<std::string> kAlphabet = {"a",  "b",  "A",  "B",  "c",  "%",  "_",  "/",  "'",   "\"",  " ",
                                            "é",  "É",  "ä",  "Ä",  "ß",  "ẞ",  "K", "k",  "日", "😀"};

class HistorySearchTest : public DBTest {
 protected:
  std::string RandomText(size_t length) {
    std::string text;
    for (size_t i = 0; i < length; ++i) text += kAlphabet[m_random() % kAlphabet.size()];
    return text;
  }

  // Rows of four days; one in six has a time of some other form, and with
  // oddDates one in ten a date that is no number, which the search orders
  // in SQL.
  void AddRows(int count, bool oddDates = false) {
    for (int i = 0; i < count; ++i) {
      const int day = static_cast<int>(m_random() % 4);
      char stamp[40];
      std::snprintf(stamp, sizeof(stamp), "2024.03.%02d 0 %02d:%02d:00.000", 10 - day,
                    static_cast<int>(m_random() % 3), static_cast<int>(m_random() % 2));
      const std::string time = m_random() % 6 == 0 ? RandomText(m_random() % 4) : stamp;
      StatementPtr insert = m_db.Prepare(u"insert into THistory values(null, ?, ?, 1, ?, ?, ?, ?);");
      ASSERT_TRUE(insert && insert->BindText(0, RandomText(m_random() % 8)) &&
                  insert->BindText(1, "https://" + RandomText(1 + m_random() % 8)) && insert->BindText(2, time) &&
                  (oddDates && m_random() % 10 == 0 ? insert->BindText(3, "x") : insert->BindInt(3, 150000 - day)) &&
                  insert->BindInt(4, m_random() % 8 == 0 ? 1 : 0) &&
                  insert->BindInt(5, m_random() % 2 == 0 ? 2 : 64) && insert->Execute());
    }
  }

  std::vector<std::string> Searched(const std::string& text, uint32_t browser) {
    CHistoryRows rows;
    EXPECT_EQ(m_db.SearchHistory(FromUtf8(text), &rows, browser), S_OK);
    std::vector<std::string> ids;
    for (size_t i = 0; i < rows.Size(); ++i) ids.push_back(std::to_string(rows.Hid(i)));
    return ids;
  }

  // like alone, over every row.
  std::vector<std::string> Scanned(const std::string& text, uint32_t browser) {
    StatementPtr stmt = m_db.Prepare(
        u"select HID from THistory where ( Name like ?1 ESCAPE '/' or URL like ?1 ESCAPE '/' ) and HideDate = 0 and "
        u"(?2 = 0 or Browser = ?2) order by VisitDate desc, VisitTime desc, HID desc");
    EXPECT_TRUE(stmt && stmt->BindText16(0, u"%" + CCorvaneDB::EscapeSearchText(FromUtf8(text)) + u"%") &&
                stmt->BindInt(1, static_cast<int32_t>(browser)));
    std::vector<std::string> ids;
    while (stmt && stmt->Step()) ids.push_back(std::to_string(stmt->ColumnInt64(0)));
    return ids;
  }

  void ExpectSameAsLike(int texts) {
    size_t found = 0;
    for (int i = 0; i < texts; ++i) {
      const std::string text = RandomText(1 + m_random() % 5);
      const uint32_t browser = i % 3 == 0 ? 64 : 0;
      const std::vector<std::string> expected = Scanned(text, browser);
      ASSERT_EQ(Searched(text, browser), expected) << "text \"" << text << "\", browser " << browser;
      found += expected.size();
    }
    EXPECT_GT(found, static_cast<size_t>(texts)) << "the texts should find rows";
  }

  // A person typing words: each longer text is answered from the rows of
  // the one before while nothing changed; between some keystrokes a row
  // that holds the text is added here, or another connection hides the
  // newest row found.
  void ExpectTypingSameAsLike(int words) {
    sqlite3* other = nullptr;
    ASSERT_EQ(sqlite3_open(m_dir.File("db.sqlite").c_str(), &other), SQLITE_OK);
    for (int i = 0; i < words; ++i) {
      std::string text;
      const uint32_t browser = i % 4 == 0 ? 64 : 0;
      for (int typed = 0; typed < 5; ++typed) {
        text += RandomText(1);
        if (m_random() % 5 == 0) {
          Exec("insert into THistory values(null, " + Quoted("typed " + text) + ", 'https://t/', 1, "
               "'2024.03.10 0 23:00:00.000', 150000, 0, 64)");
        }
        const std::vector<std::string> found = Scanned(text, browser);
        if (m_random() % 5 == 0 && !found.empty()) {
          const std::string hide = "update THistory set HideDate = 1 where HID = " + found.front();
          ASSERT_EQ(sqlite3_exec(other, hide.c_str(), nullptr, nullptr, nullptr), SQLITE_OK);
        }
        ASSERT_EQ(Searched(text, browser), Scanned(text, browser)) << "typed \"" << text << "\", browser " << browser;
      }
    }
    sqlite3_close(other);
  }

  static std::string Quoted(const std::string& text) {
    std::string out = "'";
    for (char c : text) out += c == '\'' ? std::string("''") : std::string(1, c);
    return out + "'";
  }

  std::mt19937 m_random{20261125};
};

TEST_F(HistorySearchTest, IndexedSearchFindsExactlyWhatLikeFindsInItsOrder) {
  AddRows(600);
  EXPECT_EQ(UpdateHistorySearchIndex(&m_db), S_OK);
  EXPECT_EQ(UpdateHistorySearchIndex(&m_db), S_FALSE);
  AddRows(60);  // not indexed yet
  ExpectSameAsLike(400);
  ExpectTypingSameAsLike(60);
  EXPECT_EQ(m_db.ClearHistory(), S_OK);
  AddRows(200, true);
  EXPECT_EQ(UpdateHistorySearchIndex(&m_db), S_OK);
  AddRows(20);
  ExpectSameAsLike(200);
  EXPECT_EQ(Scalar("select count(*) from THistoryText"),
            Scalar("select count(*) from (select distinct URL, Name from THistory where HID <= 200)"));
}

// A file opened again counts its changes and data versions from the start.
// Here they come back to those of the search made before it closed, with
// the row found then hidden by another connection: that search must not be
// taken for what the file holds now.
TEST_F(HistorySearchTest, AFileOpenedAgainIsSearchedAfresh) {
  sqlite3* other = nullptr;
  ASSERT_EQ(sqlite3_open(m_dir.File("db.sqlite").c_str(), &other), SQLITE_OK);
  const auto run = [&](const char* sql) { ASSERT_EQ(sqlite3_exec(other, sql, nullptr, nullptr, nullptr), SQLITE_OK); };
  run("insert into THistory values(null, 'abc', 'https://x/', 1, '2024.03.10 0 10:00:00.000', 150000, 0, 2)");
  ASSERT_EQ(Searched("ab", 0).size(), 1u);
  const CCorvaneDB::LastSearch before = *m_db.LastHistorySearch();
  ASSERT_EQ(m_db.Close(), S_OK);
  ASSERT_EQ(m_db.Open(FromUtf8(m_dir.File("db.sqlite")), false), S_OK);
  while (sqlite3_total_changes64(m_db.Handle()) < before.changes) Exec("insert into TFocusURL(Name, URL) values('p', 'p')");
  run("update THistory set HideDate = 1");
  for (int commits = 0; commits < 8 && std::stoll(Scalar("pragma data_version")) < before.dataVersion; ++commits) {
    run("update THistory set HideDate = 1");
  }
  ASSERT_EQ(sqlite3_total_changes64(m_db.Handle()), before.changes);
  ASSERT_EQ(std::stoll(Scalar("pragma data_version")), before.dataVersion);
  EXPECT_EQ(Searched("abc", 0).size(), 0u);
  sqlite3_close(other);
}

}  // namespace
}  // namespace corvane::testing
