// setting_parse.h: the settings text, its files, and loading them into the
// model.
//
// A settings text is one line of "key@value" fields separated by "|":
// "Name", "Default", "Ver", "Score" (the score rows, each ended or separated
// by ";") and "Setting" ("{first,{second,IEMinRecentVisits}}"). Blanks, tabs
// and line breaks anywhere in it are dropped. Sets are kept in profile files
// in the data folder: Settings.ini is the one in force and the only one ever
// loaded; Settings<name>.ini holds a set stored under its name.
//
// A CSettingParse is a short-lived local object of one load or save; it
// holds the file it reads and writes (m_strPath) and the name a deletion
// text has given (m_strName).

#ifndef CORVANE_SETTINGS_SETTING_PARSE_H_
#define CORVANE_SETTINGS_SETTING_PARSE_H_

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "corvane/CorvaneDataProvider.h"
#include "settings/score_settings.h"

namespace corvane {

// The set written when no usable Settings.ini exists. Its last row ends in
// ";", so its row list parses with result 1.
inline constexpr char16_t kDefaultSettingText[] =
    u"Name@Default|Default@true|Ver@0|Score@"
    u"{0,3,50,1,130,2.0,7,{10,2,7,7,1,15,15},{0,0,0,0,0,0,0,0}};"
    u"{3,7,50,1,130,1.5,7,{10,2,7,7,1,15,15},{0,0,0,0,0,0,0,0}};"
    u"{7,15,50,1,130,1.2,7,{10,2,7,7,1,15,15},{0,0,0,0,0,0,0,0}};"
    u"{15,21,50,1,130,1.0,7,{10,2,7,7,1,15,15},{0,0,0,0,0,0,0,0}};"
    u"|Setting@{7,{7,3}}";

// Results of SaveSetting besides S_OK (saved under its own name, not in
// force) and S_FALSE (version not newer, nothing written).
inline constexpr HRESULT kSettingDeleted = 2;
inline constexpr HRESULT kSettingInForce = 3;

// Section and keys of a settings file.
inline constexpr char16_t kSettingsSection[] = u"Settings";
inline constexpr char16_t kKeyName[] = u"Name";
inline constexpr char16_t kKeyAnalyze[] = u"Analyze";
inline constexpr char16_t kKeySetting[] = u"Setting";
inline constexpr char16_t kKeyVersion[] = u"Version";
inline constexpr char16_t kKeyDefault[] = u"Default";

class CSettingParse {
 public:
  // The file is the data folder's "Settings" + name + ".ini"; a null or empty
  // name gives Settings.ini. Creates the data folder and opens it to all
  // users. Without an application-data folder m_strPath stays empty and
  // every operation that needs it fails.
  explicit CSettingParse(const char16_t* name);

  // Deletes the file m_strPath.
  void DefaultSettingReset();

  // Reads the file into the model. A file without "Analyze" or "Setting"
  // first gets the built-in defaults written with force. S_OK, or E_FAIL
  // when the defaults could not be written, a row does not parse or the
  // "Setting" value holds fewer than three numbers.
  [[nodiscard]] HRESULT LoadSettings(CScoreSettings* lpSettings);

  // Stores a settings text; bForce lets it replace a file whose version is 0
  // with any version. S_OK: saved under its own name. S_FALSE: the version is
  // not newer than the stored one, nothing written. kSettingDeleted: a name
  // "<set>-Delete" removed Settings<set>.ini. kSettingInForce: a set with
  // "Default@true" or the name "Default" went into m_strPath. E_FAIL: no
  // path, a required field missing, or a write failed (keys written before
  // it stay). E_INVALIDARG: null text, or "Score" or "Setting" does not
  // parse.
  [[nodiscard]] HRESULT SaveSetting(const char16_t* text, int32_t bForce);

  // The value of the key in m_strPath: S_OK, or E_FAIL when there is no
  // path or the value is missing or empty.
  [[nodiscard]] HRESULT GetAnalyze(std::u16string* lpText) const;
  [[nodiscard]] HRESULT GetSetting(std::u16string* lpText) const;

  // m_strName when a deletion set it, else "Name" of m_strPath. 1 when a
  // name was found, else 0.
  int32_t GetSettingName(std::u16string* lpName) const;

  // "Version" of the file (null: m_strPath) as an integer, 0 when missing;
  // the text goes to lpText unless it is null.
  int32_t GetVersion(std::u16string* lpText, const char16_t* path) const;

  // Parses a "Score" value into the rows, emptied first. 0 when the text
  // ended with a row; 1 when it ended with an empty piece (a trailing ";"),
  // rows behind an empty piece being dropped; negative when a row fails.
  static int32_t ParseScoreRows(std::u16string_view text, std::vector<ScoreRow>* lpRows);

  // One row: 0, 1 for an empty piece, E_FAIL when it does not parse or its
  // list holds other than ParamCount numbers.
  static int32_t ParseScoreRow(std::u16string_view piece, ScoreRow* lpRow);

  // Splits a settings text (blanks already removed) into its fields. "Name",
  // "Default" and "Ver" must each be followed by "|", and "Score" must come
  // after "Ver" and end in "|"; "Setting" after "Score" may be missing.
  // S_OK, E_FAIL, or E_INVALIDARG for null text.
  static HRESULT SplitSettingText(const char16_t* text, std::u16string* lpName, std::u16string* lpDefault,
                                  std::u16string* lpScore, std::u16string* lpSetting, std::u16string* lpVersion);

  // Looks for key + "@" from start, without regard to case and also inside a
  // longer word. The value runs up to the next "|"; the result is the place
  // behind that "|". A value that runs to the end is stored but gives npos,
  // as does a key not found (which leaves *lpValue empty).
  static size_t GetFieldValue(std::u16string_view text, size_t start, std::u16string_view key, std::u16string* lpValue);

  const std::u16string& GetPath() const { return m_strPath; }

 private:
  HRESULT ReadRequired(const char16_t* key, std::u16string* lpText) const;
  HRESULT ReadBothValues(std::u16string* lpAnalyze, std::u16string* lpSetting) const;

  std::u16string m_strPath;
  std::u16string m_strName;
};

}  // namespace corvane

#endif  // CORVANE_SETTINGS_SETTING_PARSE_H_
