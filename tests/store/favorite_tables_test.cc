// TFavorite and TFocusURL: one favourite per fixed URL, name and path; the
// focus list and its numbering.

#include <gtest/gtest.h>

#include "common/utf.h"
#include "store/corvane_db.h"
#include "store/scripted_extractor.h"
#include "support/test_host.h"

namespace corvane::testing {
namespace {

class FavoriteTablesTest : public ::testing::Test {
 protected:
  FavoriteTablesTest() : m_appData("CORVANE_APPDATA", m_dir.Path().c_str()) {
    EXPECT_EQ(m_db.Open(FromUtf8(m_dir.File("db.sqlite")), false), S_OK);
  }

  void Favorite(std::u16string name, std::u16string url, std::u16string path) {
    m_delivery.Add(std::make_unique<ScriptedItem>(std::move(name), std::move(url), SYSTEMTIME{}, 0, 2, std::move(path)));
  }

  HRESULT Add() {
    m_delivery.Rewind();
    return m_db.AddFavorites(&m_delivery);
  }

  int64_t Number(const std::u16string& sql) {
    StatementPtr stmt = m_db.Prepare(sql);
    return stmt && stmt->Step() ? stmt->ColumnInt64(0) : -1;
  }

  test::TempDir m_dir;
  test::ScopedEnv m_appData;
  CCorvaneDB m_db;
  ScriptedExtractor m_delivery;
};

TEST_F(FavoriteTablesTest, OneRowPerFixedURLNameAndPath) {
  EXPECT_EQ(Add(), S_FALSE);  // nothing delivered
  Favorite(u"Example", u"http://example.com/", u"Bookmarks bar");
  Favorite(u"Example", u"www.example.com", u"Bookmarks bar");       // same fixed URL
  Favorite(u"Example", u"http://example.com/", u"Other bookmarks");  // other folder
  Favorite(u"It's mine", u"http://o'brien.example.com/", u"Jack's \"stuff\"");
  m_delivery.AddNull();
  ASSERT_EQ(Add(), S_OK);
  EXPECT_EQ(Number(u"select count(*) from TFavorite"), 3);
  EXPECT_EQ(Number(u"select count(*) from TFavorite where URL = 'http://example.com/' and Path = 'Bookmarks bar'"), 1);
  // The second delivery adds nothing, also for the names with quotes, and a
  // hidden favourite stays hidden.
  EXPECT_EQ(m_db.HideFavorite(u"http://o'brien.example.com/"), S_OK);
  ASSERT_EQ(Add(), S_OK);
  EXPECT_EQ(Number(u"select count(*) from TFavorite"), 3);
  EXPECT_EQ(Number(u"select HideDate from TFavorite where Name = 'It''s mine'"), 1);
  // A hidden favourite is still a favourite to the scoring.
  EXPECT_EQ(m_db.IsFavoriteURL(u"o'brien.example.com"), S_OK);
  EXPECT_EQ(m_db.IsFavoriteURL(u"example.com"), S_OK);
  EXPECT_EQ(m_db.IsFavoriteURL(u"other.example.com"), S_FALSE);
}

// Null texts read as empty ones: such an item is the same favourite as one
// whose texts are empty, and it is stored as '' rather than NULL, so that it
// is found again and not stored on every update.
TEST_F(FavoriteTablesTest, NullAndEmptyTextsAreOneFavoriteStoredAsEmptyText) {
  auto nullTexts = std::make_unique<ScriptedItem>(u"x", u"http://x.example.com/", SYSTEMTIME{}, 0, 2, u"y");
  nullTexts->SetNullTexts();
  m_delivery.Add(std::move(nullTexts));
  Favorite(u"", u"", u"");
  Favorite(u"", u"http://example.com/", u"");
  ASSERT_EQ(Add(), S_OK);
  EXPECT_EQ(Number(u"select count(*) from TFavorite"), 2);
  EXPECT_EQ(Number(u"select count(*) from TFavorite where Name = '' and URL = '' and FixedURL = '' and Path = ''"), 1);
  EXPECT_EQ(Number(u"select count(*) from TFavorite where Name is null or URL is null or Path is null"), 0);
  ASSERT_EQ(Add(), S_OK);
  EXPECT_EQ(Number(u"select count(*) from TFavorite"), 2);
  EXPECT_EQ(m_db.FindFavorite(u"example.com", u"", u""), S_OK);
}

TEST_F(FavoriteTablesTest, ListingHidesAndClear) {
  Favorite(u"B", u"http://b.example.com/", u"Zeta");
  Favorite(u"A", u"http://a.example.com/", u"Alpha");
  Favorite(u"C", u"http://c.example.com/", u"Alpha");
  ASSERT_EQ(Add(), S_OK);
  StatementPtr stmt;
  ASSERT_EQ(m_db.GetFavorites(2, &stmt), S_OK);
  std::vector<std::u16string> names;
  while (stmt->Step()) names.push_back(stmt->ColumnText16(1));
  EXPECT_EQ(names, (std::vector<std::u16string>{u"A", u"C"}));
  EXPECT_EQ(m_db.HideFavoriteByID(u"999"), S_OK);
  EXPECT_EQ(m_db.HideFavoriteByID(u"1' or '1'='1"), S_OK);
  EXPECT_EQ(Number(u"select count(*) from TFavorite where HideDate = 1"), 0);
  EXPECT_EQ(m_db.HideFavoriteByID(u"2"), S_OK);
  EXPECT_EQ(Number(u"select HideDate from TFavorite where rowid = 2"), 1);
  EXPECT_EQ(m_db.HideFavorite(u"ALL"), S_OK);
  EXPECT_EQ(Number(u"select count(*) from TFavorite where HideDate = 0"), 0);
  EXPECT_EQ(m_db.ClearFavorites(), S_OK);
  EXPECT_EQ(Number(u"select count(*) from TFavorite"), 0);
}

TEST_F(FavoriteTablesTest, FocusAddFindRemoveAndClear) {
  EXPECT_EQ(m_db.AddFocusURL(u"Mail", u"mail.example.com"), S_OK);
  EXPECT_EQ(m_db.AddFocusURL(u"Mail", u"mail.example.com"), S_FALSE);
  EXPECT_EQ(m_db.AddFocusURL(u"O'Brien's", u"ob.example.com"), S_OK);
  EXPECT_EQ(m_db.FindFocusURL(u"O'Brien's", u"ob.example.com"), S_OK);
  EXPECT_EQ(m_db.FindFocusURL(u"Mail", u"ob.example.com"), S_FALSE);
  EXPECT_EQ(m_db.RemoveFocusByID(u"2; delete from TFocusURL"), E_FAIL);
  EXPECT_EQ(Number(u"select count(*) from TFocusURL"), 2);
  EXPECT_EQ(m_db.RemoveFocusByID(u"1"), S_OK);
  EXPECT_EQ(m_db.RemoveFocusURL(u"nothing.example.com"), S_OK);
  EXPECT_EQ(m_db.RemoveFocusURL(u"ob.example.com"), S_OK);
  EXPECT_EQ(Number(u"select count(*) from TFocusURL"), 0);
  EXPECT_EQ(m_db.AddFocusURL(u"Again", u"again.example.com"), S_OK);
  EXPECT_EQ(Number(u"select ID from TFocusURL"), 3);
  // Clearing starts the numbering at 1 again.
  EXPECT_EQ(m_db.ClearFocusURLs(), S_OK);
  EXPECT_EQ(m_db.AddFocusURL(u"First", u"first.example.com"), S_OK);
  EXPECT_EQ(Number(u"select ID from TFocusURL"), 1);
}

}  // namespace
}  // namespace corvane::testing
