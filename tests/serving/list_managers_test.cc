// The history, favourite and focus managers as a host sees them: the day
// groups and their labels, row limits, searches, hides and clears.

#include "common/utf.h"
#include "serving/serving_host.h"

namespace corvane::test {
namespace {

const std::string kToday = "今天 2024年3月5日 星期二:";
const std::string kYesterday = "昨天 2024年3月4日 星期一:";

// A visit of browser 2 unless told, titled "Title <url>".
std::string HistoryRow(const std::string& url, const std::string& stamp, uint32_t day, uint32_t browser = 2,
                       int hideDate = 0) {
  return Insert("THistory", Null(), "Title " + url, url, 1, stamp, day, hideDate, browser);
}

class ListManagersTest : public ServingTest {
 protected:
  static ComPtr<IUnknown> Listing(IURLsManager* manager, uint32_t count) {
    IUnknown* raw = nullptr;
    EXPECT_EQ(manager->GetURLs(count, &raw), S_OK);
    return ComPtr<IUnknown>(raw);
  }
  std::string HistoryDays(uint32_t count, IURLsManager* manager = nullptr) {
    return Days(Listing(manager != nullptr ? manager : m_history.Get(), count).Get());
  }

  // The day groups a search finds, or the failed status (the result then
  // stays null).
  std::string Found(std::u16string_view text) {
    ComPtr<IHistoryURLsManager> search = Query<IHistoryURLsManager>(m_history.Get(), IID_IHistoryURLsManager);
    Bstr bstr(text);
    IUnknown* raw = nullptr;
    const HRESULT hr = search->SearchURLs(bstr.Get(), &raw);
    ComPtr<IUnknown> found(raw);
    if (hr == S_OK) return Days(found.Get());
    EXPECT_FALSE(found);
    return "status " + std::to_string(hr);
  }

  static HRESULT Remove(IURLsManager* manager, std::u16string_view id, uint32_t type) {
    Bstr text(id);
    return manager->RemoveURL(text.Get(), type);
  }
};

TEST_F(ListManagersTest, HistoryIsGroupedByDayWithLabelsSearchedHiddenAndCleared) {
  m_db.Exec(HistoryRow("http://a/", "2024.03.05 2 08:00:00.000", 154561) +
            HistoryRow("http://b/", "2024.03.05 2 09:00:00.000", 154561) +
            HistoryRow("http://c/", "2024.03.04 1 22:00:00.000", 154560) +
            HistoryRow("http://d/", "2024.03.01 5 12:00:00.000", 154557, 64) +
            HistoryRow("http://gone/", "2024.03.05 2 10:00:00.000", 154561, 2, 1));
  // Today, yesterday and four days ago; three rows, whichever days they fall on.
  EXPECT_EQ(HistoryDays(0),
            kToday + " http://b/ http://a/ | " + kYesterday + " http://c/ | 2024年3月1日 星期五: http://d/");
  EXPECT_EQ(HistoryDays(3), kToday + " http://b/ http://a/ | " + kYesterday + " http://c/");
  EXPECT_EQ(Found(std::u16string(u"Title http://d\0ignored", 22)), "2024年3月1日 星期五: http://d/");  // to the NUL
  EXPECT_EQ(Found(u"/"), HistoryDays(0));  // the hidden row in no search either
  IUnknown* raw = nullptr;
  EXPECT_EQ(Query<IHistoryURLsManager>(m_history.Get(), IID_IHistoryURLsManager)->SearchURLs(nullptr, &raw),
            E_INVALIDARG);

  // Hides by id and by URL, gone from listing and search; another type
  // changes nothing.
  EXPECT_EQ(Remove(m_history.Get(), u"2", 0), S_OK);
  EXPECT_EQ(Remove(m_history.Get(), u"http://c/", 1), S_OK);
  EXPECT_EQ(Remove(m_history.Get(), u"http://a/", 2), E_FAIL);
  EXPECT_EQ(HistoryDays(0), kToday + " http://a/ | 2024年3月1日 星期五: http://d/");
  EXPECT_EQ(Found(u"/"), HistoryDays(0));
  EXPECT_EQ(m_history->ClearURLs(), S_OK);
  EXPECT_EQ(m_db.Scalar("select count(*) from THistory"), "0");
  EXPECT_EQ(Count(Listing(m_history.Get(), 0).Get()), 0u);
}

// A page of THistory overwritten while the provider runs: the listing and
// the search fail instead of handing out the rows read before the damage,
// and the damage is noted so that the next start rebuilds the file.
TEST_F(ListManagersTest, DamageMetByAListingFailsItAndIsNoted) {
  m_db.Exec("with recursive n(i) as (select 1 union all select i + 1 from n where i < 3000) insert into THistory "
            "select null, 'Title ' || hex(zeroblob(40)), 'http://p' || i || '/', 1, '2024.03.05 2 08:00:00.000', "
            "154561, 0, 2 from n;");
  ASSERT_NE(HistoryDays(0), "");
  const int page = std::stoi(m_db.Scalar("select pageno from dbstat where name = 'THistory' and pagetype = 'leaf' "
                                         "order by pageno limit 1 offset 3"));
  DamageDatabasePage(DataFile("CorvaneAppDB.db"), page, std::stoi(m_db.Scalar("pragma page_size")));
  IUnknown* raw = nullptr;
  EXPECT_EQ(m_history->GetURLs(0, &raw), E_FAIL);
  EXPECT_EQ(raw, nullptr);
  EXPECT_EQ(Found(u"Title"), "status " + std::to_string(E_FAIL));
  EXPECT_EQ(GetValue(m_provider.Get(), u"DatabaseDamaged"), u"1");
}

TEST_F(ListManagersTest, RowLimitCutsADayAndAddAndUnknownFlagsChangeNothing) {
  for (int i = 0; i < 5; ++i) {
    const std::string n = std::to_string(i);
    m_db.Exec(HistoryRow("http://r" + n + "/", "2024.03.05 2 0" + n + ":00:00.000", 154561));
  }
  // Five rows of one day with uCount 3: the day's title record and three rows.
  ComPtr<IUnknown> three = Listing(m_history.Get(), 3);
  ASSERT_EQ(Count(three.Get()), 1u);
  EXPECT_EQ(ShowAll(Item(three.Get(), 0).Get()),
            "0|今天 2024年3月5日 星期二|; 5|Title http://r4/|http://r4/; 4|Title http://r3/|http://r3/; "
            "3|Title http://r2/|http://r2/");

  const std::string before = m_db.Dump();
  Bstr url(u"http://new/"), name(u"New");
  EXPECT_EQ(m_history->AddURL(url.Get(), name.Get(), 0), S_OK);
  // No half of the flag means anything to this manager.
  EXPECT_EQ(Remove(m_history.Get(), u"http://r4/", 0x00010001), E_FAIL);
  EXPECT_EQ(Remove(m_history.Get(), u"1", 0x00010000), E_FAIL);
  EXPECT_EQ(m_history->RemoveURL(nullptr, 0), E_INVALIDARG);
  EXPECT_EQ(m_db.Dump(), before);
}

// The pattern is the text with like's special characters escaped, between
// two "%", measured in bytes of UTF-8. Each case has a text whose pattern
// takes exactly the limit, and one unit more.
TEST_F(ListManagersTest, SearchAtTheLimitOfLikeRunsAndOneUnitMoreFails) {
  const size_t limit = static_cast<size_t>(m_db.Limit(SQLITE_LIMIT_LIKE_PATTERN_LENGTH));
  ASSERT_GT(limit, 100u);
  struct PatternCase {
    const char* what;
    std::u16string unit;  // repeated
    size_t unitPatternBytes;
    std::u16string tail;  // once, after the units
  };
  const PatternCase cases[] = {
      {"ASCII", u"a", 1, u""},
      {"escaped", u"_", 2, std::u16string(limit % 2, u'a')},
      {"three bytes each", u"中", 3, std::u16string((limit - 2) % 3, u'a')},
      {"surrogate pairs", u"\U0001F600", 4, std::u16string((limit - 2) % 4, u'a')},
  };
  for (const PatternCase& entry : cases) {
    SCOPED_TRACE(entry.what);
    std::u16string fits;
    for (size_t i = 0; i < (limit - 2) / entry.unitPatternBytes; ++i) fits += entry.unit;
    fits += entry.tail;
    const std::string url = "http://x/" + ToUtf8(fits + entry.unit);
    m_db.Exec("delete from THistory;" + HistoryRow(url, "2024.03.05 2 08:00:00.000", 154561));
    EXPECT_EQ(Found(fits), kToday + " " + url);
    EXPECT_EQ(Found(fits + entry.unit), "status " + std::to_string(E_FAIL));
  }
}

TEST_F(ListManagersTest, FavoritesListByFolderHideAndClear) {
  m_db.Exec(Insert("TFavorite", "B", "http://b/", "b", "Work", 0) + Insert("TFavorite", "A", "http://a/", "a", "Bookmarks bar", 0) +
            Insert("TFavorite", "H", "http://h/", "h", "Bookmarks bar", 1) + Insert("TFavorite", "C", "http://c/", "c", "Bookmarks bar", 0));
  ComPtr<IUnknown> two = Listing(m_favorites.Get(), 2);
  EXPECT_EQ(ShowAll(two.Get()), "2|A|http://a/; 4|C|http://c/");
  EXPECT_EQ(ShowAll(Listing(m_favorites.Get(), 0).Get()), "2|A|http://a/; 4|C|http://c/; 1|B|http://b/");
  Bstr path, visit;
  ASSERT_EQ(Query<IURLInfo>(Item(two.Get(), 0).Get(), IID_IURLInfo)->GetPath(path.Put()), S_OK);
  ASSERT_EQ(Query<IURLInfo>(Item(two.Get(), 0).Get(), IID_IURLInfo)->GetLastVisitTime(visit.Put()), S_OK);
  EXPECT_EQ(path.Text(), u"Bookmarks bar");
  EXPECT_EQ(visit.Text(), u"");

  Bstr any(u"x");
  EXPECT_EQ(m_favorites->AddURL(any.Get(), any.Get(), 0), S_OK);
  EXPECT_EQ(Remove(m_favorites.Get(), u"99", 0), S_OK);
  EXPECT_EQ(Remove(m_favorites.Get(), u"1", 2), E_FAIL);
  EXPECT_EQ(m_db.Scalar("select group_concat(HideDate) from TFavorite"), "0,0,1,0");
  EXPECT_EQ(Remove(m_favorites.Get(), u"1", 0), S_OK);
  EXPECT_EQ(Count(Listing(m_favorites.Get(), 0).Get()), 2u);
  EXPECT_EQ(Remove(m_favorites.Get(), u"all", 1), S_OK);
  EXPECT_EQ(Count(Listing(m_favorites.Get(), 0).Get()), 0u);
  EXPECT_EQ(m_db.Scalar("select count(*) from TFavorite"), "4");
  // Clearing deletes the rows, hidden or not.
  EXPECT_EQ(m_favorites->ClearURLs(), S_OK);
  EXPECT_EQ(m_db.Scalar("select count(*) from TFavorite"), "0");
}

TEST_F(ListManagersTest, FocusEntriesAddRemoveAndNumberFromOneAfterClear) {
  Bstr url(u"mail.example.com"), name(u"Mail"), other(u"Post");
  EXPECT_EQ(m_focus->AddURL(url.Get(), name.Get(), 0), S_OK);
  EXPECT_EQ(m_focus->AddURL(url.Get(), name.Get(), 0), S_FALSE);
  EXPECT_EQ(m_focus->AddURL(url.Get(), other.Get(), 0), S_OK);
  EXPECT_EQ(m_focus->AddURL(nullptr, name.Get(), 0), E_INVALIDARG);
  // In the order of adding; the count has no effect here.
  EXPECT_EQ(ShowAll(Listing(m_focus.Get(), 1).Get()), "1|Mail|mail.example.com; 2|Post|mail.example.com");
  EXPECT_EQ(Remove(m_focus.Get(), u"All", 1), S_OK);
  EXPECT_EQ(m_db.Scalar("select count(*) from TFocusURL"), "2");
  EXPECT_EQ(Remove(m_focus.Get(), u"two", 0), E_FAIL);
  EXPECT_EQ(Remove(m_focus.Get(), u"mail.example.com", 1), S_OK);
  EXPECT_EQ(m_db.Scalar("select count(*) from TFocusURL"), "0");
  EXPECT_EQ(m_focus->AddURL(url.Get(), name.Get(), 0), S_OK);
  EXPECT_EQ(m_db.Scalar("select ID from TFocusURL"), "3");
  EXPECT_EQ(m_focus->ClearURLs(), S_OK);
  EXPECT_EQ(m_focus->AddURL(url.Get(), name.Get(), 0), S_OK);
  EXPECT_EQ(m_db.Scalar("select ID from TFocusURL"), "1");
}

class IEHistoryTest : public ListManagersTest {
 protected:
  std::string ConfigLines() const override { return "ExtractBrowser=ie\n"; }
  void SetUp() override {
    ServingTest::SetUp();
    m_db.Exec(Insert("TIEHistory", Null(), "IE", "http://ie/a", 1, "2024.03.05 2 08:00:00.000", 154561, 0, 0) +
              Insert("TIEHistory", Null(), "IE", "http://ie/b", 1, "2024.03.04 1 08:00:00.000", 154560, 0, 0));
    m_db.Exec(HistoryRow("http://ie/a", "2024.03.05 2 07:00:00.000", 154561, 1) +
              HistoryRow("http://ie/a", "2024.03.05 2 06:00:00.000", 154561, 1) +
              HistoryRow("http://chrome/c", "2024.03.05 2 05:00:00.000", 154561, 2));
  }
};

TEST_F(IEHistoryTest, ManagerReadsTheIETableChosenWhenItWasCreated) {
  const std::string kIE = kToday + " http://ie/a | " + kYesterday + " http://ie/b";
  EXPECT_EQ(HistoryDays(0), kIE);
  EXPECT_EQ(Found(u"ie/b"), kYesterday + " http://ie/b");
  // Another browser from now on: this manager keeps its table, a new one
  // takes THistory.
  WriteConfig("ExtractBrowser=chrome\n");
  EXPECT_EQ(HistoryDays(0), kIE);
  ComPtr<IURLsManager> later = Manager<IURLsManager>(3, IID_IURLsManager);
  EXPECT_EQ(HistoryDays(0, later.Get()), kToday + " http://ie/a http://ie/a http://chrome/c");
}

TEST_F(IEHistoryTest, HideByIdTakesTheIERowsOfTheURLAlongAndClearLeavesTheListing) {
  EXPECT_EQ(Remove(m_history.Get(), u"1", 0), S_OK);
  EXPECT_EQ(m_db.Scalar("select group_concat(HideDate) from (select HideDate from TIEHistory order by HID)"), "1,0");
  EXPECT_EQ(m_db.Scalar("select group_concat(HideDate) from (select HideDate from THistory order by HID)"), "1,1,0");
  // An id that names no row of TIEHistory fails.
  EXPECT_EQ(Remove(m_history.Get(), u"9", 0), E_FAIL);
  EXPECT_EQ(m_history->ClearURLs(), S_OK);
  EXPECT_EQ(m_db.Scalar("select count(*) from THistory"), "0");
  EXPECT_EQ(HistoryDays(0), kYesterday + " http://ie/b");
}

}  // namespace
}  // namespace corvane::test
