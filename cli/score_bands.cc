#include "cli/score_bands.h"

#include <algorithm>
#include <cstdio>

#include "cli/data_folder.h"
#include "cli/ini_read.h"

namespace corvane::cli {
namespace {

constexpr char kSettingsSection[] = "Settings";
constexpr char kAnalyzeKey[] = "Analyze";

bool ParseBand(const std::string& piece, ScoreBand* lpRow) {
  return std::sscanf(piece.c_str(), "{%u,%u,%d,%d,%d,%f", &lpRow->dayFrom, &lpRow->dayTo, &lpRow->dayScore,
                     &lpRow->visitScore, &lpRow->favoritePercent, &lpRow->recencyWeight) == 6;
}

}  // namespace

const ScoreBand* ScoreModel::RowFor(uint32_t day) const {
  for (const ScoreBand& row : rows) {
    if (row.dayFrom <= day && day < row.dayTo) return &row;
  }
  return nullptr;
}

uint32_t ScoreModel::MaxDays() const {
  uint32_t most = 0;
  for (const ScoreBand& row : rows) most = std::max(most, row.dayTo);
  return most;
}

uint32_t ScoreModel::Score(uint32_t days, uint32_t visits, uint32_t newestDay, bool favorite) const {
  const ScoreBand* first = RowFor(0);
  const ScoreBand* band = RowFor(newestDay);
  if (first == nullptr || band == nullptr) return 0;
  int32_t base = first->dayScore * static_cast<int32_t>(days) + first->visitScore * static_cast<int32_t>(visits);
  float factor = favorite ? static_cast<float>(first->favoritePercent / 100.0) : 1.0f;
  float score = static_cast<float>(base) * band->recencyWeight * factor;
  return static_cast<uint32_t>(static_cast<double>(score) + 0.5);
}

bool ParseScoreBands(std::string_view text, std::vector<ScoreBand>* lpRows) {
  lpRows->clear();
  for (size_t start = 0; start <= text.size();) {
    size_t end = std::min(text.find(';', start), text.size());
    std::string piece;
    for (char c : text.substr(start, end - start)) {
      if (c != ' ' && c != '\t') piece.push_back(c);
    }
    ScoreBand row;
    if (!piece.empty() && !ParseBand(piece, &row)) {
      lpRows->clear();
      return false;
    }
    if (!piece.empty()) lpRows->push_back(row);
    start = end + 1;
  }
  return !lpRows->empty();
}

ScoreModel LoadScoreModel(const std::string& dataFolder) {
  ScoreModel model;
  std::string analyze;
  if (ReadIniValue(dataFolder + "/" + kSettingsFile, kSettingsSection, kAnalyzeKey, &analyze) &&
      ParseScoreBands(analyze, &model.rows)) {
    model.source = kSettingsFile;
  }
  return model;
}

}  // namespace corvane::cli
