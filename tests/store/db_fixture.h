// db_fixture.h: the base of the tests that work on a database object of
// their own: a fresh data folder, "now" at 2024-03-10 20:00 (a Sunday), the
// database file opened in it, and helpers that run SQL and read the results
// as text.

#ifndef CORVANE_TESTS_STORE_DB_FIXTURE_H_
#define CORVANE_TESTS_STORE_DB_FIXTURE_H_

#include <gtest/gtest.h>
#include <sqlite3.h>

#include <string>
#include <vector>

#include "common/utf.h"
#include "store/corvane_db.h"
#include "support/test_host.h"

namespace corvane::testing {

// The rows of a query, each as its columns joined by "|", NULL as "".
inline std::vector<std::string> QueryRows(sqlite3* db, const std::string& sql) {
  std::vector<std::string> rows;
  sqlite3_stmt* stmt = nullptr;
  if (sqlite3_prepare_v2(db, sql.c_str(), -1, &stmt, nullptr) != SQLITE_OK) {
    ADD_FAILURE() << sqlite3_errmsg(db) << " in " << sql;
  }
  while (stmt != nullptr && sqlite3_step(stmt) == SQLITE_ROW) {
    std::string row;
    for (int i = 0; i < sqlite3_column_count(stmt); ++i) {
      const unsigned char* text = sqlite3_column_text(stmt, i);
      row += (i > 0 ? "|" : "") + std::string(text != nullptr ? reinterpret_cast<const char*>(text) : "");
    }
    rows.push_back(row);
  }
  sqlite3_finalize(stmt);
  return rows;
}

class DBTest : public ::testing::Test {
 protected:
  DBTest() { EXPECT_EQ(m_db.Open(FromUtf8(m_dir.File("db.sqlite")), false), S_OK); }

  void Exec(const std::string& sql) { ASSERT_TRUE(m_db.ExecUtf8(sql)) << sql; }
  std::vector<std::string> Rows(const std::string& sql) { return QueryRows(m_db.Handle(), sql); }
  // The first row; "<none>" without one.
  std::string Scalar(const std::string& sql) {
    std::vector<std::string> rows = Rows(sql);
    return rows.empty() ? "<none>" : rows.front();
  }
  // A key of DBConfig.ini; "<absent>" when it is missing.
  std::string Config(std::u16string_view key) {
    std::u16string value;
    return m_db.GetConfig(key, &value, u"") == S_OK ? ToUtf8(value) : "<absent>";
  }

  test::TempDir m_dir;
  test::ScopedEnv m_appData{"CORVANE_APPDATA", m_dir.Path().c_str()};
  test::ScopedEnv m_now{"CORVANE_TEST_NOW", "2024-03-10 20:00:00"};
  CCorvaneDB m_db;
};

}  // namespace corvane::testing

#endif  // CORVANE_TESTS_STORE_DB_FIXTURE_H_
