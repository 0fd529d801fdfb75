// The history, favourite and focus managers as a host sees them: the day
// groups and their labels, row limits, searches, hides and clears.

#include "serving/seed_rows.h"
#include "serving/serving_host.h"

namespace corvane::test {
namespace {

// Today is 2024-03-05, a Tuesday, day number 154561.
std::string HistoryRowSql(const std::string& url, const std::string& stamp, uint32_t day, uint32_t browser = 2) {
  return "insert into THistory values(null, " + Q("Title " + url) + ", " + Q(url) + ", 1, " + Q(stamp) + ", " +
         std::to_string(day) + ", 0, " + std::to_string(browser) + ");";
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

  static std::string ToNarrow(const std::u16string& text) {
    std::string out;
    for (char16_t c : text) {
      if (c < 0x80) {
        out.push_back(static_cast<char>(c));
      } else if (c < 0x800) {
        out.push_back(static_cast<char>(0xC0 | (c >> 6)));
        out.push_back(static_cast<char>(0x80 | (c & 0x3F)));
      } else {
        out.push_back(static_cast<char>(0xE0 | (c >> 12)));
        out.push_back(static_cast<char>(0x80 | ((c >> 6) & 0x3F)));
        out.push_back(static_cast<char>(0x80 | (c & 0x3F)));
      }
    }
    return out;
  }
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
  EXPECT_EQ(Count(one.Get()), 2u);  // the count has no effect here
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

}  // namespace
}  // namespace corvane::test
