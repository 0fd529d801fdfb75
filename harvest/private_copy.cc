#include "harvest/private_copy.h"

#include <cstdlib>
#include <filesystem>

#include "common/debug_log.h"

namespace corvane::harvest {
namespace {

namespace fs = std::filesystem;

std::string MakePrivateFolder() {
  std::error_code error;
  fs::path base = fs::temp_directory_path(error);
  if (error) base = "/tmp";
  std::string pattern = (base / "corvane-harvest-XXXXXX").string();
  if (mkdtemp(pattern.data()) == nullptr) return std::string();
  // Only this user may read the copy of the history.
  fs::permissions(pattern, fs::perms::owner_all, fs::perm_options::replace, error);
  return pattern;
}

bool QuickCheckPasses(sqlite3* db) {
  sqlite3_stmt* stmt = nullptr;
  bool ok = sqlite3_prepare_v2(db, "PRAGMA quick_check", -1, &stmt, nullptr) == SQLITE_OK &&
            sqlite3_step(stmt) == SQLITE_ROW &&
            std::string(reinterpret_cast<const char*>(sqlite3_column_text(stmt, 0))) == "ok";
  sqlite3_finalize(stmt);
  return ok;
}

}  // namespace

PrivateCopy::~PrivateCopy() {
  Close();
  std::error_code ignored;
  if (!m_folder.empty()) fs::remove_all(m_folder, ignored);
}

void PrivateCopy::Close() {
  sqlite3_close(m_db);
  m_db = nullptr;
}

bool PrivateCopy::CopyAndCheck(const std::string& databaseFile) {
  std::error_code error;
  std::string name = fs::path(databaseFile).filename().string();
  std::string copy = m_folder + "/" + name;
  for (const char* suffix : {"-journal", "-wal", "-shm"}) fs::remove(copy + suffix, error);
  fs::copy_file(databaseFile, copy, fs::copy_options::overwrite_existing, error);
  if (error) {
    DebugLog("harvest: can't copy %s: %s\n", databaseFile.c_str(), error.message().c_str());
    return false;
  }
  // The journal or log holds what the browser wrote last; the shared-memory
  // index is rebuilt from the log.
  for (const char* suffix : {"-journal", "-wal"}) {
    if (fs::exists(databaseFile + suffix, error)) {
      fs::copy_file(databaseFile + suffix, copy + suffix, fs::copy_options::overwrite_existing, error);
    }
  }
  Close();
  if (sqlite3_open_v2(copy.c_str(), &m_db, SQLITE_OPEN_READWRITE, nullptr) != SQLITE_OK) {
    DebugLog("harvest: can't open the copy of %s\n", databaseFile.c_str());
    return false;
  }
  sqlite3_busy_timeout(m_db, 0);
  // The copy is ours alone: map it and keep a larger cache, as a history
  // is read in time order and its rows lie in URL order.
  static_cast<void>(sqlite3_exec(m_db, "PRAGMA mmap_size=1073741824; PRAGMA cache_size=-32768;", nullptr, nullptr,
                                 nullptr));
  if (QuickCheckPasses(m_db)) return true;
  DebugLog("harvest: %s fails its quick check\n", databaseFile.c_str());
  return false;
}

Statement PrivateCopy::Prepare(const std::string& sql) const {
  sqlite3_stmt* stmt = nullptr;
  if (sqlite3_prepare_v2(m_db, sql.c_str(), -1, &stmt, nullptr) != SQLITE_OK) {
    DebugLog("harvest: the copy of %s is not as expected: %s\n", m_file.c_str(), sqlite3_errmsg(m_db));
  }
  return Statement(stmt);
}

bool PrivateCopy::Open(const std::string& databaseFile) {
  std::error_code error;
  if (!fs::is_regular_file(databaseFile, error)) {
    DebugLog("harvest: no file %s\n", databaseFile.c_str());
    return false;
  }
  m_file = databaseFile;
  if (m_folder.empty()) m_folder = MakePrivateFolder();
  if (m_folder.empty()) return false;
  // A copy taken during a write can be torn; a second one usually is not.
  if (CopyAndCheck(databaseFile) || CopyAndCheck(databaseFile)) return true;
  Close();
  return false;
}

}  // namespace corvane::harvest
