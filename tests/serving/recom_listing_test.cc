// The recommendation listing as a host sees it: records of the three
// stages, the promotion of a bare main domain, the shown set across calls
// and the focus split.

#include "serving/seed_rows.h"
#include "serving/serving_host.h"

namespace corvane::test {
namespace {

class RecomListingTest : public ServingTest {
 protected:
  void SetUp() override {
    ServingTest::SetUp();
    StartProvider();
    m_common = Manager<ICommonUseURLsManager>(1, IID_ICommonUseURLsManager);
    ASSERT_TRUE(m_common);
  }

  ComPtr<IUnknown> Recom(uint32_t uCount, uint32_t uType, HRESULT expected = S_OK) {
    IUnknown* array = nullptr;
    EXPECT_EQ(m_common->GetRecomURLs(0, uCount, &array, uType), expected);
    return ComPtr<IUnknown>(array);
  }

  // A white-listed domain that stage 1 lists.
  void AddDomain(const std::string& domain, const std::string& mainDomain, uint32_t score, const std::string& name,
                 const std::string& subName) {
    m_db.Exec(DomainRowSql("TRecommendDomain", domain, mainDomain, score));
    m_db.Exec(WhiteListSql(name, mainDomain, domain, subName));
  }

  ComPtr<ICommonUseURLsManager> m_common;
};

TEST_F(RecomListingTest, StageOneHasNoBoundAndLaterStagesAreSkipped) {
  for (int i = 0; i < 10; ++i) {
    std::string main = "site" + std::to_string(i) + ".com";
    AddDomain(main, main, 100 + i, "Site " + std::to_string(i), "Sub " + std::to_string(i));
  }
  m_db.Exec(DomainRowSql("TSubDomain", "blog.other.com", "other.com", 500) + NamesSql("blog.other.com", "Blog"));
  m_db.Exec(RecommendURLSql("Page", "http://www.third.com/a", "www.third.com", "third.com", 900));

  ComPtr<IUnknown> result = Recom(1, 0);
  ASSERT_EQ(Count(result.Get()), 10u);
  // Highest score first; each record is a domain record with its row's ID.
  ComPtr<IUnknown> first = ItemOf(result, 0);
  EXPECT_EQ(URL2(first.Get()), u"www.site9.com");
  EXPECT_EQ(Name2(first.Get()), u"Site 9");
  EXPECT_EQ(ID2(first.Get()), 10u);
  EXPECT_EQ(ExtraULong(first.Get(), u"WhiteList"), 1u);
  EXPECT_EQ(ExtraULong(first.Get(), u"Weight"), 109u);
  EXPECT_EQ(Extra(first.Get(), u"MainDomain"), u"site9.com");
  EXPECT_EQ(URL2(ItemOf(result, 9).Get()), u"www.site0.com");
  // No TZS row for these main domains: no "SubDomain" key at all.
  EXPECT_FALSE(ExtraObject(first.Get(), u"SubDomain"));
}

TEST_F(RecomListingTest, SubSitesListHomeAndKeepTheDomainRecordInFront) {
  // A row that no white-list entry names takes rowid 1, so that the ID of
  // the domain row differs from the constant ID 1 of the sub-site records.
  m_db.Exec(DomainRowSql("TRecommendDomain", "unlisted.org", "unlisted.org", 900));
  AddDomain("news.example.com", "example.com", 300, "Example", "Example News");
  m_db.Exec(DomainRowSql("TZS", "example.com", "example.com", 200) +
            WhiteListSql("Example", "example.com", "example.com", "Example Home"));
  m_db.Exec(DomainRowSql("TZS", "mail.example.com", "example.com", 100) +
            WhiteListSql("Example", "example.com", "mail.example.com", "Example Mail"));

  ComPtr<IUnknown> result = Recom(5, 0);
  ASSERT_EQ(Count(result.Get()), 1u);
  ComPtr<IUnknown> main = ItemOf(result, 0);
  EXPECT_EQ(ID2(main.Get()), 2u);
  EXPECT_EQ(Name2(main.Get()), u"Example News");
  EXPECT_EQ(URL2(main.Get()), u"news.example.com");
  EXPECT_EQ(ExtraULong(main.Get(), u"WhiteList"), 1u);
  ComPtr<IUnknown> subs = ExtraObject(main.Get(), u"SubDomain");
  ASSERT_EQ(Count(subs.Get()), 2u);
  ComPtr<IUnknown> home = ItemOf(subs, 0);
  EXPECT_EQ(Name2(home.Get()), u"首页");
  EXPECT_EQ(URL2(home.Get()), u"www.example.com");
  EXPECT_EQ(ID2(home.Get()), 1u);
  EXPECT_EQ(ExtraULong(home.Get(), u"WhiteList"), 3u);
  ComPtr<IUnknown> mail = ItemOf(subs, 1);
  EXPECT_EQ(Name2(mail.Get()), u"Example Mail");
  EXPECT_EQ(URL2(mail.Get()), u"mail.example.com");
  EXPECT_EQ(ID2(mail.Get()), 1u);
  EXPECT_EQ(ExtraULong(mail.Get(), u"WhiteList"), 3u);
}

TEST_F(RecomListingTest, BareMainDomainScoringHigherIsPromoted) {
  m_db.Exec(DomainRowSql("TRecommendDomain", "unlisted.org", "unlisted.org", 900));
  AddDomain("news.example.com", "example.com", 300, "Example", "Example News");
  m_db.Exec(DomainRowSql("TZS", "example.com", "example.com", 400) +
            WhiteListSql("Example", "example.com", "example.com", "Example Home"));
  m_db.Exec(DomainRowSql("TZS", "mail.example.com", "example.com", 100) +
            WhiteListSql("Example", "example.com", "mail.example.com", "Example Mail"));

  ComPtr<IUnknown> result = Recom(5, 0);
  ASSERT_EQ(Count(result.Get()), 1u);
  ComPtr<IUnknown> main = ItemOf(result, 0);
  EXPECT_EQ(ID2(main.Get()), 2u);  // the domain row's ID
  EXPECT_EQ(Name2(main.Get()), u"Example Home");
  EXPECT_EQ(URL2(main.Get()), u"www.example.com");
  EXPECT_EQ(ExtraULong(main.Get(), u"WhiteList"), 1u);
  EXPECT_EQ(ExtraULong(main.Get(), u"Weight"), 400u);
  EXPECT_EQ(Extra(main.Get(), u"Domain"), u"example.com");
  ComPtr<IUnknown> subs = ExtraObject(main.Get(), u"SubDomain");
  ASSERT_EQ(Count(subs.Get()), 2u);
  ComPtr<IUnknown> old = ItemOf(subs, 0);
  EXPECT_EQ(Name2(old.Get()), u"Example News");
  EXPECT_EQ(URL2(old.Get()), u"news.example.com");
  EXPECT_EQ(ExtraULong(old.Get(), u"WhiteList"), 3u);
  EXPECT_EQ(ExtraULong(old.Get(), u"Weight"), 300u);
  EXPECT_EQ(ID2(old.Get()), 2u);  // the old record keeps the domain row's ID too
  EXPECT_EQ(Extra(old.Get(), u"Domain"), u"news.example.com");
  ComPtr<IUnknown> mail = ItemOf(subs, 1);
  EXPECT_EQ(URL2(mail.Get()), u"mail.example.com");
  EXPECT_EQ(ID2(mail.Get()), 1u);
  EXPECT_EQ(ExtraULong(mail.Get(), u"WhiteList"), 3u);
  for (uint32_t i = 0; i < 2; ++i) EXPECT_NE(Name2(ItemOf(subs, i).Get()), u"首页");
}

TEST_F(RecomListingTest, OwnDomainOnlyInSubSitesGivesEmptyArray) {
  AddDomain("www.solo.com", "solo.com", 50, "Solo", "Solo Www");
  m_db.Exec(DomainRowSql("TZS", "www.solo.com", "solo.com", 50));
  ComPtr<IUnknown> result = Recom(5, 0);
  ASSERT_EQ(Count(result.Get()), 1u);
  ComPtr<IUnknown> subs = ExtraObject(ItemOf(result, 0).Get(), u"SubDomain");
  ASSERT_TRUE(subs);
  EXPECT_EQ(Count(subs.Get()), 0u);
}

TEST_F(RecomListingTest, OneRecordPerMainDomainTheHigherScoreWins) {
  AddDomain("a.dup.com", "dup.com", 10, "Dup", "Dup A");
  AddDomain("b.dup.com", "dup.com", 20, "Dup", "Dup B");
  ComPtr<IUnknown> result = Recom(5, 0);
  ASSERT_EQ(Count(result.Get()), 1u);
  EXPECT_EQ(ID2(ItemOf(result, 0).Get()), 2u);
  EXPECT_EQ(Extra(ItemOf(result, 0).Get(), u"Domain"), u"b.dup.com");
}

TEST_F(RecomListingTest, ShownSetCarriesAcrossCallsUntilFocusRequest) {
  AddDomain("one.com", "one.com", 100, "One", "One");
  m_db.Exec(DomainRowSql("TSubDomain", "blog.two.com", "two.com", 90) + NamesSql("blog.two.com", "Two Blog"));
  m_db.Exec(RecommendURLSql("Three", "http://www.three.com/x", "www.three.com", "three.com", 80));
  m_db.Exec(RecommendURLSql("Three again", "http://www.three.com/y", "www.three.com", "three.com", 70));
  m_db.Exec(RecommendURLSql("Four", "http://four.com/", "four.com", "four.com", 60));

  EXPECT_EQ(URLs2(Recom(1, 0).Get()), std::vector<std::u16string>{u"www.one.com"});
  // uStart has no effect, and a bit above bit 0 is not the focus flag.
  IUnknown* raw = nullptr;
  ASSERT_EQ(m_common->GetRecomURLs(5, 1, &raw, 2), S_OK);
  ComPtr<IUnknown> second(raw);
  ASSERT_EQ(Count(second.Get()), 1u);
  EXPECT_EQ(URL2(ItemOf(second, 0).Get()), u"blog.two.com");
  EXPECT_EQ(ExtraULong(ItemOf(second, 0).Get(), u"WhiteList"), 2u);
  EXPECT_EQ(Name2(ItemOf(second, 0).Get()), u"Two Blog");
  ComPtr<IUnknown> third = Recom(1, 0);
  ASSERT_EQ(Count(third.Get()), 1u);
  EXPECT_EQ(URL2(ItemOf(third, 0).Get()), u"http://www.three.com/x");
  EXPECT_EQ(ExtraULong(ItemOf(third, 0).Get(), u"WhiteList"), 0u);
  EXPECT_EQ(Extra(ItemOf(third, 0).Get(), u"FixedURL"), u"www.three.com/x");
  // three.com is shown: its second URL never comes.
  EXPECT_EQ(URLs2(Recom(5, 0).Get()), std::vector<std::u16string>{u"http://four.com/"});
  EXPECT_EQ(Count(Recom(5, 0).Get()), 0u);

  // A focus request (nothing is in focus) starts the listing anew.
  EXPECT_EQ(Count(Recom(5, 1).Get()), 0u);
  EXPECT_EQ(URLs2(Recom(10, 0).Get()), (std::vector<std::u16string>{u"www.one.com", u"blog.two.com",
                                                                     u"http://www.three.com/x", u"http://four.com/"}));
}

TEST_F(RecomListingTest, FocusEntryMovesSiteBetweenTheHalves) {
  AddDomain("one.com", "one.com", 100, "One", "One");
  AddDomain("other.com", "other.com", 50, "Other", "Other");
  ComPtr<IURLsManager> focus = Manager<IURLsManager>(2, IID_IURLsManager);
  Bstr url(u"one.com"), name(u"Pinned");
  ASSERT_EQ(focus->AddURL(url.Get(), name.Get(), 0), S_OK);

  ComPtr<IUnknown> pinned = Recom(10, 1);
  ASSERT_EQ(Count(pinned.Get()), 1u);
  EXPECT_EQ(URL2(ItemOf(pinned, 0).Get()), u"www.one.com");
  HRESULT hr = E_FAIL;
  EXPECT_EQ(ExtraULong(ItemOf(pinned, 0).Get(), u"FocusID", &hr), 1u);
  EXPECT_EQ(hr, S_OK);
  // The rest comes with bit 0 clear, without a "FocusID".
  ComPtr<IUnknown> rest = Recom(10, 0);
  ASSERT_EQ(Count(rest.Get()), 1u);
  EXPECT_EQ(URL2(ItemOf(rest, 0).Get()), u"www.other.com");
  ExtraULong(ItemOf(rest, 0).Get(), u"FocusID", &hr);
  EXPECT_EQ(hr, E_NOINTERFACE);

  // Removing the entry moves the site back.
  Bstr id(u"1");
  ASSERT_EQ(focus->RemoveURL(id.Get(), 0), S_OK);
  EXPECT_EQ(Count(Recom(10, 1).Get()), 0u);
  ComPtr<IUnknown> back = Recom(10, 0);
  EXPECT_EQ(URLs2(back.Get()), (std::vector<std::u16string>{u"www.one.com", u"www.other.com"}));
  ExtraULong(ItemOf(back, 0).Get(), u"FocusID", &hr);
  EXPECT_EQ(hr, E_NOINTERFACE);
}

TEST_F(RecomListingTest, FocusIDOfEachStageIsLookedUpByItsOwnColumn) {
  AddDomain("one.com", "one.com", 100, "One", "One");
  m_db.Exec(DomainRowSql("TSubDomain", "blog.two.com", "two.com", 90) + NamesSql("blog.two.com", "Two Blog"));
  m_db.Exec(RecommendURLSql("Three", "http://www.three.com/x", "www.three.com", "three.com", 80));
  ComPtr<IURLsManager> focus = Manager<IURLsManager>(2, IID_IURLsManager);
  // IDs 1 to 4; the first names no site at all.
  for (const char16_t* url : {u"unrelated.net", u"one.com", u"blog.two.com", u"http://www.three.com/x"}) {
    Bstr text(url), name(u"Pinned");
    ASSERT_EQ(focus->AddURL(text.Get(), name.Get(), 0), S_OK);
  }

  ComPtr<IUnknown> pinned = Recom(10, 1);
  ASSERT_EQ(URLs2(pinned.Get()),
            (std::vector<std::u16string>{u"www.one.com", u"blog.two.com", u"http://www.three.com/x"}));
  const uint32_t kWhiteList[] = {1, 2, 0};
  for (uint32_t i = 0; i < 3; ++i) {
    SCOPED_TRACE(i);
    HRESULT hr = E_FAIL;
    EXPECT_EQ(ExtraULong(ItemOf(pinned, i).Get(), u"FocusID", &hr), i + 2);
    EXPECT_EQ(hr, S_OK);
    EXPECT_EQ(ExtraULong(ItemOf(pinned, i).Get(), u"WhiteList"), kWhiteList[i]);
  }
  EXPECT_EQ(Count(Recom(10, 0).Get()), 0u);
}

TEST_F(RecomListingTest, FocusEntryMatchesNoOtherColumnThanThatOfTheStage) {
  m_db.Exec(DomainRowSql("TSubDomain", "blog.two.com", "two.com", 90) + NamesSql("blog.two.com", "Two Blog"));
  m_db.Exec(RecommendURLSql("Three", "http://www.three.com/x", "www.three.com", "three.com", 80));
  ComPtr<IURLsManager> focus = Manager<IURLsManager>(2, IID_IURLsManager);
  // The main domain of the sub-domain, and the domain, main domain and
  // fixed form of the URL record: none of them is the stage's column.
  for (const char16_t* url : {u"two.com", u"www.three.com", u"three.com", u"www.three.com/x"}) {
    Bstr text(url), name(u"Pinned");
    ASSERT_EQ(focus->AddURL(text.Get(), name.Get(), 0), S_OK);
  }
  EXPECT_EQ(Count(Recom(10, 1).Get()), 0u);
  EXPECT_EQ(URLs2(Recom(10, 0).Get()), (std::vector<std::u16string>{u"blog.two.com", u"http://www.three.com/x"}));
}

TEST_F(RecomListingTest, FocusEntryMovesSubDomainAndSingleURLSitesBetweenTheHalves) {
  m_db.Exec(DomainRowSql("TSubDomain", "blog.two.com", "two.com", 90) + NamesSql("blog.two.com", "Two Blog"));
  m_db.Exec(RecommendURLSql("Three", "http://www.three.com/x", "www.three.com", "three.com", 80));
  m_db.Exec(RecommendURLSql("Four", "http://four.com/", "four.com", "four.com", 60));
  ComPtr<IURLsManager> focus = Manager<IURLsManager>(2, IID_IURLsManager);
  Bstr sub(u"blog.two.com"), url(u"http://four.com/"), name(u"Pinned");
  ASSERT_EQ(focus->AddURL(sub.Get(), name.Get(), 0), S_OK);
  ASSERT_EQ(focus->AddURL(url.Get(), name.Get(), 0), S_OK);

  ComPtr<IUnknown> pinned = Recom(10, 1);
  ASSERT_EQ(URLs2(pinned.Get()), (std::vector<std::u16string>{u"blog.two.com", u"http://four.com/"}));
  EXPECT_EQ(ExtraULong(ItemOf(pinned, 0).Get(), u"FocusID"), 1u);
  EXPECT_EQ(ExtraULong(ItemOf(pinned, 1).Get(), u"FocusID"), 2u);
  ComPtr<IUnknown> rest = Recom(10, 0);
  ASSERT_EQ(URLs2(rest.Get()), std::vector<std::u16string>{u"http://www.three.com/x"});
  HRESULT hr = S_OK;
  ExtraULong(ItemOf(rest, 0).Get(), u"FocusID", &hr);
  EXPECT_EQ(hr, E_NOINTERFACE);

  // Without the entries both sites are back in the second half.
  ASSERT_EQ(focus->RemoveURL(sub.Get(), 1), S_OK);
  ASSERT_EQ(focus->RemoveURL(url.Get(), 1), S_OK);
  EXPECT_EQ(Count(Recom(10, 1).Get()), 0u);
  EXPECT_EQ(URLs2(Recom(10, 0).Get()),
            (std::vector<std::u16string>{u"blog.two.com", u"http://www.three.com/x", u"http://four.com/"}));
}

TEST_F(RecomListingTest, FocusRequestTwiceInARowGivesTheSameRecords) {
  AddDomain("one.com", "one.com", 100, "One", "One");
  m_db.Exec(DomainRowSql("TSubDomain", "blog.two.com", "two.com", 90) + NamesSql("blog.two.com", "Two Blog"));
  ComPtr<IURLsManager> focus = Manager<IURLsManager>(2, IID_IURLsManager);
  Bstr main(u"one.com"), sub(u"blog.two.com"), name(u"Pinned");
  ASSERT_EQ(focus->AddURL(main.Get(), name.Get(), 0), S_OK);
  ASSERT_EQ(focus->AddURL(sub.Get(), name.Get(), 0), S_OK);

  ComPtr<IUnknown> first = Recom(10, 1);
  ComPtr<IUnknown> second = Recom(10, 1);
  const std::vector<std::u16string> expected = {u"www.one.com", u"blog.two.com"};
  EXPECT_EQ(URLs2(first.Get()), expected);
  EXPECT_EQ(URLs2(second.Get()), expected);
  for (uint32_t i = 0; i < 2; ++i) {
    EXPECT_EQ(ID2(ItemOf(second, i).Get()), ID2(ItemOf(first, i).Get()));
    EXPECT_EQ(ExtraULong(ItemOf(second, i).Get(), u"FocusID"), i + 1);
  }
}

TEST_F(RecomListingTest, ShownSetIsSharedByTheManagersOfOneProvider) {
  AddDomain("one.com", "one.com", 100, "One", "One");
  m_db.Exec(DomainRowSql("TSubDomain", "blog.two.com", "two.com", 90) + NamesSql("blog.two.com", "Two Blog"));
  m_db.Exec(RecommendURLSql("Three", "http://three.com/", "three.com", "three.com", 80));
  ComPtr<ICommonUseURLsManager> other = Manager<ICommonUseURLsManager>(1, IID_ICommonUseURLsManager);
  ASSERT_TRUE(other);
  ASSERT_NE(static_cast<void*>(other.Get()), static_cast<void*>(m_common.Get()));

  EXPECT_EQ(URLs2(Recom(1, 0).Get()), std::vector<std::u16string>{u"www.one.com"});
  IUnknown* raw = nullptr;
  ASSERT_EQ(other->GetRecomURLs(0, 1, &raw, 0), S_OK);
  ComPtr<IUnknown> fromOther(raw);
  EXPECT_EQ(URLs2(fromOther.Get()), std::vector<std::u16string>{u"blog.two.com"});
  // A focus request of the second manager starts the listing anew for the
  // first one as well.
  ASSERT_EQ(other->GetRecomURLs(0, 1, &raw, 1), S_OK);
  ComPtr<IUnknown> focusOfOther(raw);
  EXPECT_EQ(URLs2(Recom(1, 0).Get()), std::vector<std::u16string>{u"www.one.com"});
}

TEST_F(RecomListingTest, DomainsThatTieComeInAscendingMainDomain) {
  const uint64_t kLater = kSomeTime + 1;
  for (const char* main : {"zeta.com", "alpha.com", "mid.com"}) AddDomain(main, main, 100, main, main);
  m_db.Exec(DomainRowSql("TRecommendDomain", "late.com", "late.com", 100, 0, kLater) +
            WhiteListSql("late.com", "late.com", "late.com", "late.com"));
  m_db.Exec(DomainRowSql("TRecommendDomain", "top.com", "top.com", 101) +
            WhiteListSql("top.com", "top.com", "top.com", "top.com"));
  EXPECT_EQ(URLs2(Recom(1, 0).Get()), (std::vector<std::u16string>{u"www.top.com", u"www.late.com", u"www.alpha.com",
                                                                    u"www.mid.com", u"www.zeta.com"}));
}

TEST_F(RecomListingTest, ArgumentsAndEmptyTables) {
  IUnknown* untouched = reinterpret_cast<IUnknown*>(0x1);
  EXPECT_EQ(m_common->GetRecomURLs(0, 0, &untouched, 0), E_INVALIDARG);
  EXPECT_EQ(untouched, reinterpret_cast<IUnknown*>(0x1));
  EXPECT_EQ(m_common->GetRecomURLs(0, 5, nullptr, 0), E_INVALIDARG);
  EXPECT_EQ(Count(Recom(5, 0).Get()), 0u);
  ComPtr<IURLsManager> base = Query<IURLsManager>(m_common.Get(), IID_IURLsManager);
  IUnknown* none = nullptr;
  EXPECT_EQ(base->GetURLs(5, &none), E_NOTIMPL);
  EXPECT_EQ(none, nullptr);
  EXPECT_EQ(base->ClearURLs(), S_OK);
}

TEST_F(RecomListingTest, HideColumnMinusOneReadsAsAllBits) {
  m_db.Exec(DomainRowSql("TRecommendDomain", "low.com", "low.com", 70, -1) + WhiteListSql("Low", "low.com", "low.com", "Low"));
  ComPtr<IUnknown> result = Recom(5, 0);
  ASSERT_EQ(Count(result.Get()), 1u);
  EXPECT_EQ(ExtraULong(ItemOf(result, 0).Get(), u"Hide"), 0xFFFFFFFFu);
}

class IEPendingTest : public RecomListingTest {
 protected:
  void SetUp() override {
    ServingTest::SetUp();
    WriteConfig("ExtractBrowser=ie\n");
    StartProvider();
    m_common = Manager<ICommonUseURLsManager>(1, IID_ICommonUseURLsManager);
  }
};

TEST_F(IEPendingTest, OnlyURLsByVisitCountWhileNoIEVisitWasMerged) {
  AddDomain("one.com", "one.com", 100, "One", "One");
  m_db.Exec(RecommendURLSql("Heavy", "http://a.com/", "a.com", "a.com", 10, 50));
  m_db.Exec(RecommendURLSql("Light", "http://b.com/", "b.com", "b.com", 90, 5));
  EXPECT_EQ(URLs2(Recom(10, 0).Get()), (std::vector<std::u16string>{u"http://a.com/", u"http://b.com/"}));

  // Once a merge has added IE visits, all stages run and URLs go by weight.
  WriteConfig("ExtractBrowser=ie\nIEHistoryAdded=2024.03.05\n");
  EXPECT_EQ(Count(Recom(10, 1).Get()), 0u);
  EXPECT_EQ(URLs2(Recom(10, 0).Get()),
            (std::vector<std::u16string>{u"www.one.com", u"http://b.com/", u"http://a.com/"}));
}

}  // namespace
}  // namespace corvane::test
