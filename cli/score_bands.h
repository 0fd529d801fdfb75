// score_bands.h: the scoring numbers in force, for the explain command.
//
// The rows come from the "Analyze" value of Settings.ini in the data
// folder, the file in which the component keeps the settings it scores
// with (it writes its defaults there when the file is missing). A row is
// "{DayFrom,DayTo,DayScore,VisitScore,FavoritePercent,RecencyWeight,...}"
// and rows are separated by ";"; the host reads the first six numbers of
// each. Nothing is written.

#ifndef CORVANE_CLI_SCORE_BANDS_H_
#define CORVANE_CLI_SCORE_BANDS_H_

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace corvane::cli {

// The numbers of one row for the day indexes DayFrom <= day < DayTo.
struct ScoreBand {
  uint32_t dayFrom = 0;
  uint32_t dayTo = 0;
  int32_t dayScore = 0;         // points for each distinct day of a URL
  int32_t visitScore = 0;       // points for each visit
  int32_t favoritePercent = 0;  // a favourite's score in percent
  float recencyWeight = 0.0f;   // multiplier of the row's day range
};

struct ScoreModel {
  std::vector<ScoreBand> rows;
  std::string source;  // "Settings.ini", or empty when it gave no rows

  // The first row with DayFrom <= day < DayTo, or null.
  const ScoreBand* RowFor(uint32_t day) const;
  // The largest DayTo: the number of days with visits that are analysed.
  uint32_t MaxDays() const;
  // (DayScore x days + VisitScore x visits) x weight of the newest day x
  // favourite factor, rounded as the component rounds it.
  uint32_t Score(uint32_t days, uint32_t visits, uint32_t newestDay, bool favorite) const;
};

// The rows of an "Analyze" value; false, with no rows, when any row does
// not read.
[[nodiscard]] bool ParseScoreBands(std::string_view text, std::vector<ScoreBand>* lpRows);
ScoreModel LoadScoreModel(const std::string& dataFolder);

}  // namespace corvane::cli

#endif  // CORVANE_CLI_SCORE_BANDS_H_
