// A scripted extraction library for the end-to-end suites.
//
// It serves what a JSON fixture file says ($CORVANE_FAKE_HARVEST_FIXTURE,
// read afresh on every call): which browsers are installed, the default
// browser, and per browser the history and favourite items, null items and
// impossible dates included. Each Extract call can be logged as a line
// "Extract <browser> <kind> <count>", so that a test sees which browsers
// were asked and in which order. Without a fixture, nothing is installed
// and every browser delivers nothing. Built a second and a third time with
// FAKE_HARVEST_WITHOUT_DEFAULT_BROWSER or FAKE_HARVEST_WITHOUT_INSTALLED, it
// lacks the export of that name, as a library may.

#include <json/json.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>

#include "intake/scripted_extractor.h"

namespace {

using corvane::testing::ScriptedExtractor;
using corvane::testing::ScriptedItem;

Json::Value ReadFixture() {
  const char* path = std::getenv("CORVANE_FAKE_HARVEST_FIXTURE");
  std::ifstream in(path != nullptr ? path : "");
  Json::Value root;
  std::string errors;
  if (!in || !Json::parseFromStream(Json::CharReaderBuilder(), in, &root, &errors) || !root.isObject()) {
    return Json::Value(Json::objectValue);
  }
  return root;
}

// Fixture texts are ASCII.
std::u16string Text(const Json::Value& item, const char* member) {
  std::string text = item[member].asString();
  return std::u16string(text.begin(), text.end());
}

// "YYYY-MM-DD HH:MM:SS.mmm", the fields taken as they stand; weekday 0.
SYSTEMTIME ParseTime(const std::string& text) {
  unsigned f[7] = {};
  std::sscanf(text.c_str(), "%u-%u-%u %u:%u:%u.%u", &f[0], &f[1], &f[2], &f[3], &f[4], &f[5], &f[6]);
  auto field = [&f](int i) { return static_cast<uint16_t>(f[i]); };
  return SYSTEMTIME{field(0), field(1), 0, field(2), field(3), field(4), field(5), field(6)};
}

class FakeExtractor final : public ScriptedExtractor {
 public:
  void Destroy() override { delete this; }
  bool Extract(uint32_t uBrowser, uint32_t uKind) override {
    FreeItems();
    ScriptedExtractor::Extract(uBrowser, uKind);
    const Json::Value fixture = ReadFixture();
    for (const Json::Value& item : fixture[uKind == EXTRACT_HISTORY ? "history" : "favorites"][std::to_string(uBrowser)]) {
      if (item.isNull()) {
        items.push_back(nullptr);
        continue;
      }
      items.push_back(std::make_unique<ScriptedItem>(Text(item, "name"), Text(item, "url"),
                                                     ParseTime(item["time"].asString()), item.get("count", 1).asInt(),
                                                     uBrowser, Text(item, "path")));
      items.back()->nullTexts = item["null_texts"].asBool();
    }
    std::string log = fixture["log"].asString();
    if (!log.empty()) std::ofstream(log, std::ios::app) << "Extract " << uBrowser << " " << uKind << " " << items.size() << "\n";
    return true;
  }
};

}  // namespace

extern "C" {

__attribute__((visibility("default"))) bool CreateVisitHarvestObj(IExtractor** lppExtractor) {
  if (lppExtractor == nullptr || ReadFixture()["fail_create"].asBool()) return false;
  *lppExtractor = new FakeExtractor();
  return true;
}

#ifndef FAKE_HARVEST_WITHOUT_DEFAULT_BROWSER
__attribute__((visibility("default"))) uint32_t GetDefautBrowser() { return ReadFixture()["default"].asUInt(); }
#endif

#ifndef FAKE_HARVEST_WITHOUT_INSTALLED
__attribute__((visibility("default"))) bool IsBrowserInstalled(uint32_t uBrowser) {
  const Json::Value fixture = ReadFixture();
  for (const Json::Value& value : fixture["installed"]) {
    if (value.asUInt() == uBrowser) return true;
  }
  return false;
}
#endif

}  // extern "C"
