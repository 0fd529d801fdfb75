// history_search.h: the search index of THistory, kept beside the schema.
//
// A history search asks for every visible row whose title or address holds
// a text, as like reads "%text%" (ASCII letters in either case, any other
// character as it stands). Done by like alone, that reads every row of a
// heavy user's history at each keystroke of a search as you type.
//
// The index is an FTS5 table with the trigram tokenizer over the distinct
// (address, title) pairs of THistory (THistoryText). Every row that like
// would find has an address whose pairs hold each three-character piece of
// the text, folded to one case, so the index names a superset of the
// addresses. The search tests only the rows of those addresses, with the
// same like, and orders them as before: its rows and their order are
// exactly those of like alone. The rows of an address are read from
// THistory_Search, an index of THistory on the address that holds every
// column, so that the thousands of rows of a common text come in runs. Rows stored after the index was last brought
// up to date (THistorySearchState.LastHID) are tested with like as well, so
// a search is exact whatever state the index is in; the update brings it up
// to date in the transaction that stores the rows. A text of fewer than
// three characters holds no piece to look up: like tests the distinct pairs
// instead, and then the rows of the addresses it admits.
//
// The tables are the index's own: nothing of the component reads them but
// the search, and dropping them loses nothing that the next update does not
// make again.

#ifndef CORVANE_STORE_HISTORY_SEARCH_H_
#define CORVANE_STORE_HISTORY_SEARCH_H_

#include <string>
#include <string_view>

#include "corvane/CorvaneDataProvider.h"

namespace corvane {

class CCorvaneDB;

// Creates the index's tables where they are missing. A failure leaves the
// searches to like alone and is no failure of the store.
HRESULT CreateHistorySearchIndex(CCorvaneDB* db);

// Adds the pairs of the THistory rows stored since the last call. Runs in
// the caller's transaction, so that rows and index are committed together.
HRESULT UpdateHistorySearchIndex(CCorvaneDB* db);

// Empties the index, for a THistory that was emptied.
HRESULT ClearHistorySearchIndex(CCorvaneDB* db);

// The text of a match expression that looks the text up in the index: the
// text as one phrase. False for a text the index can't look up: fewer than
// three characters, or a lone half of a surrogate pair, whose conversion is
// not the same in every part of SQLite.
bool HistorySearchPhrase(std::u16string_view text, std::u16string* lpPhrase);

// The search through the index: every row of THistory that rowFilter (a
// condition on the row other than the text) admits and whose title or
// address holds the text bound at ?1 as a like pattern, read from the rows
// of the addresses the index names (byPhrase: those whose pairs hold the
// phrase bound at ?2; otherwise those whose pairs the like admits, which
// tests each distinct pair once instead of each row). The rows of an address
// that holds the text need no test of their own; only rows stored since the
// index was last brought up to date and rows without an address are tested
// whole. Rows come from an index of THistory that covers every column, so
// that no row is looked up one by one. In no order, and without a
// terminating ";". Fails to prepare when a part of the index is missing.
std::u16string IndexedHistorySearch(std::u16string_view rowFilter, bool byPhrase);

// A whole history stored into an empty table is indexed in one pass after
// the rows are in: this drops the covering index, CreateHistorySearchIndex
// makes it again.
HRESULT DropHistorySearchRowIndex(CCorvaneDB* db);

}  // namespace corvane

#endif  // CORVANE_STORE_HISTORY_SEARCH_H_
