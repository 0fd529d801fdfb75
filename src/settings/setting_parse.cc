#include "settings/setting_parse.h"

#include <utility>

#include "common/debug_log.h"
#include "common/text_util.h"
#include "common/utf.h"
#include "platform/app_data.h"
#include "platform/file_notes.h"
#include "platform/folder_access.h"
#include "platform/ini_file.h"
#include "platform/paths.h"
#include "settings/setting_scan.h"

namespace corvane {
namespace {

// Buffer sizes of the values read back, terminator included; a longer value
// is cut to one character less.
constexpr size_t kValueBufferChars = 1020;
constexpr size_t kNameBufferChars = 128;
constexpr size_t kVersionBufferChars = 32;
// One-digit numbers and a comma between each two.
constexpr int32_t kMaxParamCount = static_cast<int32_t>((kMaxInnerListChars + 1) / 2);
static_assert(kMaxParamCount == 130);

constexpr char16_t kSettingsFilePrefix[] = u"Settings";
constexpr char16_t kIniExtension[] = u".ini";
constexpr char16_t kDeleteMarker[] = u"-Delete";
constexpr char16_t kDefaultName[] = u"Default";
constexpr char16_t kTrue[] = u"true";

// Blanks, tabs and line breaks carry no meaning anywhere in a settings text.
std::u16string RemoveBlanks(std::u16string_view text) {
  std::u16string result;
  result.reserve(text.size());
  for (char16_t c : text) {
    if (c != u'\t' && c != u' ' && c != u'\r' && c != u'\n') result.push_back(c);
  }
  return result;
}

// The data folder's "Settings" without a name; false without an
// application-data folder.
bool GetNamedPathBase(std::u16string* lpPath) {
  std::u16string appData;
  if (!GetAppDataFolder(&appData)) return false;
  *lpPath = PathJoin(PathJoin(appData, kDataFolderName), kSettingsFilePrefix);
  return true;
}

// The fields of a settings text, in the order the file keys are written.
struct SettingFields {
  std::u16string name;
  std::u16string score;
  std::u16string setting;
  std::u16string version;
  std::u16string isDefault;
};

// A set goes ahead only with a newer version, or with force over a file of
// version 0 (or none).
bool IsNewer(int32_t newVersion, int32_t storedVersion, int32_t bForce) {
  return newVersion > storedVersion || (bForce != 0 && storedVersion == 0);
}

// Each key is written at once, in the order of the file; keys written before
// a failed write stay.
HRESULT WriteFields(std::u16string_view path, const SettingFields& fields) {
  const std::pair<const char16_t*, const std::u16string*> keys[] = {
      {kKeyName, &fields.name},       {kKeyAnalyze, &fields.score},     {kKeySetting, &fields.setting},
      {kKeyVersion, &fields.version}, {kKeyDefault, &fields.isDefault},
  };
  for (const auto& [key, value] : keys) {
    if (!WriteProfileString(path, kSettingsSection, key, value)) return E_FAIL;
  }
  return S_OK;
}

HRESULT ValidateValues(const SettingFields& fields) {
  std::vector<ScoreRow> scratch;
  if (CSettingParse::ParseScoreRows(fields.score, &scratch) < 0) return E_INVALIDARG;
  int32_t first = 0, second = 0, third = 0;
  if (ScanSettingValue(fields.setting, &first, &second, &third) != 3) return E_INVALIDARG;
  return S_OK;
}

}  // namespace

CSettingParse::CSettingParse(const char16_t* name) {
  std::u16string folder;
  if (!GetDataFolder(&folder)) return;
  // Every account of the machine may run the host; the result is not needed.
  static_cast<void>(GrantFolderAccess(folder, kUsersAccount, kGenericAll));
  std::u16string path = PathJoin(folder, kSettingsFilePrefix);
  path.append(U16(name));
  m_strPath = PathAddExtension(path, kIniExtension);
}

void CSettingParse::DefaultSettingReset() {
  if (!m_strPath.empty()) static_cast<void>(DeleteFileAt(m_strPath));
  DebugLog("!!!!CSettingParse::DefaultSettingReset(%s)\r\n", ToUtf8(m_strPath).c_str());
}

HRESULT CSettingParse::LoadSettings(CScoreSettings* lpSettings) {
  std::u16string analyze, setting;
  if (FAILED(ReadBothValues(&analyze, &setting))) {
    DebugLog("!!!!CSettingParse::LoadSettings(%s) Failed\r\n", ToUtf8(m_strPath).c_str());
    if (PathFileExists(m_strPath)) {
      NoteFileProblem(kSettingsNoteKey, ToFsPath(m_strPath).filename().string() +
                                            " was refused: it holds no score rows; the built-in settings were "
                                            "written in its place");
    }
    if (FAILED(SaveSetting(kDefaultSettingText, 1))) return E_FAIL;
    if (FAILED(ReadBothValues(&analyze, &setting))) return E_FAIL;
  }
  if (ParseScoreRows(analyze, &lpSettings->m_vecRows) < 0) return E_FAIL;
  int converted = ScanSettingValue(setting, &lpSettings->m_nSettingFirst, &lpSettings->m_nSettingSecond,
                                   &lpSettings->m_nIEMinRecentVisits);
  static_cast<void>(GetSettingName(&lpSettings->m_strName));
  static_cast<void>(GetVersion(&lpSettings->m_strVersion, nullptr));
  return converted == 3 ? S_OK : E_FAIL;
}

HRESULT CSettingParse::SaveSetting(const char16_t* text, int32_t bForce) {
  if (m_strPath.empty()) return E_FAIL;
  if (text == nullptr) return E_INVALIDARG;
  std::u16string stripped = RemoveBlanks(text);
  SettingFields fields;
  HRESULT hr = SplitSettingText(stripped.c_str(), &fields.name, &fields.isDefault, &fields.score, &fields.setting,
                                &fields.version);
  if (FAILED(hr)) {
    NoteFileProblem(kSettingsNoteKey, "the settings text was refused: it is not Name@..|Default@..|Ver@..|Score@..|"
                                      "Setting@..; the settings in force stay");
    return hr;
  }
  std::u16string namedPath;
  if (!GetNamedPathBase(&namedPath)) return E_FAIL;

  // "<set>-Delete" removes the named set and does nothing else; the marker
  // at the very start is part of an ordinary name.
  size_t marker = fields.name.find(kDeleteMarker);
  if (marker != std::u16string::npos && marker > 0) {
    m_strName = fields.name.substr(0, marker);
    static_cast<void>(DeleteFileAt(PathAddExtension(namedPath + m_strName, kIniExtension)));
    return kSettingDeleted;
  }
  namedPath = PathAddExtension(namedPath + fields.name, kIniExtension);

  // A set marked as default goes into the file in force, and no stale copy
  // of it stays under its name.
  bool inForce = AsciiEqualsIgnoreCase(fields.isDefault, kTrue) || AsciiEqualsIgnoreCase(fields.name, kDefaultName);
  if (inForce) {
    static_cast<void>(DeleteFileAt(namedPath));
  } else {
    m_strPath = namedPath;
  }
  if (!IsNewer(DecimalToInt(fields.version), GetVersion(nullptr, nullptr), bForce)) return S_FALSE;
  hr = ValidateValues(fields);
  if (FAILED(hr)) return hr;

  DebugLog("!!!!!SaveSetting(%s) [%s][%s][%s]\r\n", ToUtf8(fields.name).c_str(), ToUtf8(m_strPath).c_str(),
           ToUtf8(namedPath).c_str(), ToUtf8(text).c_str());
  hr = WriteFields(m_strPath, fields);
  if (FAILED(hr)) return hr;
  return inForce ? kSettingInForce : S_OK;
}

HRESULT CSettingParse::ReadRequired(const char16_t* key, std::u16string* lpText) const {
  lpText->clear();
  if (m_strPath.empty()) return E_FAIL;
  *lpText = ReadProfileString(m_strPath, kSettingsSection, key, u"", kValueBufferChars);
  return lpText->empty() ? E_FAIL : S_OK;
}

HRESULT CSettingParse::ReadBothValues(std::u16string* lpAnalyze, std::u16string* lpSetting) const {
  HRESULT hrAnalyze = GetAnalyze(lpAnalyze);
  HRESULT hrSetting = GetSetting(lpSetting);
  return (FAILED(hrAnalyze) || FAILED(hrSetting)) ? E_FAIL : S_OK;
}

HRESULT CSettingParse::GetAnalyze(std::u16string* lpText) const { return ReadRequired(kKeyAnalyze, lpText); }

HRESULT CSettingParse::GetSetting(std::u16string* lpText) const { return ReadRequired(kKeySetting, lpText); }

int32_t CSettingParse::GetSettingName(std::u16string* lpName) const {
  if (!m_strName.empty()) {
    *lpName = m_strName;
    return 1;
  }
  *lpName = ReadProfileString(m_strPath, kSettingsSection, kKeyName, u"", kNameBufferChars);
  return lpName->empty() ? 0 : 1;
}

int32_t CSettingParse::GetVersion(std::u16string* lpText, const char16_t* path) const {
  std::u16string file = path != nullptr ? std::u16string(path) : m_strPath;
  std::u16string version = ReadProfileString(file, kSettingsSection, kKeyVersion, u"0", kVersionBufferChars);
  if (lpText != nullptr) *lpText = version;
  return DecimalToInt(version);
}

int32_t CSettingParse::ParseScoreRows(std::u16string_view text, std::vector<ScoreRow>* lpRows) {
  lpRows->clear();
  std::u16string stripped = RemoveBlanks(text);
  size_t pos = 0;
  for (size_t semicolon = stripped.find(u';'); semicolon != std::u16string::npos;
       semicolon = stripped.find(u';', pos)) {
    ScoreRow row;
    int32_t result = ParseScoreRow(std::u16string_view(stripped).substr(pos, semicolon - pos), &row);
    if (result != 0) return result;
    lpRows->push_back(std::move(row));
    pos = semicolon + 1;
  }
  ScoreRow row;
  int32_t result = ParseScoreRow(std::u16string_view(stripped).substr(pos), &row);
  if (result == 0) lpRows->push_back(std::move(row));
  return result;
}

int32_t CSettingParse::ParseScoreRow(std::u16string_view piece, ScoreRow* lpRow) {
  if (piece.empty()) return 1;
  std::u16string paramList, reservedList;
  if (ScanScoreRowFields(piece, lpRow, &paramList, &reservedList) != 9) return E_FAIL;
  // The list is at most kMaxInnerListChars long, so it holds no more numbers
  // than kMaxParamCount: a larger count can't match and is refused before
  // anything is allocated for it.
  if (lpRow->ParamCount <= 0 || lpRow->ParamCount > kMaxParamCount) return E_FAIL;
  // Every "," starts another number; the list must hold exactly ParamCount.
  lpRow->Params.assign(static_cast<size_t>(lpRow->ParamCount), 0);
  size_t count = 0;
  size_t start = 0;
  for (;;) {
    size_t comma = paramList.find(u',', start);
    if (count >= lpRow->Params.size()) return E_FAIL;
    lpRow->Params[count++] = DecimalToInt(std::u16string_view(paramList).substr(start, comma - start));
    if (comma == std::u16string::npos) break;
    start = comma + 1;
  }
  if (count != lpRow->Params.size()) return E_FAIL;
  if (ScanReservedList(reservedList, &lpRow->Reserved) != 8) return E_FAIL;
  return 0;
}

HRESULT CSettingParse::SplitSettingText(const char16_t* text, std::u16string* lpName, std::u16string* lpDefault,
                                        std::u16string* lpScore, std::u16string* lpSetting, std::u16string* lpVersion) {
  if (text == nullptr) return E_INVALIDARG;
  std::u16string_view view(text);
  constexpr size_t npos = std::u16string_view::npos;
  if (GetFieldValue(view, 0, kKeyName, lpName) == npos) return E_FAIL;
  if (GetFieldValue(view, 0, kKeyDefault, lpDefault) == npos) return E_FAIL;
  size_t afterVersion = GetFieldValue(view, 0, u"Ver", lpVersion);
  if (afterVersion == npos) return E_FAIL;
  size_t afterScore = GetFieldValue(view, afterVersion, u"Score", lpScore);
  if (afterScore == npos) return E_FAIL;
  // "Setting" may be the last field; whether it is found is checked when its
  // value is parsed.
  static_cast<void>(GetFieldValue(view, afterScore, kKeySetting, lpSetting));
  return S_OK;
}

size_t CSettingParse::GetFieldValue(std::u16string_view text, size_t start, std::u16string_view key,
                                    std::u16string* lpValue) {
  lpValue->clear();
  std::u16string marker(key);
  marker.push_back(u'@');
  size_t found = AsciiFindIgnoreCase(text, marker, start);
  if (found == std::u16string_view::npos) return std::u16string_view::npos;
  size_t valueStart = found + marker.size();
  size_t bar = text.find(u'|', valueStart);
  if (bar == std::u16string_view::npos) {
    lpValue->assign(text.substr(valueStart));
    return std::u16string_view::npos;
  }
  lpValue->assign(text.substr(valueStart, bar - valueStart));
  return bar + 1;
}

}  // namespace corvane
