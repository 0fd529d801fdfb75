// score_settings.h: the scoring settings in memory, as the analysis reads
// them.
//
// CScoreSettings holds the score rows of the settings file in force
// (Settings.ini in the data folder) and the three numbers of its "Setting"
// value. The provider object owns one by value for its whole life; its
// constructor already loads the file, so the settings are there before the
// first update. A row covers the day indexes DayFrom <= day < DayTo; lookups
// take the first row in stored order that covers the day, and a day that no
// row covers reads as 0. Nothing here takes a lock: it lives on the thread
// that calls the provider.

#ifndef CORVANE_SETTINGS_SCORE_SETTINGS_H_
#define CORVANE_SETTINGS_SCORE_SETTINGS_H_

#include <array>
#include <cstdint>
#include <string>
#include <vector>

namespace corvane {

// Indexes into ScoreRow::Params that the analysis reads.
inline constexpr int32_t kParamTopDomainLimit = 0;
inline constexpr int32_t kParamMinVisitCount = 1;
inline constexpr int32_t kParamRecentDays = 2;
inline constexpr int32_t kParamMinRecentVisits = 4;
inline constexpr int32_t kParamTopURLLimit = 6;

// One row of the "Score" list: the scoring numbers for a range of day indexes.
struct ScoreRow {
  uint32_t DayFrom = 0;               // first day index of the row, inclusive
  uint32_t DayTo = 0;                 // end of the range, exclusive
  int32_t DayScore = 0;               // points for each distinct day of a URL
  int32_t VisitScore = 0;             // points for each visit
  int32_t FavoritePercent = 0;        // boost of a favourite, in percent
  float RecencyWeight = 0.0f;         // multiplier of the row's day range
  int32_t ParamCount = 0;             // entries of Params, above 0 once parsed
  std::vector<int32_t> Params;        // exactly ParamCount entries once parsed
  std::array<int32_t, 8> Reserved{};  // must be present in the text; read by nothing
};

class CScoreSettings {
 public:
  // Loads the settings in force.
  CScoreSettings();

  // Loads the set stored under the name (null or empty: the file in force).
  // A file that does not load is deleted and replaced by the built-in
  // defaults; when even those cannot be written and read back, the one error
  // message is shown and the model stays empty.
  void Load(const char16_t* name);

  // Clear, then Load of the file in force.
  void Reload();

  // Frees all rows; the other values stay.
  void Clear();

  // The largest DayTo of all rows; 0 without rows. The analysis walks this
  // many days with visits.
  uint32_t GetMaxDays() const;

  // The field of the row that covers the day; 0 when none does.
  int32_t GetDayScore(uint32_t day) const;
  int32_t GetVisitScore(uint32_t day) const;
  int32_t GetFavoritePercent(uint32_t day) const;
  float GetRecencyWeight(uint32_t day) const;

  // Params[index] of the row of the day. In IE mode, index 4 gives
  // IEMinRecentVisits whether or not a row covers the day. An index outside
  // the row's list gives Params[0]; no row gives 0.
  int32_t GetParam(uint32_t day, int32_t index) const;

  // The factor by which a hide lowers a score. It is a constant of the
  // system, not a setting, and lies in no file.
  float GetHideFactor() const;

  const std::u16string& GetName() const { return m_strName; }
  const std::u16string& GetVersion() const { return m_strVersion; }
  int32_t GetSettingFirst() const { return m_nSettingFirst; }
  int32_t GetSettingSecond() const { return m_nSettingSecond; }
  int32_t GetIEMinRecentVisits() const { return m_nIEMinRecentVisits; }

  // Set at each update: true when the browser being analysed is IE.
  void SetIEMode(bool bIEMode) { m_bIEMode = bIEMode; }
  bool IsIEMode() const { return m_bIEMode; }

 private:
  // CSettingParse::LoadSettings fills the model in place.
  friend class CSettingParse;

  const ScoreRow* FindRow(uint32_t day) const;

  std::vector<ScoreRow> m_vecRows;
  std::u16string m_strName;
  std::u16string m_strVersion;
  int32_t m_nSettingFirst = 0;       // stored, read by nothing
  int32_t m_nSettingSecond = 0;      // stored, read by nothing
  int32_t m_nIEMinRecentVisits = 0;  // stands in for Params[4] in IE mode
  bool m_bIEMode = false;
};

}  // namespace corvane

#endif  // CORVANE_SETTINGS_SCORE_SETTINGS_H_
