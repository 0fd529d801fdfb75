// Files that are missing, damaged, hold impossible values or are no files
// at all: the browser delivers nothing (or leaves out the bad rows), never
// crashes or hangs, and the debug log says why.
//
// Profiles held by a running browser. A Chromium History with an exclusive
// lock and a write transaction whose pages already spilled into the file,
// with the old pages in History-journal, and a History that the browser
// commits to while it is being copied. (A Firefox profile held and written
// by the running browser is read in the real-browser suite.) The read must see the last
// committed state whole, must not wait for the lock, and must leave the
// writer able to commit.

#include <poll.h>
#include <signal.h>
#include <sys/inotify.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <fstream>

#include "harvest/harvest_host.h"

namespace corvane::testing {
namespace {

namespace fs = std::filesystem;

// 2024-03-05 09:07:03.041 UTC.
constexpr char kOneChromiumVisit[] =
    "insert into urls values(1, 'https://a.com/', 'A', 1, 0, 0, 0);"
    "insert into visits values(1, 1, 13354103223041000, 0, 805306368, 0, 0, '');";
constexpr char kOneFirefoxVisit[] =
    "insert into moz_places(id, url, title, visit_count) values(1, 'https://a.org/', 'A', 1);"
    "insert into moz_historyvisits(place_id, visit_date, visit_type) values(1, 1709629623041000, 1);"
    "insert into moz_bookmarks(type, fk, parent, position, title, guid) values(1, 1, 3, 0, 'A', 'bookmark1___');";

class DamagedFilesTest : public HarvestTest {
 protected:
  // Expects nothing from the browser and a debug line holding text.
  void ExpectNothingBecause(uint32_t browser, uint32_t kind, const std::string& text) {
    TakeDebugLog();
    EXPECT_TRUE(Extract(browser, kind).empty());
    std::string log = TakeDebugLog();
    EXPECT_NE(log.find(text), std::string::npos) << text << " not in:\n" << log;
  }
};

// Truncated in the middle of its pages, or garbage where a database should
// be. Places holds enough rows that half the file cuts through them.
TEST_F(DamagedFilesTest, CorruptOrTruncatedHistoryAndPlacesDeliverNothing) {
  std::string history = HandChromiumHistory(Home(), kOneChromiumVisit);
  std::string places = HandFirefoxPlaces(
      Home(), std::string(kOneFirefoxVisit) +
                  "with recursive n(i) as (select 1 union all select i + 1 from n where i < 200) insert into "
                  "moz_places(url, title) select 'https://filler.org/' || i || '/' || hex(zeroblob(200)), 'F' from n;");
  ASSERT_FALSE(fs::exists(places + "-wal"));
  const struct {
    uint32_t browser;
    std::string path;
    std::vector<uint32_t> kinds;
  } kFiles[] = {{BROWSER_CHROME, history, {EXTRACT_HISTORY}},
                {BROWSER_FIREFOX, places, {EXTRACT_HISTORY, EXTRACT_FAVORITES}}};
  for (const auto& file : kFiles) {
    SCOPED_TRACE(file.path);
    for (uint32_t kind : file.kinds) ASSERT_EQ(Extract(file.browser, kind).size(), 1u);
    fs::resize_file(file.path, fs::file_size(file.path) / 2);
    for (uint32_t kind : file.kinds) ExpectNothingBecause(file.browser, kind, file.path + " fails its quick check");
    std::ofstream(file.path, std::ios::trunc | std::ios::binary) << std::string(8192, '\x5a');
    for (uint32_t kind : file.kinds) ExpectNothingBecause(file.browser, kind, file.path);
  }
  // A sound database of some other layout.
  fs::remove(history);
  sqlite3* db = nullptr;
  ASSERT_EQ(sqlite3_open(history.c_str(), &db), SQLITE_OK);
  ExecSql(db, "create table visits(id INTEGER PRIMARY KEY, when_visited INTEGER); insert into visits values(1, 2);");
  sqlite3_close(db);
  ExpectNothingBecause(BROWSER_CHROME, EXTRACT_HISTORY, "the copy of " + history + " is not as expected");
  // Damaged bookmarks, and nesting deep enough to exhaust a recursive
  // reader's stack.
  std::string bookmarks = Home() + "/.config/chromium/Default/Bookmarks";
  std::string deep;
  for (int i = 0; i < 100000; ++i) deep += R"({"type": "folder", "name": "f", "children": [)";
  for (const std::string& tail : {std::string(), deep}) {
    std::ofstream(bookmarks, std::ios::trunc) << R"({"roots": {"bookmark_bar": )" << tail;
    ExpectNothingBecause(BROWSER_CHROME, EXTRACT_FAVORITES, bookmarks + " can't be read");
  }
}

// Values no browser writes: each would overflow a conversion or give a date
// outside what the calendar record holds. The visits are left out with one
// line; counts are clamped instead of cut to 32 bits. Of each family's
// times (1601 or 1970, the day before the range, its first instant, its last
// one, and beyond) only the first and last instants are kept, on edge.
TEST_F(DamagedFilesTest, TimesOutsideTheCalendarAreSkippedAndStoredCountsUnused) {
  std::string rows = "insert into urls values(1, 'https://ok.com/', 'OK', 4294967297, 4294967298, 0, 0),"
                     "(2, 'https://edge.com/', 'E', -5, -1, 0, 0), (3, 'https://bad.com/', 'B', 1, 0, 0, 0);"
                     "insert into visits values(100, 1, 13354103223041000, 0, 805306368, 0, 0, '');";
  int id = 1;
  for (const char* time : {"-9223372036854775808", "0", "1", "11644516800000000", "11644560000000000",
                           "265046687999999999", "265046688000000000", "9223372036854775807"}) {
    const char* url = time == std::string("11644560000000000") || time == std::string("265046687999999999") ? "2" : "3";
    rows += "insert into visits values(" + std::to_string(id++) + ", " + url + ", " + time + ", 0, 805306368, 0, 0, '');";
  }
  std::string history = HandChromiumHistory(Home(), rows);
  rows = "insert into moz_places(id, url, title, visit_count, typed) values (1, 'https://ok.com/', 'OK', 4294967297, 1),"
         "(2, 'https://edge.com/', 'E', -3, 0), (3, 'https://bad.com/', 'B', 1, 0);"
         "insert into moz_historyvisits(place_id, visit_date, visit_type) values(1, 1709629623041000, 1);";
  for (const char* time : {"-9223372036854775808", "-1", "null", "43200000000", "86400000000", "253402214399999999",
                           "253402214400000000", "9223372036854775807"}) {
    const char* place = time == std::string("86400000000") || time == std::string("253402214399999999") ? "2" : "3";
    rows += "insert into moz_historyvisits(place_id, visit_date, visit_type) values(" + std::string(place) + ", " +
            time + ", 1);";
  }
  std::string places = HandFirefoxPlaces(Home(), rows);
  const std::pair<uint32_t, std::string> kFiles[] = {
      {BROWSER_CHROME, history + " skipped: time outside 1970..9999 (first stored as -9223372036854775808)"},
      {BROWSER_FIREFOX, places + " skipped: time outside 1970..9999"}};
  for (const auto& [browser, line] : kFiles) {
    SCOPED_TRACE(browser);
    TakeDebugLog();
    std::vector<Delivered> visits = Extract(browser, EXTRACT_HISTORY);
    ASSERT_EQ(URLs(visits), (std::vector<std::string>{"https://edge.com/", "https://ok.com/", "https://edge.com/"}));
    EXPECT_EQ(Clock(visits[0].time) + " " + Clock(visits[2].time), "1970-01-02 5 00:00:00.000 9999-12-30 4 23:59:59.999");
    // The page's own count, damaged or not, never reaches a visit.
    EXPECT_EQ(std::to_string(visits[0].count) + " " + std::to_string(visits[1].count), "1 1");
    EXPECT_NE(TakeDebugLog().find("6 visits of " + line), std::string::npos);
  }
}

// A copy that can't be made: the disk fills up during the copy (a limit on
// file size, in a child). Nothing is delivered, the debug log says why, and
// the browser's file stays as it was.
TEST_F(DamagedFilesTest, CopyOntoAFullDiskDeliversNothingAndSaysWhy) {
  const std::string history = HandChromiumHistory(Home(), std::string(kOneChromiumVisit) +
                                                              "create table padding(data BLOB); insert into padding "
                                                              "values(zeroblob(1000000));");
  const std::string before = ReadAll(history);
  TakeDebugLog();
  std::string delivered;
  ASSERT_TRUE(RunWithin(30, [&] {
    const rlimit limit{64 << 10, 64 << 10};
    signal(SIGXFSZ, SIG_IGN);
    setrlimit(RLIMIT_FSIZE, &limit);
    return std::to_string(Extract(BROWSER_CHROME, EXTRACT_HISTORY).size());
  }, &delivered));
  EXPECT_EQ(delivered, "0");
  EXPECT_NE(TakeDebugLog().find("can't copy " + history + ": File too large"), std::string::npos);
  EXPECT_EQ(ReadAll(history), before);
}

// A FIFO where a browser keeps a file would block a plain open for ever;
// each is passed over with a debug line, and the rest of the profile is
// read. Each step runs in a child that is killed if it hangs. A file far
// larger than the browser ever writes there is not read at all.
TEST_F(DamagedFilesTest, FifosAndOversizedFilesInAProfileNeverHang) {
  std::string history = HandChromiumHistory(Home(), kOneChromiumVisit);
  std::string userData = Home() + "/.config/chromium";
  fs::resize_file(userData + "/Local State", 64 << 20);
  TakeDebugLog();
  EXPECT_EQ(Extract(BROWSER_CHROME, EXTRACT_HISTORY).size(), 1u);
  EXPECT_NE(TakeDebugLog().find("Local State skipped: too large"), std::string::npos);

  std::string places = HandFirefoxPlaces(Home(), kOneFirefoxVisit);
  std::string root = Home() + "/.mozilla/firefox";
  // The FIFO, which browser it hits, what is then read (installed, visits,
  // bookmarks) and the debug line.
  const struct {
    std::string fifo;
    uint32_t browser;
    const char* counts;
    std::string line;
  } kSteps[] = {
      {userData + "/Local State", BROWSER_CHROME, "1 1 0", "Local State skipped: not a regular file"},
      {userData + "/Default/Bookmarks", BROWSER_CHROME, "1 1 0", "Bookmarks can't be read: not a regular file"},
      {history + "-journal", BROWSER_CHROME, "1 0 0", "can't copy " + history + ": not a regular file"},
      {root + "/installs.ini", BROWSER_FIREFOX, "1 1 1", "installs.ini skipped: not a regular file"},
      {places + "-wal", BROWSER_FIREFOX, "1 0 0", "can't copy " + places + ": not a regular file"},
      {root + "/profiles.ini", BROWSER_FIREFOX, "0 0 0", "profiles.ini skipped: not a regular file"},
  };
  for (const auto& step : kSteps) {
    SCOPED_TRACE(step.fifo);
    fs::remove(step.fifo);
    ASSERT_EQ(mkfifo(step.fifo.c_str(), 0600), 0);
    std::string out;
    ASSERT_TRUE(RunWithin(30, [&] {
      return std::to_string(IsBrowserInstalled(step.browser)) + " " +
             std::to_string(Extract(step.browser, EXTRACT_HISTORY).size()) + " " +
             std::to_string(Extract(step.browser, EXTRACT_FAVORITES).size());
    }, &out)) << "hangs";
    EXPECT_EQ(out, step.counts);
    std::string log = TakeDebugLog();
    EXPECT_NE(log.find(step.line), std::string::npos) << log;
  }
}


// The browser's side, in a child process: runs sql on the database, writes
// to ready whether it ran, holds the database until done is written to (but
// never for ever), then commits. Exits 0 when all went well.
pid_t HoldOpen(const std::string& path, const std::string& sql, int ready[2], int done[2]) {
  if (pipe(ready) != 0 || pipe(done) != 0) return -1;
  pid_t child = fork();
  if (child != 0) return child;
  sqlite3* db = nullptr;
  int rc = sqlite3_open(path.c_str(), &db) == SQLITE_OK ? sqlite3_exec(db, sql.c_str(), nullptr, nullptr, nullptr) : 1;
  char byte = rc == SQLITE_OK ? 1 : 0;
  static_cast<void>(write(ready[1], &byte, 1));
  pollfd wait{done[0], POLLIN, 0};
  if (poll(&wait, 1, 30000) == 1) static_cast<void>(read(done[0], &byte, 1));
  _exit(rc == SQLITE_OK && sqlite3_exec(db, "commit", nullptr, nullptr, nullptr) == SQLITE_OK ? 0 : 3);
}

// Reads one byte from fd within 30 seconds; -1 when none came.
int ReadByte(int fd) {
  char byte = 0;
  pollfd wait{fd, POLLIN, 0};
  return poll(&wait, 1, 30000) == 1 && read(fd, &byte, 1) == 1 ? byte : -1;
}

// Whether the child ended with status 0; closes the pipes.
bool EndedWell(pid_t child, std::initializer_list<int> fds) {
  for (int fd : fds) close(fd);
  int status = 0;
  return child > 0 && waitpid(child, &status, 0) == child && WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

TEST_F(HarvestTest, HotJournalIsRolledBackInThePrivateCopy) {
  ASSERT_TRUE(WriteFixture(fixture::Family::kChromium, Home(), {.days = 3, .visitsPerDay = 400, .distinctUrls = 2000,
                                                               .hosts = 300, .bookmarks = 10, .lastDay = "2024-03-05", .endTime = ""}));
  std::string history = fixture::ChromiumHistoryPath(Home());
  std::vector<Delivered> committed = Extract(BROWSER_CHROME, EXTRACT_HISTORY);
  ASSERT_GT(committed.size(), 1000u);
  std::string before = ReadAll(history);
  // A tiny cache makes the uncommitted pages reach the file itself.
  int ready[2], done[2];
  pid_t writer = HoldOpen(history, "PRAGMA locking_mode=EXCLUSIVE; PRAGMA journal_mode=DELETE; PRAGMA cache_size=4;"
                          "begin; update urls set title = 'half-written ' || url; delete from visits where id % 2 = 0;",
                          ready, done);
  ASSERT_EQ(ReadByte(ready[0]), 1) << "the writer could not start its transaction";
  // The precondition of this case: a plain copy of the file alone would be
  // torn, and the journal holds what undoes it.
  std::error_code ignored;
  EXPECT_GT(fs::file_size(history + "-journal", ignored), 0u);
  EXPECT_NE(ReadAll(history), before) << "the uncommitted write did not reach the file";

  std::vector<Delivered> during = Extract(BROWSER_CHROME, EXTRACT_HISTORY);
  EXPECT_EQ(during.size(), committed.size());
  for (const Delivered& visit : during) ASSERT_EQ(visit.name.find("half-written"), std::string::npos) << visit.url;
  EXPECT_EQ(Extract(BROWSER_CHROME, EXTRACT_FAVORITES).size(), 10u);
  ASSERT_EQ(write(done[1], "x", 1), 1);
  EXPECT_TRUE(EndedWell(writer, {ready[0], ready[1], done[0], done[1]})) << "the writer could not commit after the read";
  // Once committed, the new state is what is read.
  std::vector<Delivered> after = Extract(BROWSER_CHROME, EXTRACT_HISTORY);
  ASSERT_FALSE(after.empty());
  EXPECT_LT(after.size(), committed.size());
  EXPECT_EQ(after.front().name.rfind("half-written ", 0), 0u);
}

// The browser's side of a commit during the copy, in a child process: waits
// until the reader's private copy of History is being written, then commits
// one visit at once, while the copy is still under way. Writes 1 to done
// when it committed, 0 when it never saw the copy; returns the exit code.
int CommitWhileHistoryIsCopied(const std::string& history, const std::string& tmp, int ready, int done) {
  int events = inotify_init1(IN_NONBLOCK | IN_CLOEXEC);
  int tmpWatch = events >= 0 ? inotify_add_watch(events, tmp.c_str(), IN_CREATE) : -1;
  sqlite3* db = nullptr;
  if (tmpWatch < 0 || sqlite3_open(history.c_str(), &db) != SQLITE_OK) return 2;
  // A prepared insert, so that the commit costs as little as it can.
  sqlite3_stmt* insert = nullptr;
  sqlite3_prepare_v2(db, "insert into visits values(2, 2, 13354103224041000, 0, 805306368, 0, 0, '')", -1, &insert,
                     nullptr);
  static_cast<void>(write(ready, "x", 1));
  int folderWatch = -1;
  char committed = 0;
  auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(30);
  while (committed == 0 && std::chrono::steady_clock::now() < deadline) {
    pollfd wait{events, POLLIN, 0};
    if (poll(&wait, 1, 100) <= 0) continue;
    alignas(inotify_event) char buffer[4096];
    ssize_t got = read(events, buffer, sizeof(buffer));
    for (ssize_t at = 0; at < got && committed == 0;) {
      const auto* event = reinterpret_cast<const inotify_event*>(buffer + at);
      std::string name = event->len > 0 ? event->name : "";
      if (event->wd == tmpWatch && name.rfind("corvane-harvest-", 0) == 0) {
        folderWatch = inotify_add_watch(events, (tmp + "/" + name).c_str(), IN_MODIFY);
      } else if (event->wd == folderWatch && name == "History") {
        committed = sqlite3_step(insert) == SQLITE_DONE ? 1 : 0;
      }
      at += static_cast<ssize_t>(sizeof(inotify_event) + event->len);
    }
  }
  static_cast<void>(write(done, &committed, 1));
  sqlite3_finalize(insert);
  sqlite3_close(db);
  return committed == 1 ? 0 : 3;
}

// The copy is taken while the browser commits: the attempt sees the source
// move, is thrown away, and a later one reads the new state whole.
TEST_F(HarvestTest, CommitDuringTheCopyIsWaitedOut) {
  std::string tmp = m_scratch.File("tmp");
  fs::create_directories(tmp);
  SetEnv("TMPDIR", tmp.c_str());
  // Large enough that the copy takes a good while after its first write.
  std::string history = HandChromiumHistory(
      Home(), "insert into urls values(1, 'https://a.com/', 'A', 1, 0, 0, 0), (2, 'https://written.test/', 'W', 1, 0, "
              "0, 0); insert into visits values(1, 1, 13354103223041000, 0, 805306368, 0, 0, '');"
              "create table padding(data BLOB); insert into padding values(zeroblob(96000000));");
  ASSERT_EQ(URLs(Extract(BROWSER_CHROME, EXTRACT_HISTORY)), std::vector<std::string>{"https://a.com/"});
  int ready[2], done[2];
  ASSERT_EQ(pipe(ready) | pipe(done), 0);
  pid_t child = fork();
  if (child == 0) _exit(CommitWhileHistoryIsCopied(history, tmp, ready[1], done[1]));
  ASSERT_EQ(ReadByte(ready[0]), 'x');
  TakeDebugLog();
  std::vector<Delivered> visits = Extract(BROWSER_CHROME, EXTRACT_HISTORY);
  int committed = ReadByte(done[0]);
  EXPECT_TRUE(EndedWell(child, {ready[0], ready[1], done[0], done[1]}));
  ASSERT_EQ(committed, 1) << "the writer never saw the copy";
  std::string log = TakeDebugLog();
  EXPECT_NE(log.find(history + " changed while it was copied (attempt 1 of 5)"), std::string::npos) << log;
  EXPECT_EQ(log.find("kept changing"), std::string::npos) << log;
  EXPECT_EQ(URLs(visits), (std::vector<std::string>{"https://a.com/", "https://written.test/"}));
}

}  // namespace
}  // namespace corvane::testing
