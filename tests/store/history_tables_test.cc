// Storing deliveries in THistory and TIEHistory and the IE merge decisions.
// The listings, searches and hides are pinned through the managers of the
// serving suite.

#include <limits>

#include "intake/scripted_extractor.h"
#include "store/db_fixture.h"

namespace corvane::testing {
namespace {

class HistoryTablesTest : public DBTest {
 protected:
  void Visit(std::u16string url, SYSTEMTIME time, int32_t count = 1, uint32_t browser = BROWSER_CHROME) {
    m_delivery.items.push_back(std::make_unique<ScriptedItem>(u"Title " + url, url, time, count, browser));
  }
  // Hands the delivery over again from its first item.
  HRESULT AddNew() {
    m_delivery.Extract(BROWSER_CHROME, EXTRACT_HISTORY);
    return m_db.AddNewHistory(&m_delivery);
  }
  // Merges a delivery of one IE visit.
  HRESULT Merge(const std::u16string& url, SYSTEMTIME time, int32_t count) {
    m_delivery.items.clear();
    Visit(url, time, count, BROWSER_IE);
    m_delivery.Extract(BROWSER_IE, EXTRACT_HISTORY);
    return m_db.MergeIEHistory(&m_delivery);
  }

  ScriptedExtractor m_delivery;
};

TEST_F(HistoryTablesTest, IncrementalStoringTakesOnlyNewerVisits) {
  EXPECT_EQ(m_db.AddNewHistory(nullptr), E_INVALIDARG);
  Visit(u"http://a.example.com/", Time(2024, 3, 4, 10, 0, 0, 500), 2);
  Visit(u"http://b.example.com/", Time(2024, 3, 5, 9, 7, 3, 41));
  ASSERT_EQ(AddNew(), S_OK);
  EXPECT_EQ(Config(u"AddHistoryCount"), "2");
  EXPECT_EQ(Rows("select HID, VisitCount, VisitTime, VisitDate, HideDate, Browser from THistory order by HID"),
            (std::vector<std::string>{"1|2|2024.03.04 1 10:00:00.500|154560|0|2",
                                      "2|1|2024.03.05 2 09:07:03.041|154561|0|2"}));
  // The same delivery again adds nothing. A visit at the newest stored
  // millisecond is no new visit; one a millisecond later is, whatever the
  // order of the delivery.
  ASSERT_EQ(AddNew(), S_OK);
  EXPECT_EQ(Config(u"AddHistoryCount"), "0");
  Visit(u"http://c.example.com/", Time(2024, 3, 5, 9, 7, 3, 42));
  Visit(u"http://d.example.com/", Time(2024, 3, 5, 9, 7, 3, 41));
  ASSERT_EQ(AddNew(), S_OK);
  EXPECT_EQ(Config(u"AddHistoryCount"), "1");
  EXPECT_EQ(Rows("select URL from THistory where HID > 2"), std::vector<std::string>{"http://c.example.com/"});
}

// One row of the merge decision table per step: the delivery holds one URL,
// whose stored snapshot row comes from the step before.
TEST_F(HistoryTablesTest, IEMergeDecisionTable) {
  EXPECT_EQ(m_db.MergeIEHistory(nullptr), E_INVALIDARG);
  const std::u16string url = u"http://ie.example.com/\"x\"";
  // The IE visit rows, and the snapshot row with whether its HID is new.
  std::string hid;
  auto state = [&] {
    const std::string now = Scalar("select HID from TIEHistory");
    const std::string text = Scalar("select group_concat(VisitCount) from THistory where Browser = 1") + " / " +
                             Scalar("select VisitCount || ':' || HideDate from TIEHistory") + (now != hid ? " new" : "");
    hid = now;
    return text;
  };
  // No old row and no merge before: the snapshot only.
  ASSERT_EQ(Merge(url, Time(2024, 3, 1, 8), 3), S_OK);
  EXPECT_EQ(state(), " / 3:0 new");
  EXPECT_EQ(Config(u"IEInitialized") + " " + Config(u"IEHistoryAdded"), "2024.03.10 <absent>");
  // Newer time, higher count: the difference becomes a visit row and the
  // snapshot row is replaced.
  ASSERT_EQ(Merge(url, Time(2024, 3, 2, 8), 5), S_OK);
  EXPECT_EQ(state(), "2 / 5:0 new");
  EXPECT_EQ(Scalar("select URL from THistory"), ToUtf8(url));
  EXPECT_EQ(Config(u"IEHistoryAdded") + " " + Config(u"AddHistoryCount"), "2024.03.10 1");
  // Newer time, count not higher: nothing changes at all, a hidden row
  // stays hidden.
  Exec("update TIEHistory set HideDate = 1");
  ASSERT_EQ(Merge(url, Time(2024, 3, 3, 8), 5), S_OK);
  EXPECT_EQ(state(), "2 / 5:1");
  // Time not newer: the row is replaced with the delivered values, and a
  // hidden row comes back.
  ASSERT_EQ(Merge(url, Time(2024, 3, 2, 8), 4), S_OK);
  EXPECT_EQ(state(), "2 / 4:0 new");
  // A URL the snapshot lacks, after the first merge: a visit row with the
  // whole count.
  ASSERT_EQ(Merge(u"http://new.example.com/", Time(2024, 3, 4, 8), 7), S_OK);
  EXPECT_EQ(Scalar("select VisitCount from THistory where URL = 'http://new.example.com/'"), "7");
  EXPECT_EQ(Scalar("select count(*) from TIEHistory"), "2");
  EXPECT_EQ(Config(u"IEHistoryAddedBK"), "2024.03.10");
}

// Counts come from outside: an old count of -5 and a new one of INT32_MAX
// made the difference overflow a 32-bit int.
TEST_F(HistoryTablesTest, MergeOfHostileCountsHoldsTheDifferenceToThirtyTwoBits) {
  const std::u16string url = u"http://ie.example.com/";
  constexpr int32_t kMax = std::numeric_limits<int32_t>::max();
  ASSERT_EQ(Merge(url, Time(2024, 3, 1, 8), -5), S_OK);
  ASSERT_EQ(Merge(url, Time(2024, 3, 2, 8), kMax), S_OK);
  ASSERT_EQ(Merge(url, Time(2024, 3, 2, 8), std::numeric_limits<int32_t>::min()), S_OK);
  ASSERT_EQ(Merge(url, Time(2024, 3, 3, 8), kMax), S_OK);
  ASSERT_EQ(Merge(url, Time(2024, 3, 4, 8), -1), S_OK);  // newer, count not higher: nothing
  EXPECT_EQ(Rows("select VisitCount from THistory"), (std::vector<std::string>{"2147483647", "2147483647"}));
  EXPECT_EQ(Scalar("select VisitCount from TIEHistory"), "2147483647");
}

}  // namespace
}  // namespace corvane::testing
