// Profiles held by a running browser. A Chromium History with an exclusive
// lock and a write transaction whose pages already spilled into the file,
// with the old pages in History-journal; a Firefox places.sqlite with a
// commit still in its log and a write left open; and a History that the
// browser commits to while it is being copied. The read must see the last
// committed state whole, must not wait for the lock, and must leave the
// writer able to commit.

#include <poll.h>
#include <sqlite3.h>
#include <sys/inotify.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "harvest/fixture/profile_fixture.h"
#include "harvest/hand_profiles.h"
#include "harvest/harvest_host.h"

namespace corvane::testing {
namespace {

namespace fs = std::filesystem;

std::string ReadAll(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

// The browser's side, in a child process: returns the exit code.
int HoldHistoryWithSpilledWrite(const std::string& history, int ready, int done) {
  sqlite3* db = nullptr;
  if (sqlite3_open(history.c_str(), &db) != SQLITE_OK) return 2;
  // A tiny cache makes the uncommitted pages reach the file itself.
  int rc = sqlite3_exec(db,
                        "PRAGMA locking_mode=EXCLUSIVE; PRAGMA journal_mode=DELETE; PRAGMA cache_size=4; begin; "
                        "update urls set title = 'half-written ' || url; delete from visits where id % 2 = 0;",
                        nullptr, nullptr, nullptr);
  char byte = rc == SQLITE_OK ? 1 : 0;
  static_cast<void>(write(ready, &byte, 1));
  // Wait for the reader, but never for ever.
  pollfd wait{done, POLLIN, 0};
  if (poll(&wait, 1, 30000) == 1) static_cast<void>(read(done, &byte, 1));
  rc = rc == SQLITE_OK ? sqlite3_exec(db, "commit", nullptr, nullptr, nullptr) : rc;
  sqlite3_close(db);
  return rc == SQLITE_OK ? 0 : 3;
}

class BusyHistoryTest : public HarvestTest {
 protected:
  BusyHistoryTest() : m_tz("TZ", "UTC") {}
  test::ScopedEnv m_tz;
};

TEST_F(BusyHistoryTest, HotJournalIsRolledBackInThePrivateCopy) {
  fixture::ProfileSpec spec;
  spec.days = 3;
  spec.visitsPerDay = 400;
  spec.distinctUrls = 2000;
  spec.hosts = 300;
  spec.bookmarks = 10;
  spec.lastDay = "2024-03-05";
  std::string error;
  ASSERT_TRUE(fixture::WriteChromiumProfile(Home(), spec, &error)) << error;
  std::string history = fixture::ChromiumHistoryPath(Home());
  std::vector<Delivered> committed = Extract(BROWSER_CHROME, EXTRACT_HISTORY);
  ASSERT_GT(committed.size(), 1000u);
  std::string before = ReadAll(history);

  int ready[2];
  int done[2];
  ASSERT_EQ(pipe(ready), 0);
  ASSERT_EQ(pipe(done), 0);
  pid_t child = fork();
  if (child == 0) _exit(HoldHistoryWithSpilledWrite(history, ready[1], done[0]));
  char byte = 0;
  ASSERT_EQ(read(ready[0], &byte, 1), 1);
  ASSERT_EQ(byte, 1) << "the writer could not start its transaction";
  // The precondition of this case: a plain copy of the file alone would be
  // torn, and the journal holds what undoes it.
  std::error_code ignored;
  EXPECT_GT(fs::file_size(history + "-journal", ignored), 0u);
  EXPECT_NE(ReadAll(history), before) << "the uncommitted write did not reach the file";

  std::vector<Delivered> during = Extract(BROWSER_CHROME, EXTRACT_HISTORY);
  EXPECT_EQ(during.size(), committed.size());
  for (const Delivered& visit : during) {
    ASSERT_EQ(visit.name.find("half-written"), std::string::npos) << visit.url;
  }
  EXPECT_EQ(Extract(BROWSER_CHROME, EXTRACT_FAVORITES).size(), 10u);

  ASSERT_EQ(write(done[1], &byte, 1), 1);
  int status = 0;
  waitpid(child, &status, 0);
  EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << "the writer could not commit after the read";
  // Once committed, the new state is what is read.
  std::vector<Delivered> after = Extract(BROWSER_CHROME, EXTRACT_HISTORY);
  ASSERT_FALSE(after.empty());
  EXPECT_LT(after.size(), committed.size());
  EXPECT_EQ(after.front().name.rfind("half-written ", 0), 0u);
  for (int fd : {ready[0], ready[1], done[0], done[1]}) close(fd);
}

// Another process holds the database with an open write transaction, as a
// running browser does, and its last commit still sits in the write-ahead
// log: the read sees that commit, neither blocks nor sees the unfinished
// write, nor does it disturb the writer.
TEST_F(BusyHistoryTest, FirefoxProfileHeldOpenAndWrittenByAnotherProcess) {
  std::string error;
  fixture::ProfileSpec spec;
  spec.days = 2;
  spec.visitsPerDay = 30;
  spec.distinctUrls = 100;
  spec.hosts = 20;
  spec.bookmarks = 5;
  spec.lastDay = "2024-03-05";
  ASSERT_TRUE(fixture::WriteFirefoxProfile(Home(), spec, &error)) << error;
  size_t committed = Extract(BROWSER_FIREFOX, EXTRACT_HISTORY).size();
  int ready[2];
  int done[2];
  ASSERT_EQ(pipe(ready), 0);
  ASSERT_EQ(pipe(done), 0);
  pid_t child = fork();
  if (child == 0) {
    sqlite3* db = nullptr;
    sqlite3_open(fixture::FirefoxPlacesPath(Home()).c_str(), &db);
    // One committed visit that stays in the log (no checkpoint), then a
    // write transaction left open.
    sqlite3_exec(db, "PRAGMA locking_mode=EXCLUSIVE; PRAGMA wal_autocheckpoint=0; insert into "
                     "moz_historyvisits(place_id, visit_date, visit_type) values(1, 1709629622000000, 1); begin "
                     "exclusive; insert into moz_historyvisits(place_id, visit_date, visit_type) values(1, "
                     "1709629623041000, 1);", nullptr, nullptr, nullptr);
    char byte = 1;
    static_cast<void>(write(ready[1], &byte, 1));
    static_cast<void>(read(done[0], &byte, 1));
    sqlite3_exec(db, "commit", nullptr, nullptr, nullptr);
    sqlite3_close(db);
    _exit(0);
  }
  char byte = 0;
  ASSERT_EQ(read(ready[0], &byte, 1), 1);
  std::error_code ignored;
  EXPECT_GT(fs::file_size(fixture::FirefoxPlacesPath(Home()) + "-wal", ignored), 0u);
  EXPECT_EQ(Extract(BROWSER_FIREFOX, EXTRACT_HISTORY).size(), committed + 1);
  EXPECT_EQ(Extract(BROWSER_FIREFOX, EXTRACT_FAVORITES).size(), 5u);
  ASSERT_EQ(write(done[1], &byte, 1), 1);
  int status = 0;
  waitpid(child, &status, 0);
  EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0);
  EXPECT_EQ(Extract(BROWSER_FIREFOX, EXTRACT_HISTORY).size(), committed + 2);
}


// The browser's side of a commit during the copy, in a child process: waits
// until the reader's private copy of History is being written, then commits
// one visit at once, while the copy is still under way. Writes 1 to done
// when it committed, 0 when it never saw the copy; returns the exit code.
int CommitWhileHistoryIsCopied(const std::string& history, const std::string& tmp, int ready, int done, int finish) {
  int events = inotify_init1(IN_NONBLOCK | IN_CLOEXEC);
  int tmpWatch = events >= 0 ? inotify_add_watch(events, tmp.c_str(), IN_CREATE) : -1;
  sqlite3* db = nullptr;
  if (tmpWatch < 0 || sqlite3_open(history.c_str(), &db) != SQLITE_OK) return 2;
  // A prepared insert, so that the commit costs as little as it can.
  sqlite3_stmt* insert = nullptr;
  sqlite3_prepare_v2(db, "insert into visits values(2, 2, 13354103224041000, 0, 805306368, 0, 0, '')", -1, &insert,
                     nullptr);
  char byte = 1;
  static_cast<void>(write(ready, &byte, 1));
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
  static_cast<void>(read(finish, &byte, 1));
  sqlite3_finalize(insert);
  sqlite3_close(db);
  return committed == 1 ? 0 : 3;
}

// The copy is taken while the browser commits: the attempt sees the source
// move, is thrown away, and a later one reads the new state whole.
TEST_F(BusyHistoryTest, CommitDuringTheCopyIsWaitedOut) {
  std::string tmp = Scratch() + "/tmp";
  fs::create_directories(tmp);
  test::ScopedEnv tmpEnv("TMPDIR", tmp.c_str());
  // Large enough that the copy takes a good while after its first write.
  std::string history = HandChromiumHistory(
      Home(), "insert into urls values(1, 'https://a.com/', 'A', 1, 0, 0, 0), (2, 'https://written.test/', 'W', 1, 0, "
              "0, 0); insert into visits values(1, 1, 13354103223041000, 0, 805306368, 0, 0, '');"
              "create table padding(data BLOB); insert into padding values(zeroblob(96000000));");
  ASSERT_EQ(URLs(Extract(BROWSER_CHROME, EXTRACT_HISTORY)), std::vector<std::string>{"https://a.com/"});
  int ready[2], done[2], finish[2];
  ASSERT_EQ(pipe(ready), 0);
  ASSERT_EQ(pipe(done), 0);
  ASSERT_EQ(pipe(finish), 0);
  pid_t child = fork();
  if (child == 0) _exit(CommitWhileHistoryIsCopied(history, tmp, ready[1], done[1], finish[0]));
  char byte = 0;
  ASSERT_EQ(read(ready[0], &byte, 1), 1);
  TakeDebugLog();
  std::vector<Delivered> visits = Extract(BROWSER_CHROME, EXTRACT_HISTORY);
  char committed = 0;
  pollfd wait{done[0], POLLIN, 0};
  if (poll(&wait, 1, 30000) == 1) static_cast<void>(read(done[0], &committed, 1));
  ASSERT_EQ(write(finish[1], &byte, 1), 1);
  int status = 0;
  waitpid(child, &status, 0);
  ASSERT_EQ(committed, 1) << "the writer never saw the copy";
  EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0);
  std::string log = TakeDebugLog();
  EXPECT_NE(log.find(history + " changed while it was copied (attempt 1 of 5)"), std::string::npos) << log;
  EXPECT_EQ(log.find("kept changing"), std::string::npos) << log;
  EXPECT_EQ(URLs(visits), (std::vector<std::string>{"https://a.com/", "https://written.test/"}));
  for (int fd : {ready[0], ready[1], done[0], done[1], finish[0], finish[1]}) close(fd);
}

}  // namespace
}  // namespace corvane::testing
