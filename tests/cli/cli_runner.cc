#include "cli/cli_runner.h"

#include <fcntl.h>
#include <grp.h>
#include <signal.h>
#include <stdlib.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <json/reader.h>

#include <algorithm>
#include <fstream>
#include <memory>
#include <sstream>

namespace corvane::testing {
namespace {

// In the child: redirect, set the environment, exec. Never returns.
[[noreturn]] void ExecChild(const std::string& binary, const std::vector<std::string>& args,
                            const std::map<std::string, std::string>& env, const std::string& outPath,
                            const std::string& errPath, int asUser, long fileSizeLimit) {
  int out = open(outPath.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
  int err = open(errPath.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
  if (out < 0 || err < 0 || dup2(out, STDOUT_FILENO) < 0 || dup2(err, STDERR_FILENO) < 0) _exit(127);
  if (asUser >= 0) {
    auto id = static_cast<uid_t>(asUser);
    if (setgroups(0, nullptr) != 0 || setgid(static_cast<gid_t>(id)) != 0 || setuid(id) != 0) _exit(126);
  }
  if (fileSizeLimit >= 0) {
    // A write past the limit then fails with EFBIG instead of ending the child.
    const rlimit limit{static_cast<rlim_t>(fileSizeLimit), static_cast<rlim_t>(fileSizeLimit)};
    if (signal(SIGXFSZ, SIG_IGN) == SIG_ERR || setrlimit(RLIMIT_FSIZE, &limit) != 0) _exit(125);
  }
  for (const auto& [name, value] : env) {
    if (value.empty()) unsetenv(name.c_str());
    if (!value.empty()) setenv(name.c_str(), value.c_str(), 1);
  }
  std::vector<char*> argv{const_cast<char*>(binary.c_str())};
  for (const std::string& arg : args) argv.push_back(const_cast<char*>(arg.c_str()));
  argv.push_back(nullptr);
  execv(binary.c_str(), argv.data());
  _exit(127);
}

}  // namespace

RunResult RunBinary(const std::string& binary, const std::vector<std::string>& args,
                    const std::map<std::string, std::string>& env, int asUser, long fileSizeLimit) {
  char folder[] = "/tmp/corvane-run-XXXXXX";
  RunResult result;
  if (mkdtemp(folder) == nullptr) return result;
  std::string outPath = std::string(folder) + "/out", errPath = std::string(folder) + "/err";
  pid_t child = fork();
  if (child == 0) ExecChild(binary, args, env, outPath, errPath, asUser, fileSizeLimit);
  int status = 0;
  if (child > 0 && waitpid(child, &status, 0) == child && WIFEXITED(status)) result.status = WEXITSTATUS(status);
  result.out = ReadFile(outPath);
  result.err = ReadFile(errPath);
  unlink(outPath.c_str());
  unlink(errPath.c_str());
  rmdir(folder);
  return result;
}

bool ParseJson(const std::string& text, Json::Value* lpValue, std::string* lpError) {
  Json::CharReaderBuilder builder;
  builder["failIfExtra"] = true;
  builder["rejectDupKeys"] = true;
  std::unique_ptr<Json::CharReader> reader(builder.newCharReader());
  return reader->parse(text.data(), text.data() + text.size(), lpValue, lpError);
}

Json::Value OutputJson(const RunResult& result) {
  EXPECT_EQ(result.status, 0) << result.err;
  Json::Value value;
  std::string error;
  EXPECT_TRUE(ParseJson(result.out, &value, &error)) << error << "\n" << result.out;
  return value;
}

std::string ReadFile(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  std::stringstream text;
  text << in.rdbuf();
  return text.str();
}

std::string Fields(const Json::Value& object, std::initializer_list<const char*> names) {
  std::string text;
  for (const char* name : names) text += " | " + object[name].asString();
  return text.substr(3);
}

::testing::AssertionResult FailsWithOneLine(const RunResult& result, int status, const std::vector<std::string>& texts) {
  bool texted = true;
  for (const std::string& text : texts) texted = texted && result.err.find(text) != std::string::npos;
  if (result.status == status && result.out.empty() && texted && std::count(result.err.begin(), result.err.end(), '\n') == 1 &&
      result.err.back() == '\n') {
    return ::testing::AssertionSuccess();
  }
  return ::testing::AssertionFailure() << "status " << result.status << ", out: " << result.out << "err: " << result.err;
}

}  // namespace corvane::testing
