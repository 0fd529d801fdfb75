// End-to-end runs of the corvane binary: a temporary --data-dir, the
// scripted extraction library serving a small fixed history, and a fixed
// "now". Listings are read back through --json.

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "cli/cli_runner.h"
#include "corvane/VisitHarvest.h"
#include "intake/fake_fixture.h"
#include "support/test_host.h"

namespace corvane::testing {
namespace {

using test::TempDir;

FakeItem Visit(const std::string& name, const std::string& url, const std::string& time, int count = 1) {
  FakeItem item;
  item.name = name;
  item.url = url;
  item.time = time;
  item.count = count;
  return item;
}

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
    std::snprintf(date, sizeof(date), "2024-%02d-%02d", day <= 29 ? 2 : 3, day <= 29 ? day : day - 29);
    std::string d(date);
    history.push_back(Visit("Google", "https://www.google.com/", d + " 08:00:00.000", 3));
    history.push_back(Visit("Mail", "https://mail.google.com/mail/u/0/", d + " 08:05:00.000", 2));
    history.push_back(Visit("GitHub", "https://github.com/", d + " 09:00:00.000", 2));
    if (day < 34) continue;
    history.push_back(Visit("Blog", "https://blog.example.net/post", d + " 10:00:00.000"));
    history.push_back(Visit("Shop", "https://shop.example.org/item?id=7", d + " 11:00:00.000"));
  }
  FakeItem favorite = Visit("Docs", "https://docs.example.net/", "2024-03-01 10:00:00.000");
  favorite.path = "Bookmarks bar/Work";
  fixture.favorites[BROWSER_CHROME] = {favorite, Visit("Google", "https://www.google.com/", "2024-03-01 10:00:00.000")};
  fixture.favorites[BROWSER_CHROME][1].path = "Bookmarks bar";
  return fixture;
}

class CliTest : public ::testing::Test {
 protected:
  void SetUp() override {
    ASSERT_TRUE(SampleFixture().Write(m_dir.File("fixture.json")));
  }

  RunResult Run(std::vector<std::string> args) {
    args.insert(args.begin(), {"--data-dir", m_dir.File("appdata")});
    return RunBinary(CORVANE_CLI_BINARY, args,
                     {{"CORVANE_HARVEST_LIBRARY", FakeHarvestLibrary()},
                      {"CORVANE_FAKE_HARVEST_FIXTURE", m_dir.File("fixture.json")},
                      {"CORVANE_TEST_NOW", "2024-03-07 12:00:00"},
                      {"CORVANE_APPDATA", ""}});
  }

  // Runs with --json and parses stdout; fails the test on a bad document.
  Json::Value RunJson(std::vector<std::string> args) {
    args.insert(args.begin(), "--json");
    RunResult result = Run(args);
    EXPECT_EQ(result.status, 0) << result.err;
    Json::Value value;
    std::string error;
    EXPECT_TRUE(ParseJson(result.out, &value, &error)) << error << "\n" << result.out;
    return value;
  }

  std::string DataFolder() const { return m_dir.File("appdata") + "/CorvaneApp"; }

  TempDir m_dir;
};

// The listed record of a kind whose domain is the given one.
Json::Value FindSite(const Json::Value& sites, const std::string& kind, const std::string& mainDomain) {
  for (const Json::Value& site : sites) {
    if (site["kind"].asString() == kind && site["mainDomain"].asString() == mainDomain) return site;
  }
  return Json::Value();
}

TEST_F(CliTest, UpdateReadsTheDefaultBrowserAndShowsTheCounters) {
  Json::Value update = RunJson({"update"});
  EXPECT_TRUE(update["updated"].asBool());
  EXPECT_EQ(update["ExtractBrowser"].asString(), "Chrome");
  EXPECT_TRUE(update["counters"].isMember("H2"));
  EXPECT_GE(update["seconds"].asDouble(), 0.0);
  // The sample white list was put into the data folder before the update.
  EXPECT_TRUE(std::filesystem::exists(DataFolder() + "/WhiteList.js"));

  RunResult again = Run({"update"});
  ASSERT_EQ(again.status, 0) << again.err;
  EXPECT_NE(again.out.find("Already up to date today"), std::string::npos) << again.out;
  EXPECT_NE(again.out.find("Browser read: Chrome"), std::string::npos);
  RunResult forced = Run({"update", "--force", "--settings", "Name@Mine|Default@true|Ver@1|"
                                                  "Score@{0,21,50,1,130,2.0,7,{10,2,7,7,1,15,15},{0,0,0,0,0,0,0,0}};"
                                                  "|Setting@{7,{7,3}}"});
  ASSERT_EQ(forced.status, 0) << forced.err;
  EXPECT_EQ(forced.out.rfind("Updated", 0), 0u) << forced.out;
}

TEST_F(CliTest, UpdateFailureOfTheComponentGivesItsStatusInHex) {
  FakeFixture broken = SampleFixture();
  broken.failCreate = true;
  ASSERT_TRUE(broken.Write(m_dir.File("fixture.json")));
  RunResult result = Run({"update"});
  EXPECT_EQ(result.status, 1);
  EXPECT_NE(result.err.find("Initialize failed (0x80004005)"), std::string::npos) << result.err;
  EXPECT_EQ(std::count(result.err.begin(), result.err.end(), '\n'), 1) << result.err;
}

TEST_F(CliTest, SitesListOneRecordPerWhiteListedMainDomain) {
  Json::Value sites = RunJson({"sites", "-n", "10"});
  ASSERT_TRUE(sites.isArray());
  // www.google.com and mail.google.com are both ranked; the main domain
  // stands once, as its best host.
  size_t googles = 0;
  for (const Json::Value& site : sites) googles += site["mainDomain"].asString() == "google.com" ? 1 : 0;
  EXPECT_EQ(googles, 1u) << sites.toStyledString();
  Json::Value google = FindSite(sites, "site", "google.com");
  ASSERT_TRUE(google.isObject()) << sites.toStyledString();
  EXPECT_EQ(google["name"].asString(), "Google");
  EXPECT_EQ(google["url"].asString(), "www.google.com");
  EXPECT_GT(google["weight"].asUInt(), 0u);
  EXPECT_EQ(google["hideState"].asString(), "visible");
  EXPECT_FALSE(google["focus"].asBool());
  EXPECT_TRUE(FindSite(sites, "site", "github.com").isObject());
  EXPECT_EQ(RunJson({"sites", "-n", "1"}).size(), 1u);
  // Sites seen only on the recent days are no recommendation (yet).
  EXPECT_FALSE(FindSite(sites, "url", "example.org").isObject());

  RunResult text = Run({"sites"});
  ASSERT_EQ(text.status, 0);
  EXPECT_EQ(text.out.rfind("ID ", 0), 0u) << text.out;
  EXPECT_NE(text.out.find("www.google.com"), std::string::npos);
}

// The TRecommendDomain row of a host, as explain reports it.
Json::Value RankedRow(const Json::Value& explain, uint32_t id) {
  for (const Json::Value& row : explain["ranked"]) {
    if (row["table"].asString() == "TRecommendDomain" && row["id"].asUInt() == id) return row;
  }
  return Json::Value();
}

TEST_F(CliTest, PinnedMainDomainIsListedFirstWithItsFocusId) {
  RunResult pin = Run({"pin", "google.com", "My Google"});
  ASSERT_EQ(pin.status, 0) << pin.err;
  EXPECT_EQ(Run({"pin", "google.com", "My Google"}).out, "already pinned: google.com\n");
  Json::Value sites = RunJson({"sites"});
  ASSERT_GT(sites.size(), 1u);
  EXPECT_EQ(sites[0]["mainDomain"].asString(), "google.com");
  EXPECT_TRUE(sites[0]["focus"].asBool());
  EXPECT_TRUE(sites[0].isMember("focusId"));
  EXPECT_FALSE(sites[1]["focus"].asBool());

  Json::Value pins = RunJson({"pins"});
  ASSERT_EQ(pins.size(), 1u);
  EXPECT_EQ(pins[0]["name"].asString(), "My Google");
  RunResult unknown = Run({"unpin", "99"});
  EXPECT_EQ(unknown.status, 1);
  EXPECT_NE(unknown.err.find("no pinned site with ID 99"), std::string::npos);
  EXPECT_EQ(Run({"unpin", "nosuch.example"}).status, 1);
  EXPECT_EQ(Run({"unpin", std::to_string(pins[0]["id"].asUInt())}).status, 0);
  EXPECT_EQ(RunJson({"pins"}).size(), 0u);
  EXPECT_FALSE(RunJson({"sites"})[0]["focus"].asBool());
}

TEST_F(CliTest, HideTakesTheKindsOfTheListingAndRefusesUnknownIds) {
  Json::Value sites = RunJson({"sites"});
  Json::Value google = FindSite(sites, "site", "google.com");
  ASSERT_TRUE(google.isObject());
  uint32_t rowId = google["id"].asUInt();
  std::string id = std::to_string(rowId);
  uint32_t weight = google["weight"].asUInt();
  EXPECT_EQ(Run({"hide", "subsite", id}).status, 1);  // a domain ID is no sub-domain's
  RunResult hidden = Run({"hide", "site", id, "--until-rebuild"});
  ASSERT_EQ(hidden.status, 0) << hidden.err;
  // The main domain's next host takes its place in the listing.
  Json::Value next = FindSite(RunJson({"sites"}), "site", "google.com");
  EXPECT_NE(next["id"].asUInt(), rowId);
  EXPECT_EQ(Run({"hide", "site", id}).status, 1);  // no longer visible
  Json::Value row = RankedRow(RunJson({"explain", "www.google.com"}), rowId);
  ASSERT_TRUE(row.isObject());
  EXPECT_EQ(row["hideState"].asString(), "hidden until rebuild");
  EXPECT_EQ(row["score"].asUInt(), static_cast<uint32_t>(weight * 0.7 + 0.5));

  // After a rebuild the row is back, lowered.
  ASSERT_EQ(Run({"update", "--force"}).status, 0);
  row = RankedRow(RunJson({"explain", "www.google.com"}), rowId);
  ASSERT_TRUE(row.isObject());
  EXPECT_EQ(row["hide"].asInt(), -1);
  EXPECT_EQ(row["hideState"].asString(), "lowered");

  EXPECT_EQ(Run({"hide", "site", "999999"}).status, 1);
  EXPECT_EQ(Run({"hide", "planet", "1"}).status, 2);
  EXPECT_EQ(Run({"hide", "site", "1'; drop table THistory; --"}).status, 2);
  EXPECT_EQ(Run({"hide", "history", "1", "--until-rebuild"}).status, 2);
  EXPECT_EQ(Run({"hide", "url", "https://nowhere.example/"}).status, 1);
}

TEST_F(CliTest, HistoryIsGroupedUnderDayLabelsAndSearchable) {
  Json::Value days = RunJson({"history", "-n", "0"});
  ASSERT_EQ(days.size(), 10u) << days.toStyledString();
  EXPECT_EQ(days[0]["label"].asString().rfind("今天 2024年3月7日", 0), 0u) << days[0]["label"].asString();
  EXPECT_EQ(days[1]["label"].asString().rfind("昨天", 0), 0u);
  EXPECT_GE(days[0]["visits"].size(), 5u);

  Json::Value limited = RunJson({"history", "-n", "2"});
  ASSERT_EQ(limited.size(), 1u);
  EXPECT_EQ(limited[0]["visits"].size(), 2u);

  Json::Value found = RunJson({"history", "--search", "github"});
  ASSERT_GE(found.size(), 1u);
  for (const Json::Value& day : found) {
    for (const Json::Value& visit : day["visits"]) EXPECT_NE(visit["url"].asString().find("github"), std::string::npos);
  }
  EXPECT_EQ(RunJson({"history", "--search", "50%_'\""}).size(), 0u);

  uint32_t id = days[0]["visits"][0]["id"].asUInt();
  ASSERT_EQ(Run({"hide", "history", std::to_string(id)}).status, 0);
  for (const Json::Value& visit : RunJson({"history", "-n", "0"})[0]["visits"]) EXPECT_NE(visit["id"].asUInt(), id);
  EXPECT_EQ(Run({"hide", "history", std::to_string(id)}).status, 1);
}

TEST_F(CliTest, FavoritesShowTheirFoldersAndCanBeHidden) {
  Json::Value favorites = RunJson({"favorites"});
  ASSERT_EQ(favorites.size(), 2u) << favorites.toStyledString();
  EXPECT_EQ(favorites[0]["path"].asString(), "Bookmarks bar");
  EXPECT_EQ(favorites[1]["path"].asString(), "Bookmarks bar/Work");
  ASSERT_EQ(Run({"hide", "favorite", std::to_string(favorites[1]["id"].asUInt())}).status, 0);
  EXPECT_EQ(RunJson({"favorites"}).size(), 1u);
  EXPECT_EQ(Run({"hide", "favorite", "77"}).status, 1);
}

TEST_F(CliTest, RecentAndValueAnswerThroughTheBoundary) {
  Json::Value recent = RunJson({"recent", "-n", "5"});
  ASSERT_TRUE(recent.isArray());
  EXPECT_LE(recent.size(), 5u);
  Json::Value value = RunJson({"value", "ExtractBrowser"});
  EXPECT_EQ(value["value"].asString(), "Chrome");
  RunResult missing = Run({"value", "NoSuchKey"});
  EXPECT_EQ(missing.status, 1);
  EXPECT_NE(missing.err.find("0x80004005"), std::string::npos) << missing.err;
}

TEST_F(CliTest, BadArgumentsGiveOneLineAndStatusTwo) {
  for (const std::vector<std::string>& args : std::vector<std::vector<std::string>>{
           {}, {"frobnicate"}, {"sites", "-n", "0"}, {"sites", "-n", "many"}, {"pin", "only-url"}, {"report"}}) {
    RunResult result = Run(args);
    EXPECT_EQ(result.status, 2) << (args.empty() ? "" : args[0]) << ": " << result.err;
    EXPECT_EQ(std::count(result.err.begin(), result.err.end(), '\n'), 1) << result.err;
    EXPECT_TRUE(result.out.empty());
  }
  // The word that is no command is named.
  EXPECT_EQ(Run({"frobnicate", "now"}).err, "corvane: unknown command 'frobnicate': see 'corvane --help'\n");
  EXPECT_EQ(Run({"--json", "sitez"}).err, "corvane: unknown command 'sitez': see 'corvane --help'\n");
}

TEST_F(CliTest, ExplainShowsTheScoreItsPartsAndTheWhiteListGroup) {
  RunResult before = Run({"explain", "google.com"});
  EXPECT_EQ(before.status, 1);  // no database yet
  ASSERT_EQ(Run({"update"}).status, 0);
  Json::Value host = RunJson({"explain", "mail.google.com"});
  EXPECT_EQ(host["mainDomain"].asString(), "google.com");
  EXPECT_EQ(host["settings"].asString(), "Settings.ini");
  EXPECT_EQ(host["dayScore"].asInt(), 50);
  ASSERT_GE(host["whiteList"].size(), 1u);
  EXPECT_EQ(host["whiteList"][0].asString().rfind("Google / ", 0), 0u);
  ASSERT_GE(host["urls"].size(), 1u);
  for (const Json::Value& url : host["urls"]) {
    EXPECT_EQ(url["score"].asUInt(), url["expectedScore"].asUInt()) << url.toStyledString();
    EXPECT_EQ(url["days"].asUInt(), 10u);
    EXPECT_EQ(url["newestDayIndex"].asUInt(), 0u);
  }
  // A main domain typed bare finds its www host.
  Json::Value bare = RunJson({"explain", "google.com"});
  ASSERT_GE(bare["urls"].size(), 1u);
  EXPECT_EQ(bare["urls"][0]["url"].asString(), "https://www.google.com");
  ASSERT_GE(bare["ranked"].size(), 1u);
  EXPECT_EQ(bare["ranked"][0]["key"].asString(), "www.google.com");
  Json::Value page = RunJson({"explain", "https://github.com/"});
  ASSERT_EQ(page["urls"].size(), 1u) << page.toStyledString();
  // 10 days and 20 visits, newest today: (500 + 20) x 2.0.
  EXPECT_EQ(page["urls"][0]["score"].asUInt(), 1040u);
  EXPECT_EQ(page["urls"][0]["table"].asString(), "h2");
  // The sample white list makes each GitHub Pages host a site of its own.
  Json::Value pages = RunJson({"explain", "alice.github.io"});
  ASSERT_EQ(pages["subDomainRules"].size(), 1u) << pages.toStyledString();
  EXPECT_EQ(pages["subDomainRules"][0].asString(), "[a-z0-9-]+\\.github\\.io");
  EXPECT_EQ(RunJson({"explain", "alice.github.io.evil.example"})["subDomainRules"].size(), 0u);
  RunResult text = Run({"explain", "it's'; --"});
  EXPECT_EQ(text.status, 0) << text.err;
  EXPECT_NE(text.out.find("No scored URL"), std::string::npos);
}

TEST_F(CliTest, ExplainOnAFileThatIsNoDatabaseFailsWithOneLine) {
  std::filesystem::create_directories(DataFolder());
  for (const char* content : {"this is no database\n", ""}) {
    {
      std::ofstream file(DataFolder() + "/CorvaneAppDB.db", std::ios::binary);
      file << content;
    }
    RunResult result = Run({"explain", "google.com"});
    EXPECT_EQ(result.status, 1) << result.out;
    EXPECT_TRUE(result.out.empty()) << result.out;
    EXPECT_EQ(std::count(result.err.begin(), result.err.end(), '\n'), 1) << result.err;
    EXPECT_NE(result.err.find("CorvaneAppDB.db"), std::string::npos) << result.err;
  }
  // An empty file opens as a database, but not as one of the component's.
  EXPECT_NE(Run({"explain", "google.com"}).err.find("not a database of the component"), std::string::npos);
}

TEST_F(CliTest, ReportIsOneSelfContainedPage) {
  std::string file = m_dir.File("report.html");
  RunResult result = Run({"report", "--html", file});
  ASSERT_EQ(result.status, 0) << result.err;
  std::ifstream in(file);
  std::stringstream text;
  text << in.rdbuf();
  std::string html = text.str();
  EXPECT_NE(html.find("<svg"), std::string::npos);
  EXPECT_NE(html.find("<style>"), std::string::npos);
  EXPECT_EQ(html.find("<script"), std::string::npos);
  EXPECT_EQ(html.find("<link"), std::string::npos);
  EXPECT_EQ(html.find("src="), std::string::npos);
  EXPECT_NE(html.find("google.com"), std::string::npos);
  // Every address in the page is the link of a listed site or favourite.
  size_t links = 0;
  for (size_t at = html.find("http"); at != std::string::npos; at = html.find("http", at + 1)) {
    if (html.compare(at, 7, "http://") != 0 && html.compare(at, 8, "https://") != 0) continue;
    EXPECT_EQ(html.compare(at - 6, 6, "href=\""), 0) << html.substr(at - 20, 60);
    ++links;
  }
  EXPECT_GT(links, 0u);
}

std::string ReadBytes(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  std::stringstream bytes;
  bytes << in.rdbuf();
  return bytes.str();
}

TEST_F(CliTest, ChangesAndTheReportAnswerWithOneJsonDocument) {
  Json::Value pinned = RunJson({"pin", "github.com", "Code"});
  EXPECT_EQ(pinned["action"].asString(), "pinned");
  EXPECT_EQ(pinned["target"].asString(), "github.com");
  EXPECT_EQ(pinned["status"].asString(), "ok");
  EXPECT_EQ(RunJson({"pin", "github.com", "Code"})["action"].asString(), "already pinned");
  Json::Value pins = RunJson({"pins"});
  ASSERT_EQ(pins.size(), 1u);
  Json::Value unpinned = RunJson({"unpin", std::to_string(pins[0]["id"].asUInt())});
  EXPECT_EQ(unpinned["action"].asString(), "unpinned");

  Json::Value google = FindSite(RunJson({"sites"}), "site", "google.com");
  ASSERT_TRUE(google.isObject());
  Json::Value hidden = RunJson({"hide", "site", std::to_string(google["id"].asUInt()), "--until-rebuild"});
  EXPECT_EQ(hidden["action"].asString(), "hidden until the next rebuild");
  EXPECT_EQ(hidden["target"].asString(), "site " + std::to_string(google["id"].asUInt()));

  Json::Value report = RunJson({"report", "--html", m_dir.File("report.html")});
  EXPECT_EQ(report["file"].asString(), m_dir.File("report.html"));
  EXPECT_EQ(report["sites"].asUInt(), RunJson({"sites"}).size());
  // Ten days with visits in a row: ten bars.
  EXPECT_EQ(report["days"].asUInt(), 10u);
}

TEST_F(CliTest, ReportListsAtMostThirtyTopSitesAndEveryDayOfTheSpan) {
  // Thirty-two sites of the sample white list, each visited every other
  // day: eight days with visits over sixteen.
  FakeFixture fixture = SampleFixture();
  std::vector<FakeItem>& history = fixture.history[BROWSER_CHROME];
  history.clear();
  const char* hosts[] = {"www.google.com", "www.youtube.com", "www.facebook.com", "en.wikipedia.org",
                         "www.amazon.com", "www.reddit.com", "www.x.com", "www.instagram.com",
                         "www.linkedin.com", "www.github.com", "www.stackoverflow.com", "www.netflix.com",
                         "www.microsoft.com", "www.office.com", "outlook.live.com", "www.apple.com",
                         "www.yahoo.com", "www.bing.com", "www.duckduckgo.com", "www.bbc.com",
                         "www.nytimes.com", "www.theguardian.com", "www.cnn.com", "www.reuters.com",
                         "www.bloomberg.com", "www.washingtonpost.com", "www.forbes.com", "www.economist.com",
                         "www.ft.com", "www.wsj.com", "www.apnews.com", "math.stackexchange.com"};
  for (const char* host : hosts) {
    for (const char* day : {"2024-02-20", "2024-02-22", "2024-02-24", "2024-02-26", "2024-02-28", "2024-03-01",
                            "2024-03-03", "2024-03-06"}) {
      history.push_back(Visit(host, std::string("https://") + host + "/", std::string(day) + " 10:00:00.000", 2));
    }
  }
  ASSERT_TRUE(fixture.Write(m_dir.File("fixture.json")));
  ASSERT_EQ(Run({"update"}).status, 0);
  ASSERT_GT(RunJson({"sites", "-n", "100"}).size(), 30u);
  Json::Value report = RunJson({"report", "--html", m_dir.File("report.html")});
  EXPECT_EQ(report["sites"].asUInt(), 30u);
  EXPECT_EQ(report["days"].asUInt(), 16u);  // 20 Feb to 6 Mar of a leap year
  std::string html = ReadBytes(m_dir.File("report.html"));
  size_t top = html.find("<h2>Top sites</h2>"), recent = html.find("<h2>Recent sites</h2>");
  ASSERT_LT(top, recent);
  size_t rows = 0;
  for (size_t at = html.find("<tr><td>", top); at < recent; at = html.find("<tr><td>", at + 1)) ++rows;
  EXPECT_EQ(rows, 30u);
  EXPECT_NE(html.find("<title>2024-03-02: 0</title>"), std::string::npos);  // a day without visits
  EXPECT_NE(html.find("<title>2024-02-29: 0</title>"), std::string::npos);
  EXPECT_NE(html.find("<title>2024-02-20: " + std::to_string(std::size(hosts)) + "</title>"), std::string::npos);
  EXPECT_NE(html.find("<title>2024-03-06: " + std::to_string(std::size(hosts)) + "</title>"), std::string::npos);
}

TEST_F(CliTest, BrowsersAreThoseTheExtractionLibraryReports) {
  Json::Value found = RunJson({"browsers"});
  EXPECT_EQ(found["library"].asString(), FakeHarvestLibrary());
  EXPECT_EQ(found["default"].asString(), "Chrome");
  ASSERT_EQ(found["installed"].size(), 1u);
  EXPECT_EQ(found["installed"][0].asString(), "Chrome");
  EXPECT_EQ(Run({"browsers"}).out, "Chrome (default)\n");

  FakeFixture two = SampleFixture();
  two.installed = {BROWSER_CHROME, BROWSER_FIREFOX};
  two.defaultBrowser = BROWSER_FIREFOX;
  ASSERT_TRUE(two.Write(m_dir.File("fixture.json")));
  EXPECT_EQ(Run({"browsers"}).out, "Chrome\nFireFox (default)\n");

  FakeFixture none = SampleFixture();
  none.installed.clear();
  none.defaultBrowser = 0;
  ASSERT_TRUE(none.Write(m_dir.File("fixture.json")));
  RunResult result = Run({"browsers"});
  EXPECT_EQ(result.status, 1);
  EXPECT_TRUE(result.out.empty());
  EXPECT_EQ(result.err, "corvane: no browser that " + FakeHarvestLibrary() + " reads is installed\n");
  // No data folder is needed or made to ask.
  EXPECT_FALSE(std::filesystem::exists(DataFolder() + "/CorvaneAppDB.db"));
}

// A data folder that the component cannot use: one line that names it,
// status 1, and every file in it as it was.
TEST_F(CliTest, DataFolderThatIsAFileGivesOneLine) {
  std::filesystem::create_directories(m_dir.File("appdata"));
  {
    std::ofstream file(DataFolder());
    file << "not a folder";
  }
  RunResult result = Run({"sites"});
  EXPECT_EQ(result.status, 1);
  EXPECT_EQ(result.err, "corvane: the data folder " + DataFolder() + " is a file, not a folder\n");
  EXPECT_EQ(ReadBytes(DataFolder()), "not a folder");

  RunResult under = RunBinary(CORVANE_CLI_BINARY, {"--data-dir", DataFolder() + "/below", "update"}, {});
  EXPECT_EQ(under.status, 1);
  EXPECT_EQ(std::count(under.err.begin(), under.err.end(), '\n'), 1) << under.err;
  EXPECT_NE(under.err.find(DataFolder() + "/below"), std::string::npos) << under.err;
  EXPECT_NE(under.err.find("Not a directory"), std::string::npos) << under.err;
}

TEST_F(CliTest, ReadOnlyDataFolderGivesOneLineAndLosesNothing) {
  ASSERT_EQ(Run({"update"}).status, 0);
  ASSERT_EQ(Run({"pin", "github.com", "Code"}).status, 0);
  const std::vector<std::string> kFiles = {"CorvaneAppDB.db", "DBConfig.ini", "Settings.ini", "WhiteList.js"};
  std::map<std::string, std::string> before;
  for (const std::string& name : kFiles) before[name] = ReadBytes(DataFolder() + "/" + name);
  ASSERT_FALSE(before["CorvaneAppDB.db"].empty());
  ASSERT_NE(before["DBConfig.ini"].find("LastUpdate"), std::string::npos);

  // Root writes anywhere, so as root the binary runs as "nobody", who may
  // read the folders on the way but not write the data folder.
  int asUser = geteuid() == 0 ? 65534 : -1;
  ASSERT_EQ(chmod(m_dir.Path().c_str(), 0755), 0);
  ASSERT_EQ(chmod(m_dir.File("appdata").c_str(), 0755), 0);
  ASSERT_EQ(chmod(DataFolder().c_str(), 0555), 0);
  for (const std::vector<std::string>& args : std::vector<std::vector<std::string>>{
           {"update", "--force"}, {"sites"}, {"pin", "example.com", "Example"}, {"hide", "history", "1"}}) {
    std::vector<std::string> all = {"--data-dir", m_dir.File("appdata")};
    all.insert(all.end(), args.begin(), args.end());
    RunResult result = RunBinary(CORVANE_CLI_BINARY, all,
                                 {{"CORVANE_HARVEST_LIBRARY", FakeHarvestLibrary()},
                                  {"CORVANE_FAKE_HARVEST_FIXTURE", m_dir.File("fixture.json")},
                                  {"CORVANE_TEST_NOW", "2024-03-08 12:00:00"},
                                  {"CORVANE_APPDATA", ""}},
                                 asUser);
    EXPECT_EQ(result.status, 1) << args[0];
    EXPECT_TRUE(result.out.empty()) << result.out;
    EXPECT_EQ(result.err, "corvane: the data folder " + DataFolder() + " is not writable: Permission denied\n");
  }
  ASSERT_EQ(chmod(DataFolder().c_str(), 0755), 0);
  for (const std::string& name : kFiles) {
    EXPECT_TRUE(ReadBytes(DataFolder() + "/" + name) == before[name]) << name << " changed";
  }
  EXPECT_EQ(RunJson({"pins"}).size(), 1u);
}

}  // namespace
}  // namespace corvane::testing
