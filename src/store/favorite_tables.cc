// Table operations of CCorvaneDB on TFavorite (the browser's favourites) and
// TFocusURL (the sites that the host pinned).
//
// A favourite is one row per fixed URL, name and folder path. Every text is
// bound, so a name or a path with a quote in it is found again like any
// other, and one favourite stays one row across updates.

#include <unordered_set>

#include "common/text_util.h"
#include "common/url_util.h"
#include "common/utf.h"
#include "corvane/VisitHarvest.h"
#include "store/corvane_db.h"

namespace corvane {
namespace {

std::u16string TextOf(const char16_t* text) { return text == nullptr ? std::u16string() : std::u16string(text); }

// Deletes every row and starts the table's numbering again.
HRESULT ClearWithSequence(CCorvaneDB* db, std::u16string_view deleteSql, std::u16string_view sequenceSql) {
  bool deleted = db->Exec(deleteSql);
  static_cast<void>(db->Exec(sequenceSql));
  return deleted ? S_OK : E_FAIL;
}

// The favourites already stored, by fixed URL, name and path. A delivery
// asks once per item whether its favourite is known; one read of the table
// answers all of them, where a query per item would scan the table each
// time. Texts compare exactly, as the query's "=" does.
class FavoriteKeys {
 public:
  bool Load(CCorvaneDB* db) {
    StatementPtr stmt = db->Prepare(u"select FixedURL, Name, Path from TFavorite;");
    if (!stmt) return false;
    while (stmt->Step()) m_keys.insert(Key(stmt->ColumnText16(0), stmt->ColumnText16(1), stmt->ColumnText16(2)));
    return true;
  }
  bool Contains(const std::u16string& key) const { return m_keys.count(key) != 0; }
  void Add(std::u16string key) { m_keys.insert(std::move(key)); }

  // The three texts with their lengths in front, so that no two triples
  // give one key.
  static std::u16string Key(std::u16string_view fixedURL, std::u16string_view name, std::u16string_view path) {
    std::u16string key;
    for (std::u16string_view part : {fixedURL, name, path}) {
      key.append(FromUtf8(std::to_string(part.size()))).push_back(u':');
      key.append(part);
    }
    return key;
  }

 private:
  std::unordered_set<std::u16string> m_keys;
};

// True when the item was already known or has been stored.
bool StoreFavorite(CSqliteStatement* insert, FavoriteKeys* known, IExtractItem* item) {
  std::u16string name = TextOf(item->GetName());
  std::u16string path = TextOf(item->GetPath());
  std::u16string url = TextOf(item->GetURL());
  std::u16string fixedURL = url;
  MakeFixedURL(fixedURL);
  std::u16string key = FavoriteKeys::Key(fixedURL, name, path);
  // A known favourite keeps its row as it stands, hidden or not.
  if (known->Contains(key)) return true;
  bool stored = insert->BindText16(0, name) && insert->BindText16(1, url) && insert->BindText16(2, fixedURL) &&
                insert->BindText16(3, path) && insert->BindInt(4, 0) && insert->Execute();
  if (stored) known->Add(std::move(key));
  return stored;
}

}  // namespace

// ---- TFavorite ----

HRESULT CCorvaneDB::AddFavorites(IExtractor* pExtractor) {
  if (pExtractor == nullptr) return E_INVALIDARG;
  uint32_t count = pExtractor->GetCount();
  if (count == 0) return S_FALSE;
  if (!BeginTransaction()) return S_FALSE;
  int32_t stored = 0;
  FavoriteKeys known;
  StatementPtr insert = known.Load(this) ? Prepare(u"insert into TFavorite values(?, ?, ?, ?, ?);") : nullptr;
  for (uint32_t i = 0; insert && i < count; ++i) {
    IExtractItem* item = nullptr;
    static_cast<void>(pExtractor->GetNextItem(&item));
    if (item != nullptr && StoreFavorite(insert.get(), &known, item)) ++stored;
  }
  insert.reset();
  static_cast<void>(EndTransaction());
  return stored > 0 ? S_OK : S_FALSE;
}

HRESULT CCorvaneDB::FindFavorite(std::u16string_view fixedURL, std::u16string_view name, std::u16string_view path) {
  return CountWithTexts(this, u"select count(*) from TFavorite where FixedURL = ? And Name = ? And Path = ?;",
                    {fixedURL, name, path});
}

HRESULT CCorvaneDB::IsFavoriteURL(std::u16string_view fixedURL) {
  return CountWithTexts(this, u"select count(*) from TFavorite where FixedURL = ?;", {fixedURL});
}

HRESULT CCorvaneDB::GetFavorites(uint32_t uLimit, StatementPtr* lppStmt) {
  if (lppStmt == nullptr) return E_POINTER;
  std::u16string sql = u"select rowid, * from TFavorite where HideDate = 0 order by Path ASC, rowid ASC";
  if (uLimit != 0) sql += u" limit 0, " + FromUtf8(std::to_string(uLimit));
  StatementPtr stmt = Prepare(sql + u";");
  if (!stmt) return E_FAIL;
  *lppStmt = std::move(stmt);
  return S_OK;
}

HRESULT CCorvaneDB::HideFavorite(std::u16string_view urlOrAll) {
  if (AsciiEqualsIgnoreCase(urlOrAll, u"All")) return ExecWithTexts(this, u"update TFavorite set HideDate = 1;", {});
  return ExecWithTexts(this, u"update TFavorite set HideDate = 1 where URL = ?;", {urlOrAll});
}

HRESULT CCorvaneDB::HideFavoriteByID(std::u16string_view id) {
  // The rowid is compared as text: an id that is no number matches no row.
  return ExecWithTexts(this, u"update TFavorite set HideDate = 1 where rowid = ?;", {id});
}

HRESULT CCorvaneDB::ClearFavorites() {
  return ClearWithSequence(this, u"delete from TFavorite;", u"update sqlite_sequence set seq = 0 where name='TFavorite';");
}

// ---- TFocusURL ----

HRESULT CCorvaneDB::AddFocusURL(std::u16string_view name, std::u16string_view url) {
  if (FindFocusURL(name, url) == S_OK) return S_FALSE;
  return ExecWithTexts(this, u"insert into TFocusURL(Name, URL) values(?, ?);", {name, url});
}

HRESULT CCorvaneDB::FindFocusURL(std::u16string_view name, std::u16string_view url) {
  return CountWithTexts(this, u"select count(*) from TFocusURL where URL = ? And Name = ?;", {url, name});
}

HRESULT CCorvaneDB::GetFocusURLs(StatementPtr* lppStmt) {
  if (lppStmt == nullptr) return E_POINTER;
  StatementPtr stmt = Prepare(u"select * from TFocusURL order by ID ASC;");
  if (!stmt) return E_FAIL;
  *lppStmt = std::move(stmt);
  return S_OK;
}

HRESULT CCorvaneDB::RemoveFocusURL(std::u16string_view url) {
  return ExecWithTexts(this, u"delete from TFocusURL where URL = ?;", {url});
}

HRESULT CCorvaneDB::RemoveFocusByID(std::u16string_view id) {
  // An ID is a row number: text that is no decimal number names no row and
  // is refused as a failed removal, not run as one that matches nothing.
  int64_t focusID = 0;
  if (!IsDecimalId(id, &focusID)) return E_FAIL;
  return ExecWithNumber(this, u"delete from TFocusURL where ID = ?;", focusID);
}

HRESULT CCorvaneDB::ClearFocusURLs() {
  return ClearWithSequence(this, u"delete from TFocusURL;", u"update sqlite_sequence set seq = 0 where name='TFocusURL';");
}

}  // namespace corvane
