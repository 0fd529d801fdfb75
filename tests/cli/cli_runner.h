// cli_runner.h: runs the built corvane binary as a child process with a
// chosen environment and collects its exit status, stdout and stderr; and
// what the checks of its output share.

#ifndef CORVANE_TESTS_CLI_CLI_RUNNER_H_
#define CORVANE_TESTS_CLI_CLI_RUNNER_H_

#include <gtest/gtest.h>
#include <json/value.h>

#include <map>
#include <string>
#include <vector>

namespace corvane::testing {

struct RunResult {
  int status = -1;  // exit status; -1 when the child did not exit normally
  std::string out;
  std::string err;
};

// env: variables to set (an empty value unsets the variable) on top of the
// test's own environment. asUser >= 0: the child drops to that user and
// group ID first (the test must run as root), for checks of file
// permissions that root would pass. fileSizeLimit >= 0: no file of the
// child grows beyond that many bytes (a full disk, as the child sees it).
RunResult RunBinary(const std::string& binary, const std::vector<std::string>& args,
                    const std::map<std::string, std::string>& env, int asUser = -1, long fileSizeLimit = -1);

// Parses text as exactly one JSON document; false with the parser's
// message otherwise.
bool ParseJson(const std::string& text, Json::Value* lpValue, std::string* lpError);
// A run's standard output as one JSON document, after a run that must have
// ended with status 0; a bad status or document fails the test.
Json::Value OutputJson(const RunResult& result);

std::string ReadFile(const std::string& path);
// The named members of a JSON object as text, joined by " | ", so that
// several are compared at once.
std::string Fields(const Json::Value& object, std::initializer_list<const char*> names);
// Whether the run failed with the status and one line on standard error
// that holds each text, and nothing on standard output.
::testing::AssertionResult FailsWithOneLine(const RunResult& result, int status, const std::vector<std::string>& texts);

}  // namespace corvane::testing

#endif  // CORVANE_TESTS_CLI_CLI_RUNNER_H_
