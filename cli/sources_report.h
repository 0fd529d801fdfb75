// sources_report.h: the browser profiles found here, what each holds, and
// which of them an update reads, as the extraction library decides: its
// own discovery and readers (harvest/), linked into the host, with the
// sources that Harvest.ini chooses.

#ifndef CORVANE_CLI_SOURCES_REPORT_H_
#define CORVANE_CLI_SOURCES_REPORT_H_

#include <json/value.h>

#include <cstdio>
#include <string>
#include <vector>

namespace corvane::cli {

struct ProfileRow {
  std::string source;   // "brave:Default": the name Harvest.ini and `corvane sources` take
  std::string browser;  // "Brave"
  std::string label;    // the name the person gave the profile
  std::string folder;
  long visits = -1;     // -1: the history can't be read
  long bookmarks = -1;
  bool read = false;    // an update reads it
  std::string why;      // why it is read, or why not
};

struct SourcesReport {
  std::string harvestIni;            // its path
  std::string choice;                // "default", "all" or the list
  std::vector<std::string> problems; // entries of Harvest.ini passed over
  std::string defaultBrowser;        // the desktop file of the default browser; empty: none
  std::vector<ProfileRow> profiles;
  std::vector<std::string> emptyFolders;  // a browser's folder with no profile in it
};

// Finds every profile and reads each one's history and bookmarks to count
// them (a few seconds for a large history).
SourcesReport BuildSourcesReport();

Json::Value ToJson(const SourcesReport& report);
void PrintSourcesReport(const SourcesReport& report, std::FILE* out);

// One line for a person when no profile was found: where the library looked.
std::string NothingFoundMessage(const SourcesReport& report);

// "1234 visits from brave:Default, 567 from firefox:default-release"; empty
// when the last update read nothing.
std::string LastReadText();
Json::Value LastReadJson();

}  // namespace corvane::cli

#endif  // CORVANE_CLI_SOURCES_REPORT_H_
