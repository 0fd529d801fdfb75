// A settings text, as a host passes it or Settings.ini holds its fields:
// split into fields, then the score rows and the setting value parsed.

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "common/utf.h"
#include "settings/setting_parse.h"
#include "settings/setting_scan.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  using corvane::CSettingParse;
  const std::u16string text = corvane::FromUtf8(std::string_view(reinterpret_cast<const char*>(data), size));
  std::u16string name, isDefault, score, setting, version;
  static_cast<void>(CSettingParse::SplitSettingText(text.c_str(), &name, &isDefault, &score, &setting, &version));
  std::vector<corvane::ScoreRow> rows;
  static_cast<void>(CSettingParse::ParseScoreRows(score.empty() ? text : score, &rows));
  int32_t first = 0, second = 0, third = 0;
  static_cast<void>(corvane::ScanSettingValue(setting.empty() ? text : setting, &first, &second, &third));
  return 0;
}
