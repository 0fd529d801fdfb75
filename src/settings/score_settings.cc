#include "settings/score_settings.h"

#include "corvane/CorvaneDataProvider.h"
#include "platform/file_notes.h"
#include "platform/message.h"
#include "settings/setting_parse.h"
#include "store/corvane_db.h"

namespace corvane {
namespace {

constexpr char16_t kLoadFailedText[] = u"加载配置参数出错！！！";
constexpr char16_t kLoadFailedCaption[] = u"上网-错误提示";

}  // namespace

CScoreSettings::CScoreSettings() { Load(nullptr); }

void CScoreSettings::Load(const char16_t* name) {
  CSettingParse parse(name);
  if (SUCCEEDED(parse.LoadSettings(this))) return;
  // The file is damaged beyond use: start again from the built-in defaults.
  NoteFileProblem(kSettingsNoteKey, "Settings.ini was refused: its score rows do not parse; the built-in settings "
                                    "were written in its place");
  parse.DefaultSettingReset();
  Clear();
  m_nSettingFirst = 0;
  m_nSettingSecond = 0;
  m_nIEMinRecentVisits = 0;
  if (SUCCEEDED(parse.LoadSettings(this))) return;
  ShowMessage(kLoadFailedText, kLoadFailedCaption);
}

void CScoreSettings::Reload() {
  Clear();
  Load(nullptr);
}

void CScoreSettings::Clear() { m_vecRows.clear(); }

uint32_t CScoreSettings::GetMaxDays() const {
  uint32_t maxDays = 0;
  for (const ScoreRow& row : m_vecRows) {
    if (row.DayTo > maxDays) maxDays = row.DayTo;
  }
  return maxDays;
}

const ScoreRow* CScoreSettings::FindRow(uint32_t day) const {
  for (const ScoreRow& row : m_vecRows) {
    if (row.DayFrom <= day && day < row.DayTo) return &row;
  }
  return nullptr;
}

int32_t CScoreSettings::GetDayScore(uint32_t day) const {
  const ScoreRow* row = FindRow(day);
  return row != nullptr ? row->DayScore : 0;
}

int32_t CScoreSettings::GetVisitScore(uint32_t day) const {
  const ScoreRow* row = FindRow(day);
  return row != nullptr ? row->VisitScore : 0;
}

int32_t CScoreSettings::GetFavoritePercent(uint32_t day) const {
  const ScoreRow* row = FindRow(day);
  return row != nullptr ? row->FavoritePercent : 0;
}

float CScoreSettings::GetRecencyWeight(uint32_t day) const {
  const ScoreRow* row = FindRow(day);
  return row != nullptr ? row->RecencyWeight : 0.0f;
}

int32_t CScoreSettings::GetParam(uint32_t day, int32_t index) const {
  if (m_bIEMode && index == kParamMinRecentVisits) return m_nIEMinRecentVisits;
  const ScoreRow* row = FindRow(day);
  if (row == nullptr || row->Params.empty()) return 0;
  // An index the row does not have falls back to its first entry.
  if (index < 0 || static_cast<size_t>(index) >= row->Params.size()) return row->Params[0];
  return row->Params[static_cast<size_t>(index)];
}

float CScoreSettings::GetHideFactor() const { return kHideFactor; }

}  // namespace corvane
