#include "harvest/small_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>

namespace corvane::harvest {

SmallFileStatus ReadSmallFile(const std::string& path, size_t maxBytes, std::string* lpText) {
  lpText->clear();
  // O_NONBLOCK: opening a FIFO for reading returns at once instead of
  // waiting for a writer; on a regular file the flag changes nothing.
  FileDescriptor fd(open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC | O_NOCTTY));
  if (fd.Get() < 0) return errno == ENOENT || errno == ENOTDIR ? SmallFileStatus::kMissing : SmallFileStatus::kFailed;
  struct stat info {};
  if (fstat(fd.Get(), &info) != 0) return SmallFileStatus::kFailed;
  if (!S_ISREG(info.st_mode)) return SmallFileStatus::kNotRegular;
  if (static_cast<uint64_t>(info.st_size) > maxBytes) return SmallFileStatus::kTooLarge;
  lpText->resize(static_cast<size_t>(info.st_size));
  size_t done = 0;
  // The file may grow or shrink while it is read: read up to the cap and
  // stop at its end.
  while (true) {
    if (done == lpText->size()) {
      if (done >= maxBytes + 1) break;
      lpText->resize(std::min(maxBytes + 1, done + 65536));
    }
    ssize_t got = read(fd.Get(), lpText->data() + done, lpText->size() - done);
    if (got < 0 && errno == EINTR) continue;
    if (got < 0) {
      lpText->clear();
      return SmallFileStatus::kFailed;
    }
    if (got == 0) break;
    done += static_cast<size_t>(got);
  }
  if (done > maxBytes) {
    lpText->clear();
    return SmallFileStatus::kTooLarge;
  }
  lpText->resize(done);
  return SmallFileStatus::kRead;
}

const char* SmallFileStatusText(SmallFileStatus status) {
  switch (status) {
    case SmallFileStatus::kRead:
      return "read";
    case SmallFileStatus::kMissing:
      return "missing";
    case SmallFileStatus::kNotRegular:
      return "not a regular file";
    case SmallFileStatus::kTooLarge:
      return "too large";
    case SmallFileStatus::kFailed:
      break;
  }
  return "unreadable";
}

}  // namespace corvane::harvest
