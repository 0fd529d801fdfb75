// score_bands.h: the scoring numbers as the component uses them, for the
// explain command.
//
// The rows come from the "Analyze" value of Settings.ini in the data folder,
// parsed by the component's own settings parser, and from the built-in
// default text when that file or value is missing or does not parse, as the
// component does. Nothing is written.

#ifndef CORVANE_CLI_SCORE_BANDS_H_
#define CORVANE_CLI_SCORE_BANDS_H_

#include <cstdint>
#include <string>
#include <vector>

#include "settings/score_settings.h"

namespace corvane::cli {

struct ScoreModel {
  std::vector<ScoreRow> rows;
  std::string source;  // "Settings.ini" or "built-in default"

  // The first row with DayFrom <= day < DayTo, or null.
  const ScoreRow* RowFor(uint32_t day) const;
  // The largest DayTo: the number of days with visits that are analysed.
  uint32_t MaxDays() const;
  // (DayScore x days + VisitScore x visits) x weight of the newest day x
  // favourite factor, rounded as the component rounds it.
  uint32_t Score(uint32_t days, uint32_t visits, uint32_t newestDay, bool favorite) const;
};

ScoreModel LoadScoreModel(const std::string& dataFolder);

}  // namespace corvane::cli

#endif  // CORVANE_CLI_SCORE_BANDS_H_
