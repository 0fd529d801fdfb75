// Hide operations of the recommendation manager, seen in the tables and in
// the listing: the two halves of the flag, the score factor, rows hidden
// twice, and ids that are no rowid. (How hides survive a rebuild belongs to
// the update cycle and is tested with it.)

#include "serving/seed_rows.h"
#include "serving/serving_host.h"

namespace corvane::test {
namespace {

class HideOpsTest : public ServingTest {
 protected:
  void SetUp() override {
    ServingTest::SetUp();
    StartProvider();
    m_common = Manager<ICommonUseURLsManager>(1, IID_ICommonUseURLsManager);
    ASSERT_TRUE(m_common);
    m_urls = Query<IURLsManager>(m_common.Get(), IID_IURLsManager);
    m_db.Exec(DomainRowSql("TRecommendDomain", "a.com", "a.com", 100) + WhiteListSql("A", "a.com", "a.com", "A"));
    m_db.Exec(DomainRowSql("TRecommendDomain", "b.com", "b.com", 5) + WhiteListSql("B", "b.com", "b.com", "B"));
    m_db.Exec(DomainRowSql("TRecommendDomain", "c.com", "c.com", 50, -1) + WhiteListSql("C", "c.com", "c.com", "C"));
    m_db.Exec(DomainRowSql("TSubDomain", "blog.d.com", "d.com", 100) + NamesSql("blog.d.com", "D Blog"));
    m_db.Exec(RecommendURLSql("E", "http://e.com/page", "e.com", "e.com", 100));
    m_db.Exec(RecommendURLSql("F", "http://f.com/page", "f.com", "f.com", 10));
  }

  std::string Row(const std::string& table, int rowid, const std::string& rank) {
    return m_db.Scalar("select Hide || ':' || " + rank + " from " + table + " where rowid = " + std::to_string(rowid));
  }

  HRESULT HideDomain(std::u16string_view id, uint32_t flag) {
    Bstr text(id);
    return m_common->HideRecommendDomain(text.Get(), flag);
  }

  ComPtr<ICommonUseURLsManager> m_common;
  ComPtr<IURLsManager> m_urls;
};

TEST_F(HideOpsTest, ForGoodKeepsTheScoreAndLeavesTheListing) {
  EXPECT_EQ(HideDomain(u"1", 0), S_OK);
  EXPECT_EQ(Row("TRecommendDomain", 1, "Score"), "1:100");
  IUnknown* raw = nullptr;
  ASSERT_EQ(m_common->GetRecomURLs(0, 10, &raw, 1), S_OK);
  ComPtr<IUnknown> focus(raw);
  ASSERT_EQ(m_common->GetRecomURLs(0, 10, &raw, 0), S_OK);
  ComPtr<IUnknown> listing(raw);
  for (const std::u16string& url : URLs2(listing.Get())) EXPECT_NE(url, u"www.a.com");
}

TEST_F(HideOpsTest, UntilRebuildLowersTheScoreOnce) {
  EXPECT_EQ(HideDomain(u"1", 0x00010000), S_OK);
  EXPECT_EQ(Row("TRecommendDomain", 1, "Score"), "2:70");
  // SQLite rounds 3.5 up.
  EXPECT_EQ(HideDomain(u"2", 0x00010000), S_OK);
  EXPECT_EQ(Row("TRecommendDomain", 2, "Score"), "2:4");
  // Hidden already: nothing moves, whatever is asked.
  EXPECT_EQ(HideDomain(u"1", 0x00010000), S_OK);
  EXPECT_EQ(HideDomain(u"1", 0), S_OK);
  EXPECT_EQ(Row("TRecommendDomain", 1, "Score"), "2:70");
  // A row lowered before keeps its score.
  EXPECT_EQ(HideDomain(u"3", 0x00010000), S_OK);
  EXPECT_EQ(Row("TRecommendDomain", 3, "Score"), "2:50");
}

TEST_F(HideOpsTest, MinusOneRowHiddenForGoodKeepsItsScore) {
  EXPECT_EQ(HideDomain(u"3", 0), S_OK);
  EXPECT_EQ(Row("TRecommendDomain", 3, "Score"), "1:50");
}

TEST_F(HideOpsTest, UnknownKeyKindsAndIdsChangeNothing) {
  const std::string before = m_db.Dump();
  EXPECT_EQ(HideDomain(u"1", 1), E_FAIL);
  EXPECT_EQ(HideDomain(u"abc", 0), S_OK);
  EXPECT_EQ(HideDomain(u"99", 0), S_OK);
  Bstr one(u"1");
  EXPECT_EQ(m_common->HideSubDomain(one.Get(), 2), E_FAIL);
  EXPECT_EQ(m_urls->RemoveURL(one.Get(), 2), E_FAIL);
  EXPECT_EQ(m_common->HideRecommendDomain(nullptr, 0), E_INVALIDARG);
  EXPECT_EQ(m_common->HideSubDomain(nullptr, 0), E_INVALIDARG);
  EXPECT_EQ(m_urls->RemoveURL(nullptr, 0), E_INVALIDARG);
  EXPECT_EQ(m_db.Dump(), before);
}

TEST_F(HideOpsTest, SubDomainAndURLHides) {
  Bstr one(u"1");
  EXPECT_EQ(m_common->HideSubDomain(one.Get(), 0x00020000), S_OK);
  EXPECT_EQ(Row("TSubDomain", 1, "Score"), "2:70");
  EXPECT_EQ(m_urls->RemoveURL(one.Get(), 0), S_OK);
  EXPECT_EQ(Row("TRecommendURL", 1, "Weight"), "1:100");
  // Low half 1: the key is a URL; high half set: until the next rebuild.
  Bstr url(u"http://f.com/page");
  EXPECT_EQ(m_urls->RemoveURL(url.Get(), 0x00010001), S_OK);
  EXPECT_EQ(Row("TRecommendURL", 2, "Weight"), "2:7");
}

TEST_F(HideOpsTest, ClosedDatabaseBeforeInitialize) {
  // A provider that was never initialised hands out managers whose
  // statements can't prepare.
  ComPtr<ICorvaneDataProviderObject> fresh = CreateProvider();
  IUnknown* unknown = nullptr;
  ASSERT_EQ(fresh->GetURLsManager(1, &unknown), S_OK);
  ComPtr<IUnknown> holder(unknown);
  ComPtr<ICommonUseURLsManager> common = Query<ICommonUseURLsManager>(unknown, IID_ICommonUseURLsManager);
  Bstr one(u"1");
  EXPECT_EQ(common->HideRecommendDomain(one.Get(), 0), S_OK);  // the read can't prepare: nothing to do
  IUnknown* array = nullptr;
  EXPECT_EQ(common->GetRecomURLs(0, 5, &array, 0), E_FAIL);
  EXPECT_EQ(array, nullptr);
  EXPECT_EQ(common->GetRecentHistory(0, 5, &array, 0), E_FAIL);
  EXPECT_EQ(array, nullptr);
  EXPECT_EQ(Row("TRecommendDomain", 1, "Score"), "0:100");
}

}  // namespace
}  // namespace corvane::test
