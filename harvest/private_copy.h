// private_copy.h: a consistent, private read of a browser's SQLite file.
//
// A running browser holds its database locked and keeps recent writes in a
// rollback journal (Chromium) or a write-ahead log (Firefox). Opening the
// original would block on the lock or see half-written pages, and the
// immutable flag would ignore the journal. So the file and its journal or
// log are copied into a private folder, the copy is opened read-write so
// that SQLite rolls a hot journal back or applies the log, and a quick check
// must pass; a failed check gets one more copy. The browser's files are
// only ever read.

#ifndef CORVANE_HARVEST_PRIVATE_COPY_H_
#define CORVANE_HARVEST_PRIVATE_COPY_H_

#include <sqlite3.h>

#include <memory>
#include <string>

namespace corvane::harvest {

struct StatementFinalizer {
  void operator()(sqlite3_stmt* stmt) const { sqlite3_finalize(stmt); }
};
using Statement = std::unique_ptr<sqlite3_stmt, StatementFinalizer>;

class PrivateCopy {
 public:
  PrivateCopy() = default;
  ~PrivateCopy();
  PrivateCopy(const PrivateCopy&) = delete;
  PrivateCopy& operator=(const PrivateCopy&) = delete;

  // False, with a debug line, when the file is missing, can't be copied or
  // is no sound database.
  bool Open(const std::string& databaseFile);
  sqlite3* Handle() const { return m_db; }
  // A statement on the copy; null, with a debug line, when the browser's
  // tables are not what it expects.
  [[nodiscard]] Statement Prepare(const std::string& sql) const;

 private:
  bool CopyAndCheck(const std::string& databaseFile);
  void Close();

  std::string m_file;
  std::string m_folder;
  sqlite3* m_db = nullptr;
};

}  // namespace corvane::harvest

#endif  // CORVANE_HARVEST_PRIVATE_COPY_H_
