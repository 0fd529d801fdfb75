#include "common/debug_log.h"

#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace corvane {
namespace {

// Cap of one line, as the log has always had it.
constexpr size_t kMaxLineChars = 2048;

const char* LogTarget() {
  const char* target = std::getenv("CORVANE_DEBUG");
  return (target == nullptr || *target == '\0') ? nullptr : target;
}

void WriteLine(const char* target, const char* line) {
  if (std::strcmp(target, "1") == 0 || std::strcmp(target, "stderr") == 0) {
    std::fputs(line, stderr);
    return;
  }
  FILE* file = std::fopen(target, "a");
  if (file == nullptr) return;
  std::fputs(line, file);
  std::fclose(file);
}

}  // namespace

bool DebugLogEnabled() { return LogTarget() != nullptr; }

void DebugLog(const char* format, ...) {
  const char* target = LogTarget();
  if (target == nullptr) return;
  char line[kMaxLineChars * 4];  // up to four UTF-8 bytes per character
  va_list args;
  va_start(args, format);
  std::vsnprintf(line, sizeof(line), format, args);
  va_end(args);
  WriteLine(target, line);
}

}  // namespace corvane
