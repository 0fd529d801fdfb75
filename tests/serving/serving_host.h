// serving_host.h: a host that has initialised the component in a temporary
// data folder, plus a second SQLite connection to the same database file,
// through which a test fills the tables that the managers read and dumps
// them to see that nothing else changed; the row builders for those tables;
// and the records of a result read back as text, as a host reads them.

#ifndef CORVANE_TESTS_SERVING_SERVING_HOST_H_
#define CORVANE_TESTS_SERVING_SERVING_HOST_H_

#include <gtest/gtest.h>
#include <sqlite3.h>

#include <initializer_list>
#include <memory>
#include <string>
#include <type_traits>

#include "support/test_host.h"

namespace corvane::test {

// A test's own connection to the component's database.
class SeedDb {
 public:
  bool Open(const std::string& path);
  // Runs statements; fails the test on an SQL error.
  void Exec(const std::string& sql);
  // The first column of the first row as text; empty when there is none.
  std::string Scalar(const std::string& sql);
  // Every row of every table, in rowid order, as text.
  std::string Dump();

 private:
  std::unique_ptr<sqlite3, int (*)(sqlite3*)> m_db{nullptr, sqlite3_close};
};

// Initialises a provider on a DBConfig.ini stamped today (so Initialize
// creates the schema without running the update), creates the tables that
// only an update creates, and takes the four managers.
class ServingTest : public ::testing::Test {
 protected:
  ServingTest();
  // Releases the provider and checks that the library could go: by then a
  // test has given back everything it took, and so has the fixture built
  // on this one, whose members are gone before this runs.
  ~ServingTest() override;
  void SetUp() override;
  // Lines for DBConfig.ini beside today's "LastUpdate".
  virtual std::string ConfigLines() const { return ""; }
  void WriteConfig(const std::string& extraLines);

  template <class I>
  ComPtr<I> Manager(uint32_t id, const IID& iid) {
    IUnknown* unknown = nullptr;
    EXPECT_EQ(m_provider->GetURLsManager(id, &unknown), S_OK);
    ComPtr<IUnknown> holder(unknown);
    return Query<I>(unknown, iid);
  }
  // GetRecomURLs of the recommendation manager, expecting S_OK.
  ComPtr<IUnknown> Recom(uint32_t uCount, uint32_t uType);
  std::string DataFile(const std::string& name) const { return m_dir.Path() + "/CorvaneApp/" + name; }

  TempDir m_dir;
  ScopedEnv m_appData;
  ScopedEnv m_now;
  ComPtr<ICorvaneDataProviderObject> m_provider;
  ComPtr<ICommonUseURLsManager> m_common;
  // The same object as m_common; the managers of IDs 2 to 4.
  ComPtr<IURLsManager> m_commonUrls, m_focus, m_history, m_favorites;
  SeedDb m_db;
};

// Rows as the analysis would leave them. Today is 2024-03-05, a Tuesday,
// day number 154561; kSomeTime is a time number of that day (any value
// works; it is only formatted).
inline constexpr uint64_t kSomeTime = 133540000000000000ULL;
struct Null {};
// SQL literals: text quoted, numbers as they are, Null() as null.
std::string Q(const std::string& text);
inline std::string Literal(const std::string& text) { return Q(text); }
inline std::string Literal(const char* text) { return Q(text); }
inline std::string Literal(Null) { return "null"; }
template <class T>
  requires std::is_arithmetic_v<T>
std::string Literal(T number) {
  return std::to_string(number);
}
// "insert into <table> values(...);" of the literals of the values.
template <class... V>
std::string Insert(const char* table, const V&... values) {
  std::string sql = std::string("insert into ") + table + " values(";
  ((sql += Literal(values) + ","), ...);
  sql.back() = ')';
  return sql + ";";
}

// Reading the records of a result, as a host does.
uint32_t Count(IUnknown* array);
ComPtr<IUnknown> Item(IUnknown* array, uint32_t index);
// "ID|Name|URL" of a record of either kind, then " Key=value" for each key
// asked: the number, else the text, else "[records]" of an array (shown
// with the same keys), else "-" when the record has no such key.
std::string Show(IUnknown* record, std::initializer_list<const char*> keys = {});
// Show of every record of an array, joined by "; ".
std::string ShowAll(IUnknown* array, std::initializer_list<const char*> keys = {});
// The URLs of an array's records, joined by " ".
std::string URLs(IUnknown* array);
// A day-grouped history listing: "label: url url | label: url".
std::string Days(IUnknown* outer);

}  // namespace corvane::test

#endif  // CORVANE_TESTS_SERVING_SERVING_HOST_H_
