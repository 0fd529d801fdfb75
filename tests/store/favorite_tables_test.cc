// TFavorite: one favourite per fixed URL, name and path. The focus list,
// the listing and the hides are pinned through the managers of the serving
// suite.

#include "intake/scripted_extractor.h"
#include "store/db_fixture.h"

namespace corvane::testing {
namespace {

class FavoriteTablesTest : public DBTest {
 protected:
  void Favorite(std::u16string name, std::u16string url, std::u16string path) {
    m_delivery.items.push_back(std::make_unique<ScriptedItem>(name, url, SYSTEMTIME{}, 0, BROWSER_CHROME, path));
  }
  HRESULT Add() {
    m_delivery.Extract(BROWSER_CHROME, EXTRACT_FAVORITES);
    return m_db.AddFavorites(&m_delivery);
  }

  ScriptedExtractor m_delivery;
};

TEST_F(FavoriteTablesTest, OneRowPerFixedURLNameAndPathAndAHiddenOneStaysHidden) {
  EXPECT_EQ(Add(), S_FALSE);  // nothing delivered
  Favorite(u"Example", u"http://example.com/", u"Bookmarks bar");
  Favorite(u"Example", u"www.example.com", u"Bookmarks bar");       // same fixed URL
  Favorite(u"Example", u"http://example.com/", u"Other bookmarks");  // other folder
  Favorite(u"It's mine", u"http://o'brien.example.com/", u"Jack's \"stuff\"");
  m_delivery.items.push_back(nullptr);
  ASSERT_EQ(Add(), S_OK);
  EXPECT_EQ(Rows("select Name, URL, FixedURL, Path, HideDate from TFavorite order by rowid"),
            (std::vector<std::string>{"Example|http://example.com/|example.com|Bookmarks bar|0",
                                      "Example|http://example.com/|example.com|Other bookmarks|0",
                                      "It's mine|http://o'brien.example.com/|o'brien.example.com|Jack's \"stuff\"|0"}));
  // The second delivery adds nothing, also for the names with quotes, and a
  // hidden favourite stays hidden.
  EXPECT_EQ(m_db.HideFavorite(u"http://o'brien.example.com/"), S_OK);
  ASSERT_EQ(Add(), S_OK);
  EXPECT_EQ(Rows("select HideDate from TFavorite order by rowid"), (std::vector<std::string>{"0", "0", "1"}));
  // A hidden favourite is still a favourite to the scoring.
  EXPECT_EQ(m_db.IsFavoriteURL(u"o'brien.example.com"), S_OK);
  EXPECT_EQ(m_db.IsFavoriteURL(u"example.com"), S_OK);
  EXPECT_EQ(m_db.IsFavoriteURL(u"other.example.com"), S_FALSE);
  EXPECT_EQ(m_db.FindFavorite(u"example.com", u"Example", u"Other bookmarks"), S_OK);
  EXPECT_EQ(m_db.FindFavorite(u"example.com", u"", u"Other bookmarks"), S_FALSE);
}

}  // namespace
}  // namespace corvane::testing
