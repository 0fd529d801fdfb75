// The recommendation and recent listings as a host sees them: sub-sites,
// the promotion of a bare main domain, the shown set across calls and
// managers, and records a host keeps beyond the provider.

#include "serving/serving_host.h"

namespace corvane::test {
namespace {

class RecomListingTest : public ServingTest {
 protected:
  // A white-listed domain that stage 1 lists; a sub-domain with its name;
  // a single URL (FixedURL is the URL without "http://").
  void AddDomain(const std::string& domain, const std::string& mainDomain, uint32_t score, const std::string& name,
                 const std::string& subName, uint64_t time = kSomeTime) {
    m_db.Exec(Insert("TRecommendDomain", domain, mainDomain, time, score, 0, 0) +
              Insert("TWhiteList", name, mainDomain, domain, subName));
  }
  void AddSubDomain(const std::string& domain, const std::string& mainDomain, uint32_t score, const std::string& name) {
    m_db.Exec(Insert("TSubDomain", domain, mainDomain, kSomeTime, score, 0, 0) + Insert("TNames", domain, name));
  }
  void AddURL(const std::string& name, const std::string& url, const std::string& domain, const std::string& mainDomain,
              uint32_t weight, uint32_t visitCount = 1) {
    m_db.Exec(Insert("TRecommendURL", name, url, url.substr(7), kSomeTime, domain, mainDomain, weight, 0, visitCount, 2));
  }
  // news.example.com listed, with example.com and mail.example.com as
  // sub-sites. A row that no white-list entry names takes rowid 1, so that
  // the ID 2 of the domain row differs from the constant ID 1 of sub-sites.
  void AddExampleSites(uint32_t homeScore) {
    m_db.Exec(Insert("TRecommendDomain", "unlisted.org", "unlisted.org", kSomeTime, 900, 0, 0));
    AddDomain("news.example.com", "example.com", 300, "Example", "Example News");
    m_db.Exec(Insert("TZS", "example.com", "example.com", kSomeTime, homeScore, 0, 0) +
              Insert("TWhiteList", "Example", "example.com", "example.com", "Example Home") +
              Insert("TZS", "mail.example.com", "example.com", kSomeTime, 100, 0, 0) +
              Insert("TWhiteList", "Example", "example.com", "mail.example.com", "Example Mail"));
  }
  void AddRecentDomain(const std::string& domain, const std::string& mainDomain, uint32_t score) {
    m_db.Exec(Insert("TRecentDomain", domain, mainDomain, kSomeTime, score, "Name " + domain));
  }
  void AddRecentURL(int id, const std::string& url, const std::string& mainDomain, uint32_t weight) {
    m_db.Exec(Insert("TRecentHistory", id, "Page " + url, url, url.substr(7), kSomeTime, mainDomain, mainDomain, weight, 4));
  }
  ComPtr<IUnknown> Recent(uint32_t uCount) {
    IUnknown* array = nullptr;
    EXPECT_EQ(m_common->GetRecentHistory(0, uCount, &array, 0), S_OK);
    return ComPtr<IUnknown>(array);
  }
};

TEST_F(RecomListingTest, BareMainDomainScoringHigherIsPromoted) {
  const std::pair<uint32_t, const char*> cases[] = {
      // Below the listed host: the home page leads the sub-sites.
      {200, "2|Example News|news.example.com WhiteList=1 Weight=300 Domain=news.example.com SubDomain=["
            "1|首页|www.example.com WhiteList=3 Weight=200 Domain=example.com SubDomain=-; "
            "1|Example Mail|mail.example.com WhiteList=3 Weight=100 Domain=mail.example.com SubDomain=-]"},
      // Level with it: the listed host stays in front.
      {300, "2|Example News|news.example.com WhiteList=1 Weight=300 Domain=news.example.com SubDomain=["
            "1|首页|www.example.com WhiteList=3 Weight=300 Domain=example.com SubDomain=-; "
            "1|Example Mail|mail.example.com WhiteList=3 Weight=100 Domain=mail.example.com SubDomain=-]"},
      // Above it: the two change places and keep the domain row's ID.
      {400, "2|Example Home|www.example.com WhiteList=1 Weight=400 Domain=example.com SubDomain=["
            "2|Example News|news.example.com WhiteList=3 Weight=300 Domain=news.example.com SubDomain=-; "
            "1|Example Mail|mail.example.com WhiteList=3 Weight=100 Domain=mail.example.com SubDomain=-]"},
  };
  for (const auto& [homeScore, expected] : cases) {
    SCOPED_TRACE(homeScore);
    m_db.Exec("delete from TRecommendDomain; delete from TWhiteList; delete from TZS;");
    AddExampleSites(homeScore);
    EXPECT_EQ(Count(Recom(5, 1).Get()), 0u);  // empties the shown set
    EXPECT_EQ(ShowAll(Recom(5, 0).Get(), {"WhiteList", "Weight", "Domain", "SubDomain"}), expected);
  }
}

TEST_F(RecomListingTest, OneRecordPerMainDomainAndNoSubSiteOfItsOwnDomain) {
  AddDomain("a.dup.com", "dup.com", 10, "Dup", "Dup A");
  AddDomain("b.dup.com", "dup.com", 20, "Dup", "Dup B");
  AddDomain("www.solo.com", "solo.com", 50, "Solo", "Solo Www");
  m_db.Exec(Insert("TZS", "www.solo.com", "solo.com", kSomeTime, 50, 0, 0));
  EXPECT_EQ(ShowAll(Recom(5, 0).Get(), {"Domain", "SubDomain"}),
            "3|Solo|www.solo.com Domain=www.solo.com SubDomain=[]; 2|Dup|www.dup.com Domain=b.dup.com SubDomain=-");
}

TEST_F(RecomListingTest, ASiteShowsItsThreeBestSubSites) {
  AddDomain("www.many.com", "many.com", 100, "Many", "Many");
  for (const char* part : {"b", "d", "a", "c"}) {
    const std::string host = std::string(part) + ".many.com";
    m_db.Exec(Insert("TZS", host, "many.com", kSomeTime, 200 - part[0], 0, 0) +
              Insert("TWhiteList", "Many", "many.com", host, std::string("Part ") + part));
  }
  EXPECT_EQ(Show(Item(Recom(5, 0).Get(), 0).Get(), {"SubDomain"}),
            "1|Many|www.many.com SubDomain=[1|Part a|a.many.com SubDomain=-; 1|Part b|b.many.com SubDomain=-; "
            "1|Part c|c.many.com SubDomain=-]");
}

TEST_F(RecomListingTest, ShownSetCarriesAcrossCallsAndManagersUntilFocusRequest) {
  AddDomain("one.com", "one.com", 100, "One", "One");
  AddSubDomain("blog.two.com", "two.com", 90, "Two Blog");
  AddURL("Three", "http://www.three.com/x", "www.three.com", "three.com", 80);
  AddURL("Three again", "http://www.three.com/y", "www.three.com", "three.com", 70);
  AddURL("Four", "http://four.com/", "four.com", "four.com", 60);
  EXPECT_EQ(URLs(Recom(1, 0).Get()), "www.one.com");
  // Another manager of the provider shares the set; uStart has no effect,
  // and a bit above bit 0 is not the focus flag.
  ComPtr<ICommonUseURLsManager> other = Manager<ICommonUseURLsManager>(1, IID_ICommonUseURLsManager);
  ASSERT_NE(static_cast<void*>(other.Get()), static_cast<void*>(m_common.Get()));
  IUnknown* raw = nullptr;
  ASSERT_EQ(other->GetRecomURLs(5, 1, &raw, 2), S_OK);
  EXPECT_EQ(ShowAll(ComPtr<IUnknown>(raw).Get(), {"WhiteList"}), "1|Two Blog|blog.two.com WhiteList=2");
  EXPECT_EQ(ShowAll(Recom(1, 0).Get(), {"WhiteList", "FixedURL"}),
            "1|Three|http://www.three.com/x WhiteList=0 FixedURL=www.three.com/x");
  // three.com is shown: its second URL never comes.
  EXPECT_EQ(URLs(Recom(5, 0).Get()), "http://four.com/");
  EXPECT_EQ(Count(Recom(5, 0).Get()), 0u);
  // A focus request (nothing is in focus) of either manager starts anew.
  ASSERT_EQ(other->GetRecomURLs(0, 5, &raw, 1), S_OK);
  EXPECT_EQ(Count(ComPtr<IUnknown>(raw).Get()), 0u);
  EXPECT_EQ(URLs(Recom(10, 0).Get()), "www.one.com blog.two.com http://www.three.com/x http://four.com/");
}

// Recent domains first, then recent URLs, one record per main domain, with
// no memory between calls.
TEST_F(RecomListingTest, RecentListingTakesDistinctMainDomainsFromDomainsFirst) {
  EXPECT_EQ(Count(Recent(5).Get()), 0u);
  AddRecentDomain("a.com", "a.com", 50);
  AddRecentDomain("mail.a.com", "a.com", 40);
  AddRecentDomain("news.b.com", "b.com", 30);
  AddRecentDomain("b.com", "b.com", 20);
  AddRecentDomain("c.com", "c.com", 10);
  AddRecentURL(7, "http://a.com/skip", "a.com", 99);
  AddRecentURL(8, "http://d.com/x", "d.com", 80);
  AddRecentURL(9, "http://d.com/y", "d.com", 70);
  AddRecentURL(10, "http://e.com/z", "e.com", 60);
  EXPECT_EQ(ShowAll(Recent(3).Get(), {"Score", "Hide", "WhiteList"}),
            "1|Name a.com|www.a.com Score=50 Hide=- WhiteList=-; 1|Name news.b.com|news.b.com Score=30 Hide=- "
            "WhiteList=-; 1|Name c.com|www.c.com Score=10 Hide=- WhiteList=-");
  ComPtr<IUnknown> all = Recent(10);
  EXPECT_EQ(URLs(all.Get()), "www.a.com news.b.com www.c.com http://d.com/x http://e.com/z");
  EXPECT_EQ(Show(Item(all.Get(), 3).Get(), {"Weight", "VisitCount", "FixedURL"}),
            "8|Page http://d.com/x|http://d.com/x Weight=80 VisitCount=4 FixedURL=d.com/x");
}

// A host lists everything, keeps a manager and a record of a "SubDomain"
// array beyond the provider, and gives them back last.
TEST_F(RecomListingTest, HostThatReleasesEverythingLetsTheLibraryGo) {
  const Component& component = LoadComponent();
  AddExampleSites(400);
  ComPtr<IUnknown> promoted = Item(Recom(5, 0).Get(), 0);
  Bstr key(u"SubDomain");
  IUnknown* subSites = nullptr;
  ASSERT_EQ(Query<IURLInfo2>(promoted.Get(), IID_IURLInfo2)->GetExtraInfoUnknown(key.Get(), &subSites), S_OK);
  ComPtr<IUnknown> kept = Item(ComPtr<IUnknown>(subSites).Get(), 1);
  ComPtr<IURLsManager> focus = std::move(m_focus);
  for (ComPtr<IURLsManager>* manager : {&m_commonUrls, &m_history, &m_favorites}) manager->Reset();
  promoted.Reset();
  m_common.Reset();
  m_provider.Reset();
  Bstr url(u"a.com"), name(u"A");
  EXPECT_EQ(focus->AddURL(url.Get(), name.Get(), 0), S_OK);  // a manager outlives its provider
  focus.Reset();
  EXPECT_EQ(component.DllCanUnloadNow(), S_FALSE);
  EXPECT_EQ(Show(kept.Get()), "1|Example Mail|mail.example.com");
  kept.Reset();
  EXPECT_EQ(component.DllCanUnloadNow(), S_OK);
}

}  // namespace
}  // namespace corvane::test
