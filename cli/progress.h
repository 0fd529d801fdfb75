// progress.h: a line that shows a long update is still working.
//
// The component blocks the calling thread for a whole update and reports no
// progress, so the host ticks a spinner with the elapsed seconds from a
// thread of its own. Nothing is printed when stdout is not a terminal.

#ifndef CORVANE_CLI_PROGRESS_H_
#define CORVANE_CLI_PROGRESS_H_

#include <atomic>
#include <string>
#include <thread>

namespace corvane::cli {

class ProgressLine {
 public:
  // enabled false (for --json) keeps it silent even on a terminal.
  ProgressLine(std::string text, bool enabled);
  ~ProgressLine();
  ProgressLine(const ProgressLine&) = delete;
  ProgressLine& operator=(const ProgressLine&) = delete;
  // Stops the thread and clears the line; safe to call twice.
  void Stop();

 private:
  void Run();

  std::string m_text;
  std::atomic<bool> m_stop{false};
  std::thread m_thread;
};

}  // namespace corvane::cli

#endif  // CORVANE_CLI_PROGRESS_H_
