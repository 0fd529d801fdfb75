// The history manager as a host sees it: the day groups and their labels,
// searches, hides, clears, and a listing that meets damage.

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

}  // namespace
}  // namespace corvane::test
