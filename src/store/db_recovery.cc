// Table operations of CCorvaneDB that set a damaged CorvaneAppDB.db aside
// and rebuild it, keeping the rows that are the person's own: the pins of
// TFocusURL, the TIEHistory snapshot and every hide mark. Nothing else in
// the file is lost for good: the next update reads the browser again.
//
// The damaged file is read row by row, so that whatever SQLite can still
// read before a damaged page is kept; a query that fails at once salvages
// nothing, and the rebuild goes on.

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <cstdio>
#include <memory>
#include <string>
#include <vector>

#include "common/debug_log.h"
#include "common/local_clock.h"
#include "common/time_stamp.h"
#include "common/utf.h"
#include "platform/file_notes.h"
#include "store/corvane_db.h"

namespace corvane {
namespace {

constexpr char16_t kDamagedKey[] = u"DatabaseDamaged";
constexpr char16_t kRecoveredKey[] = u"Recovered";
// An update after the rebuild reads the whole history again; IE visits are
// merged into THistory anew.
constexpr const char16_t* kStaleKeys[] = {u"LastUpdate", u"IEHistoryAdded", kDamagedKey};
constexpr char16_t kMarkTable[] = u"TSalvagedMark";
constexpr char kCreateMarkTable[] = "create table TSalvagedMark(Kind TEXT,Key TEXT,Time TEXT,Mark INTEGER);";

// One kind of row carried from the damaged file to the fresh one.
struct SalvageQuery {
  const char* read;
  const char* write;
};

constexpr SalvageQuery kPins = {"select ID, Name, URL from TFocusURL order by ID",
                                "insert into TFocusURL(ID, Name, URL) values(?, ?, ?)"};
constexpr SalvageQuery kIEHistory = {
    "select HID, Name, URL, VisitCount, VisitTime, VisitDate, HideDate, VisitTimeLong from TIEHistory",
    "insert into TIEHistory(HID, Name, URL, VisitCount, VisitTime, VisitDate, HideDate, VisitTimeLong) "
    "values(?, ?, ?, ?, ?, ?, ?, ?)"};
constexpr char kInsertMark[] = "insert into TSalvagedMark(Kind, Key, Time, Mark) values(?, ?, ?, ?)";
// The hide marks of each table, as (kind, key, time, mark).
constexpr const char* kMarkReads[] = {
    "select 'history', URL, VisitTime, HideDate from THistory where HideDate != 0",
    "select 'favorite', URL, '', HideDate from TFavorite where HideDate != 0",
    "select 'domain', Domain, '', Hide from TRecommendDomain where Hide != 0",
    "select 'subdomain', Domain, '', Hide from TSubDomain where Hide != 0",
    "select 'url', URL, '', Hide from TRecommendURL where Hide != 0",
};

struct ValueFree {
  void operator()(sqlite3_value* value) const { sqlite3_value_free(value); }
};
using Row = std::vector<std::unique_ptr<sqlite3_value, ValueFree>>;

// The rows of a query up to its end or its first error.
std::vector<Row> ReadWhatCanBeRead(sqlite3* db, const char* sql) {
  std::vector<Row> rows;
  sqlite3_stmt* stmt = nullptr;
  if (sqlite3_prepare_v2(db, sql, -1, &stmt, nullptr) != SQLITE_OK) return rows;
  while (sqlite3_step(stmt) == SQLITE_ROW) {
    Row row;
    for (int i = 0; i < sqlite3_column_count(stmt); ++i) row.emplace_back(sqlite3_value_dup(sqlite3_column_value(stmt, i)));
    rows.push_back(std::move(row));
  }
  sqlite3_finalize(stmt);
  return rows;
}

// Writes the rows with the insert; how many went in.
int WriteRows(sqlite3* db, const char* sql, const std::vector<Row>& rows) {
  sqlite3_stmt* stmt = nullptr;
  if (sqlite3_prepare_v2(db, sql, -1, &stmt, nullptr) != SQLITE_OK) return 0;
  int written = 0;
  for (const Row& row : rows) {
    for (size_t i = 0; i < row.size(); ++i) sqlite3_bind_value(stmt, static_cast<int>(i) + 1, row[i].get());
    if (sqlite3_step(stmt) == SQLITE_DONE) ++written;
    sqlite3_reset(stmt);
  }
  sqlite3_finalize(stmt);
  return written;
}

struct SalvageCounts {
  int pins = 0;
  int marks = 0;
  int ieRows = 0;
};

// Copies what can be read of the person's rows from the damaged file into
// the fresh one (already holding its schema).
SalvageCounts Salvage(const std::string& damaged, sqlite3* fresh) {
  SalvageCounts counts;
  sqlite3* old = nullptr;
  // With a writable schema SQLite passes over schema rows it can't make
  // sense of (a table whose pages were cut off) instead of refusing every
  // statement; the handle stays read-only.
  if (sqlite3_open_v2(damaged.c_str(), &old, SQLITE_OPEN_READONLY, nullptr) == SQLITE_OK &&
      sqlite3_exec(old, "PRAGMA writable_schema = ON", nullptr, nullptr, nullptr) == SQLITE_OK) {
    counts.pins = WriteRows(fresh, kPins.write, ReadWhatCanBeRead(old, kPins.read));
    counts.ieRows = WriteRows(fresh, kIEHistory.write, ReadWhatCanBeRead(old, kIEHistory.read));
    if (sqlite3_exec(fresh, kCreateMarkTable, nullptr, nullptr, nullptr) == SQLITE_OK) {
      for (const char* read : kMarkReads) counts.marks += WriteRows(fresh, kInsertMark, ReadWhatCanBeRead(old, read));
    }
  }
  sqlite3_close(old);
  return counts;
}

// Holds an exclusive lock on the folder of the file while it lives.
class FolderLock {
 public:
  explicit FolderLock(const std::string& file) {
    const size_t slash = file.rfind('/');
    const std::string folder = slash == std::string::npos ? "." : file.substr(0, slash);
    m_fd = open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (m_fd >= 0) static_cast<void>(flock(m_fd, LOCK_EX));
  }
  ~FolderLock() {
    if (m_fd >= 0) close(m_fd);
  }
  FolderLock(const FolderLock&) = delete;
  FolderLock& operator=(const FolderLock&) = delete;

 private:
  int m_fd = -1;
};

std::string BaseName(const std::string& path) { return path.substr(path.rfind('/') + 1); }


}  // namespace

bool CCorvaneDB::NeedsRecovery() {
  std::u16string damaged;
  if (SUCCEEDED(GetConfig(kDamagedKey, &damaged, u""))) return true;
  sqlite3_stmt* stmt = nullptr;
  int rc = sqlite3_prepare_v2(Handle(), "PRAGMA quick_check(1)", -1, &stmt, nullptr);
  bool needs = IsDamageCode(rc);
  if (rc == SQLITE_OK) {
    rc = sqlite3_step(stmt);
    const unsigned char* verdict = rc == SQLITE_ROW ? sqlite3_column_text(stmt, 0) : nullptr;
    needs = rc == SQLITE_ROW ? verdict == nullptr || std::string(reinterpret_cast<const char*>(verdict)) != "ok"
                             : IsDamageCode(rc);
  }
  sqlite3_finalize(stmt);
  return needs;
}

HRESULT CCorvaneDB::RecoverDamagedFile(std::u16string_view path) {
  static_cast<void>(CSqliteDB::Close());
  const std::string file = ToUtf8(path);
  const FolderLock lock(file);
  // Another process may have rebuilt the file while this one waited.
  if (CSqliteDB::Open(path)) {
    ConfigureHandle();
    if (!NeedsRecovery()) {
      static_cast<void>(CSqliteDB::Close());
      return OpenFresh(path);
    }
    static_cast<void>(CSqliteDB::Close());
  }
  const std::string corrupt = SetDamagedFileAside(file, {"-journal", "-wal"});
  if (corrupt.empty()) {
    DebugLog("Can't set the damaged %s aside\r\n", file.c_str());
    return E_FAIL;
  }
  // The shared-memory index of a log belongs to no file once its owner is
  // gone.
  unlink((file + "-shm").c_str());
  HRESULT hr = OpenFresh(path);
  if (FAILED(hr)) return hr;
  static_cast<void>(Begin());
  const SalvageCounts counts = Salvage(corrupt, Handle());
  static_cast<void>(Commit());
  for (const char16_t* key : kStaleKeys) static_cast<void>(DeleteConfig(key));
  char line[512];
  std::snprintf(line, sizeof(line),
                "%s was damaged: set aside as %s and rebuilt; saved %d pins, %d hide marks and %d IE history rows",
                BaseName(file).c_str(), BaseName(corrupt).c_str(), counts.pins, counts.marks, counts.ieRows);
  DebugLog("%s\r\n", line);
  static_cast<void>(SetConfig(kRecoveredKey, StampOfNow() + u"|" + FromUtf8(line)));
  return S_OK;
}

HRESULT CCorvaneDB::PutBackSalvagedMarks(MarkStage stage) {
  if (TableExists(kMarkTable) != S_OK) return S_FALSE;
  StatementPtr marks = Prepare(u"select Kind, Key, Time, Mark from TSalvagedMark;");
  if (!marks) return E_FAIL;
  HideMap domains, subDomains, urls;
  while (marks->Step()) {
    const std::u16string kind = marks->ColumnText16(0), key = marks->ColumnText16(1);
    const int32_t mark = marks->ColumnInt(3);
    // The column's integer affinity turns the bound text back into a number.
    const std::u16string markText = FromUtf8(std::to_string(mark));
    if (stage == MarkStage::kVisitsAndFavorites && kind == u"history") {
      static_cast<void>(ExecWithTexts(this, u"update THistory set HideDate = ? where URL = ? and VisitTime = ?;",
                                      {markText, key, marks->ColumnText16View(2)}));
    } else if (stage == MarkStage::kVisitsAndFavorites && kind == u"favorite") {
      static_cast<void>(ExecWithTexts(this, u"update TFavorite set HideDate = ? where URL = ?;", {markText, key}));
    } else if (kind == u"domain" || kind == u"subdomain" || kind == u"url") {
      (kind == u"domain" ? domains : kind == u"subdomain" ? subDomains : urls).emplace(key, mark);
    }
  }
  marks.reset();
  if (stage == MarkStage::kVisitsAndFavorites) return S_OK;
  static_cast<void>(ReapplyHiddenRecommendDomains(domains));
  static_cast<void>(ReapplyHiddenSubDomains(subDomains));
  static_cast<void>(ReapplyHiddenRecommendURLs(urls, kHideFactor));
  return DropTable(kMarkTable);
}

bool CCorvaneDB::StorageFailed(const CStorageWatch& watch) {
  if (watch.Damaged()) static_cast<void>(SetConfig(kDamagedKey, u"1"));
  return watch.Failed();
}

}  // namespace corvane
