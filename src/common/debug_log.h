// debug_log.h: the debug log of the system's own steps.
//
// Lines go nowhere unless $CORVANE_DEBUG is set: "1" or "stderr" writes them
// to standard error, any other value names a file that lines are appended
// to. A line is formatted printf-style from UTF-8 arguments into at most 2048
// characters; a longer one is cut. Nothing reads these lines and writing one
// never changes behaviour.

#ifndef CORVANE_COMMON_DEBUG_LOG_H_
#define CORVANE_COMMON_DEBUG_LOG_H_

namespace corvane {

void DebugLog(const char* format, ...) __attribute__((format(printf, 1, 2)));

// True when lines are written somewhere; lets a caller skip building
// arguments that cost something.
bool DebugLogEnabled();

}  // namespace corvane

#endif  // CORVANE_COMMON_DEBUG_LOG_H_
