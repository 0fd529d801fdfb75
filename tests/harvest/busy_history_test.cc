// A Chromium History held by a running browser: an exclusive lock and a
// write transaction whose pages already spilled into the file, with the
// old pages in History-journal. The read must see the last committed state,
// must not wait for the lock, and must leave the writer able to commit.

#include <poll.h>
#include <sqlite3.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <iterator>

#include "harvest/fixture/profile_fixture.h"
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

}  // namespace
}  // namespace corvane::testing
