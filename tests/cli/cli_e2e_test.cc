// End-to-end runs of the corvane binary: a temporary --data-dir, the
// scripted extraction library serving a small fixed history, and a fixed
// "now". Listings are read back through --json, which must parse for every
// command; a failure is one line on standard error and a non-zero status.

#include <acl/libacl.h>
#include <gtest/gtest.h>
#include <sqlite3.h>
#include <sys/acl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <map>
#include <set>

#include "cli/cli_runner.h"
#include "corvane/VisitHarvest.h"
#include "harvest/fixture/profile_fixture.h"
#include "intake/fake_fixture.h"
#include "support/test_host.h"

namespace corvane::testing {
namespace {

// Ten days of visits to white-listed sites, the last three also to two
// unlisted ones, and two favourites. Sites need visits older than the
// recent days to be recommended; the last days' sites are recent ones.
FakeFixture SampleFixture() {
  FakeFixture fixture;
  fixture.installed = {BROWSER_CHROME};
  fixture.defaultBrowser = BROWSER_CHROME;
  std::vector<FakeItem>& history = fixture.history[BROWSER_CHROME];
  for (int day = 27; day <= 36; ++day) {
    char date[16];
    std::snprintf(date, sizeof(date), "2024-%02d-%02d ", day <= 29 ? 2 : 3, day <= 29 ? day : day - 29);
    std::string d(date);
    history.push_back({"Google", "https://www.google.com/", "", d + "08:00:00.000", 3});
    history.push_back({"Mail", "https://mail.google.com/mail/u/0/", "", d + "08:05:00.000", 2});
    history.push_back({"GitHub", "https://github.com/", "", d + "09:00:00.000", 2});
    if (day < 34) continue;
    history.push_back({"Blog", "https://blog.example.net/post", "", d + "10:00:00.000"});
    history.push_back({"Shop", "https://shop.example.org/item?id=7", "", d + "11:00:00.000"});
  }
  fixture.favorites[BROWSER_CHROME] = {
      {"Docs", "https://docs.example.net/", "Bookmarks bar/Work", "2024-03-01 10:00:00.000"},
      {"Google", "https://www.google.com/", "Bookmarks bar", "2024-03-01 10:00:00.000"}};
  return fixture;
}

class CliTest : public ::testing::Test {
 protected:
  void SetUp() override { ASSERT_TRUE(SampleFixture().Write(m_dir.File("fixture.json"))); }

  RunResult Run(std::vector<std::string> args, int asUser = -1, long fileSizeLimit = -1) {
    args.insert(args.begin(), {"--data-dir", m_dir.File("appdata")});
    return RunBinary(CORVANE_CLI_BINARY, args,
                     {{"CORVANE_HARVEST_LIBRARY", FakeHarvestLibrary()},
                      {"CORVANE_FAKE_HARVEST_FIXTURE", m_dir.File("fixture.json")},
                      {"CORVANE_TEST_NOW", m_now},
                      {"CORVANE_APPDATA", ""}},
                     asUser, fileSizeLimit);
  }

  // Runs with --json and parses stdout; fails the test on a bad document.
  Json::Value RunJson(std::vector<std::string> args) {
    args.insert(args.begin(), "--json");
    return OutputJson(Run(args));
  }

  std::string DataFolder() const { return m_dir.File("appdata") + "/CorvaneApp"; }

  test::TempDir m_dir;
  std::string m_now = "2024-03-07 12:00:00";
};

// The listed record of a kind whose domain is the given one.
Json::Value FindSite(const Json::Value& sites, const std::string& kind, const std::string& mainDomain) {
  for (const Json::Value& site : sites) {
    if (site["kind"].asString() == kind && site["mainDomain"].asString() == mainDomain) return site;
  }
  return Json::Value();
}

// The TRecommendDomain row of a host, as explain reports it.
Json::Value RankedRow(const Json::Value& explain, uint32_t id) {
  for (const Json::Value& row : explain["ranked"]) {
    if (row["table"].asString() == "TRecommendDomain" && row["id"].asUInt() == id) return row;
  }
  return Json::Value();
}

TEST_F(CliTest, UpdateReadsTheDefaultBrowserAndShowsTheCounters) {
  Json::Value update = RunJson({"update"});
  EXPECT_EQ(Fields(update, {"updated", "ExtractBrowser"}), "true | Chrome");
  EXPECT_TRUE(update["counters"].isMember("H2") && update["seconds"].asDouble() >= 0.0);
  // The sample white list was put into the data folder before the update.
  EXPECT_TRUE(std::filesystem::exists(DataFolder() + "/WhiteList.js"));
  RunResult again = Run({"update"});
  EXPECT_NE(again.out.find("Already up to date: updated today at 12:00; 'corvane update --force' reads the browser "
                           "again"), std::string::npos) << again.out;
  EXPECT_NE(again.out.find("Browser read: Chrome"), std::string::npos);
  // A component that fails gives its status in words and in hex.
  FakeFixture broken = SampleFixture();
  broken.failCreate = true;
  ASSERT_TRUE(broken.Write(m_dir.File("fixture.json")));
  std::filesystem::remove_all(DataFolder());
  EXPECT_TRUE(FailsWithOneLine(Run({"update"}), 1, {"Initialize: failed (0x80004005)"}));
}

// Every pin comes first under its own name, ranked or not; a pinned URL
// pinned again is renamed; what is no address is refused.
TEST_F(CliTest, PinsComeFirstUnderTheirOwnNames) {
  EXPECT_EQ(Fields(RunJson({"pin", "google.com", "My Google"}), {"action", "target", "status"}), "pinned | google.com | ok");
  EXPECT_EQ(Run({"pin", "google.com", "My Google"}).out, "already pinned: google.com\n");
  EXPECT_EQ(Run({"pin", "google.com", "Search"}).out, "renamed: google.com: Search\n");
  ASSERT_EQ(Run({"pin", "https://www.rust-lang.org", "Rust"}).status, 0);
  for (const char* bad : {"not a url", "http://", "ftp://example.org/", "https:///path", "javascript:alert(1)"}) {
    EXPECT_TRUE(FailsWithOneLine(Run({"pin", bad, "X"}), 2, {"is no address to pin"})) << bad;
  }
  Json::Value sites = RunJson({"sites"});
  ASSERT_GT(sites.size(), 2u);
  EXPECT_EQ(Fields(sites[0], {"kind", "mainDomain", "name", "focus"}), "site | google.com | Search | true");
  EXPECT_EQ(Fields(sites[1], {"kind", "name", "url", "focus"}), "pin | Rust | https://www.rust-lang.org | true");
  EXPECT_FALSE(sites[2]["focus"].asBool());
  Json::Value pins = RunJson({"pins"});
  ASSERT_EQ(pins.size(), 2u);
  EXPECT_EQ(sites[1]["id"], pins[1]["id"]);
  EXPECT_TRUE(FailsWithOneLine(Run({"unpin", "p99"}), 1, {"no pinned site with ID 99"}));
  EXPECT_EQ(RunJson({"unpin", pins[1]["id"].asString()})["action"].asString(), "unpinned");
  EXPECT_EQ(RunJson({"pins"}).size(), 1u);
}

// Row IDs name one row across every listing. Hiding a site hides every row
// of its main domain; until the next update they come back lowered, for
// good they never come back.
TEST_F(CliTest, HideTakesARowIdAndHidesAWholeSite) {
  std::set<std::string> ids;
  size_t rows = 0;
  for (const char* list : {"sites", "history", "favorites"}) {
    for (const Json::Value& row : RunJson({list, "-n", list[0] == 's' ? "100000" : "0"})) {
      for (const Json::Value& one : row.isMember("visits") ? row["visits"] : Json::Value(Json::arrayValue).append(row)) {
        ids.insert(one["id"].asString());
        ++rows;
      }
    }
  }
  EXPECT_EQ(ids.size(), rows);
  const Json::Value google = FindSite(RunJson({"sites"}), "site", "google.com");
  ASSERT_TRUE(google.isObject());
  const uint32_t weight = google["weight"].asUInt();
  EXPECT_EQ(Fields(RunJson({"hide", google["id"].asString(), "--until-rebuild"}), {"action", "target"}),
            "hidden until the next update | Google (google.com): 2 hosts, 0 sub-domains and 0 pages");
  EXPECT_FALSE(FindSite(RunJson({"sites"}), "site", "google.com").isObject());
  Json::Value row = RankedRow(RunJson({"explain", "www.google.com"}), google["componentId"].asUInt());
  EXPECT_EQ(Fields(row, {"hideState", "score"}), "hidden until rebuild | " + std::to_string(static_cast<uint32_t>(weight * 0.7 + 0.5)));
  ASSERT_EQ(Run({"update", "--force"}).status, 0);
  EXPECT_EQ(FindSite(RunJson({"sites"}), "site", "google.com")["hideState"].asString(), "lowered");
  const std::string github = FindSite(RunJson({"sites"}), "site", "github.com")["id"].asString();
  EXPECT_NE(Run({"hide", github}).out.find("the component has no way to show it again"), std::string::npos);
  ASSERT_EQ(Run({"update", "--force"}).status, 0);
  EXPECT_FALSE(FindSite(RunJson({"sites"}), "site", "github.com").isObject());
  const std::pair<std::vector<std::string>, int> kBad[] = {
      {{"hide", "s999999"}, 1}, {{"hide", github}, 1}, {{"hide", "planet", "1"}, 2}, {{"hide", "x1"}, 2},
      {{"hide", "s1'; drop table THistory; --"}, 2}, {{"hide", "h1", "--until-rebuild"}, 2}, {{"hide", "p1"}, 2},
      {{"hide", "r1"}, 2}};
  for (const auto& [args, status] : kBad) EXPECT_TRUE(FailsWithOneLine(Run(args), status, {})) << args[1];
}

TEST_F(CliTest, HistoryIsGroupedUnderDayLabelsAndSearchable) {
  Json::Value days = RunJson({"history", "-n", "0"});
  ASSERT_EQ(days.size(), 10u) << days.toStyledString();
  EXPECT_EQ(days[0]["label"].asString().rfind("今天 2024年3月7日", 0), 0u) << days[0]["label"].asString();
  EXPECT_EQ(days[1]["label"].asString().rfind("昨天", 0), 0u);
  EXPECT_GE(days[0]["visits"].size(), 5u);
  Json::Value limited = RunJson({"history", "-n", "2"});
  EXPECT_TRUE(limited.size() == 1u && limited[0]["visits"].size() == 2u) << limited.toStyledString();
  Json::Value found = RunJson({"history", "--search", "github"});
  ASSERT_GE(found.size(), 1u);
  for (const Json::Value& day : found) {
    for (const Json::Value& visit : day["visits"]) EXPECT_NE(visit["url"].asString().find("github"), std::string::npos);
  }
  EXPECT_EQ(RunJson({"history", "--search", "50%_'\""}).size(), 0u);
  // Times as ISO 8601 beside the component's stamp; dates filter; CSV rows.
  const Json::Value& newest = days[0]["visits"][0];
  EXPECT_EQ(newest["lastVisit"].asString().substr(0, 10) + " " + newest["stamp"].asString().substr(0, 10),
            "2024-03-07 2024.03.07");
  EXPECT_EQ(newest["lastVisit"].asString().substr(23), "+00:00");
  Json::Value dated = RunJson({"history", "-n", "0", "--since", "2024-03-05", "--until", "2024-03-06"});
  EXPECT_EQ(Fields(dated[0], {"date"}) + " " + Fields(dated[1], {"date"}) + " " + std::to_string(dated.size()),
            "2024-03-06 2024-03-05 2");
  EXPECT_TRUE(FailsWithOneLine(Run({"history", "--since", "2024-02-30"}), 2, {"a date is YYYY-MM-DD"}));
  const std::string csv = Run({"--csv", "history", "-n", "1"}).out;
  EXPECT_EQ(csv.substr(0, csv.find("\r\n")), "ID,DATE,TIME,NAME,URL");
}

// The word that is no command is named.
TEST_F(CliTest, BadArgumentsGiveOneLineAndStatusTwo) {
  for (const std::vector<std::string>& args : std::vector<std::vector<std::string>>{
           {}, {"frobnicate"}, {"sites", "-n", "0"}, {"sites", "-n", "many"}, {"pin", "only-url"}, {"report"}}) {
    EXPECT_TRUE(FailsWithOneLine(Run(args), 2, {})) << (args.empty() ? "" : args[0]);
  }
  EXPECT_EQ(Run({"frobnicate", "now"}).err, "corvane: unknown command 'frobnicate': see 'corvane --help'\n");
  EXPECT_EQ(Run({"--json", "sitez"}).err, "corvane: unknown command 'sitez': see 'corvane --help'\n");
}

TEST_F(CliTest, ExplainShowsTheScoreItsPartsAndTheWhiteListGroup) {
  EXPECT_EQ(Run({"explain", "google.com"}).status, 1);  // no database yet
  ASSERT_EQ(Run({"update"}).status, 0);
  Json::Value host = RunJson({"explain", "mail.google.com"});
  EXPECT_EQ(Fields(host, {"mainDomain", "settings", "dayScore"}), "google.com | Settings.ini | 50");
  EXPECT_EQ(host["whiteList"][0].asString().rfind("Google / ", 0), 0u);
  ASSERT_GE(host["urls"].size(), 1u);
  for (const Json::Value& url : host["urls"]) {
    EXPECT_EQ(Fields(url, {"score", "days", "newestDayIndex"}), Fields(url, {"expectedScore"}) + " | 10 | 0");
  }
  // A main domain typed bare finds its www host.
  Json::Value bare = RunJson({"explain", "google.com"});
  EXPECT_EQ(bare["urls"][0]["url"].asString() + " " + bare["ranked"][0]["key"].asString(),
            "https://www.google.com www.google.com");
  // 10 days and 20 visits, newest today: (500 + 20) x 2.0.
  Json::Value page = RunJson({"explain", "https://github.com/"});
  ASSERT_EQ(page["urls"].size(), 1u) << page.toStyledString();
  EXPECT_EQ(Fields(page["urls"][0], {"score", "table"}), "1040 | h2");
  // The sample white list makes each GitHub Pages host a site of its own.
  Json::Value pages = RunJson({"explain", "alice.github.io"});
  ASSERT_EQ(pages["subDomainRules"].size(), 1u) << pages.toStyledString();
  EXPECT_EQ(pages["subDomainRules"][0].asString(), "[a-z0-9-]+\\.github\\.io");
  EXPECT_EQ(RunJson({"explain", "alice.github.io.evil.example"})["subDomainRules"].size(), 0u);
  RunResult text = Run({"explain", "it's'; --"});
  EXPECT_TRUE(text.status == 0 && text.out.find("No scored URL") != std::string::npos) << text.err;
}

// The profiles of a home with Chrome and Firefox, their counts, which one
// an update reads, and the choice of sources written to Harvest.ini; a
// home without any browser says where it looked.
TEST_F(CliTest, BrowsersListsEveryProfileAndSourcesChoosesWhatUpdatesRead) {
  test::TempDir home;
  const std::map<std::string, std::string> env = {{"HOME", home.Path()}, {"XDG_CONFIG_HOME", ""},
                                                  {"XDG_DATA_HOME", ""}, {"CORVANE_APPDATA", m_dir.File("appdata")}};
  const auto browsers = [&](const std::vector<std::string>& args) { return RunBinary(CORVANE_CLI_BINARY, args, env); };
  EXPECT_TRUE(FailsWithOneLine(browsers({"browsers"}), 1, {"no browser profile found under " + home.Path()}));
  const fixture::ProfileSpec spec{.seed = 2, .days = 2, .visitsPerDay = 30, .distinctUrls = 200, .hosts = 40,
                                  .bookmarks = 7, .lastDay = "2024-03-06", .endTime = ""};
  std::string error;
  ASSERT_TRUE(fixture::WriteChromiumProfile(home.Path(), spec, &error) &&
              fixture::WriteFirefoxProfile(home.Path(), spec, &error)) << error;
  Json::Value found = OutputJson(browsers({"--json", "browsers"}));
  ASSERT_EQ(found["profiles"].size(), 2u) << found.toStyledString();
  EXPECT_EQ(Fields(found["profiles"][0], {"name", "browser", "bookmarks", "read"}), "chrome:Default | Google Chrome | 7 | true");
  EXPECT_EQ(Fields(found["profiles"][1], {"name", "read", "why"}),
            "firefox:default-release | false | Harvest.ini reads the default browser's profile only");
  EXPECT_EQ(found["profiles"][0]["visits"], found["profiles"][1]["visits"]);
  EXPECT_TRUE(FailsWithOneLine(browsers({"sources", "chrome:Nobody"}), 2, {"'chrome:Nobody' names no profile found here"}));
  ASSERT_EQ(browsers({"sources", "firefox:default-release"}).status, 0);
  EXPECT_NE(ReadFile(DataFolder() + "/Harvest.ini").find("Read=firefox:default-release"), std::string::npos);
  found = OutputJson(browsers({"--json", "browsers"}));
  EXPECT_EQ(Fields(found["profiles"][0], {"read", "why"}) + " / " + Fields(found["profiles"][1], {"read", "why"}),
            "false | not named in Harvest.ini / true | chosen in Harvest.ini");
}

// The first column of the first row of a query on a database file.
std::string Scalar(const std::string& path, const std::string& sql) {
  sqlite3* db = nullptr;
  sqlite3_stmt* stmt = nullptr;
  std::string out;
  if (sqlite3_open_v2(path.c_str(), &db, SQLITE_OPEN_READONLY, nullptr) == SQLITE_OK &&
      sqlite3_prepare_v2(db, sql.c_str(), -1, &stmt, nullptr) == SQLITE_OK && sqlite3_step(stmt) == SQLITE_ROW) {
    out = reinterpret_cast<const char*>(sqlite3_column_text(stmt, 0));
  }
  sqlite3_finalize(stmt);
  sqlite3_close(db);
  return out;
}

// A damaged database is set aside, never over an earlier one, and rebuilt
// from the browser with the person's own rows: pins and hidden history
// rows, favourites and sites stay as they were. One line says so.
TEST_F(CliTest, DamagedDatabaseIsRebuiltWithThePersonsOwnRows) {
  ASSERT_EQ(Run({"update"}).status, 0);
  ASSERT_EQ(Run({"pin", "https://docs.example.net/", "Docs"}).status, 0);
  for (const std::string& id : {RunJson({"history", "-n", "1"})[0]["visits"][0]["id"].asString(),
                                 RunJson({"favorites"})[0]["id"].asString(),
                                 FindSite(RunJson({"sites"}), "site", "github.com")["id"].asString()}) {
    ASSERT_EQ(Run({"hide", id}).status, 0) << id;
  }
  const auto state = [&] {
    std::string out;
    for (const char* list : {"pins", "history", "favorites", "sites"}) out += RunJson({list}).toStyledString();
    return out;
  };
  const std::string before = state(), db = DataFolder() + "/CorvaneAppDB.db";
  test::DamageDatabasePage(db, std::stoi(Scalar(db, "select pageno from dbstat where name = 'h2'")),
                     std::stoi(Scalar(db, "pragma page_size")));
  RunResult rebuilt = Run({"pins"});
  EXPECT_EQ(rebuilt.err, "corvane: CorvaneAppDB.db was damaged: set aside as CorvaneAppDB.db.corrupt and rebuilt; "
                         "saved 1 pins, 3 hide marks and 0 IE history rows\n");
  EXPECT_EQ(state(), before);
  EXPECT_EQ(Scalar(db, "pragma integrity_check") + Scalar(db, "select count(*) from sqlite_master where name = "
                                                              "'TSalvagedMark'"), "ok0");
  std::ofstream(db, std::ios::trunc) << "no database";
  EXPECT_NE(Run({"pins"}).err.find("set aside as CorvaneAppDB.db.corrupt.1 and rebuilt; saved 0 pins"),
            std::string::npos);
  EXPECT_EQ(ReadFile(db + ".corrupt.1"), "no database");
  EXPECT_EQ(Scalar(db + ".corrupt", "select count(*) from TFocusURL"), "1");
}

// A file of the data folder that the component refuses is named in one
// line with why and what was done instead; the update itself succeeds.
TEST_F(CliTest, RefusedFilesAreNamedInOneLineEach) {
  ASSERT_EQ(Run({"update"}).status, 0);
  const struct {
    const char* file;
    std::string text;
    const char* line;
  } kFiles[] = {
      {"WhiteList.js", "{ broken", "WhiteList.js was refused: it is not valid JSON; the lists loaded before stay in force"},
      {"WhiteList.js", std::string((4 << 20) + 1, ' '),
       "WhiteList.js was refused: it is larger than 4194304 bytes; the lists loaded before stay in force"},
      {"Settings.ini", "Score=garbage",
       "Settings.ini was refused: it holds no score rows; the built-in settings were written in its place"},
      {"DBConfig.ini", "garbage",
       "DBConfig.ini was damaged: set aside, and its stamps are read as missing, so the history is read again"},
  };
  for (const auto& file : kFiles) {
    std::ofstream(DataFolder() + "/" + file.file, std::ios::trunc) << file.text;
    RunResult result = Run({"update", "--force"});
    EXPECT_EQ(result.status, 0) << file.file;
    EXPECT_EQ(result.err, "corvane: " + std::string(file.line) + "\n");
    std::filesystem::remove(DataFolder() + "/WhiteList.js");  // the host puts the sample back
  }
  EXPECT_EQ(ReadFile(DataFolder() + "/DBConfig.ini.corrupt"), "garbage");
}

// A disk that fills up during an update, and a database the person may not
// write: one line and a non-zero status each, and every stored row stays.
TEST_F(CliTest, FullDiskAndReadOnlyDatabaseLoseNothing) {
  ASSERT_EQ(Run({"update"}).status, 0);
  ASSERT_EQ(Run({"pin", "github.com", "Code"}).status, 0);
  const auto state = [&] {
    std::string out;
    for (const char* list : {"pins", "history", "sites"}) out += RunJson({list}).toStyledString();
    return out;
  };
  const std::string before = state(), db = DataFolder() + "/CorvaneAppDB.db";
  const long half = static_cast<long>(std::filesystem::file_size(db) / 2);
  EXPECT_TRUE(FailsWithOneLine(Run({"update", "--force"}, -1, half), 1, {"ForceUpdateData: failed (0x80004005)"}));
  EXPECT_EQ(state(), before);
  EXPECT_EQ(Scalar(db, "pragma integrity_check"), "ok");
  if (geteuid() != 0) GTEST_SKIP() << "the read-only database is tried as another user, which only root can be";
  ASSERT_EQ(chmod(m_dir.Path().c_str(), 0755) | chmod(m_dir.File("appdata").c_str(), 0755), 0);
  for (const auto& entry : std::filesystem::recursive_directory_iterator(m_dir.File("appdata"))) {
    ASSERT_EQ(chown(entry.path().c_str(), 65534, 65534), 0);
  }
  ASSERT_EQ(chmod(db.c_str(), 0400), 0);
  EXPECT_TRUE(FailsWithOneLine(Run({"update", "--force"}, 65534), 1, {"cannot write " + db + ": Permission denied"}));
  ASSERT_EQ(chmod(db.c_str(), 0600), 0);
  EXPECT_EQ(state(), before);
}

// The access list of a file, abbreviated ("u::rw-,g::---,o::---").
std::string Rights(const std::string& path) {
  acl_t acl = acl_get_file(path.c_str(), ACL_TYPE_ACCESS);
  char* text = acl != nullptr ? acl_to_any_text(acl, nullptr, ',', TEXT_ABBREVIATE) : nullptr;
  std::string out = text != nullptr ? text : "<none>";
  acl_free(text);
  acl_free(acl);
  return out;
}

// Browsing history is the person's alone: the folder and every file in it
// give nothing to the group or to others. A folder left open is narrowed
// with one line. A folder that root makes in a person's home stays that
// person's (and no one else's) through their entry.
TEST_F(CliTest, DataFolderIsItsOwnersAlone) {
  const auto expectPrivate = [&](const std::string& person) {
    for (const auto& entry : std::filesystem::directory_iterator(DataFolder())) {
      const std::string rights = Rights(entry.path().string());
      EXPECT_TRUE(rights.find("g::---") != std::string::npos && rights.find("o::---") != std::string::npos &&
                  rights.find("g:") == rights.find("g::")) << entry.path() << " " << rights;
      EXPECT_EQ(rights.find("u:nobody:") != std::string::npos, !person.empty()) << entry.path() << " " << rights;
    }
    EXPECT_EQ(Rights(DataFolder()).substr(0, 6), "u::rwx");
  };
  ASSERT_EQ(Run({"update"}).status, 0);
  EXPECT_EQ(std::filesystem::status(DataFolder()).permissions(), std::filesystem::perms::owner_all);
  expectPrivate("");
  ASSERT_EQ(chmod(DataFolder().c_str(), 0775) | chmod((DataFolder() + "/Settings.ini").c_str(), 0644), 0);
  RunResult narrowed = Run({"pins"});
  EXPECT_EQ(narrowed.err, "corvane: " + DataFolder() + " was open to other accounts: it and its files are now yours alone\n");
  expectPrivate("");
  EXPECT_EQ(Run({"pins"}).err, "");
  std::ofstream(DataFolder() + "/CorvaneAppDB.db", std::ios::trunc) << "damaged";
  ASSERT_NE(Run({"pins"}).err.find("set aside as CorvaneAppDB.db.corrupt"), std::string::npos);
  expectPrivate("");
  if (geteuid() != 0) GTEST_SKIP() << "only root makes a data folder for another person";
  std::filesystem::remove_all(DataFolder());
  ASSERT_EQ(chmod(m_dir.Path().c_str(), 0755) | chown(m_dir.File("appdata").c_str(), 65534, 65534), 0);
  ASSERT_EQ(Run({"update"}).status, 0);
  expectPrivate("nobody");
  EXPECT_EQ(Run({"pin", "github.com", "Code"}, 65534).status, 0);
  EXPECT_EQ(RunJson({"pins"}).size(), 1u);
}

// A data folder that the component cannot use: one line that names it,
// status 1, and every file in it as it was.
TEST_F(CliTest, DataFolderThatIsAFileGivesOneLine) {
  std::filesystem::create_directories(m_dir.File("appdata"));
  std::ofstream(DataFolder()) << "not a folder";
  RunResult result = Run({"sites"});
  EXPECT_TRUE(FailsWithOneLine(result, 1, {"corvane: the data folder " + DataFolder() + " is a file, not a folder"}));
  EXPECT_EQ(ReadFile(DataFolder()), "not a folder");
  RunResult under = RunBinary(CORVANE_CLI_BINARY, {"--data-dir", DataFolder() + "/below", "update"}, {});
  EXPECT_TRUE(FailsWithOneLine(under, 1, {DataFolder() + "/below", "Not a directory"}));
}

// Root writes anywhere, so as root the binary runs as "nobody", who may read
// the folders on the way but not write the data folder. On a new day every
// command would update first.
TEST_F(CliTest, ReadOnlyDataFolderGivesOneLineAndLosesNothing) {
  ASSERT_EQ(Run({"update"}).status, 0);
  ASSERT_EQ(Run({"pin", "github.com", "Code"}).status, 0);
  std::map<std::string, std::string> before;
  for (const char* name : {"CorvaneAppDB.db", "DBConfig.ini", "Settings.ini", "WhiteList.js"}) {
    before[name] = ReadFile(DataFolder() + "/" + name);
  }
  ASSERT_TRUE(!before["CorvaneAppDB.db"].empty() && before["DBConfig.ini"].find("LastUpdate") != std::string::npos);
  ASSERT_EQ(chmod(m_dir.Path().c_str(), 0755) | chmod(m_dir.File("appdata").c_str(), 0755), 0);
  ASSERT_EQ(chmod(DataFolder().c_str(), 0555), 0);
  m_now = "2024-03-08 12:00:00";
  for (const std::vector<std::string>& args : std::vector<std::vector<std::string>>{
           {"update", "--force"}, {"sites"}, {"pin", "example.com", "Example"}, {"hide", "history", "1"}}) {
    RunResult result = Run(args, geteuid() == 0 ? 65534 : -1);
    EXPECT_EQ(result.err, "corvane: the data folder " + DataFolder() + " is not writable: Permission denied\n");
    EXPECT_TRUE(FailsWithOneLine(result, 1, {})) << args[0];
  }
  ASSERT_EQ(chmod(DataFolder().c_str(), 0755), 0);
  for (const auto& [name, bytes] : before) EXPECT_TRUE(ReadFile(DataFolder() + "/" + name) == bytes) << name;
  EXPECT_EQ(RunJson({"pins"}).size(), 1u);
}

}  // namespace
}  // namespace corvane::testing
