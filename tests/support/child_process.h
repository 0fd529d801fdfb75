// child_process.h: a program that a test runs beside itself (a browser, the
// start page's server), in a process group of its own with its output in a
// file or thrown away; stopping it ends the whole group.

#ifndef CORVANE_TESTS_SUPPORT_CHILD_PROCESS_H_
#define CORVANE_TESTS_SUPPORT_CHILD_PROCESS_H_

#include <sys/types.h>

#include <string>
#include <vector>

namespace corvane::test {

class ChildProcess {
 public:
  // Starts args[0] with args; standard output and error go to outFile, or
  // to /dev/null when it is empty.
  explicit ChildProcess(const std::vector<std::string>& args, const std::string& outFile = "");
  ~ChildProcess() { Stop(); }
  ChildProcess(const ChildProcess&) = delete;
  ChildProcess& operator=(const ChildProcess&) = delete;

  bool Started() const { return m_pid > 0; }
  // Waits for the program to end by itself; true when it did so in time
  // with status 0.
  bool Finish(int seconds);
  // Ends the group: SIGTERM, then SIGKILL after ten seconds.
  void Stop();

 private:
  pid_t m_pid = -1;
};

}  // namespace corvane::test

#endif  // CORVANE_TESTS_SUPPORT_CHILD_PROCESS_H_
