// The sample white list: valid for the component's reader (JSON with
// comments), of the shape the reference tables take, and naming every
// popular site of the profile fixture builder.

#include <gtest/gtest.h>
#include <json/reader.h>

#include <fstream>
#include <set>
#include <sstream>

#include "harvest/fixture/profile_fixture.h"

namespace corvane::testing {
namespace {

Json::Value LoadSample() {
  std::ifstream in(std::string(CORVANE_SOURCE_TREE) + "/data/WhiteList.js", std::ios::binary);
  std::stringstream text;
  text << in.rdbuf();
  Json::Value root;
  Json::Reader reader;
  EXPECT_TRUE(reader.parse(text.str(), root, true)) << reader.getFormattedErrorMessages();
  return root;
}

bool IsGroup(const Json::Value& group) {
  if (!group.isObject() || !group["maindomain"].isString() || !group["name"].isString()) return false;
  if (!group["domains"].isArray()) return false;
  for (const Json::Value& domain : group["domains"]) {
    if (!domain["domain"].isString() || !domain["name"].isString()) return false;
  }
  return true;
}

TEST(WhiteListFileTest, HasTheShapeOfTheReferenceLists) {
  Json::Value root = LoadSample();
  ASSERT_TRUE(root.isObject());
  ASSERT_TRUE(root["whitelist"].isArray());
  EXPECT_GE(root["whitelist"].size(), 100u);
  for (const char* list : {"whitelist", "blacklist", "sublist"}) {
    for (const Json::Value& group : root[list]) EXPECT_TRUE(IsGroup(group)) << list << ": " << group.toStyledString();
  }
  EXPECT_GE(root["sublist"].size(), 1u);
  ASSERT_TRUE(root["names"].isArray());
  EXPECT_GE(root["names"].size(), 1u);
  for (const Json::Value& name : root["names"]) EXPECT_TRUE(name["name"].isString() && name["domain"].isString());
}

TEST(WhiteListFileTest, NamesEveryPopularSiteOfTheFixtureBuilder) {
  Json::Value root = LoadSample();
  std::set<std::string> mains, hosts;
  for (const Json::Value& group : root["whitelist"]) {
    mains.insert(group["maindomain"].asString());
    for (const Json::Value& domain : group["domains"]) hosts.insert(domain["domain"].asString());
  }
  for (const fixture::PopularSite& site : fixture::PopularSites()) {
    EXPECT_TRUE(mains.count(site.mainDomain)) << site.mainDomain;
    for (const std::string& host : site.hosts) EXPECT_TRUE(hosts.count(host)) << host;
  }
}

}  // namespace
}  // namespace corvane::testing
