// Hides across a rebuild, through the exports: the host hides, the
// scripted extraction library delivers the same history again, a forced
// update rebuilds the recommendation tables, and the listing shows what
// became of each hide.

#include <fstream>
#include <map>
#include <utility>

#include "corvane/VisitHarvest.h"
#include "intake/fake_fixture.h"
#include "serving/seed_rows.h"
#include "serving/serving_host.h"

namespace corvane::test {
namespace {

using corvane::testing::FakeFixture;
using corvane::testing::FakeItem;

// "Now" is 2024-03-05; nine dates of visits before it make each site a
// long-standing one. Every white-listed domain and every single URL scores
// 954 on each rebuild; 0.7 of that is 667.8, which the listing reads as 667.
constexpr uint32_t kFreshScore = 954;
constexpr uint32_t kLoweredScore = 667;

class HideRebuildTest : public ServingTest {
 protected:
  HideRebuildTest()
      : m_fixturePath(m_dir.File("fixture.json")), m_fixtureEnv("CORVANE_FAKE_HARVEST_FIXTURE", m_fixturePath.c_str()) {
    m_fixture.installed = {BROWSER_CHROME};
    m_fixture.defaultBrowser = BROWSER_CHROME;
  }

  void SetUp() override {
    ServingTest::SetUp();
    std::ofstream(DataFile("WhiteList.js"), std::ios::binary) << R"({"whitelist":[)"
        R"({"maindomain":"alpha.com","name":"Alpha","domains":[{"domain":"alpha.com","name":"Alpha"}]},)"
        R"({"maindomain":"beta.com","name":"Beta","domains":[{"domain":"beta.com","name":"Beta"}]},)"
        R"({"maindomain":"gamma.com","name":"Gamma","domains":[{"domain":"gamma.com","name":"Gamma"}]}],"blacklist":[]})";
    StartProvider();
    m_common = Manager<ICommonUseURLsManager>(1, IID_ICommonUseURLsManager);
    m_urls = Query<IURLsManager>(m_common.Get(), IID_IURLsManager);
    m_history = Manager<IURLsManager>(3, IID_IURLsManager);
    ASSERT_TRUE(m_common && m_urls && m_history);
    Rebuild({"alpha.com", "beta.com", "gamma.com", "blog.me.org", "news.site.net"});
  }

  // Delivers the visits of these hosts, as the whole history, and runs a
  // forced update.
  void Rebuild(const std::vector<std::string>& hosts) {
    m_fixture.history.clear();
    for (const std::string& host : hosts) {
      for (const char* date : {"2024-02-25", "2024-02-26", "2024-02-27", "2024-02-28", "2024-02-29", "2024-03-01",
                               "2024-03-02", "2024-03-03", "2024-03-04"}) {
        m_fixture.history[BROWSER_CHROME].push_back(
            FakeItem{"Page " + host, "http://" + host + "/", "", std::string(date) + " 10:00:00.000", 3});
      }
    }
    ASSERT_TRUE(m_fixture.Write(m_fixturePath));
    // A cleared history takes the whole delivery again.
    ASSERT_EQ(m_history->ClearURLs(), S_OK);
    ASSERT_EQ(m_provider->ForceUpdateData(), S_OK);
  }

  // The whole listing, from an emptied shown set: its records by URL.
  std::map<std::u16string, ComPtr<IUnknown>> Listing() {
    std::map<std::u16string, ComPtr<IUnknown>> records;
    for (uint32_t type : {1u, 0u}) {
      IUnknown* raw = nullptr;
      EXPECT_EQ(m_common->GetRecomURLs(0, 50, &raw, type), S_OK);
      ComPtr<IUnknown> array(raw);
      for (uint32_t i = 0; i < Count(array.Get()); ++i) {
        ComPtr<IUnknown> record = ItemOf(array, i);
        const std::u16string url = URL2(record.Get());
        records[url] = std::move(record);
      }
    }
    return records;
  }

  // "Hide:Score" of a white-listed domain's row; the score as SQLite
  // stores it.
  std::string DomainRow(const std::string& domain) {
    return m_db.Scalar("select Hide || ':' || Score from TRecommendDomain where Domain = " + Q(domain));
  }
  std::string URLRow(const std::string& url) {
    return m_db.Scalar("select Hide || ':' || Weight from TRecommendURL where URL = " + Q(url));
  }

  HRESULT HideDomain(const std::map<std::u16string, ComPtr<IUnknown>>& listed, const std::u16string& url,
                     uint32_t flag) {
    auto it = listed.find(url);
    if (it == listed.end()) return E_FAIL;
    std::string id = std::to_string(ID2(it->second.Get()));
    Bstr text(std::u16string(id.begin(), id.end()));
    return m_common->HideRecommendDomain(text.Get(), flag);
  }

  std::string m_fixturePath;
  ScopedEnv m_fixtureEnv;
  FakeFixture m_fixture;
  ComPtr<ICommonUseURLsManager> m_common;
  ComPtr<IURLsManager> m_urls;
  ComPtr<IURLsManager> m_history;
};

TEST_F(HideRebuildTest, EachHideStateAcrossTwoRebuilds) {
  std::map<std::u16string, ComPtr<IUnknown>> listed = Listing();
  ASSERT_EQ(listed.size(), 5u);
  ASSERT_EQ(DomainRow("alpha.com"), "0:954");
  // State 0 to 1, and 0 to 2 with Score 5 rounded up from 3.5.
  ASSERT_EQ(HideDomain(listed, u"www.alpha.com", 0), S_OK);
  m_db.Exec("update TRecommendDomain set Score = 5 where Domain = 'beta.com';");
  ASSERT_EQ(HideDomain(listed, u"www.beta.com", 0x00010000), S_OK);
  EXPECT_EQ(DomainRow("alpha.com"), "1:954");
  EXPECT_EQ(DomainRow("beta.com"), "2:4");
  Bstr blog(u"http://blog.me.org/");
  ASSERT_EQ(m_urls->RemoveURL(blog.Get(), 0x00010001), S_OK);
  EXPECT_EQ(URLRow("http://blog.me.org/"), "2:668");
  listed = Listing();
  EXPECT_EQ(listed.size(), 2u);
  EXPECT_EQ(listed.count(u"www.gamma.com"), 1u);
  EXPECT_EQ(listed.count(u"http://news.site.net/"), 1u);

  // First rebuild: 1 stays hidden at its fresh score, 2 comes back as -1
  // at 0.7 of its fresh score, 0 is as new.
  Rebuild({"alpha.com", "beta.com", "gamma.com", "blog.me.org", "news.site.net"});
  EXPECT_EQ(DomainRow("alpha.com"), "1:954");
  listed = Listing();
  ASSERT_EQ(listed.size(), 4u);
  EXPECT_EQ(listed.count(u"www.alpha.com"), 0u);
  for (const std::u16string& url : {std::u16string(u"www.beta.com"), std::u16string(u"http://blog.me.org/")}) {
    SCOPED_TRACE(std::string(url.begin(), url.end()));
    ASSERT_EQ(listed.count(url), 1u);
    EXPECT_EQ(ExtraULong(listed[url].Get(), u"Hide"), 0xFFFFFFFFu);
    EXPECT_EQ(ExtraULong(listed[url].Get(), u"Weight"), kLoweredScore);
  }
  EXPECT_EQ(ExtraULong(listed[u"www.gamma.com"].Get(), u"Hide"), 0u);
  EXPECT_EQ(ExtraULong(listed[u"www.gamma.com"].Get(), u"Weight"), kFreshScore);

  // Second rebuild: -1 stays -1, lowered once from the fresh score, not
  // from the lowered one.
  Rebuild({"alpha.com", "beta.com", "gamma.com", "blog.me.org", "news.site.net"});
  listed = Listing();
  ASSERT_EQ(listed.size(), 4u);
  EXPECT_EQ(ExtraULong(listed[u"www.beta.com"].Get(), u"Hide"), 0xFFFFFFFFu);
  EXPECT_EQ(ExtraULong(listed[u"www.beta.com"].Get(), u"Weight"), kLoweredScore);
  EXPECT_EQ(ExtraULong(listed[u"http://blog.me.org/"].Get(), u"Weight"), kLoweredScore);
  EXPECT_EQ(DomainRow("alpha.com"), "1:954");

  // -1 hidden for good keeps its lowered score; the rebuild after it gives
  // the fresh one.
  ASSERT_EQ(HideDomain(listed, u"www.beta.com", 0), S_OK);
  EXPECT_EQ(DomainRow("beta.com"), "1:667.8");
  Rebuild({"alpha.com", "beta.com", "gamma.com", "blog.me.org", "news.site.net"});
  EXPECT_EQ(DomainRow("beta.com"), "1:954");
  EXPECT_EQ(Listing().count(u"www.beta.com"), 0u);
}

TEST_F(HideRebuildTest, AHideWhoseRowIsGoneAfterARebuildIsForgotten) {
  std::map<std::u16string, ComPtr<IUnknown>> listed = Listing();
  ASSERT_EQ(HideDomain(listed, u"www.gamma.com", 0), S_OK);
  Bstr news(u"http://news.site.net/");
  ASSERT_EQ(m_urls->RemoveURL(news.Get(), 1), S_OK);
  // The sites leave the history: their rows are gone after the rebuild.
  Rebuild({"alpha.com", "beta.com", "blog.me.org"});
  EXPECT_EQ(DomainRow("gamma.com"), "");
  EXPECT_EQ(URLRow("http://news.site.net/"), "");
  EXPECT_EQ(Listing().size(), 3u);
  // Back in the history, they come back as new rows: nothing remembered
  // the hides.
  Rebuild({"alpha.com", "beta.com", "gamma.com", "blog.me.org", "news.site.net"});
  EXPECT_EQ(DomainRow("gamma.com"), "0:954");
  EXPECT_EQ(URLRow("http://news.site.net/"), "0:954");
  listed = Listing();
  EXPECT_EQ(listed.size(), 5u);
  EXPECT_EQ(ExtraULong(listed[u"www.gamma.com"].Get(), u"Hide"), 0u);
}

}  // namespace
}  // namespace corvane::test
