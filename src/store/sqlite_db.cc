#include "store/sqlite_db.h"

#include <atomic>
#include <cstring>
#include <utility>

#include "common/text_util.h"
#include "common/utf.h"

namespace corvane {
namespace {

CSqliteException& LastError() {
  static CSqliteException* error = new CSqliteException(0, nullptr);
  return *error;
}

char* CopyMessage(const char* message) { return message == nullptr ? nullptr : sqlite3_mprintf("%s", message); }

// Statements that read are told apart by the word anywhere in their text,
// as the layer has always done: such a statement must yield a row when it
// is executed.
bool ContainsSelect(std::u16string_view sql) {
  return AsciiFindIgnoreCase(sql, u"select", 0) != std::u16string_view::npos;
}

}  // namespace

CSqliteException::CSqliteException(int32_t code, const char* message)
    : m_code(code), m_message(CopyMessage(message)) {}

CSqliteException::CSqliteException(const CSqliteException& other)
    : m_code(other.m_code), m_message(CopyMessage(other.m_message)) {}

CSqliteException& CSqliteException::operator=(const CSqliteException& other) {
  if (this == &other) return *this;
  sqlite3_free(m_message);
  m_message = CopyMessage(other.m_message);
  m_code = other.m_code;
  return *this;
}

CSqliteException::~CSqliteException() {
  sqlite3_free(m_message);
  m_message = nullptr;
}

const CSqliteException& LastSqliteError() { return LastError(); }

namespace {

// Steps that failed in the process; a listing compares the count before
// and after, so that rows read up to an error are never handed out as a
// whole. Process-wide rather than per thread: the library is loaded and
// unloaded with dlopen, and thread-local storage of an unloaded library
// outlives it in the threads that used it. A failure on another thread at
// the same time fails the listing too, which errs on the safe side.
std::atomic<uint64_t> s_stepFailures{0};
// Errors of the whole process that said a file is damaged.
std::atomic<uint64_t> s_damageCount{0};

// A step that stopped on an error, not at a row or at the end.
void NoteStepFailure(int rc) {
  if (rc == SQLITE_ROW || rc == SQLITE_DONE) return;
  ++s_stepFailures;
}

}  // namespace

bool IsDamageCode(int rc) { return (rc & 0xff) == SQLITE_CORRUPT || (rc & 0xff) == SQLITE_NOTADB; }

uint64_t StepFailureCount() { return s_stepFailures.load(); }

uint64_t DamageCount() { return s_damageCount.load(); }

void RecordSqliteError(int32_t code, const char* message) {
  if (IsDamageCode(code)) ++s_damageCount;
  LastError() = CSqliteException(code, message);
}

// ---- CSqliteStatement ----

CSqliteStatement::CSqliteStatement(sqlite3* db, sqlite3_stmt* stmt, bool selectFlag)
    : m_db(db), m_pStmt(stmt), m_bSelect(selectFlag) {}

CSqliteStatement::~CSqliteStatement() { sqlite3_finalize(m_pStmt); }

static bool BindResult(sqlite3* db, int rc) {
  if (rc == SQLITE_OK) return true;
  RecordSqliteError(rc, sqlite3_errmsg(db));
  return false;
}

bool CSqliteStatement::BindInt(int index, int32_t value) {
  return BindResult(m_db, sqlite3_bind_int(m_pStmt, index + 1, value));
}

bool CSqliteStatement::BindInt64(int index, int64_t value) {
  return BindResult(m_db, sqlite3_bind_int64(m_pStmt, index + 1, value));
}

namespace {

// A non-null pointer even for empty text, so that empty binds as '' and not
// as null.
const void* TextData(std::u16string_view text) {
  static const char16_t kEmpty[1] = {0};
  return text.empty() ? kEmpty : text.data();
}

}  // namespace

bool CSqliteStatement::BindText16(int index, std::u16string_view text) {
  return BindResult(m_db, sqlite3_bind_text16(m_pStmt, index + 1, TextData(text), static_cast<int>(text.size() * 2),
                                              SQLITE_TRANSIENT));
}

bool CSqliteStatement::BindText16NoCopy(int index, std::u16string_view text) {
  return BindResult(m_db, sqlite3_bind_text16(m_pStmt, index + 1, TextData(text), static_cast<int>(text.size() * 2),
                                              SQLITE_STATIC));
}

bool CSqliteStatement::BindText(int index, std::string_view text) {
  static const char kEmpty[1] = {0};
  const char* data = text.empty() ? kEmpty : text.data();
  return BindResult(m_db, sqlite3_bind_text(m_pStmt, index + 1, data, static_cast<int>(text.size()), SQLITE_TRANSIENT));
}

bool CSqliteStatement::BindNull(int index) { return BindResult(m_db, sqlite3_bind_null(m_pStmt, index + 1)); }

bool CSqliteStatement::Execute() {
  int rc = sqlite3_step(m_pStmt);
  if (!m_bSelect && rc == SQLITE_DONE) {
    sqlite3_reset(m_pStmt);
    return true;
  }
  if (m_bSelect && rc == SQLITE_ROW) return true;
  NoteStepFailure(rc);
  RecordSqliteError(rc, sqlite3_errmsg(m_db));
  if (!m_bSelect) sqlite3_reset(m_pStmt);
  return false;
}

bool CSqliteStatement::Step() {
  int rc = sqlite3_step(m_pStmt);
  if (rc == SQLITE_ROW) return true;
  if (rc == SQLITE_DONE) {
    sqlite3_reset(m_pStmt);
    return false;
  }
  NoteStepFailure(rc);
  RecordSqliteError(rc, sqlite3_errmsg(m_db));
  return false;
}

int32_t CSqliteStatement::ColumnInt(int column) { return sqlite3_column_int(m_pStmt, column); }

int64_t CSqliteStatement::ColumnInt64(int column) { return sqlite3_column_int64(m_pStmt, column); }

double CSqliteStatement::ColumnDouble(int column) { return sqlite3_column_double(m_pStmt, column); }

std::u16string CSqliteStatement::ColumnText16(int column) { return std::u16string(ColumnText16View(column)); }

std::u16string_view CSqliteStatement::ColumnText16View(int column) {
  const void* text = sqlite3_column_text16(m_pStmt, column);
  if (text == nullptr) return std::u16string_view();
  int bytes = sqlite3_column_bytes16(m_pStmt, column);
  return std::u16string_view(static_cast<const char16_t*>(text), static_cast<size_t>(bytes) / 2);
}

bool CSqliteStatement::ColumnIsNull(int column) { return sqlite3_column_type(m_pStmt, column) == SQLITE_NULL; }

int CSqliteStatement::ColumnType(int column) { return sqlite3_column_type(m_pStmt, column); }

void CSqliteStatement::Reset() {
  sqlite3_reset(m_pStmt);
  sqlite3_clear_bindings(m_pStmt);
}

// ---- CSqliteDB ----

CSqliteDB::~CSqliteDB() {
  if (m_db != nullptr) sqlite3_close(m_db);
}

bool CSqliteDB::Open(std::u16string_view path) {
  std::u16string zeroTerminated(path);
  sqlite3* db = nullptr;
  int rc = sqlite3_open16(zeroTerminated.c_str(), &db);
  if (rc != SQLITE_OK) {
    RecordSqliteError(rc, db != nullptr ? sqlite3_errmsg(db) : "out of memory");
    sqlite3_close(db);
    return false;
  }
  m_db = db;
  return true;
}

bool CSqliteDB::Close() {
  if (m_db == nullptr) return true;
  if (sqlite3_close(m_db) != SQLITE_OK) return false;
  m_db = nullptr;
  return true;
}

bool CSqliteDB::Begin() { return ExecUtf8("begin"); }

bool CSqliteDB::Commit() { return ExecUtf8("commit"); }

bool CSqliteDB::Exec(std::u16string_view sql) { return ExecUtf8(ToUtf8(sql)); }

bool CSqliteDB::ExecUtf8(const std::string& sql) {
  if (m_db == nullptr) {
    RecordSqliteError(SQLITE_MISUSE, "database is not open");
    return false;
  }
  char* message = nullptr;
  int rc = sqlite3_exec(m_db, sql.c_str(), nullptr, nullptr, &message);
  if (rc != SQLITE_OK) RecordSqliteError(rc, message != nullptr ? message : sqlite3_errmsg(m_db));
  sqlite3_free(message);
  return rc == SQLITE_OK;
}

StatementPtr CSqliteDB::Prepare(std::u16string_view sql) {
  if (m_db == nullptr) {
    RecordSqliteError(SQLITE_MISUSE, "database is not open");
    return nullptr;
  }
  sqlite3_stmt* stmt = nullptr;
  int rc = sqlite3_prepare16_v2(m_db, sql.data(), static_cast<int>(sql.size() * 2), &stmt, nullptr);
  if (rc != SQLITE_OK) {
    RecordSqliteError(rc, sqlite3_errmsg(m_db));
    sqlite3_finalize(stmt);
    return nullptr;
  }
  if (stmt == nullptr) return nullptr;  // no statement in the text; the last error stays
  CSqliteStatement* statement = new (std::nothrow) CSqliteStatement(m_db, stmt, ContainsSelect(sql));
  if (statement == nullptr) sqlite3_finalize(stmt);
  return StatementPtr(statement);
}

}  // namespace corvane
