// A home with three browsers of both families and two profiles each, one
// of whose History is damaged: the profiles that Harvest.ini chooses are
// read as one stream in which a synced copy of a visit counts once.

#include <filesystem>
#include <fstream>
#include <set>
#include <tuple>

#include "harvest/harvest_host.h"
#include "harvest/profile_locator.h"
#include "harvest/sources.h"

namespace corvane::testing {
namespace {

using fixture::ProfilePlace;
using fixture::ProfileSpec;

// Each person browses on days of their own, so that no two of them visit
// one URL in one second by chance; a synced copy is the same person.
ProfileSpec Spec(uint32_t seed) {
  const std::string lastDay = "2024-05-" + std::to_string(28 - 4 * static_cast<int>(seed));
  return ProfileSpec{.seed = seed, .days = 3, .visitsPerDay = 40, .distinctUrls = 300, .hosts = 60,
                     .bookmarks = 4 + 6 * static_cast<int>(seed),
                     .lastDay = lastDay, .endTime = ""};
}

const ProfilePlace kBraveWork{".config/BraveSoftware/Brave-Browser", "Default", "Work", true};
const ProfilePlace kBraveHome{".config/BraveSoftware/Brave-Browser", "Profile 1", "Home", false};
const ProfilePlace kEdge{".config/microsoft-edge", "Default", "Edge", true};
const ProfilePlace kEdgeBroken{".config/microsoft-edge", "Profile 2", "Broken", false};
const ProfilePlace kLibreWolf{".librewolf", "a1.default", "default", true};
const ProfilePlace kLibreWolfCopy{".librewolf", "b2.synced", "synced", false};

class SourcesTest : public HarvestTest {
 protected:
  void SetUp() override {
    std::string error;
    // The second LibreWolf profile is a synced copy of the first.
    for (const auto& [place, seed] : {std::pair{kBraveWork, 1u}, {kBraveHome, 2u}, {kEdge, 3u}, {kEdgeBroken, 4u}}) {
      ASSERT_TRUE(fixture::WriteChromiumProfile(Home(), Spec(seed), &error, place)) << error;
    }
    for (const ProfilePlace& place : {kLibreWolf, kLibreWolfCopy}) {
      ASSERT_TRUE(fixture::WriteFirefoxProfile(Home(), Spec(5), &error, place)) << error;
    }
    std::ofstream(fixture::ChromiumHistoryPath(Home(), kEdgeBroken), std::ios::trunc) << "no database";
    std::filesystem::create_directories(m_appData.File("CorvaneApp"));
  }
  void Choose(const std::string& read) {
    std::string error;
    ASSERT_TRUE(harvest::WriteSourceChoice(read, &error)) << error;
  }
  // The profiles of the last history extraction, as Harvest.ini records them.
  std::string LastRead() {
    std::string out;
    for (const auto& [name, count] : harvest::LastRead(EXTRACT_HISTORY)) out += name + "=" + std::to_string(count) + " ";
    return out;
  }
};

// Every profile, as either family's value asks: the damaged one says why
// and gives nothing, the synced copy gives nothing new, the rest come in
// one stream in time order; their bookmarks are led by their browser, a
// URL once.
TEST_F(SourcesTest, AllProfilesComeAsOneStreamInTimeOrderWithSyncedCopiesOnce) {
  Choose("all");
  const std::vector<Delivered> visits = Extract(BROWSER_FIREFOX, EXTRACT_HISTORY);
  size_t expected = 0;
  for (uint32_t seed : {1u, 2u, 3u, 5u}) expected += ChosenByModel(Spec(seed)).chosen;
  EXPECT_EQ(visits.size(), expected);
  const auto instant = [](const SYSTEMTIME& t) {
    return std::tuple(t.wYear, t.wMonth, t.wDay, t.wHour, t.wMinute, t.wSecond, t.wMilliseconds);
  };
  std::set<uint32_t> browsers;
  for (size_t i = 0; i < visits.size(); ++i) {
    browsers.insert(visits[i].browser);
    if (i > 0) {
      ASSERT_LE(instant(visits[i - 1].time), instant(visits[i].time)) << i;
    }
  }
  EXPECT_EQ(browsers, (std::set<uint32_t>{BROWSER_CHROME, BROWSER_FIREFOX}));
  EXPECT_NE(TakeDebugLog().find(fixture::ChromiumHistoryPath(Home(), kEdgeBroken)), std::string::npos);
  const size_t synced = ChosenByModel(Spec(5)).chosen;
  EXPECT_NE(LastRead().find("librewolf:synced=" + std::to_string(synced)), std::string::npos);

  std::set<std::string> urls, prefixes;
  for (const Delivered& bookmark : Extract(BROWSER_CHROME, EXTRACT_FAVORITES)) {
    EXPECT_TRUE(urls.insert(bookmark.url).second) << bookmark.url << " twice";
    prefixes.insert(bookmark.path.substr(0, bookmark.path.find('/')));
  }
  // The profiles bookmark the pages they visit most, many the same; the
  // damaged profile's bookmarks are whole.
  std::set<std::string> each;
  for (const char* name : {"brave:Default", "brave:Profile 1", "edge:Default", "edge:Profile 2", "librewolf:default"}) {
    Choose(name);
    for (const Delivered& bookmark : Extract(BROWSER_CHROME, EXTRACT_FAVORITES)) each.insert(bookmark.url);
  }
  EXPECT_EQ(urls, each);
  const std::set<std::string> kLabels = {"Brave (Work)", "Brave (Home)", "Microsoft Edge (Edge)",
                                         "Microsoft Edge (Broken)", "LibreWolf (default)", "LibreWolf (synced)"};
  EXPECT_TRUE(prefixes.count("Brave (Work)") && prefixes.size() > 2);
  for (const std::string& prefix : prefixes) EXPECT_TRUE(kLabels.count(prefix)) << prefix;
}

}  // namespace
}  // namespace corvane::testing
