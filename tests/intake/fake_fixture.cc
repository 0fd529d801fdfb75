#include "intake/fake_fixture.h"

#include <json/json.h>

#include <fstream>

#include "support/test_host.h"

namespace corvane::testing {
namespace {

Json::Value ItemsToJson(const std::map<uint32_t, std::vector<FakeItem>>& items) {
  Json::Value out(Json::objectValue);
  for (const auto& [browser, list] : items) {
    Json::Value& array = out[std::to_string(browser)] = Json::Value(Json::arrayValue);
    for (const FakeItem& item : list) {
      Json::Value value;
      value["name"] = item.name;
      value["url"] = item.url;
      value["path"] = item.path;
      value["time"] = item.time;
      value["count"] = item.count;
      value["null_texts"] = item.nullTexts;
      array.append(item.null ? Json::Value() : value);
    }
  }
  return out;
}

}  // namespace

bool FakeFixture::Write(const std::string& path) const {
  Json::Value root;
  root["installed"] = Json::Value(Json::arrayValue);
  for (uint32_t browser : installed) root["installed"].append(browser);
  root["default"] = defaultBrowser;
  root["history"] = ItemsToJson(history);
  root["favorites"] = ItemsToJson(favorites);
  root["log"] = log;
  root["fail_create"] = failCreate;
  std::ofstream out(path, std::ios::trunc);
  out << Json::writeString(Json::StreamWriterBuilder(), root);
  return static_cast<bool>(out);
}

std::string TestLibrary(const std::string& name) { return test::BuildLibDir() + "/lib" + name + ".so"; }

}  // namespace corvane::testing
