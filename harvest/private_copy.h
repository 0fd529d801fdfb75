// private_copy.h: a consistent, private read of a browser's SQLite file.
//
// A running browser holds its database locked and keeps recent writes in a
// rollback journal (Chromium) or a write-ahead log (Firefox). Opening the
// original would block on the lock or see half-written pages, and the
// immutable flag would ignore the journal. So the file and its journal or
// log are copied into a private folder, the copy is opened read-write so
// that SQLite rolls a hot journal back or applies the log, and a quick check
// must pass. The browser's files are only ever read, and never waited on.
//
// The database and its journal or log are two files copied one after the
// other: a commit between the two copies, or during either, would pair a
// database with the journal of another moment, which a rollback or a log
// replay turns into a state that never was. So each attempt notes what the
// source files are (identity, size, change and modification times, and
// their first bytes, which hold SQLite's change counter and the log's salt)
// before it copies and again after; an attempt during which anything moved
// is thrown away and the copy taken again, a little later, a few times.
// The first bytes catch a commit that lands within the file system's
// timestamp granularity. A copy that is still torn in a way none of this
// sees fails the quick check and gets one more attempt.

#ifndef CORVANE_HARVEST_PRIVATE_COPY_H_
#define CORVANE_HARVEST_PRIVATE_COPY_H_

#include <sqlite3.h>

#include <memory>
#include <string>
#include <string_view>

namespace corvane::harvest {

struct StatementFinalizer {
  void operator()(sqlite3_stmt* stmt) const { sqlite3_finalize(stmt); }
};
using Statement = std::unique_ptr<sqlite3_stmt, StatementFinalizer>;

// A text column as UTF-16, converted by SQLite; valid until the statement
// steps again. A null column is the empty text.
inline std::u16string_view ColumnText16(sqlite3_stmt* stmt, int column) {
  const void* text = sqlite3_column_text16(stmt, column);
  if (text == nullptr) return {};
  return {static_cast<const char16_t*>(text), static_cast<size_t>(sqlite3_column_bytes16(stmt, column)) / 2};
}

class PrivateCopy {
 public:
  PrivateCopy() = default;
  ~PrivateCopy();
  PrivateCopy(const PrivateCopy&) = delete;
  PrivateCopy& operator=(const PrivateCopy&) = delete;

  // False, with a debug line, when the file is missing or no regular file,
  // can't be copied, kept changing while it was copied, or is no sound
  // database.
  bool Open(const std::string& databaseFile);
  sqlite3* Handle() const { return m_db; }
  // A statement on the copy; null, with a debug line, when the browser's
  // tables are not what it expects.
  [[nodiscard]] Statement Prepare(const std::string& sql) const;
  // True when the last step of a statement (rc) ended the rows; false, with
  // a debug line, when the read stopped on an error.
  [[nodiscard]] bool Finished(int rc) const;

  // Attempts at a copy during which the source did not move, at most.
  static constexpr int kMaxAttempts = 5;

 private:
  enum class Attempt { kSound, kMoved, kUnsound, kFailed };
  Attempt CopyOnce(const std::string& databaseFile);
  void Close();

  std::string m_file;
  std::string m_folder;
  sqlite3* m_db = nullptr;
};

}  // namespace corvane::harvest

#endif  // CORVANE_HARVEST_PRIVATE_COPY_H_
