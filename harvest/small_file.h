// small_file.h: reading one of a browser's small text files (Local State,
// Bookmarks, profiles.ini, mimeapps.list) without ever waiting on it.
//
// A path in a home folder can name anything: a FIFO that nobody writes to
// would block a plain open or read for ever, a device would never end. So
// the file is opened without blocking, must be a regular file once open
// (checked on the open descriptor, not on the name), and may not be larger
// than the caller's cap.

#ifndef CORVANE_HARVEST_SMALL_FILE_H_
#define CORVANE_HARVEST_SMALL_FILE_H_

#include <unistd.h>

#include <cstddef>
#include <string>

namespace corvane::harvest {

// Closes a file descriptor on every way out.
class FileDescriptor {
 public:
  explicit FileDescriptor(int fd) : m_fd(fd) {}
  ~FileDescriptor() {
    if (m_fd >= 0) close(m_fd);
  }
  FileDescriptor(const FileDescriptor&) = delete;
  FileDescriptor& operator=(const FileDescriptor&) = delete;
  int Get() const { return m_fd; }

 private:
  int m_fd;
};

enum class SmallFileStatus {
  kRead,        // *lpText holds the whole file
  kMissing,     // no such file
  kNotRegular,  // a FIFO, a device, a folder, a socket
  kTooLarge,    // larger than the cap
  kFailed,      // could not be opened or read
};

// Reads the whole file into *lpText when it is a regular file of at most
// maxBytes. Writes no debug line: the caller knows what the file is for.
SmallFileStatus ReadSmallFile(const std::string& path, size_t maxBytes, std::string* lpText);

// "missing", "not a regular file", ...: for the caller's debug line.
const char* SmallFileStatusText(SmallFileStatus status);

// Caps, each far above what the browser writes there.
inline constexpr size_t kMaxIniBytes = 1 << 20;         // profiles.ini, installs.ini, mimeapps.list
inline constexpr size_t kMaxLocalStateBytes = 16 << 20;  // Local State: some hundred kilobytes
inline constexpr size_t kMaxBookmarksBytes = 256 << 20;  // Bookmarks: a few megabytes for a heavy user

}  // namespace corvane::harvest

#endif  // CORVANE_HARVEST_SMALL_FILE_H_
