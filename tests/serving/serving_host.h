// serving_host.h: a host that has initialised the component in a temporary
// data folder, plus a second SQLite connection to the same database file,
// through which a test fills the tables that the managers read and dumps
// them to see that nothing else changed.

#ifndef CORVANE_TESTS_SERVING_SERVING_HOST_H_
#define CORVANE_TESTS_SERVING_SERVING_HOST_H_

#include <gtest/gtest.h>
#include <sqlite3.h>

#include <string>
#include <vector>

#include "support/test_host.h"

namespace corvane::test {

// A test's own connection to the component's database.
class SeedDb {
 public:
  SeedDb() = default;
  ~SeedDb();
  SeedDb(const SeedDb&) = delete;
  SeedDb& operator=(const SeedDb&) = delete;

  bool Open(const std::string& path);
  // Runs statements; fails the test on an SQL error.
  void Exec(const std::string& sql);
  // The first column of the first row as text; empty when there is none.
  std::string Scalar(const std::string& sql);
  // Every row of every table, in rowid order, as text.
  std::string Dump();
  // A run-time limit of this connection's SQLite, such as
  // SQLITE_LIMIT_LIKE_PATTERN_LENGTH; the component's library is the same.
  int Limit(int id) const { return sqlite3_limit(m_db, id, -1); }

 private:
  sqlite3* m_db = nullptr;
};

class ServingTest : public ::testing::Test {
 protected:
  ServingTest();
  // Releases the provider and checks that the library could go: by then a
  // test has given back everything it took, and so has the fixture built
  // on this one, whose members are gone before this runs.
  ~ServingTest() override;
  void SetUp() override;

  // Writes DBConfig.ini lines (today's "LastUpdate" always, so Initialize
  // creates the schema without running the update) plus extra lines.
  void WriteConfig(const std::string& extraLines);
  // Initializes a fresh provider and opens the seed connection; creates the
  // tables that only an update creates.
  void StartProvider();

  template <class I>
  ComPtr<I> Manager(uint32_t id, const IID& iid) {
    IUnknown* unknown = nullptr;
    EXPECT_EQ(m_provider->GetURLsManager(id, &unknown), S_OK);
    ComPtr<IUnknown> holder(unknown);
    return Query<I>(unknown, iid);
  }

  std::string DataFile(const std::string& name) const { return m_dir.Path() + "/CorvaneApp/" + name; }

  TempDir m_dir;
  ScopedEnv m_appData;
  ScopedEnv m_now;
  ComPtr<ICorvaneDataProviderObject> m_provider;
  SeedDb m_db;
};

// Reading the records of a result, as a host does.
uint32_t Count(IUnknown* array);
ComPtr<IUnknown> Item(IUnknown* array, uint32_t index);
ComPtr<IUnknown> ItemOf(const ComPtr<IUnknown>& array, uint32_t index);
std::u16string Name2(IUnknown* info2);
std::u16string URL2(IUnknown* info2);
uint32_t ID2(IUnknown* info2);
// The extra string, or "<missing>" when the key is not there.
std::u16string Extra(IUnknown* info2, std::u16string_view key);
// The extra number; the status of the read in *hr.
uint32_t ExtraULong(IUnknown* info2, std::u16string_view key, HRESULT* hr = nullptr);
// The extra object, or empty.
ComPtr<IUnknown> ExtraObject(IUnknown* info2, std::u16string_view key);
std::u16string Name1(IUnknown* info);
std::u16string URL1(IUnknown* info);
uint32_t ID1(IUnknown* info);
// The URLs of all top-level records of an IURLInfo2 array.
std::vector<std::u16string> URLs2(IUnknown* array);

}  // namespace corvane::test

#endif  // CORVANE_TESTS_SERVING_SERVING_HOST_H_
