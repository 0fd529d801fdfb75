// Hides across a rebuild, through the exports: the host hides, the
// scripted extraction library delivers the history again, a forced update
// rebuilds the recommendation tables, and the listing shows what became of
// each hide.

#include <fstream>
#include <set>

#include "common/utf.h"
#include "corvane/VisitHarvest.h"
#include "intake/fake_fixture.h"
#include "serving/serving_host.h"

namespace corvane::test {
namespace {

using corvane::testing::FakeFixture;
using corvane::testing::FakeItem;

const std::vector<std::string> kAllSites = {"alpha.com", "beta.com", "gamma.com", "blog.me.org", "news.site.net"};

// "Now" is 2024-03-05; nine dates of visits before it make each site a
// long-standing one. Every white-listed domain and every single URL scores
// 954 on each rebuild; 0.7 of that is 667.8, which the listing reads as 667.
class HideRebuildTest : public ServingTest {
 protected:
  HideRebuildTest()
      : m_fixturePath(m_dir.File("fixture.json")), m_fixtureEnv("CORVANE_FAKE_HARVEST_FIXTURE", m_fixturePath.c_str()) {
    m_fixture.installed = {BROWSER_CHROME};
    m_fixture.defaultBrowser = BROWSER_CHROME;
    std::ofstream(DataFile("WhiteList.js"), std::ios::binary) << R"({"whitelist":[)"
        R"({"maindomain":"alpha.com","name":"Alpha","domains":[{"domain":"alpha.com","name":"Alpha"}]},)"
        R"({"maindomain":"beta.com","name":"Beta","domains":[{"domain":"beta.com","name":"Beta"}]},)"
        R"({"maindomain":"gamma.com","name":"Gamma","domains":[{"domain":"gamma.com","name":"Gamma"}]}],"blacklist":[]})";
  }

  void SetUp() override {
    ServingTest::SetUp();
    Rebuild();
  }

  // Delivers the visits of these hosts, as the whole history, and runs a
  // forced update.
  void Rebuild(const std::vector<std::string>& hosts = kAllSites) {
    m_fixture.history.clear();
    for (const std::string& host : hosts) {
      for (int day = 25; day <= 33; ++day) {
        const std::string date = day <= 29 ? "2024-02-" + std::to_string(day) : "2024-03-0" + std::to_string(day - 29);
        m_fixture.history[BROWSER_CHROME].push_back(
            FakeItem{"Page " + host, "http://" + host + "/", "", date + " 10:00:00.000", 3});
      }
    }
    ASSERT_TRUE(m_fixture.Write(m_fixturePath));
    // A cleared history takes the whole delivery again.
    ASSERT_EQ(m_history->ClearURLs(), S_OK);
    ASSERT_EQ(m_provider->ForceUpdateData(), S_OK);
  }

  // The listing from an emptied shown set (nothing is in focus), each
  // record as "URL Hide=.. Weight=..", in the order of the URLs.
  std::string Listing() {
    EXPECT_EQ(Count(Recom(50, 1).Get()), 0u);
    ComPtr<IUnknown> array = Recom(50, 0);
    std::set<std::string> records;
    for (uint32_t i = 0; i < Count(array.Get()); ++i) {
      const std::string shown = Show(Item(array.Get(), i).Get(), {"Hide", "Weight"});
      records.insert(shown.substr(shown.find('|', shown.find('|') + 1) + 1));
    }
    std::string text;
    for (const std::string& record : records) text += (text.empty() ? "" : "; ") + record;
    return text;
  }

  // "Hide:Score" of every domain row, then "Hide:Weight" of every URL row,
  // as SQLite stores them.
  std::string Rows() {
    return m_db.Scalar("select group_concat(s, ' ') from (select Domain || '=' || Hide || ':' || Score as s from "
                       "TRecommendDomain union all select URL || '=' || Hide || ':' || Weight from TRecommendURL "
                       "order by s)");
  }

  // Hides the domain by its row's ID, which its record carries.
  HRESULT HideDomain(const std::string& domain, uint32_t flag) {
    Bstr id(FromUtf8(m_db.Scalar("select rowid from TRecommendDomain where Domain = " + Q(domain))));
    return m_common->HideRecommendDomain(id.Get(), flag);
  }

  std::string m_fixturePath;
  ScopedEnv m_fixtureEnv;
  FakeFixture m_fixture;
};

TEST_F(HideRebuildTest, EachHideStateAcrossRebuilds) {
  ASSERT_EQ(Listing(), "http://blog.me.org/ Hide=0 Weight=954; http://news.site.net/ Hide=0 Weight=954; "
                       "www.alpha.com Hide=0 Weight=954; www.beta.com Hide=0 Weight=954; www.gamma.com Hide=0 Weight=954");
  // State 0 to 1, and 0 to 2 with Score 5 rounded up from 3.5.
  ASSERT_EQ(HideDomain("alpha.com", 0), S_OK);
  m_db.Exec("update TRecommendDomain set Score = 5 where Domain = 'beta.com';");
  ASSERT_EQ(HideDomain("beta.com", 0x00010000), S_OK);
  Bstr blog(u"http://blog.me.org/");
  ASSERT_EQ(m_commonUrls->RemoveURL(blog.Get(), 0x00010001), S_OK);
  EXPECT_EQ(Rows(), "alpha.com=1:954 beta.com=2:4 gamma.com=0:954 http://blog.me.org/=2:668 "
                    "http://news.site.net/=0:954");
  EXPECT_EQ(Listing(), "http://news.site.net/ Hide=0 Weight=954; www.gamma.com Hide=0 Weight=954");

  // First rebuild: 1 stays hidden at its fresh score, 2 comes back as -1 at
  // 0.7 of its fresh score, 0 is as new. The second one keeps -1, lowered
  // once from the fresh score, not from the lowered one.
  const std::string kAfter = "http://blog.me.org/ Hide=4294967295 Weight=667; http://news.site.net/ Hide=0 Weight=954; "
                             "www.beta.com Hide=4294967295 Weight=667; www.gamma.com Hide=0 Weight=954";
  for (int rebuild = 1; rebuild <= 2; ++rebuild) {
    SCOPED_TRACE(rebuild);
    Rebuild();
    EXPECT_EQ(Rows(), "alpha.com=1:954 beta.com=-1:667.8 gamma.com=0:954 http://blog.me.org/=-1:667.8 "
                      "http://news.site.net/=0:954");
    EXPECT_EQ(Listing(), kAfter);
  }

  // -1 hidden for good keeps its lowered score; the rebuild after it gives
  // the fresh one.
  ASSERT_EQ(HideDomain("beta.com", 0), S_OK);
  EXPECT_EQ(m_db.Scalar("select Hide || ':' || Score from TRecommendDomain where Domain = 'beta.com'"), "1:667.8");
  Rebuild();
  EXPECT_EQ(m_db.Scalar("select Hide || ':' || Score from TRecommendDomain where Domain = 'beta.com'"), "1:954");
  EXPECT_EQ(Listing().find("www.beta.com"), std::string::npos);
}

}  // namespace
}  // namespace corvane::test
