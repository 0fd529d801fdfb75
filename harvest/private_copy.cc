#include "harvest/private_copy.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <mutex>
#include <set>
#include <thread>
#include <vector>

#include "common/debug_log.h"
#include "harvest/small_file.h"

namespace corvane::harvest {
namespace {

namespace fs = std::filesystem;

// The companions copied with the database: the journal holds what undoes
// an unfinished transaction, the log holds commits not yet in the file. The
// shared-memory index is rebuilt from the log and is never copied.
constexpr const char* kCompanions[] = {"-journal", "-wal"};
// The database header holds the change counter at byte 24 and the version
// that goes with it at byte 92; a log's header holds its salts in its first
// 32 bytes, a journal's its nonce and page count in its first 28.
constexpr size_t kHeaderBytes = 100;
constexpr size_t kCopyBuffer = 1 << 20;
// The first wait after a moving copy; it doubles with each attempt.
constexpr std::chrono::milliseconds kFirstWait{10};

// What a source file is at one moment.
struct FileState {
  bool exists = false;
  dev_t device = 0;
  ino_t inode = 0;
  off_t size = 0;
  timespec modified{};
  timespec changed{};
  std::string header;

  bool operator==(const FileState& other) const {
    return exists == other.exists && device == other.device && inode == other.inode && size == other.size &&
           modified.tv_sec == other.modified.tv_sec && modified.tv_nsec == other.modified.tv_nsec &&
           changed.tv_sec == other.changed.tv_sec && changed.tv_nsec == other.changed.tv_nsec &&
           header == other.header;
  }
};

// Opens a source without ever waiting on it (a FIFO would block a plain
// open) and makes sure it is a regular file. -1 with *lpMissing for a file
// that is not there; -1 with *lpProblem for anything else.
int OpenSource(const std::string& path, struct stat* lpInfo, bool* lpMissing, std::string* lpProblem) {
  *lpMissing = false;
  int fd = open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC | O_NOCTTY);
  if (fd < 0) {
    *lpMissing = errno == ENOENT;
    *lpProblem = std::strerror(errno);
    return -1;
  }
  if (fstat(fd, lpInfo) != 0 || !S_ISREG(lpInfo->st_mode)) {
    *lpProblem = "not a regular file";
    close(fd);
    return -1;
  }
  return fd;
}

// False, with *lpProblem, for a file that is there but can't be read.
bool ReadState(const std::string& path, FileState* lpState, std::string* lpProblem) {
  *lpState = FileState();
  struct stat info {};
  bool missing = false;
  FileDescriptor fd(OpenSource(path, &info, &missing, lpProblem));
  if (fd.Get() < 0) return missing;
  lpState->exists = true;
  lpState->device = info.st_dev;
  lpState->inode = info.st_ino;
  lpState->size = info.st_size;
  lpState->modified = info.st_mtim;
  lpState->changed = info.st_ctim;
  lpState->header.resize(kHeaderBytes);
  ssize_t got = pread(fd.Get(), lpState->header.data(), kHeaderBytes, 0);
  lpState->header.resize(got > 0 ? static_cast<size_t>(got) : 0);
  return true;
}

// The states of the database and its companions, in that order.
bool ReadStates(const std::string& databaseFile, std::vector<FileState>* lpStates, std::string* lpProblem) {
  lpStates->assign(1 + std::size(kCompanions), FileState());
  if (!ReadState(databaseFile, &(*lpStates)[0], lpProblem)) return false;
  for (size_t i = 0; i < std::size(kCompanions); ++i) {
    if (!ReadState(databaseFile + kCompanions[i], &(*lpStates)[i + 1], lpProblem)) return false;
  }
  return true;
}

bool WriteAll(int fd, const char* data, size_t size) {
  while (size > 0) {
    ssize_t written = write(fd, data, size);
    if (written < 0 && errno == EINTR) continue;
    if (written <= 0) return false;
    data += written;
    size -= static_cast<size_t>(written);
  }
  return true;
}

// Copies a regular file; a source that is gone by now is no failure (the
// states taken after the copy tell that it moved).
bool CopyFile(const std::string& source, const std::string& target, std::string* lpProblem) {
  struct stat info {};
  bool missing = false;
  FileDescriptor in(OpenSource(source, &info, &missing, lpProblem));
  if (in.Get() < 0) return missing;
  FileDescriptor out(open(target.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600));
  if (out.Get() < 0) {
    *lpProblem = std::strerror(errno);
    return false;
  }
  std::vector<char> buffer(kCopyBuffer);
  while (true) {
    ssize_t got = read(in.Get(), buffer.data(), buffer.size());
    if (got < 0 && errno == EINTR) continue;
    if (got == 0) return true;
    if (got < 0 || !WriteAll(out.Get(), buffer.data(), static_cast<size_t>(got))) {
      *lpProblem = std::strerror(errno);
      return false;
    }
  }
}

constexpr char kFolderPrefix[] = "corvane-harvest-";

// The process that made a folder "corvane-harvest-<pid>-XXXXXX"; 0 when the
// name is none of ours.
pid_t OwnerProcess(const std::string& name) {
  if (name.rfind(kFolderPrefix, 0) != 0) return 0;
  const char* digits = name.c_str() + sizeof(kFolderPrefix) - 1;
  char* end = nullptr;
  const long pid = std::strtol(digits, &end, 10);
  return end != digits && *end == '-' && pid > 0 ? static_cast<pid_t>(pid) : 0;
}

// Removes the folders that a killed read left behind: ours by name and
// owner, made by a process that is gone. A folder whose process lives, or
// whose id another process took since, is left alone. Once per temporary
// folder and process: a read of several profiles copies several files.
void RemoveLeftCopies(const fs::path& base) {
  static std::mutex s_lock;
  static std::set<std::string> s_swept;
  {
    std::lock_guard<std::mutex> hold(s_lock);
    if (!s_swept.insert(base.string()).second) return;
  }
  std::error_code error;
  for (const fs::directory_entry& entry : fs::directory_iterator(base, error)) {
    const pid_t owner = OwnerProcess(entry.path().filename().string());
    struct stat info;
    if (owner == 0 || lstat(entry.path().c_str(), &info) != 0 || !S_ISDIR(info.st_mode) || info.st_uid != geteuid()) {
      continue;
    }
    if (kill(owner, 0) != 0 && errno == ESRCH) fs::remove_all(entry.path(), error);
  }
}

// mkdtemp makes the folder with mode 0700: only this user may read the copy
// of the history.
std::string MakePrivateFolder() {
  std::error_code error;
  fs::path base = fs::temp_directory_path(error);
  if (error) base = "/tmp";
  RemoveLeftCopies(base);
  std::string pattern = (base / (kFolderPrefix + std::to_string(getpid()) + "-XXXXXX")).string();
  if (mkdtemp(pattern.data()) == nullptr) return std::string();
  return pattern;
}

bool QuickCheckPasses(sqlite3* db) {
  sqlite3_stmt* stmt = nullptr;
  bool ok = sqlite3_prepare_v2(db, "PRAGMA quick_check", -1, &stmt, nullptr) == SQLITE_OK &&
            sqlite3_step(stmt) == SQLITE_ROW && sqlite3_column_text(stmt, 0) != nullptr &&
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

PrivateCopy::Attempt PrivateCopy::CopyOnce(const std::string& databaseFile) {
  Close();
  std::string copy = m_folder + "/" + fs::path(databaseFile).filename().string();
  std::error_code ignored;
  for (const char* suffix : {"", "-journal", "-wal", "-shm"}) fs::remove(copy + suffix, ignored);
  std::vector<FileState> before, after;
  std::string problem;
  bool copied = ReadStates(databaseFile, &before, &problem) && before[0].exists &&
                CopyFile(databaseFile, copy, &problem);
  for (size_t i = 0; copied && i < std::size(kCompanions); ++i) {
    if (before[i + 1].exists) copied = CopyFile(databaseFile + kCompanions[i], copy + kCompanions[i], &problem);
  }
  if (!copied || !ReadStates(databaseFile, &after, &problem)) {
    DebugLog("harvest: can't copy %s: %s\n", databaseFile.c_str(), problem.empty() ? "missing" : problem.c_str());
    return Attempt::kFailed;
  }
  if (before != after) return Attempt::kMoved;
  // The copy is this object's own, used by one thread: no locking on each
  // call into SQLite.
  if (sqlite3_open_v2(copy.c_str(), &m_db, SQLITE_OPEN_READWRITE | SQLITE_OPEN_NOMUTEX, nullptr) != SQLITE_OK) {
    DebugLog("harvest: can't open the copy of %s\n", databaseFile.c_str());
    return Attempt::kUnsound;
  }
  sqlite3_busy_timeout(m_db, 0);
  // The copy is ours alone: map it and keep a larger cache, as a history
  // is read in time order and its rows lie in URL order.
  static_cast<void>(sqlite3_exec(m_db, "PRAGMA mmap_size=1073741824; PRAGMA cache_size=-32768;", nullptr, nullptr,
                                 nullptr));
  if (QuickCheckPasses(m_db)) return Attempt::kSound;
  DebugLog("harvest: %s fails its quick check\n", databaseFile.c_str());
  return Attempt::kUnsound;
}

bool PrivateCopy::Open(const std::string& databaseFile) {
  std::error_code error;
  fs::file_status status = fs::status(databaseFile, error);
  if (!fs::is_regular_file(status)) {
    DebugLog(fs::exists(status) ? "harvest: %s is not a regular file\n" : "harvest: no file %s\n",
             databaseFile.c_str());
    return false;
  }
  m_file = databaseFile;
  if (m_folder.empty()) m_folder = MakePrivateFolder();
  if (m_folder.empty()) {
    DebugLog("harvest: no private folder for the copy of %s\n", databaseFile.c_str());
    return false;
  }
  auto wait = kFirstWait;
  int unsound = 0;
  for (int attempt = 1; attempt <= kMaxAttempts; ++attempt) {
    Attempt result = CopyOnce(databaseFile);
    if (result == Attempt::kSound) return true;
    if (result == Attempt::kFailed) break;
    // A copy taken during a write can be torn and fail its check; a second
    // one usually is not. A database that fails twice is damaged.
    if (result == Attempt::kUnsound) {
      if (++unsound == 2) break;
      continue;
    }
    if (attempt == kMaxAttempts) {
      DebugLog("harvest: %s kept changing while it was copied\n", databaseFile.c_str());
      break;
    }
    DebugLog("harvest: %s changed while it was copied (attempt %d of %d)\n", databaseFile.c_str(), attempt,
             kMaxAttempts);
    std::this_thread::sleep_for(wait);
    wait *= 2;
  }
  Close();
  return false;
}

Statement PrivateCopy::Prepare(const std::string& sql) const {
  sqlite3_stmt* stmt = nullptr;
  if (sqlite3_prepare_v2(m_db, sql.c_str(), -1, &stmt, nullptr) != SQLITE_OK) {
    DebugLog("harvest: the copy of %s is not as expected: %s\n", m_file.c_str(), sqlite3_errmsg(m_db));
  }
  return Statement(stmt);
}

bool PrivateCopy::Finished(int rc) const {
  if (rc == SQLITE_DONE) return true;
  DebugLog("harvest: reading the copy of %s stopped: %s\n", m_file.c_str(), sqlite3_errstr(rc));
  return false;
}

}  // namespace corvane::harvest
