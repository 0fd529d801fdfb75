// demo_profile.h: the sample profile that "demo" writes with the fixture
// builder: a modest month of browsing, so that the demo runs in seconds.
// Tests write the same profile to check what the demo ranks.

#ifndef CORVANE_CLI_DEMO_PROFILE_H_
#define CORVANE_CLI_DEMO_PROFILE_H_

#include "harvest/fixture/profile_fixture.h"

namespace corvane::cli {

inline fixture::ProfileSpec DemoProfileSpec() {
  fixture::ProfileSpec spec;
  spec.seed = 7;
  spec.days = 30;
  spec.visitsPerDay = 300;
  spec.distinctUrls = 3000;
  spec.hosts = 300;
  spec.bookmarks = 40;
  spec.endTime = "now";  // no visit from the demo's future
  return spec;
}

}  // namespace corvane::cli

#endif  // CORVANE_CLI_DEMO_PROFILE_H_
