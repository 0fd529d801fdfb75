// white_list_loader.h: the white-list file and the four reference tables
// built from it.
//
// WhiteList.js in the data folder is one JSON object with the arrays
// "whitelist", "blacklist", "sublist" (groups of a main domain with its
// hosts) and "names" (display names of hosts). Each non-empty array
// replaces its table; an absent or empty one leaves the table as it stood.
// The system only reads the file. A file that can't be read or parsed, is
// nested too deeply, or whose root is no object changes nothing.

#ifndef CORVANE_REFLISTS_WHITE_LIST_LOADER_H_
#define CORVANE_REFLISTS_WHITE_LIST_LOADER_H_

#include <json/value.h>

#include <cstdint>
#include <string>
#include <string_view>

#include "corvane/CorvaneDataProvider.h"

namespace corvane {

class CCorvaneDB;

// The largest file that is read. A list of a thousand sites is under 200 KB;
// the parsed tree takes some fifty times the size of the text, so a file
// far beyond any white list is refused before it is read into memory.
inline constexpr int64_t kMaxWhiteListBytes = 4 << 20;

// Reads the data folder's WhiteList.js into the tables. S_OK, or E_FAIL
// when the file is missing, unreadable or malformed.
HRESULT LoadWhiteListFile(CCorvaneDB* pDB);

// The same from a file named by path.
HRESULT LoadWhiteListFrom(CCorvaneDB* pDB, const std::u16string& path);

// Parses the text of a white-list file; false when it is no JSON object.
bool ParseWhiteListText(std::string_view text, Json::Value* lpRoot);

// 1 when the table was rebuilt from the array, 0 when the value was no
// usable array. With withMainRow, each group adds a row for its main domain.
int32_t LoadListTable(CCorvaneDB* pDB, const char16_t* table, const char16_t* createSql, const Json::Value& groups,
                      bool withMainRow);
int32_t LoadNamesTable(CCorvaneDB* pDB, const Json::Value& names);

}  // namespace corvane

#endif  // CORVANE_REFLISTS_WHITE_LIST_LOADER_H_
