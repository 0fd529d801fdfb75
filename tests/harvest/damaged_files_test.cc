// Files that are missing, damaged, hold impossible values or are no files
// at all: the browser delivers nothing (or leaves out the bad rows), never
// crashes or hangs, and the debug log says why.

#include <sys/stat.h>

#include <filesystem>
#include <fstream>

#include "harvest/hand_profiles.h"
#include "harvest/harvest_host.h"

namespace corvane::testing {
namespace {

namespace fs = std::filesystem;

// 2024-03-05 09:07:03.041 UTC: in Chromium's microseconds since 1601, and
// in Firefox's since 1970.
constexpr char kChromiumTime[] = "13354103223041000";
constexpr char kFirefoxTime[] = "1709629623041000";

constexpr char kOneChromiumVisit[] =
    "insert into urls values(1, 'https://a.com/', 'A', 1, 0, 0, 0);"
    "insert into visits values(1, 1, 13354103223041000, 0, 805306368, 0, 0, '');";
constexpr char kOneFirefoxVisit[] =
    "insert into moz_places(id, url, title, visit_count) values(1, 'https://a.org/', 'A', 1);"
    "insert into moz_historyvisits(place_id, visit_date, visit_type) values(1, 1709629623041000, 1);"
    "insert into moz_bookmarks(type, fk, parent, position, title, guid) values(1, 1, 3, 0, 'A', 'bookmark1___');";

class DamagedFilesTest : public HarvestTest {
 protected:
  DamagedFilesTest() : m_tz("TZ", "UTC") {}

  // Expects nothing from the browser and a debug line holding each text.
  void ExpectNothingBecause(uint32_t browser, uint32_t kind, std::initializer_list<std::string> texts) {
    TakeDebugLog();
    EXPECT_TRUE(Extract(browser, kind).empty());
    std::string log = TakeDebugLog();
    for (const std::string& text : texts) EXPECT_NE(log.find(text), std::string::npos) << text << " not in:\n" << log;
  }

  test::ScopedEnv m_tz;
};

TEST_F(DamagedFilesTest, MissingFilesSayWhyNothingCame) {
  ExpectNothingBecause(BROWSER_CHROME, EXTRACT_HISTORY, {"harvest: no profile of Chrome"});
  ExpectNothingBecause(BROWSER_FIREFOX, EXTRACT_FAVORITES, {"harvest: no profile of Firefox"});
  ExpectNothingBecause(BROWSER_IE, EXTRACT_HISTORY, {"harvest: browser 0x1 is none this library reads"});
  HandChromiumHistory(Home(), kOneChromiumVisit);
  ASSERT_EQ(Extract(BROWSER_CHROME, EXTRACT_HISTORY).size(), 1u);
  ExpectNothingBecause(BROWSER_CHROME, EXTRACT_FAVORITES, {"harvest: no file " + Home() + "/.config/chromium/Default/Bookmarks"});
  // A profile whose places.sqlite is gone is no profile.
  std::string places = HandFirefoxPlaces(Home(), kOneFirefoxVisit);
  ASSERT_EQ(Extract(BROWSER_FIREFOX, EXTRACT_HISTORY).size(), 1u);
  fs::remove(places);
  ExpectNothingBecause(BROWSER_FIREFOX, EXTRACT_HISTORY, {"harvest: no profile of Firefox"});
  // Sound files that hold nothing say so too.
  HandChromiumHistory(Home(), "");
  TakeDebugLog();
  EXPECT_TRUE(Extract(BROWSER_CHROME, EXTRACT_HISTORY).empty());
  EXPECT_NE(TakeDebugLog().find("harvest: 0 items of kind 1 from"), std::string::npos);
}

TEST_F(DamagedFilesTest, CorruptOrTruncatedHistoryDeliversNothing) {
  std::string history = HandChromiumHistory(Home(), kOneChromiumVisit);
  ASSERT_EQ(Extract(BROWSER_CHROME, EXTRACT_HISTORY).size(), 1u);
  // Truncated in the middle of its pages.
  fs::resize_file(history, fs::file_size(history) / 2);
  ExpectNothingBecause(BROWSER_CHROME, EXTRACT_HISTORY, {history + " fails its quick check"});
  // Garbage where a database should be.
  std::ofstream(history, std::ios::trunc | std::ios::binary) << std::string(8192, '\x5a');
  ExpectNothingBecause(BROWSER_CHROME, EXTRACT_HISTORY, {history});
  // Damaged bookmarks.
  std::string bookmarks = Home() + "/.config/chromium/Default/Bookmarks";
  std::ofstream(bookmarks) << "{\"roots\": {\"bookmark_bar\": ";
  ExpectNothingBecause(BROWSER_CHROME, EXTRACT_FAVORITES, {bookmarks + " can't be read"});
  // Nesting deep enough to exhaust a recursive reader's stack.
  std::string deep;
  for (int i = 0; i < 100000; ++i) deep += R"({"type": "folder", "name": "f", "children": [)";
  std::ofstream(bookmarks, std::ios::trunc) << R"({"roots": {"bookmark_bar": )" << deep;
  ExpectNothingBecause(BROWSER_CHROME, EXTRACT_FAVORITES, {bookmarks + " can't be read"});
  // A sound database of some other layout.
  fs::remove(history);
  sqlite3* db = nullptr;
  ASSERT_EQ(sqlite3_open(history.c_str(), &db), SQLITE_OK);
  ExecSql(db, "create table visits(id INTEGER PRIMARY KEY, when_visited INTEGER); insert into visits values(1, 2);");
  sqlite3_close(db);
  ExpectNothingBecause(BROWSER_CHROME, EXTRACT_HISTORY, {"the copy of " + history + " is not as expected"});
}

TEST_F(DamagedFilesTest, CorruptOrTruncatedPlacesDeliversNothing) {
  // Enough rows that half the file cuts through them.
  std::string places = HandFirefoxPlaces(
      Home(), std::string(kOneFirefoxVisit) +
                  "with recursive n(i) as (select 1 union all select i + 1 from n where i < 200) insert into "
                  "moz_places(url, title) select 'https://filler.org/' || i || '/' || hex(zeroblob(200)), 'F' from n;");
  ASSERT_EQ(Extract(BROWSER_FIREFOX, EXTRACT_HISTORY).size(), 1u);
  ASSERT_EQ(Extract(BROWSER_FIREFOX, EXTRACT_FAVORITES).size(), 1u);
  ASSERT_FALSE(fs::exists(places + "-wal"));
  fs::resize_file(places, fs::file_size(places) / 2);
  ExpectNothingBecause(BROWSER_FIREFOX, EXTRACT_HISTORY, {places + " fails its quick check"});
  ExpectNothingBecause(BROWSER_FIREFOX, EXTRACT_FAVORITES, {places + " fails its quick check"});
  std::ofstream(places, std::ios::trunc | std::ios::binary) << std::string(8192, '\x5a');
  ExpectNothingBecause(BROWSER_FIREFOX, EXTRACT_HISTORY, {places});
  ExpectNothingBecause(BROWSER_FIREFOX, EXTRACT_FAVORITES, {places});
}

// Values no browser writes: each would overflow a conversion or give a
// date outside what the calendar record holds. The visits are left out
// with one line; counts are clamped instead of cut to 32 bits.
TEST_F(DamagedFilesTest, ChromiumTimesOutsideTheCalendarAreSkippedAndCountsClamped) {
  std::string rows = "insert into urls values(1, 'https://ok.com/', 'OK', 4294967297, 4294967298, 0, 0),"
                     "(2, 'https://neg.com/', 'N', -5, -1, 0, 0), (3, 'https://bad.com/', 'B', 1, 0, 0, 0);";
  // 1601, the day before the range, the first instant of the range, its
  // last one, and beyond.
  const char* kTimes[] = {"-9223372036854775808", "0",  "1", "11644516800000000", "11644560000000000",
                          "265046687999999999",   "265046688000000000", "9223372036854775807"};
  int id = 1;
  for (const char* time : kTimes) {
    std::string url = std::string(time) == "11644560000000000" || std::string(time) == "265046687999999999" ? "2" : "3";
    rows += "insert into visits values(" + std::to_string(id++) + ", " + url + ", " + time + ", 0, 805306368, 0, 0, '');";
  }
  rows += "insert into visits values(100, 1, " + std::string(kChromiumTime) + ", 0, 805306368, 0, 0, '');";
  HandChromiumHistory(Home(), rows);
  TakeDebugLog();
  std::vector<Delivered> visits = Extract(BROWSER_CHROME, EXTRACT_HISTORY);
  ASSERT_EQ(URLs(visits), (std::vector<std::string>{"https://neg.com/", "https://ok.com/", "https://neg.com/"}));
  EXPECT_EQ(std::vector<int>({visits[0].time.wYear, visits[0].time.wMonth, visits[0].time.wDay}),
            std::vector<int>({1970, 1, 2}));
  EXPECT_EQ(std::vector<int>({visits[2].time.wYear, visits[2].time.wMonth, visits[2].time.wDay, visits[2].time.wHour}),
            std::vector<int>({9999, 12, 30, 23}));
  EXPECT_EQ(visits[0].count, 0);
  EXPECT_EQ(visits[1].count, INT32_MAX);
  EXPECT_NE(TakeDebugLog().find("6 visits of " + Home() + "/.config/chromium/Default/History skipped: time outside "
                                "1970..9999 (first stored as -9223372036854775808)"),
            std::string::npos);
}

TEST_F(DamagedFilesTest, FirefoxTimesOutsideTheCalendarAreSkippedAndCountsClamped) {
  std::string rows = "insert into moz_places(id, url, title, visit_count, typed) values"
                     "(1, 'https://ok.org/', 'OK', 4294967297, 1), (2, 'https://edge.org/', 'E', -3, 0),"
                     "(3, 'https://bad.org/', 'B', 1, 0);";
  const char* kTimes[] = {"-9223372036854775808", "-1", "null", "43200000000", "86400000000",
                          "253402214399999999", "253402214400000000", "9223372036854775807"};
  for (const char* time : kTimes) {
    std::string place = std::string(time) == "86400000000" || std::string(time) == "253402214399999999" ? "2" : "3";
    rows += "insert into moz_historyvisits(place_id, visit_date, visit_type) values(" + place + ", " + time + ", 1);";
  }
  rows += "insert into moz_historyvisits(place_id, visit_date, visit_type) values(1, " + std::string(kFirefoxTime) +
          ", 1);";
  std::string places = HandFirefoxPlaces(Home(), rows);
  TakeDebugLog();
  std::vector<Delivered> visits = Extract(BROWSER_FIREFOX, EXTRACT_HISTORY);
  ASSERT_EQ(URLs(visits), (std::vector<std::string>{"https://edge.org/", "https://ok.org/", "https://edge.org/"}));
  EXPECT_EQ(visits[0].time.wYear, 1970);
  EXPECT_EQ(visits[2].time.wYear, 9999);
  EXPECT_EQ(visits[0].count, 0);
  EXPECT_EQ(visits[1].count, INT32_MAX);
  EXPECT_NE(TakeDebugLog().find("6 visits of " + places + " skipped: time outside 1970..9999"), std::string::npos);
}

// A FIFO where a browser keeps a file would block a plain open for ever;
// each is passed over with a debug line, and the rest of the profile is
// read. Each step runs in a child that is killed if it hangs.
TEST_F(DamagedFilesTest, FifosInAProfileNeverHang) {
  auto fifo = [](const std::string& path) {
    fs::remove(path);
    ASSERT_EQ(mkfifo(path.c_str(), 0600), 0) << path;
  };
  auto counts = [this](uint32_t browser) {
    return std::to_string(LoadHarvest().IsBrowserInstalled(browser)) + " " +
           std::to_string(Extract(browser, EXTRACT_HISTORY).size()) + " " +
           std::to_string(Extract(browser, EXTRACT_FAVORITES).size());
  };
  std::string history = HandChromiumHistory(Home(), kOneChromiumVisit);
  std::string userData = Home() + "/.config/chromium";
  fifo(userData + "/Local State");
  fifo(userData + "/Default/Bookmarks");
  std::string out;
  ASSERT_TRUE(RunWithin(30, [&] { return counts(BROWSER_CHROME); }, &out)) << "hangs on Local State or Bookmarks";
  // The profile is found without Local State; the bookmarks are not read.
  EXPECT_EQ(out, "1 1 0");
  std::string log = TakeDebugLog();
  EXPECT_NE(log.find("Local State skipped: not a regular file"), std::string::npos) << log;
  EXPECT_NE(log.find("Bookmarks can't be read: not a regular file"), std::string::npos) << log;
  fifo(history + "-journal");
  ASSERT_TRUE(RunWithin(30, [&] { return counts(BROWSER_CHROME); }, &out)) << "hangs on History-journal";
  EXPECT_EQ(out, "1 0 0");
  EXPECT_NE(TakeDebugLog().find("can't copy " + history + ": not a regular file"), std::string::npos);

  std::string places = HandFirefoxPlaces(Home(), kOneFirefoxVisit);
  std::string root = Home() + "/.mozilla/firefox";
  fifo(root + "/installs.ini");
  ASSERT_TRUE(RunWithin(30, [&] { return counts(BROWSER_FIREFOX); }, &out)) << "hangs on installs.ini";
  EXPECT_EQ(out, "1 1 1");
  EXPECT_NE(TakeDebugLog().find("installs.ini skipped: not a regular file"), std::string::npos);
  fifo(places + "-wal");
  ASSERT_TRUE(RunWithin(30, [&] { return counts(BROWSER_FIREFOX); }, &out)) << "hangs on places.sqlite-wal";
  EXPECT_EQ(out, "1 0 0");
  fifo(root + "/profiles.ini");
  ASSERT_TRUE(RunWithin(30, [&] { return counts(BROWSER_FIREFOX); }, &out)) << "hangs on profiles.ini";
  EXPECT_EQ(out, "0 0 0");
  EXPECT_NE(TakeDebugLog().find("profiles.ini skipped: not a regular file"), std::string::npos);
}

// A file far larger than the browser ever writes there is not read at all.
TEST_F(DamagedFilesTest, OversizedSmallFilesAreNotRead) {
  HandChromiumHistory(Home(), kOneChromiumVisit);
  std::string localState = Home() + "/.config/chromium/Local State";
  std::ofstream(localState, std::ios::trunc) << R"({"profile":{"last_used":"Default"}})";
  fs::resize_file(localState, 64 << 20);
  TakeDebugLog();
  EXPECT_EQ(Extract(BROWSER_CHROME, EXTRACT_HISTORY).size(), 1u);
  EXPECT_NE(TakeDebugLog().find("Local State skipped: too large"), std::string::npos);
}

}  // namespace
}  // namespace corvane::testing
