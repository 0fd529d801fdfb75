// The history, favourite and focus managers as a host sees them: the day
// groups and their labels, row limits, searches, hides and clears.

#include "serving/seed_rows.h"
#include "serving/serving_host.h"

namespace corvane::test {
namespace {

// Today is 2024-03-05, a Tuesday, day number 154561.
std::string HistoryRowSql(const std::string& url, const std::string& stamp, uint32_t day, uint32_t browser = 2,
                          int hideDate = 0) {
  return "insert into THistory values(null, " + Q("Title " + url) + ", " + Q(url) + ", 1, " + Q(stamp) + ", " +
         std::to_string(day) + ", " + std::to_string(hideDate) + ", " + std::to_string(browser) + ");";
}

std::string IEHistoryRowSql(const std::string& url, const std::string& stamp, uint32_t day) {
  return "insert into TIEHistory values(null, " + Q("IE " + url) + ", " + Q(url) + ", 1, " + Q(stamp) + ", " +
         std::to_string(day) + ", 0, 0);";
}

// UTF-8 of UTF-16 text, for seed statements.
std::string Utf8(std::u16string_view text) {
  std::string out;
  for (size_t i = 0; i < text.size(); ++i) {
    char32_t c = text[i];
    if (c >= 0xD800 && c < 0xDC00 && i + 1 < text.size()) c = 0x10000 + ((c - 0xD800) << 10) + (text[++i] - 0xDC00);
    if (c < 0x80) {
      out.push_back(static_cast<char>(c));
    } else if (c < 0x800) {
      out.push_back(static_cast<char>(0xC0 | (c >> 6)));
      out.push_back(static_cast<char>(0x80 | (c & 0x3F)));
    } else if (c < 0x10000) {
      out.push_back(static_cast<char>(0xE0 | (c >> 12)));
      out.push_back(static_cast<char>(0x80 | ((c >> 6) & 0x3F)));
      out.push_back(static_cast<char>(0x80 | (c & 0x3F)));
    } else {
      out.push_back(static_cast<char>(0xF0 | (c >> 18)));
      out.push_back(static_cast<char>(0x80 | ((c >> 12) & 0x3F)));
      out.push_back(static_cast<char>(0x80 | ((c >> 6) & 0x3F)));
      out.push_back(static_cast<char>(0x80 | (c & 0x3F)));
    }
  }
  return out;
}

class ListManagersTest : public ServingTest {
 protected:
  void SetUp() override {
    ServingTest::SetUp();
    StartProvider();
  }

  ComPtr<IUnknown> Listing(IURLsManager* manager, uint32_t count) {
    IUnknown* raw = nullptr;
    EXPECT_EQ(manager->GetURLs(count, &raw), S_OK);
    return ComPtr<IUnknown>(raw);
  }

  // A search of the history manager; the result stays null on failure.
  HRESULT Search(IURLsManager* history, std::u16string_view text, ComPtr<IUnknown>* result) {
    ComPtr<IHistoryURLsManager> search = Query<IHistoryURLsManager>(history, IID_IHistoryURLsManager);
    Bstr bstr(text);
    IUnknown* raw = nullptr;
    HRESULT hr = search->SearchURLs(bstr.Get(), &raw);
    *result = ComPtr<IUnknown>(raw);
    return hr;
  }

  HRESULT Remove(IURLsManager* manager, std::u16string_view id, uint32_t type) {
    Bstr text(id);
    return manager->RemoveURL(text.Get(), type);
  }

  // "label: url url | label: url" of a day-grouped listing.
  static std::string Days(IUnknown* outer) {
    std::string text;
    for (uint32_t d = 0; d < Count(outer); ++d) {
      ComPtr<IUnknown> day = Item(outer, d);
      if (!text.empty()) text += " | ";
      text.append(ToNarrow(Name1(Item(day.Get(), 0).Get())));
      text.push_back(':');
      for (uint32_t i = 1; i < Count(day.Get()); ++i) {
        text.push_back(' ');
        text.append(ToNarrow(URL1(Item(day.Get(), i).Get())));
      }
    }
    return text;
  }

  static std::string ToNarrow(const std::u16string& text) { return Utf8(text); }
};

TEST_F(ListManagersTest, HistoryIsGroupedByDayWithLabelsAndLimitedByRows) {
  m_db.Exec(HistoryRowSql("http://a/", "2024.03.05 2 08:00:00.000", 154561) +
            HistoryRowSql("http://b/", "2024.03.05 2 09:00:00.000", 154561) +
            HistoryRowSql("http://c/", "2024.03.04 1 22:00:00.000", 154560) +
            HistoryRowSql("http://d/", "2024.03.01 5 12:00:00.000", 154557, 64));
  ComPtr<IURLsManager> history = Manager<IURLsManager>(3, IID_IURLsManager);
  ASSERT_TRUE(history);
  ComPtr<IUnknown> all = Listing(history.Get(), 0);
  EXPECT_EQ(Days(all.Get()),
            "今天 2024年3月5日 星期二: http://b/ http://a/ | 昨天 2024年3月4日 星期一: http://c/ | "
            "2024年3月1日 星期五: http://d/");
  // Three rows, whichever days they fall on.
  ComPtr<IUnknown> three = Listing(history.Get(), 3);
  EXPECT_EQ(Days(three.Get()), "今天 2024年3月5日 星期二: http://b/ http://a/ | 昨天 2024年3月4日 星期一: http://c/");

  ComPtr<IHistoryURLsManager> search = Query<IHistoryURLsManager>(history.Get(), IID_IHistoryURLsManager);
  Bstr text(u"Title http://d");
  IUnknown* raw = nullptr;
  ASSERT_EQ(search->SearchURLs(text.Get(), &raw), S_OK);
  ComPtr<IUnknown> found(raw);
  EXPECT_EQ(Days(found.Get()), "2024年3月1日 星期五: http://d/");
  EXPECT_EQ(search->SearchURLs(nullptr, &raw), E_INVALIDARG);

  // Hides by id and by URL; another type changes nothing.
  EXPECT_EQ(Remove(history.Get(), u"2", 0), S_OK);
  EXPECT_EQ(Remove(history.Get(), u"http://c/", 1), S_OK);
  EXPECT_EQ(Remove(history.Get(), u"http://a/", 2), E_FAIL);
  ComPtr<IUnknown> left = Listing(history.Get(), 0);
  EXPECT_EQ(Days(left.Get()), "今天 2024年3月5日 星期二: http://a/ | 2024年3月1日 星期五: http://d/");
  EXPECT_EQ(history->ClearURLs(), S_OK);
  EXPECT_EQ(m_db.Scalar("select count(*) from THistory"), "0");
  ComPtr<IUnknown> none = Listing(history.Get(), 0);
  EXPECT_EQ(Count(none.Get()), 0u);
}

TEST_F(ListManagersTest, RowLimitCutsADayAndAddAndUnknownFlagsChangeNothing) {
  for (int i = 0; i < 5; ++i) {
    m_db.Exec(HistoryRowSql("http://r" + std::to_string(i) + "/", "2024.03.05 2 0" + std::to_string(i) + ":00:00.000",
                            154561));
  }
  ComPtr<IURLsManager> history = Manager<IURLsManager>(3, IID_IURLsManager);
  ComPtr<IUnknown> three = Listing(history.Get(), 3);
  ASSERT_EQ(Count(three.Get()), 1u);
  ComPtr<IUnknown> day = ItemOf(three, 0);
  ASSERT_EQ(Count(day.Get()), 4u);
  EXPECT_EQ(ID1(ItemOf(day, 0).Get()), 0u);  // the title record
  EXPECT_EQ(URL1(ItemOf(day, 1).Get()), u"http://r4/");
  EXPECT_EQ(ID1(ItemOf(day, 1).Get()), 5u);
  EXPECT_EQ(Name1(ItemOf(day, 1).Get()), u"Title http://r4/");

  const std::string before = m_db.Dump();
  Bstr url(u"http://new/"), name(u"New");
  EXPECT_EQ(history->AddURL(url.Get(), name.Get(), 0), S_OK);
  // No half of the flag means anything to this manager.
  EXPECT_EQ(Remove(history.Get(), u"http://r4/", 0x00010001), E_FAIL);
  EXPECT_EQ(Remove(history.Get(), u"1", 0x00010000), E_FAIL);
  EXPECT_EQ(history->RemoveURL(nullptr, 0), E_INVALIDARG);
  EXPECT_EQ(m_db.Dump(), before);
}

TEST_F(ListManagersTest, HiddenRowsAreInNoSearch) {
  m_db.Exec(HistoryRowSql("http://seen/page", "2024.03.05 2 08:00:00.000", 154561) +
            HistoryRowSql("http://gone/page", "2024.03.05 2 09:00:00.000", 154561, 2, 1) +
            HistoryRowSql("http://later/page", "2024.03.04 1 09:00:00.000", 154560));
  ComPtr<IURLsManager> history = Manager<IURLsManager>(3, IID_IURLsManager);
  ComPtr<IUnknown> found;
  ASSERT_EQ(Search(history.Get(), u"/page", &found), S_OK);
  EXPECT_EQ(Days(found.Get()), "今天 2024年3月5日 星期二: http://seen/page | 昨天 2024年3月4日 星期一: http://later/page");
  // Hidden through the manager: gone from the search as well.
  EXPECT_EQ(Remove(history.Get(), u"http://later/page", 1), S_OK);
  ASSERT_EQ(Search(history.Get(), u"/page", &found), S_OK);
  EXPECT_EQ(Days(found.Get()), "今天 2024年3月5日 星期二: http://seen/page");
}

TEST_F(ListManagersTest, SearchTextCountsUpToItsFirstNul) {
  m_db.Exec(HistoryRowSql("http://a/T4x", "2024.03.05 2 08:00:00.000", 154561) +
            HistoryRowSql("http://b/zz", "2024.03.05 2 09:00:00.000", 154561));
  ComPtr<IURLsManager> history = Manager<IURLsManager>(3, IID_IURLsManager);
  ComPtr<IUnknown> found;
  ASSERT_EQ(Search(history.Get(), std::u16string(u"T4\0zz", 5), &found), S_OK);
  EXPECT_EQ(Days(found.Get()), "今天 2024年3月5日 星期二: http://a/T4x");
  // A text that starts with its NUL is the empty text: every visible row.
  ASSERT_EQ(Search(history.Get(), std::u16string(u"\0T4", 3), &found), S_OK);
  EXPECT_EQ(Days(found.Get()), "今天 2024年3月5日 星期二: http://b/zz http://a/T4x");
}

TEST_F(ListManagersTest, SearchLongerThanLikeTakesFailsInsteadOfFindingNothing) {
  const std::u16string text(60000, u'a');
  m_db.Exec(HistoryRowSql("http://long/" + Utf8(text), "2024.03.05 2 08:00:00.000", 154561));
  ComPtr<IURLsManager> history = Manager<IURLsManager>(3, IID_IURLsManager);
  ComPtr<IUnknown> found;
  EXPECT_EQ(Search(history.Get(), text, &found), E_FAIL);
  EXPECT_FALSE(found);
}

// The pattern is the text with like's special characters escaped, between
// two "%", measured in bytes of UTF-8. Each case has a text whose pattern
// takes exactly the limit, and one unit more.
struct PatternCase {
  const char* what;
  std::u16string unit;  // repeated
  size_t unitPatternBytes;
  std::u16string tail;  // once, after the units
};

TEST_F(ListManagersTest, SearchAtTheLimitOfLikeRunsAndOneUnitMoreFails) {
  const size_t limit = static_cast<size_t>(m_db.Limit(SQLITE_LIMIT_LIKE_PATTERN_LENGTH));
  ASSERT_GT(limit, 100u);
  const std::vector<PatternCase> cases = {
      {"ASCII", u"a", 1, u""},
      {"escaped", u"_", 2, std::u16string(limit % 2, u'a')},
      {"three bytes each", u"中", 3, std::u16string((limit - 2) % 3, u'a')},
      {"surrogate pairs", u"\U0001F600", 4, std::u16string((limit - 2) % 4, u'a')},
  };
  ComPtr<IURLsManager> history = Manager<IURLsManager>(3, IID_IURLsManager);
  for (const PatternCase& entry : cases) {
    SCOPED_TRACE(entry.what);
    std::u16string fits;
    for (size_t i = 0; i < (limit - 2) / entry.unitPatternBytes; ++i) fits += entry.unit;
    fits += entry.tail;
    m_db.Exec("delete from THistory;" + HistoryRowSql("http://x/" + Utf8(fits) + Utf8(entry.unit),
                                                      "2024.03.05 2 08:00:00.000", 154561));
    ComPtr<IUnknown> found;
    ASSERT_EQ(Search(history.Get(), fits, &found), S_OK);
    EXPECT_EQ(Count(found.Get()), 1u);
    EXPECT_EQ(Search(history.Get(), fits + entry.unit, &found), E_FAIL);
  }
}

TEST_F(ListManagersTest, FavoritesListByFolderAndHide) {
  m_db.Exec("insert into TFavorite values('B', 'http://b/', 'b', 'Work', 0);"
            "insert into TFavorite values('A', 'http://a/', 'a', 'Bookmarks bar', 0);"
            "insert into TFavorite values('H', 'http://h/', 'h', 'Bookmarks bar', 1);"
            "insert into TFavorite values('C', 'http://c/', 'c', 'Bookmarks bar', 0);");
  ComPtr<IURLsManager> favorites = Manager<IURLsManager>(4, IID_IURLsManager);
  ASSERT_TRUE(favorites);
  ComPtr<IUnknown> two = Listing(favorites.Get(), 2);
  ASSERT_EQ(Count(two.Get()), 2u);
  EXPECT_EQ(URL1(Item(two.Get(), 0).Get()), u"http://a/");
  EXPECT_EQ(URL1(Item(two.Get(), 1).Get()), u"http://c/");
  EXPECT_EQ(ID1(Item(two.Get(), 1).Get()), 4u);
  Bstr any(u"x");
  EXPECT_EQ(favorites->AddURL(any.Get(), any.Get(), 0), S_OK);
  EXPECT_EQ(m_db.Scalar("select count(*) from TFavorite"), "4");
  EXPECT_EQ(Remove(favorites.Get(), u"99", 0), S_OK);
  EXPECT_EQ(Remove(favorites.Get(), u"1", 2), E_FAIL);
  EXPECT_EQ(Remove(favorites.Get(), u"1", 0), S_OK);
  ComPtr<IUnknown> after = Listing(favorites.Get(), 0);
  EXPECT_EQ(Count(after.Get()), 2u);
  EXPECT_EQ(Remove(favorites.Get(), u"all", 1), S_OK);
  ComPtr<IUnknown> none = Listing(favorites.Get(), 0);
  EXPECT_EQ(Count(none.Get()), 0u);
  EXPECT_EQ(m_db.Scalar("select count(*) from TFavorite"), "4");

  // Clearing deletes the rows, hidden or not.
  EXPECT_EQ(favorites->ClearURLs(), S_OK);
  EXPECT_EQ(m_db.Scalar("select count(*) from TFavorite"), "0");
}

TEST_F(ListManagersTest, FavoriteRecordsCarryRowIdNameURLAndPath) {
  m_db.Exec("insert into TFavorite values('B', 'http://b/', 'b', 'Work', 0);"
            "insert into TFavorite values('A', 'http://a/', 'a', 'Bookmarks bar', 0);");
  ComPtr<IURLsManager> favorites = Manager<IURLsManager>(4, IID_IURLsManager);
  ComPtr<IUnknown> all = Listing(favorites.Get(), 0);
  ASSERT_EQ(Count(all.Get()), 2u);
  ComPtr<IUnknown> first = ItemOf(all, 0);
  EXPECT_EQ(ID1(first.Get()), 2u);
  EXPECT_EQ(Name1(first.Get()), u"A");
  EXPECT_EQ(URL1(first.Get()), u"http://a/");
  ComPtr<IURLInfo> info = Query<IURLInfo>(first.Get(), IID_IURLInfo);
  Bstr path, visit;
  ASSERT_EQ(info->GetPath(path.Put()), S_OK);
  ASSERT_EQ(info->GetLastVisitTime(visit.Put()), S_OK);
  EXPECT_EQ(path.Text(), u"Bookmarks bar");
  EXPECT_EQ(visit.Text(), u"");
}

TEST_F(ListManagersTest, FocusEntriesAddRemoveAndNumberFromOneAfterClear) {
  ComPtr<IURLsManager> focus = Manager<IURLsManager>(2, IID_IURLsManager);
  ASSERT_TRUE(focus);
  Bstr url(u"mail.example.com");
  Bstr name(u"Mail");
  Bstr other(u"Post");
  EXPECT_EQ(focus->AddURL(url.Get(), name.Get(), 0), S_OK);
  EXPECT_EQ(focus->AddURL(url.Get(), name.Get(), 0), S_FALSE);
  EXPECT_EQ(focus->AddURL(url.Get(), other.Get(), 0), S_OK);
  EXPECT_EQ(focus->AddURL(nullptr, name.Get(), 0), E_INVALIDARG);
  ComPtr<IUnknown> one = Listing(focus.Get(), 1);
  ASSERT_EQ(Count(one.Get()), 2u);  // the count has no effect here
  // In the order of adding, each with its ID, Name and URL.
  const char16_t* kNames[] = {u"Mail", u"Post"};
  for (uint32_t i = 0; i < 2; ++i) {
    ComPtr<IUnknown> entry = ItemOf(one, i);
    EXPECT_EQ(ID1(entry.Get()), i + 1);
    EXPECT_EQ(Name1(entry.Get()), kNames[i]);
    EXPECT_EQ(URL1(entry.Get()), u"mail.example.com");
  }
  EXPECT_EQ(Remove(focus.Get(), u"All", 1), S_OK);
  EXPECT_EQ(m_db.Scalar("select count(*) from TFocusURL"), "2");
  EXPECT_EQ(Remove(focus.Get(), u"two", 0), E_FAIL);
  EXPECT_EQ(Remove(focus.Get(), u"mail.example.com", 1), S_OK);
  EXPECT_EQ(m_db.Scalar("select count(*) from TFocusURL"), "0");
  EXPECT_EQ(focus->AddURL(url.Get(), name.Get(), 0), S_OK);
  EXPECT_EQ(m_db.Scalar("select ID from TFocusURL"), "3");
  EXPECT_EQ(focus->ClearURLs(), S_OK);
  EXPECT_EQ(focus->AddURL(url.Get(), name.Get(), 0), S_OK);
  EXPECT_EQ(m_db.Scalar("select ID from TFocusURL"), "1");
}

class IEHistoryTest : public ListManagersTest {
 protected:
  void SetUp() override {
    ServingTest::SetUp();
    WriteConfig("ExtractBrowser=ie\n");
    StartProvider();
    m_db.Exec(IEHistoryRowSql("http://ie/a", "2024.03.05 2 08:00:00.000", 154561) +
              IEHistoryRowSql("http://ie/b", "2024.03.04 1 08:00:00.000", 154560) +
              HistoryRowSql("http://ie/a", "2024.03.05 2 07:00:00.000", 154561, 1) +
              HistoryRowSql("http://ie/a", "2024.03.05 2 06:00:00.000", 154561, 1) +
              HistoryRowSql("http://chrome/c", "2024.03.05 2 05:00:00.000", 154561, 2));
  }
};

TEST_F(IEHistoryTest, ManagerReadsTheIETableChosenWhenItWasCreated) {
  ComPtr<IURLsManager> history = Manager<IURLsManager>(3, IID_IURLsManager);
  EXPECT_EQ(Days(Listing(history.Get(), 0).Get()),
            "今天 2024年3月5日 星期二: http://ie/a | 昨天 2024年3月4日 星期一: http://ie/b");
  ComPtr<IUnknown> found;
  ASSERT_EQ(Search(history.Get(), u"ie/b", &found), S_OK);
  EXPECT_EQ(Days(found.Get()), "昨天 2024年3月4日 星期一: http://ie/b");

  // Another browser from now on: this manager keeps its table, a new one
  // takes THistory.
  WriteConfig("ExtractBrowser=chrome\n");
  EXPECT_EQ(Days(Listing(history.Get(), 0).Get()),
            "今天 2024年3月5日 星期二: http://ie/a | 昨天 2024年3月4日 星期一: http://ie/b");
  ComPtr<IURLsManager> later = Manager<IURLsManager>(3, IID_IURLsManager);
  EXPECT_EQ(Days(Listing(later.Get(), 0).Get()), "今天 2024年3月5日 星期二: http://ie/a http://ie/a http://chrome/c");
}

TEST_F(IEHistoryTest, HideByIdTakesTheIERowsOfTheURLAlongAndClearLeavesTheListing) {
  ComPtr<IURLsManager> history = Manager<IURLsManager>(3, IID_IURLsManager);
  EXPECT_EQ(Remove(history.Get(), u"1", 0), S_OK);
  EXPECT_EQ(m_db.Scalar("select group_concat(HideDate) from (select HideDate from TIEHistory order by HID)"), "1,0");
  EXPECT_EQ(m_db.Scalar("select group_concat(HideDate) from (select HideDate from THistory order by HID)"), "1,1,0");
  // An id that names no row of TIEHistory fails.
  EXPECT_EQ(Remove(history.Get(), u"9", 0), E_FAIL);

  EXPECT_EQ(history->ClearURLs(), S_OK);
  EXPECT_EQ(m_db.Scalar("select count(*) from THistory"), "0");
  EXPECT_EQ(Days(Listing(history.Get(), 0).Get()), "昨天 2024年3月4日 星期一: http://ie/b");
}

}  // namespace
}  // namespace corvane::test
