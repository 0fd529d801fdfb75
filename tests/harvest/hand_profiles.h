// hand_profiles.h: browser files written row by row, for the cases a
// fixture profile does not hold (odd transitions, damaged values).

#ifndef CORVANE_TESTS_HARVEST_HAND_PROFILES_H_
#define CORVANE_TESTS_HARVEST_HAND_PROFILES_H_

#include <sqlite3.h>

#include <string>

namespace corvane::testing {

// Runs SQL; a failure is a test failure.
void ExecSql(sqlite3* db, const std::string& sql);

// A Chromium profile under home/.config/chromium whose Default/History has
// the browser's tables and exactly the given rows. Returns History's path.
std::string HandChromiumHistory(const std::string& home, const std::string& rows);

// A Firefox profile under home/.mozilla/firefox, the only one profiles.ini
// names, whose places.sqlite (in WAL mode) has the browser's tables, the
// bookmark roots and the given rows. Returns places.sqlite's path.
std::string HandFirefoxPlaces(const std::string& home, const std::string& rows);

}  // namespace corvane::testing

#endif  // CORVANE_TESTS_HARVEST_HAND_PROFILES_H_
