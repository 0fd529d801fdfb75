#include "support/child_process.h"

#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <thread>

extern char** environ;

namespace corvane::test {

ChildProcess::ChildProcess(const std::vector<std::string>& args, const std::string& outFile) {
  std::vector<char*> argv;
  for (const std::string& arg : args) argv.push_back(const_cast<char*>(arg.c_str()));
  argv.push_back(nullptr);
  posix_spawn_file_actions_t files;
  posix_spawn_file_actions_init(&files);
  posix_spawn_file_actions_addopen(&files, STDOUT_FILENO, outFile.empty() ? "/dev/null" : outFile.c_str(),
                                   O_WRONLY | O_CREAT | O_TRUNC, 0600);
  posix_spawn_file_actions_adddup2(&files, STDOUT_FILENO, STDERR_FILENO);
  posix_spawnattr_t attr;
  posix_spawnattr_init(&attr);
  posix_spawnattr_setflags(&attr, POSIX_SPAWN_SETPGROUP);
  posix_spawnattr_setpgroup(&attr, 0);
  if (posix_spawn(&m_pid, argv[0], &files, &attr, argv.data(), environ) != 0) m_pid = -1;
  posix_spawnattr_destroy(&attr);
  posix_spawn_file_actions_destroy(&files);
}

bool ChildProcess::Finish(int seconds) {
  for (int tenths = 0; m_pid > 0 && tenths < seconds * 10; ++tenths) {
    int status = 0;
    if (waitpid(m_pid, &status, WNOHANG) == m_pid) {
      m_pid = -1;
      return WIFEXITED(status) && WEXITSTATUS(status) == 0;
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(100));
  }
  return false;
}

void ChildProcess::Stop() {
  if (m_pid <= 0) return;
  kill(-m_pid, SIGTERM);
  // Finish forgets the process once it has ended, whatever its status.
  Finish(10);
  if (m_pid <= 0) return;
  kill(-m_pid, SIGKILL);
  waitpid(m_pid, nullptr, 0);
  m_pid = -1;
}

}  // namespace corvane::test
