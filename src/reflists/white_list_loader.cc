#include "reflists/white_list_loader.h"

#include <json/reader.h>

#include <fstream>
#include <iterator>
#include <memory>

#include "common/debug_log.h"
#include "platform/app_data.h"
#include "platform/file_notes.h"
#include "platform/paths.h"
#include "store/corvane_db.h"
#include "store/schema.h"

namespace corvane {
namespace {

constexpr char16_t kWhiteListFile[] = u"WhiteList.js";
constexpr char kUnknown[] = "Unknown";
// Deeper nesting than any white list needs is taken as a damaged file
// before the parser's recursion could exhaust the stack.
constexpr int kJsonStackLimit = 64;

// The whole file; false with the reason when it can't be used. A missing
// file has no reason: there is nothing to tell.
bool ReadWholeFile(const std::u16string& path, std::string* lpText, std::string* lpWhy) {
  std::ifstream in(ToFsPath(path), std::ios::binary);
  if (!in) {
    if (PathFileExists(path)) *lpWhy = "it can't be read";
    return false;
  }
  in.seekg(0, std::ios::end);
  std::streamoff size = in.tellg();
  if (size <= 0) *lpWhy = "it is empty";
  if (size > kMaxWhiteListBytes) *lpWhy = "it is larger than " + std::to_string(kMaxWhiteListBytes) + " bytes";
  if (size <= 0 || size > kMaxWhiteListBytes) return false;
  in.seekg(0);
  lpText->resize(static_cast<size_t>(size));
  if (in.read(lpText->data(), size)) return true;
  *lpWhy = "it can't be read";
  return false;
}

// A string member as text, or the fallback when it is missing or no string.
const char* TextOr(const Json::Value& object, const char* member, const char* fallback) {
  if (!object.isObject()) return fallback;
  const Json::Value& value = object[member];
  return value.isString() ? value.asCString() : fallback;
}

void InsertGroup(CCorvaneDB* pDB, CSqliteStatement* insert, const Json::Value& group, bool withMainRow) {
  const char* mainDomain = TextOr(group, "maindomain", nullptr);
  const char* groupName = TextOr(group, "name", kUnknown);
  const Json::Value& domains = group.isObject() ? group["domains"] : Json::Value::nullSingleton();
  if (domains.isArray()) {
    for (const Json::Value& domain : domains) {
      static_cast<void>(pDB->InsertListRow(insert, mainDomain, TextOr(domain, "domain", nullptr), groupName,
                                           TextOr(domain, "name", kUnknown)));
    }
  }
  if (withMainRow) static_cast<void>(pDB->InsertListRow(insert, mainDomain, mainDomain, groupName, groupName));
}

}  // namespace

bool ParseWhiteListText(std::string_view text, Json::Value* lpRoot) {
  // The text ends at its first zero byte; a byte order mark is no JSON.
  text = text.substr(0, text.find('\0'));
  if (text.substr(0, 3) == "\xEF\xBB\xBF") text.remove_prefix(3);
  // The file is read as the classic reader with comment collection reads
  // it: comments are allowed, nothing else beyond strict JSON. The builder
  // allows trailing commas and skips a byte order mark by default; both are
  // turned off here (the one mark allowed was taken off above).
  Json::CharReaderBuilder builder;
  builder["allowComments"] = true;
  builder["collectComments"] = true;
  builder["allowTrailingCommas"] = false;
  builder["allowSingleQuotes"] = false;
  builder["allowSpecialFloats"] = false;
  builder["allowDroppedNullPlaceholders"] = false;
  builder["allowNumericKeys"] = false;
  builder["strictRoot"] = false;
  builder["failIfExtra"] = false;
  builder["rejectDupKeys"] = false;
  builder["skipBom"] = false;
  builder["stackLimit"] = kJsonStackLimit;
  std::unique_ptr<Json::CharReader> reader(builder.newCharReader());
  std::string errors;
  try {
    if (!reader->parse(text.data(), text.data() + text.size(), lpRoot, &errors)) return false;
  } catch (const std::exception& error) {
    DebugLog("white list: %s\n", error.what());
    return false;
  }
  return lpRoot->isObject();
}

int32_t LoadListTable(CCorvaneDB* pDB, const char16_t* table, const char16_t* createSql, const Json::Value& groups,
                      bool withMainRow) {
  if (!groups.isArray() || groups.empty()) return 0;
  static_cast<void>(pDB->DropTable(table));
  static_cast<void>(pDB->CreateTableIfMissing(table, createSql));
  // The rows go in whether or not the pair began; only a pair that began
  // is ended.
  const bool began = pDB->BeginTransaction();
  StatementPtr insert;
  if (SUCCEEDED(pDB->PrepareListInsert(table, &insert))) {
    for (const Json::Value& group : groups) InsertGroup(pDB, insert.get(), group, withMainRow);
  }
  insert.reset();
  if (began) static_cast<void>(pDB->EndTransaction());
  return 1;
}

int32_t LoadNamesTable(CCorvaneDB* pDB, const Json::Value& names) {
  if (!names.isArray() || names.empty()) return 0;
  static_cast<void>(pDB->DropTable(schema::kNames));
  static_cast<void>(pDB->CreateTableIfMissing(schema::kNames, schema::kCreateNames));
  const bool began = pDB->BeginTransaction();
  StatementPtr insert;
  if (SUCCEEDED(pDB->PrepareNamesInsert(&insert))) {
    for (const Json::Value& entry : names) {
      const char* name = TextOr(entry, "name", nullptr);
      const char* domain = TextOr(entry, "domain", nullptr);
      if (name != nullptr && domain != nullptr) static_cast<void>(pDB->InsertNameRow(insert.get(), name, domain));
    }
  }
  insert.reset();
  if (began) static_cast<void>(pDB->EndTransaction());
  return 1;
}

HRESULT LoadWhiteListFrom(CCorvaneDB* pDB, const std::u16string& path) {
  std::string text, why;
  Json::Value root;
  if (ReadWholeFile(path, &text, &why) && !ParseWhiteListText(text, &root)) why = "it is not valid JSON";
  if (!why.empty()) {
    NoteFileProblem(kWhiteListNoteKey, "WhiteList.js was refused: " + why + "; the lists loaded before stay in force");
  }
  if (text.empty() || !why.empty()) return E_FAIL;
  static_cast<void>(LoadListTable(pDB, schema::kWhiteList, schema::kCreateWhiteList, root["whitelist"], true));
  static_cast<void>(LoadListTable(pDB, schema::kBlackList, schema::kCreateBlackList, root["blacklist"], false));
  static_cast<void>(LoadListTable(pDB, schema::kSubList, schema::kCreateSubList, root["sublist"], false));
  static_cast<void>(LoadNamesTable(pDB, root["names"]));
  return S_OK;
}

HRESULT LoadWhiteListFile(CCorvaneDB* pDB) {
  std::u16string folder;
  if (!GetDataFolder(&folder)) return E_FAIL;
  return LoadWhiteListFrom(pDB, PathJoin(folder, kWhiteListFile));
}

}  // namespace corvane
