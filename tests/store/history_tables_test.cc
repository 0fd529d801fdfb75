// Storing deliveries in THistory and TIEHistory, the IE merge decisions,
// searches and hides.

#include <gtest/gtest.h>

#include <limits>

#include "common/time_stamp.h"
#include "common/utf.h"
#include "store/corvane_db.h"
#include "store/scripted_extractor.h"
#include "support/test_host.h"

namespace corvane::testing {
namespace {

class HistoryTablesTest : public ::testing::Test {
 protected:
  HistoryTablesTest()
      : m_appData("CORVANE_APPDATA", m_dir.Path().c_str()), m_now("CORVANE_TEST_NOW", "2024-03-05 20:00:00") {
    EXPECT_EQ(m_db.Open(FromUtf8(m_dir.File("db.sqlite")), false), S_OK);
  }

  void Visit(std::u16string url, SYSTEMTIME time, int32_t count = 1, uint32_t browser = BROWSER_CHROME) {
    m_delivery.Add(std::make_unique<ScriptedItem>(u"Title " + url, std::move(url), time, count, browser));
  }

  // Hands the delivery over again from its first item.
  HRESULT AddNew() {
    m_delivery.Rewind();
    return m_db.AddNewHistory(&m_delivery);
  }
  HRESULT Merge() {
    m_delivery.Rewind();
    return m_db.MergeIEHistory(&m_delivery);
  }

  int64_t Number(const std::u16string& sql) {
    StatementPtr stmt = m_db.Prepare(sql);
    return stmt && stmt->Step() ? stmt->ColumnInt64(0) : -1;
  }

  std::u16string Config(std::u16string_view key) {
    std::u16string value;
    static_cast<void>(m_db.GetConfig(key, &value, u""));
    return value;
  }

  // The URLs that a statement of a listing yields, in order.
  std::vector<std::u16string> URLs(StatementPtr stmt, int column) {
    std::vector<std::u16string> urls;
    while (stmt && stmt->Step()) urls.push_back(stmt->ColumnText16(column));
    return urls;
  }

  test::TempDir m_dir;
  test::ScopedEnv m_appData;
  test::ScopedEnv m_now;
  CCorvaneDB m_db;
  ScriptedExtractor m_delivery;
};

TEST_F(HistoryTablesTest, IncrementalStoringTakesOnlyNewerVisits) {
  Visit(u"http://a.example.com/", Time(2024, 3, 4, 10, 0, 0, 500), 2);
  Visit(u"http://b.example.com/", Time(2024, 3, 5, 9, 7, 3, 41));
  ASSERT_EQ(AddNew(), S_OK);
  EXPECT_EQ(Config(u"AddHistoryCount"), u"2");
  EXPECT_EQ(Number(u"select count(*) from THistory where HID is not null and HideDate = 0"), 2);
  EXPECT_EQ(Number(u"select VisitDate from THistory where URL = 'http://b.example.com/'"), 154561);

  // The same delivery again adds nothing.
  ASSERT_EQ(AddNew(), S_OK);
  EXPECT_EQ(Config(u"AddHistoryCount"), u"0");
  // A visit at the newest stored millisecond is no new visit; one a
  // millisecond later is, whatever the order of the delivery.
  Visit(u"http://c.example.com/", Time(2024, 3, 5, 9, 7, 3, 42));
  Visit(u"http://d.example.com/", Time(2024, 3, 5, 9, 7, 3, 41));
  ASSERT_EQ(AddNew(), S_OK);
  EXPECT_EQ(Config(u"AddHistoryCount"), u"1");
  EXPECT_EQ(Number(u"select count(*) from THistory"), 3);
  EXPECT_EQ(Number(u"select count(*) from THistory where URL = 'http://d.example.com/'"), 0);
}

TEST_F(HistoryTablesTest, BadItemsAreSkippedAndQuotesStoredAsText) {
  m_delivery.AddNull();
  Visit(u"", Time(2024, 3, 5, 9));
  Visit(u"http://month13.example.com/", Time(2024, 13, 5, 9));
  Visit(u"http://april31.example.com/", Time(2024, 4, 31, 9));
  Visit(u"http://feb29.example.com/", Time(2023, 2, 29, 9));
  auto nullTexts = std::make_unique<ScriptedItem>(u"x", u"http://x.example.com/", Time(2024, 3, 5), 1, 2);
  nullTexts->SetNullTexts();
  m_delivery.Add(std::move(nullTexts));
  m_delivery.Add(std::make_unique<ScriptedItem>(u"It's \"quoted\"; drop table THistory; --",
                                                u"http://q.example.com/?a='1'&b=\"2\"", Time(2024, 3, 5, 9), 1, 2));
  ASSERT_EQ(AddNew(), S_OK);
  EXPECT_EQ(Config(u"AddHistoryCount"), u"1");
  StatementPtr stmt = m_db.Prepare(u"select Name, URL from THistory");
  ASSERT_TRUE(stmt && stmt->Step());
  EXPECT_EQ(stmt->ColumnText16(0), u"It's \"quoted\"; drop table THistory; --");
  EXPECT_EQ(stmt->ColumnText16(1), u"http://q.example.com/?a='1'&b=\"2\"");
  EXPECT_EQ(m_db.AddNewHistory(nullptr), E_INVALIDARG);
  EXPECT_EQ(m_db.MergeIEHistory(nullptr), E_INVALIDARG);
}

TEST_F(HistoryTablesTest, UnreadableNewestStampRebuildsFromTheDelivery) {
  ASSERT_TRUE(m_db.Exec(u"insert into THistory values(null, 'old', 'http://old/', 1, 'garbage', 1, 0, 2)"));
  Visit(u"http://a.example.com/", Time(2024, 3, 5, 9));
  ASSERT_EQ(AddNew(), S_OK);
  EXPECT_EQ(Number(u"select count(*) from THistory"), 1);
  // The numbering starts again.
  EXPECT_EQ(Number(u"select HID from THistory"), 1);
}

// One row of the merge decision table per step: the delivery holds one URL,
// whose stored snapshot row comes from the step before.
TEST_F(HistoryTablesTest, IEMergeDecisionTable) {
  const std::u16string url = u"http://ie.example.com/\"x\"";
  const std::u16string ofUrl = u" where URL = " + SqlQuote(url);
  auto deliver = [&](SYSTEMTIME time, int32_t count) {
    m_delivery.Clear();
    Visit(url, time, count, BROWSER_IE);
    return Merge();
  };
  // No old row and no merge before: the snapshot only.
  ASSERT_EQ(deliver(Time(2024, 3, 1, 8), 3), S_OK);
  EXPECT_EQ(Number(u"select count(*) from TIEHistory" + ofUrl), 1);
  EXPECT_EQ(Number(u"select count(*) from THistory"), 0);
  EXPECT_EQ(Config(u"IEInitialized"), u"2024.03.05");
  EXPECT_EQ(Config(u"IEHistoryAdded"), u"");
  int64_t hid = Number(u"select HID from TIEHistory");

  // Newer time, higher count: the difference becomes a visit row and the
  // snapshot row is replaced.
  ASSERT_EQ(deliver(Time(2024, 3, 2, 8), 5), S_OK);
  EXPECT_EQ(Number(u"select VisitCount from THistory where Browser = 1" + std::u16string(u" and URL = ") + SqlQuote(url)), 2);
  EXPECT_EQ(Number(u"select VisitCount from TIEHistory"), 5);
  EXPECT_NE(Number(u"select HID from TIEHistory"), hid);
  EXPECT_EQ(Config(u"IEHistoryAdded"), u"2024.03.05");
  EXPECT_EQ(Config(u"AddHistoryCount"), u"1");
  hid = Number(u"select HID from TIEHistory");

  // Newer time, count not higher: nothing changes at all.
  ASSERT_TRUE(m_db.Exec(u"update TIEHistory set HideDate = 1"));
  ASSERT_EQ(deliver(Time(2024, 3, 3, 8), 5), S_OK);
  EXPECT_EQ(Number(u"select HID from TIEHistory"), hid);
  EXPECT_EQ(Number(u"select HideDate from TIEHistory"), 1);
  EXPECT_EQ(Number(u"select count(*) from THistory"), 1);

  // Time not newer: the row is replaced with the delivered values, and a
  // hidden row comes back.
  ASSERT_EQ(deliver(Time(2024, 3, 2, 8), 4), S_OK);
  EXPECT_EQ(Number(u"select VisitCount from TIEHistory"), 4);
  EXPECT_EQ(Number(u"select HideDate from TIEHistory"), 0);
  EXPECT_NE(Number(u"select HID from TIEHistory"), hid);
  EXPECT_EQ(Number(u"select count(*) from TIEHistory"), 1);
  EXPECT_EQ(Number(u"select count(*) from THistory"), 1);

  // A URL the snapshot lacks, after the first merge: a visit row with the
  // whole count.
  m_delivery.Clear();
  Visit(u"http://new.example.com/", Time(2024, 3, 4, 8), 7, BROWSER_IE);
  ASSERT_EQ(Merge(), S_OK);
  EXPECT_EQ(Number(u"select VisitCount from THistory where URL = 'http://new.example.com/'"), 7);
  EXPECT_EQ(Config(u"IEHistoryAddedBK"), u"2024.03.05");
}

// The stamp took the extractor's weekday. 5 March 2024 is a Tuesday (2): a
// 6 sorted the 09:00 visit above the later ones as text, so max(VisitTime)
// missed the newest visit and the same delivery was stored again.
TEST_F(HistoryTablesTest, WrongWeekdaysOfTheExtractorDoNotStoreADeliveryTwice) {
  auto at = [](uint16_t hour, uint16_t weekday) {
    SYSTEMTIME time = Time(2024, 3, 5, hour);
    time.wDayOfWeek = weekday;
    return time;
  };
  Visit(u"http://a.example.com/", at(9, 6));
  Visit(u"http://b.example.com/", at(10, 2));
  Visit(u"http://c.example.com/", at(11, 12));
  ASSERT_EQ(AddNew(), S_OK);
  EXPECT_EQ(Config(u"AddHistoryCount"), u"3");
  StatementPtr stmt = m_db.Prepare(u"select VisitTime from THistory order by VisitTime desc");
  EXPECT_EQ(URLs(std::move(stmt), 0), (std::vector<std::u16string>{u"2024.03.05 2 11:00:00.000",
                                                                    u"2024.03.05 2 10:00:00.000",
                                                                    u"2024.03.05 2 09:00:00.000"}));
  ASSERT_EQ(AddNew(), S_OK);
  EXPECT_EQ(Config(u"AddHistoryCount"), u"0");
  EXPECT_EQ(Number(u"select count(*) from THistory"), 3);

  // The IE snapshot gets the same stamps.
  m_delivery.Clear();
  Visit(u"http://ie.example.com/", at(8, 5), 1, BROWSER_IE);
  ASSERT_EQ(Merge(), S_OK);
  StatementPtr ie = m_db.Prepare(u"select VisitTime from TIEHistory");
  EXPECT_EQ(URLs(std::move(ie), 0), std::vector<std::u16string>{u"2024.03.05 2 08:00:00.000"});
}

// Counts come from outside: an old count of -5 and a new one of INT32_MAX
// made the difference overflow a 32-bit int.
TEST_F(HistoryTablesTest, MergeOfHostileCountsHoldsTheDifferenceToThirtyTwoBits) {
  const std::u16string url = u"http://ie.example.com/";
  auto deliver = [&](SYSTEMTIME time, int32_t count) {
    m_delivery.Clear();
    Visit(url, time, count, BROWSER_IE);
    return Merge();
  };
  ASSERT_EQ(deliver(Time(2024, 3, 1, 8), -5), S_OK);
  ASSERT_EQ(deliver(Time(2024, 3, 2, 8), std::numeric_limits<int32_t>::max()), S_OK);
  EXPECT_EQ(Number(u"select VisitCount from THistory"), std::numeric_limits<int32_t>::max());
  ASSERT_EQ(deliver(Time(2024, 3, 2, 8), std::numeric_limits<int32_t>::min()), S_OK);
  ASSERT_EQ(deliver(Time(2024, 3, 3, 8), std::numeric_limits<int32_t>::max()), S_OK);
  ASSERT_EQ(deliver(Time(2024, 3, 4, 8), -1), S_OK);  // newer, count not higher: nothing
  EXPECT_EQ(Number(u"select count(*) from THistory where VisitCount = 2147483647"), 2);
  EXPECT_EQ(Number(u"select count(*) from THistory"), 2);
  EXPECT_EQ(Number(u"select VisitCount from TIEHistory"), std::numeric_limits<int32_t>::max());
}

TEST_F(HistoryTablesTest, SearchTreatsLikeCharactersAsText) {
  Visit(u"http://a.example.com/50%off", Time(2024, 3, 5, 9));
  Visit(u"http://a.example.com/500off", Time(2024, 3, 5, 10));
  Visit(u"http://a.example.com/a_b", Time(2024, 3, 5, 11), 1, BROWSER_FIREFOX);
  Visit(u"http://a.example.com/axb", Time(2024, 3, 5, 12));
  Visit(u"http://a.example.com/it's", Time(2024, 3, 5, 13));
  ASSERT_EQ(AddNew(), S_OK);
  StatementPtr stmt;
  ASSERT_EQ(m_db.SearchHistory(u"50%", &stmt, 0), S_OK);
  EXPECT_EQ(URLs(std::move(stmt), 2), std::vector<std::u16string>{u"http://a.example.com/50%off"});
  ASSERT_EQ(m_db.SearchHistory(u"a_b", &stmt, 0), S_OK);
  EXPECT_EQ(URLs(std::move(stmt), 2), std::vector<std::u16string>{u"http://a.example.com/a_b"});
  ASSERT_EQ(m_db.SearchHistory(u"a_b", &stmt, BROWSER_CHROME), S_OK);
  EXPECT_TRUE(URLs(std::move(stmt), 2).empty());
  ASSERT_EQ(m_db.SearchHistory(u"it's", &stmt, 0), S_OK);
  EXPECT_EQ(URLs(std::move(stmt), 2), std::vector<std::u16string>{u"http://a.example.com/it's"});
  // Newest first; an empty search lists everything.
  ASSERT_EQ(m_db.SearchHistory(u"", &stmt, 0), S_OK);
  EXPECT_EQ(URLs(std::move(stmt), 2).front(), u"http://a.example.com/it's");
  EXPECT_EQ(CCorvaneDB::EscapeSearchText(u"a/[b]%&-_()'"), u"a///[b/]/%/&/-/_/(/)'");
}

TEST_F(HistoryTablesTest, HidesByURLByIdAndForIE) {
  Visit(u"http://a.example.com/", Time(2024, 3, 5, 9));
  Visit(u"http://a.example.com/", Time(2024, 3, 5, 10), 1, BROWSER_FIREFOX);
  Visit(u"http://b.example.com/", Time(2024, 3, 5, 11));
  ASSERT_EQ(AddNew(), S_OK);
  EXPECT_EQ(m_db.HideHistory(u"http://a.example.com/", BROWSER_FIREFOX), S_OK);
  EXPECT_EQ(Number(u"select count(*) from THistory where HideDate = 1"), 1);
  EXPECT_EQ(m_db.HideHistoryByID(u"3 or 1=1", 0), E_FAIL);
  EXPECT_EQ(m_db.HideHistoryByID(u"3", BROWSER_FIREFOX), S_OK);
  EXPECT_EQ(Number(u"select HideDate from THistory where HID = 3"), 0);
  EXPECT_EQ(m_db.HideHistoryByID(u"3", 0), S_OK);
  EXPECT_EQ(Number(u"select HideDate from THistory where HID = 3"), 1);
  EXPECT_EQ(m_db.HideHistory(u"aLL", 0), S_OK);
  EXPECT_EQ(Number(u"select count(*) from THistory where HideDate = 0"), 0);

  // Hiding an IE snapshot row hides every IE visit row of its URL.
  ASSERT_TRUE(m_db.Exec(u"insert into THistory values(null, 'i', 'http://ie/', 1, '2024.03.05 2 09:00:00.000', 1, 0, 1)"));
  ASSERT_TRUE(m_db.Exec(u"insert into THistory values(null, 'i', 'http://ie/', 2, '2024.03.05 2 10:00:00.000', 1, 0, 1)"));
  ASSERT_TRUE(m_db.Exec(u"insert into TIEHistory values(null, 'i', 'http://ie/', 3, '2024.03.05 2 10:00:00.000', 1, 0, 1)"));
  int64_t hid = Number(u"select HID from TIEHistory");
  EXPECT_EQ(m_db.HideIEHistoryByID(u"999"), E_FAIL);
  EXPECT_EQ(m_db.HideIEHistoryByID(u"x'"), E_FAIL);
  EXPECT_EQ(m_db.HideIEHistoryByID(FromUtf8(std::to_string(hid))), S_OK);
  EXPECT_EQ(Number(u"select count(*) from THistory where URL = 'http://ie/' and HideDate = 1"), 2);
  EXPECT_EQ(Number(u"select HideDate from TIEHistory"), 1);
}

TEST_F(HistoryTablesTest, ListingsByDateAndLimit) {
  Visit(u"http://a/", Time(2024, 3, 4, 9));
  Visit(u"http://b/", Time(2024, 3, 5, 9));
  Visit(u"http://c/", Time(2024, 3, 5, 10));
  ASSERT_EQ(AddNew(), S_OK);
  StatementPtr stmt;
  ASSERT_EQ(m_db.GetHistory(2, &stmt), S_OK);
  EXPECT_EQ(URLs(std::move(stmt), 2), (std::vector<std::u16string>{u"http://c/", u"http://b/"}));
  ASSERT_EQ(m_db.GetHistoryDates(10, &stmt), S_OK);
  ASSERT_TRUE(stmt->Step());
  EXPECT_EQ(stmt->ColumnInt(0), 154561);
  EXPECT_EQ(stmt->ColumnInt(1), 2);
  ASSERT_EQ(m_db.GetHistoryByDate(154560, &stmt), S_OK);
  EXPECT_EQ(URLs(std::move(stmt), 0), std::vector<std::u16string>{u"http://a/"});
  uint64_t newest = 0;
  ASSERT_EQ(m_db.GetNewestVisitTime(&newest), S_OK);
  EXPECT_EQ(DayNumber(newest), 154561u);
  EXPECT_EQ(m_db.ClearHistory(), S_OK);
  EXPECT_EQ(m_db.GetNewestVisitTime(&newest), E_FAIL);
}

}  // namespace
}  // namespace corvane::testing
