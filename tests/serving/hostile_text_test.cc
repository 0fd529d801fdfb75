// Hostile text from a host: every text argument of the managers that
// reaches a statement, tried with quotes, like's wildcards, statement
// separators, comments, an embedded NUL and 100,000 characters. Each call
// must return a status its interface allows and leave every other row as it
// stood.

#include <functional>

#include "serving/seed_rows.h"
#include "serving/serving_host.h"

namespace corvane::test {
namespace {

std::vector<std::u16string> HostileTexts() {
  std::vector<std::u16string> texts = {
      u"'", u"\"", u"%", u"_", u"/", u";", u"--", u"1' or '1'='1", u"1; delete from TFocusURL; --",
      u"\") or 1=1 --", u"a%b_c/d", u"1", u"All",
  };
  texts.push_back(std::u16string(u"1\0; drop table THistory", 23));
  texts.push_back(std::u16string(100000, u'\''));
  return texts;
}

// The status that a call gives for a text: ids are told apart from other
// text before anything is bound, and "1" is the one decimal id among the
// hostile texts.
struct Outcome {
  HRESULT forId;
  HRESULT forOther;
  HRESULT For(const std::u16string& text) const { return text == u"1" ? forId : forOther; }
};
constexpr Outcome kAlwaysOK = {S_OK, S_OK};
constexpr Outcome kIdOrFail = {S_OK, E_FAIL};

class HostileTextTest : public ServingTest {
 protected:
  void SetUp() override {
    ServingTest::SetUp();
    StartProvider();
    m_db.Exec(DomainRowSql("TRecommendDomain", "a.com", "a.com", 100) + WhiteListSql("A", "a.com", "a.com", "A"));
    m_db.Exec(DomainRowSql("TSubDomain", "blog.d.com", "d.com", 100) + NamesSql("blog.d.com", "D Blog"));
    m_db.Exec(RecommendURLSql("E", "http://e.com/page", "e.com", "e.com", 100));
    m_db.Exec("insert into THistory values(null, 'T', 'http://h/', 1, '2024.03.05 2 08:00:00.000', 154561, 0, 2);"
              "insert into TFavorite values('F', 'http://f/', 'f', 'Bar', 0);"
              "insert into TFocusURL(Name, URL) values('Pinned', 'pinned.example.com');");
    m_common = Manager<ICommonUseURLsManager>(1, IID_ICommonUseURLsManager);
    m_commonUrls = Query<IURLsManager>(m_common.Get(), IID_IURLsManager);
    m_focus = Manager<IURLsManager>(2, IID_IURLsManager);
    m_history = Manager<IURLsManager>(3, IID_IURLsManager);
    m_search = Query<IHistoryURLsManager>(m_history.Get(), IID_IHistoryURLsManager);
    m_favorites = Manager<IURLsManager>(4, IID_IURLsManager);
    ASSERT_TRUE(m_common && m_commonUrls && m_focus && m_history && m_search && m_favorites);
  }

  // Runs call with each hostile text: it must give the status of its
  // interface for that text, and the database must not change at all when
  // the text names no row.
  void ExpectNoChange(const char* what, const Outcome& outcome, const std::function<HRESULT(BSTR)>& call) {
    for (const std::u16string& text : HostileTexts()) {
      SCOPED_TRACE(testing::Message() << what << " with a text of " << text.size() << " characters");
      std::string before = m_db.Dump();
      Bstr bstr(text);
      EXPECT_EQ(call(bstr.Get()), outcome.For(text));
      if (text == u"All" || text == u"1") continue;  // real keys: they may hide a row
      EXPECT_EQ(m_db.Dump(), before) << what << " changed the tables";
    }
  }

  ComPtr<ICommonUseURLsManager> m_common;
  ComPtr<IURLsManager> m_commonUrls;
  ComPtr<IURLsManager> m_focus;
  ComPtr<IURLsManager> m_history;
  ComPtr<IHistoryURLsManager> m_search;
  ComPtr<IURLsManager> m_favorites;
};

TEST_F(HostileTextTest, HidesAndRemovalsChangeNothingThatTheTextDoesNotName) {
  // Text that is no id changes nothing here and still counts as success.
  ExpectNoChange("HideRecommendDomain", kAlwaysOK, [&](BSTR t) { return m_common->HideRecommendDomain(t, 0); });
  ExpectNoChange("HideRecommendDomain until rebuild", kAlwaysOK,
                 [&](BSTR t) { return m_common->HideRecommendDomain(t, 0x10000); });
  ExpectNoChange("HideSubDomain", kAlwaysOK, [&](BSTR t) { return m_common->HideSubDomain(t, 0); });
  // A URL that matches nothing: the update runs and changes no row.
  for (uint32_t type : {0u, 1u, 0x10000u, 0x10001u}) {
    ExpectNoChange("recommendation RemoveURL", kAlwaysOK, [&](BSTR t) { return m_commonUrls->RemoveURL(t, type); });
  }
  // The focus and history ids go into their statements as numbers: other
  // text fails. The favourite's rowid is compared as text and matches no row.
  ExpectNoChange("focus RemoveURL by id", kIdOrFail, [&](BSTR t) { return m_focus->RemoveURL(t, 0); });
  ExpectNoChange("history RemoveURL by id", kIdOrFail, [&](BSTR t) { return m_history->RemoveURL(t, 0); });
  ExpectNoChange("favourite RemoveURL by id", kAlwaysOK, [&](BSTR t) { return m_favorites->RemoveURL(t, 0); });
  for (IURLsManager* manager : {m_focus.Get(), m_history.Get(), m_favorites.Get()}) {
    ExpectNoChange("RemoveURL by URL", kAlwaysOK, [&](BSTR t) { return manager->RemoveURL(t, 1); });
  }
}

TEST_F(HostileTextTest, SearchFindsTheTextAsItStands) {
  for (const std::u16string& text : HostileTexts()) {
    SCOPED_TRACE(testing::Message() << "searching for a text of " << text.size() << " characters");
    Bstr bstr(text);
    IUnknown* raw = nullptr;
    HRESULT hr = m_search->SearchURLs(bstr.Get(), &raw);
    ComPtr<IUnknown> found(raw);
    if (text.size() == 100000) {
      // Longer than like takes a pattern: the search can't be run.
      EXPECT_EQ(hr, E_FAIL);
      EXPECT_FALSE(found);
      continue;
    }
    ASSERT_EQ(hr, S_OK);
    // The one stored visit is found exactly when its title or URL holds
    // the text as it stands, up to a NUL in it.
    const std::u16string searched = text.substr(0, text.find(u'\0'));
    bool holds = std::u16string(u"T").find(searched) != std::u16string::npos ||
                 std::u16string(u"http://h/").find(searched) != std::u16string::npos;
    EXPECT_EQ(Count(found.Get()), holds ? 1u : 0u);
  }
  EXPECT_EQ(m_db.Scalar("select count(*) from THistory where HideDate = 0"), "1");
}

TEST_F(HostileTextTest, URLWithQuotesAndWildcardsHidesItsOwnRowAlone) {
  const std::vector<std::string> urls = {"http://e.com/it's", "http://e.com/\"q\"", "http://e.com/50%_off",
                                         "http://e.com/a;--b", "http://e.com/a' or '1'='1"};
  for (const std::string& url : urls) m_db.Exec(RecommendURLSql("Hostile", url, "e.com", "e.com", 100));
  for (size_t i = 0; i < urls.size(); ++i) {
    SCOPED_TRACE(urls[i]);
    const std::string before = m_db.Dump();
    Bstr key(std::u16string(urls[i].begin(), urls[i].end()));
    ASSERT_EQ(m_commonUrls->RemoveURL(key.Get(), 1), S_OK);
    const std::string row = "rowid = " + std::to_string(i + 2);
    EXPECT_EQ(m_db.Scalar("select Hide || ':' || Weight from TRecommendURL where " + row), "1:100");
    // Put back, the tables are as they were: nothing else moved.
    m_db.Exec("update TRecommendURL set Hide = 0 where " + row);
    EXPECT_EQ(m_db.Dump(), before);
  }
}

TEST_F(HostileTextTest, PinnedTextIsStoredExactlyAndRemovedExactly) {
  for (const std::u16string& text : HostileTexts()) {
    if (text.find(u'\0') != std::u16string::npos) continue;
    Bstr url(text);
    Bstr name(text);
    std::string before = m_db.Dump();
    ASSERT_EQ(m_focus->AddURL(url.Get(), name.Get(), 0), S_OK);
    EXPECT_EQ(m_focus->AddURL(url.Get(), name.Get(), 0), S_FALSE);
    EXPECT_EQ(m_db.Scalar("select count(*) from TFocusURL where URL = " + Q(std::string(text.begin(), text.end())) +
                          " and Name = URL"),
              "1");
    EXPECT_EQ(m_focus->RemoveURL(url.Get(), 1), S_OK);
    // Only the entry that came in has gone again.
    EXPECT_EQ(m_db.Scalar("select group_concat(URL) from TFocusURL"), "pinned.example.com");
  }
}

}  // namespace
}  // namespace corvane::test
