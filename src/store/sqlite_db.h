// sqlite_db.h: a thin layer over SQLite that the whole store is built on.
//
// CSqliteDB owns one database handle; CSqliteStatement owns one prepared
// statement and belongs to whoever prepared it (it must not outlive the
// handle). Three rules hold for all table code: failures come back as a
// boolean and never as an exception, bind and column indices count from 0,
// and every failure is recorded as the process-wide last error, which only
// diagnostics read.

#ifndef CORVANE_STORE_SQLITE_DB_H_
#define CORVANE_STORE_SQLITE_DB_H_

#include <sqlite3.h>

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

namespace corvane {

// A SQLite result code with a private copy of its message.
class CSqliteException {
 public:
  CSqliteException(int32_t code, const char* message);
  CSqliteException(const CSqliteException& other);
  CSqliteException& operator=(const CSqliteException& other);
  ~CSqliteException();

  int32_t Code() const { return m_code; }
  const char* Message() const { return m_message; }

 private:
  int32_t m_code = 0;
  char* m_message = nullptr;
};

// The last failure of this layer, code 0 before the first.
const CSqliteException& LastSqliteError();

class CSqliteStatement {
 public:
  ~CSqliteStatement();
  CSqliteStatement(const CSqliteStatement&) = delete;
  CSqliteStatement& operator=(const CSqliteStatement&) = delete;

  bool BindInt(int index, int32_t value);
  bool BindInt64(int index, int64_t value);
  bool BindText16(int index, std::u16string_view text);
  // Binds the text without a copy: it must stay as it is until the
  // statement has run and been bound anew. For row-wise writers that bind
  // texts they hold anyway.
  bool BindText16NoCopy(int index, std::u16string_view text);
  bool BindText(int index, std::string_view text);
  bool BindNull(int index);

  // One step. A statement whose text contains "select" must yield a row
  // (it then stands on it); any other must finish, and is reset for the
  // next row. Bound values stay bound.
  bool Execute();

  // One step of a row loop: true on a row; false at the end (after which
  // the statement is reset and can run again) or on an error.
  bool Step();

  int32_t ColumnInt(int column);
  int64_t ColumnInt64(int column);
  double ColumnDouble(int column);
  // A null column gives the empty string.
  std::u16string ColumnText16(int column);
  // The same text without a copy: valid until the next Step, Reset or
  // Execute of this statement.
  std::u16string_view ColumnText16View(int column);
  bool ColumnIsNull(int column);
  // SQLITE_INTEGER, SQLITE_FLOAT, SQLITE_TEXT, SQLITE_BLOB or SQLITE_NULL.
  int ColumnType(int column);

  // Clears bindings and resets, so the statement can be reused.
  void Reset();

 private:
  friend class CSqliteDB;
  CSqliteStatement(sqlite3* db, sqlite3_stmt* stmt, bool selectFlag);

  sqlite3* m_db;
  sqlite3_stmt* m_pStmt;
  bool m_bSelect;
};

using StatementPtr = std::unique_ptr<CSqliteStatement>;

class CSqliteDB {
 public:
  CSqliteDB() = default;
  virtual ~CSqliteDB();
  CSqliteDB(const CSqliteDB&) = delete;
  CSqliteDB& operator=(const CSqliteDB&) = delete;

  bool IsOpen() const { return m_db != nullptr; }
  bool Open(std::u16string_view path);
  // True when there is no handle or it closed; false (handle kept) while a
  // statement is still alive.
  bool Close();

  bool Begin();
  bool Commit();
  bool Exec(std::u16string_view sql);
  bool ExecUtf8(const std::string& sql);

  // The prepared statement, or null when the text does not compile or holds
  // no statement.
  StatementPtr Prepare(std::u16string_view sql);

  sqlite3* Handle() const { return m_db; }

 private:
  sqlite3* m_db = nullptr;
};

// Records a failure as the last error.
void RecordSqliteError(int32_t code, const char* message);

// SQLITE_CORRUPT or SQLITE_NOTADB, extended codes included: the file is
// damaged, not merely busy or full.
bool IsDamageCode(int rc);

// How many steps of the process stopped on an error (a damaged page, a
// failed read, a full disk) instead of at a row or at the end.
uint64_t StepFailureCount();

// How many errors of the process, on any statement, said that a file is
// damaged.
uint64_t DamageCount();

// Watches one listing or update: Failed() when a step failed
// or any statement met a damaged file after the watch began, so that a list
// cut short by an error is no answer; Damaged() for the latter alone.
class CStorageWatch {
 public:
  CStorageWatch() : m_steps(StepFailureCount()), m_damage(DamageCount()) {}
  bool Failed() const { return StepFailureCount() != m_steps || Damaged(); }
  bool Damaged() const { return DamageCount() != m_damage; }

 private:
  uint64_t m_steps;
  uint64_t m_damage;
};

}  // namespace corvane

#endif  // CORVANE_STORE_SQLITE_DB_H_
