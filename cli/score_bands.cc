#include "cli/score_bands.h"

#include <algorithm>

#include "common/utf.h"
#include "platform/ini_file.h"
#include "settings/setting_parse.h"

namespace corvane::cli {
namespace {

// The component reads a settings value into a buffer of this many
// characters.
constexpr size_t kValueBufferChars = 1020;

bool ParseRows(const std::u16string& text, std::vector<ScoreRow>* lpRows) {
  int32_t result = CSettingParse::ParseScoreRows(text, lpRows);
  return result >= 0 && !lpRows->empty();
}

}  // namespace

const ScoreRow* ScoreModel::RowFor(uint32_t day) const {
  for (const ScoreRow& row : rows) {
    if (row.DayFrom <= day && day < row.DayTo) return &row;
  }
  return nullptr;
}

uint32_t ScoreModel::MaxDays() const {
  uint32_t most = 0;
  for (const ScoreRow& row : rows) most = std::max(most, row.DayTo);
  return most;
}

uint32_t ScoreModel::Score(uint32_t days, uint32_t visits, uint32_t newestDay, bool favorite) const {
  const ScoreRow* first = RowFor(0);
  const ScoreRow* band = RowFor(newestDay);
  if (first == nullptr || band == nullptr) return 0;
  int32_t base = first->DayScore * static_cast<int32_t>(days) + first->VisitScore * static_cast<int32_t>(visits);
  float factor = favorite ? static_cast<float>(first->FavoritePercent / 100.0) : 1.0f;
  float score = static_cast<float>(base) * band->RecencyWeight * factor;
  return static_cast<uint32_t>(static_cast<double>(score) + 0.5);
}

ScoreModel LoadScoreModel(const std::string& dataFolder) {
  ScoreModel model;
  std::u16string analyze =
      ReadProfileString(FromUtf8(dataFolder + "/Settings.ini"), kSettingsSection, kKeyAnalyze, u"", kValueBufferChars);
  if (!analyze.empty() && ParseRows(analyze, &model.rows)) {
    model.source = "Settings.ini";
    return model;
  }
  std::u16string name, isDefault, score, setting, version;
  static_cast<void>(CSettingParse::SplitSettingText(kDefaultSettingText, &name, &isDefault, &score, &setting, &version));
  model.rows.clear();
  static_cast<void>(ParseRows(score, &model.rows));
  model.source = "built-in default";
  return model;
}

}  // namespace corvane::cli
