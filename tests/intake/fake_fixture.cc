#include "intake/fake_fixture.h"

#include <json/json.h>

#include <fstream>

#include "support/test_host.h"

namespace corvane::testing {
namespace {

Json::Value ItemsToJson(const std::map<uint32_t, std::vector<FakeItem>>& items) {
  Json::Value out(Json::objectValue);
  for (const auto& [browser, list] : items) {
    Json::Value array(Json::arrayValue);
    for (const FakeItem& item : list) {
      if (item.null) {
        array.append(Json::Value());
        continue;
      }
      Json::Value value;
      value["name"] = item.name;
      value["url"] = item.url;
      value["path"] = item.path;
      value["time"] = item.time;
      value["count"] = item.count;
      if (item.browser != 0) value["browser"] = item.browser;
      if (item.nullTexts) value["null_texts"] = true;
      array.append(value);
    }
    out[std::to_string(browser)] = array;
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
  if (!log.empty()) root["log"] = log;
  root["fail_create"] = failCreate;
  std::ofstream out(path, std::ios::trunc);
  out << Json::writeString(Json::StreamWriterBuilder(), root);
  return static_cast<bool>(out);
}

std::vector<std::string> ReadLines(const std::string& path) {
  std::vector<std::string> lines;
  std::ifstream in(path);
  for (std::string line; std::getline(in, line);) lines.push_back(line);
  return lines;
}

std::string FakeHarvestLibrary() { return test::BuildLibDir() + "/libFakeVisitHarvest.so"; }

std::string NoFactoryHarvestLibrary() { return test::BuildLibDir() + "/libNoFactoryHarvest.so"; }

std::string NoDefaultBrowserHarvestLibrary() { return test::BuildLibDir() + "/libNoDefaultBrowserHarvest.so"; }

std::string NoInstalledHarvestLibrary() { return test::BuildLibDir() + "/libNoInstalledHarvest.so"; }

}  // namespace corvane::testing
