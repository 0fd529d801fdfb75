// The recent listing: recent domains first, then recent URLs, one record
// per main domain, with no memory between calls.

#include "serving/seed_rows.h"
#include "serving/serving_host.h"

namespace corvane::test {
namespace {

class RecentListingTest : public ServingTest {
 protected:
  void SetUp() override {
    ServingTest::SetUp();
    StartProvider();
    m_common = Manager<ICommonUseURLsManager>(1, IID_ICommonUseURLsManager);
    ASSERT_TRUE(m_common);
  }

  void AddRecentDomain(const std::string& domain, const std::string& mainDomain, uint32_t score) {
    m_db.Exec("insert into TRecentDomain values(" + Q(domain) + "," + Q(mainDomain) + "," + std::to_string(kSomeTime) +
              "," + std::to_string(score) + "," + Q("Name " + domain) + ");");
  }

  void AddRecentURL(int id, const std::string& url, const std::string& mainDomain, uint32_t weight) {
    m_db.Exec("insert into TRecentHistory values(" + std::to_string(id) + "," + Q("Page " + url) + "," + Q(url) + "," +
              Q(url.substr(7)) + "," + std::to_string(kSomeTime) + "," + Q(mainDomain) + "," + Q(mainDomain) + "," +
              std::to_string(weight) + ",4);");
  }

  ComPtr<IUnknown> Recent(uint32_t uCount) {
    IUnknown* array = nullptr;
    EXPECT_EQ(m_common->GetRecentHistory(0, uCount, &array, 0), S_OK);
    return ComPtr<IUnknown>(array);
  }

  ComPtr<ICommonUseURLsManager> m_common;
};

TEST_F(RecentListingTest, DistinctMainDomainsFromDomainsFirst) {
  AddRecentDomain("a.com", "a.com", 50);
  AddRecentDomain("mail.a.com", "a.com", 40);
  AddRecentDomain("news.b.com", "b.com", 30);
  AddRecentDomain("b.com", "b.com", 20);
  AddRecentDomain("c.com", "c.com", 10);
  AddRecentURL(7, "http://d.com/x", "d.com", 99);

  ComPtr<IUnknown> result = Recent(3);
  EXPECT_EQ(URLs2(result.Get()), (std::vector<std::u16string>{u"www.a.com", u"news.b.com", u"www.c.com"}));
  ComPtr<IUnknown> first = ItemOf(result, 0);
  EXPECT_EQ(ID2(first.Get()), 1u);
  EXPECT_EQ(Name2(first.Get()), u"Name a.com");
  EXPECT_EQ(ExtraULong(first.Get(), u"Score"), 50u);
  HRESULT hr = S_OK;
  ExtraULong(first.Get(), u"Hide", &hr);
  EXPECT_EQ(hr, E_NOINTERFACE);
  ExtraULong(first.Get(), u"WhiteList", &hr);
  EXPECT_EQ(hr, E_NOINTERFACE);
  // The same call again gives the same records.
  EXPECT_EQ(URLs2(Recent(3).Get()), URLs2(result.Get()));
}

TEST_F(RecentListingTest, URLsFillUpAfterDomains) {
  AddRecentDomain("a.com", "a.com", 50);
  AddRecentURL(7, "http://a.com/skip", "a.com", 99);
  AddRecentURL(8, "http://d.com/x", "d.com", 80);
  AddRecentURL(9, "http://d.com/y", "d.com", 70);
  AddRecentURL(10, "http://e.com/z", "e.com", 60);
  ComPtr<IUnknown> result = Recent(10);
  EXPECT_EQ(URLs2(result.Get()), (std::vector<std::u16string>{u"www.a.com", u"http://d.com/x", u"http://e.com/z"}));
  ComPtr<IUnknown> url = ItemOf(result, 1);
  EXPECT_EQ(ID2(url.Get()), 8u);
  EXPECT_EQ(ExtraULong(url.Get(), u"Weight"), 80u);
  EXPECT_EQ(ExtraULong(url.Get(), u"VisitCount"), 4u);
  EXPECT_EQ(Extra(url.Get(), u"FixedURL"), u"d.com/x");
}

TEST_F(RecentListingTest, EmptyTablesAndArguments) {
  EXPECT_EQ(Count(Recent(5).Get()), 0u);
  IUnknown* array = nullptr;
  EXPECT_EQ(m_common->GetRecentHistory(0, 0, &array, 0), E_INVALIDARG);
  EXPECT_EQ(m_common->GetRecentHistory(0, 5, nullptr, 0), E_INVALIDARG);
}

TEST_F(RecentListingTest, MissingDomainTableFailsTheCall) {
  m_db.Exec("drop table TRecentDomain;");
  AddRecentURL(8, "http://d.com/x", "d.com", 80);
  IUnknown* array = nullptr;
  EXPECT_EQ(m_common->GetRecentHistory(0, 5, &array, 0), E_FAIL);
  EXPECT_EQ(array, nullptr);
}

}  // namespace
}  // namespace corvane::test
