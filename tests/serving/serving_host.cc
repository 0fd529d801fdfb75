#include "serving/serving_host.h"

#include <filesystem>
#include <fstream>

#include "common/utf.h"
#include "store/schema.h"

namespace corvane::test {

SeedDb::~SeedDb() {
  if (m_db != nullptr) sqlite3_close(m_db);
}

bool SeedDb::Open(const std::string& path) {
  return sqlite3_open_v2(path.c_str(), &m_db, SQLITE_OPEN_READWRITE, nullptr) == SQLITE_OK;
}

void SeedDb::Exec(const std::string& sql) {
  char* message = nullptr;
  int rc = sqlite3_exec(m_db, sql.c_str(), nullptr, nullptr, &message);
  EXPECT_EQ(rc, SQLITE_OK) << sql << ": " << (message != nullptr ? message : "");
  sqlite3_free(message);
}

std::string SeedDb::Scalar(const std::string& sql) {
  sqlite3_stmt* stmt = nullptr;
  std::string out;
  if (sqlite3_prepare_v2(m_db, sql.c_str(), -1, &stmt, nullptr) == SQLITE_OK && sqlite3_step(stmt) == SQLITE_ROW) {
    const unsigned char* text = sqlite3_column_text(stmt, 0);
    if (text != nullptr) out = reinterpret_cast<const char*>(text);
  }
  sqlite3_finalize(stmt);
  return out;
}

std::string SeedDb::Dump() {
  std::vector<std::string> tables;
  sqlite3_stmt* stmt = nullptr;
  sqlite3_prepare_v2(m_db, "select name from sqlite_master where type='table' order by name", -1, &stmt, nullptr);
  while (sqlite3_step(stmt) == SQLITE_ROW) tables.emplace_back(reinterpret_cast<const char*>(sqlite3_column_text(stmt, 0)));
  sqlite3_finalize(stmt);
  std::string dump;
  for (const std::string& table : tables) {
    dump += "[" + table + "]\n";
    sqlite3_prepare_v2(m_db, ("select * from \"" + table + "\" order by rowid").c_str(), -1, &stmt, nullptr);
    while (sqlite3_step(stmt) == SQLITE_ROW) {
      for (int i = 0; i < sqlite3_column_count(stmt); ++i) {
        const unsigned char* text = sqlite3_column_text(stmt, i);
        dump += (text != nullptr ? reinterpret_cast<const char*>(text) : "NULL");
        dump += "|";
      }
      dump += "\n";
    }
    sqlite3_finalize(stmt);
  }
  return dump;
}

ServingTest::ServingTest()
    : m_appData("CORVANE_APPDATA", m_dir.Path().c_str()), m_now("CORVANE_TEST_NOW", "2024-03-05 09:07:03.041") {}

void ServingTest::SetUp() { std::filesystem::create_directories(m_dir.Path() + "/CorvaneApp"); }

ServingTest::~ServingTest() {
  m_provider.Reset();
  EXPECT_EQ(LoadComponent().DllCanUnloadNow(), S_OK) << "an object of the component outlived its test";
}

void ServingTest::WriteConfig(const std::string& extraLines) {
  std::ofstream out(DataFile("DBConfig.ini"), std::ios::trunc);
  out << "[DBConfig]\nLastUpdate=2024.03.05 2 00:00:01.000\n" << extraLines;
}

void ServingTest::StartProvider() {
  if (!std::filesystem::exists(DataFile("DBConfig.ini"))) WriteConfig("");
  m_provider = CreateProvider();
  ASSERT_TRUE(m_provider);
  ASSERT_EQ(m_provider->Initialize(nullptr), S_OK);
  ASSERT_TRUE(m_db.Open(DataFile("CorvaneAppDB.db")));
  std::u16string zs(schema::kCreateRecommendDomain), sub(schema::kCreateRecommendDomain);
  zs.replace(zs.find(u"TRecommendDomain"), 16, u"TZS");
  sub.replace(sub.find(u"TRecommendDomain"), 16, u"TSubDomain");
  for (const std::u16string& sql : {std::u16string(schema::kCreateRecommendURL), std::u16string(schema::kCreateRecentHistory),
                                    std::u16string(schema::kCreateRecentDomain), std::u16string(schema::kCreateNames), zs,
                                    sub}) {
    m_db.Exec(ToUtf8(sql));
  }
}

uint32_t Count(IUnknown* array) {
  ComPtr<IURLArray> list = Query<IURLArray>(array, IID_IURLArray);
  uint32_t count = 0xFFFFFFFF;
  if (list) {
    EXPECT_EQ(list->GetCount(&count), S_OK);
  }
  return count;
}

ComPtr<IUnknown> Item(IUnknown* array, uint32_t index) {
  ComPtr<IURLArray> list = Query<IURLArray>(array, IID_IURLArray);
  IUnknown* item = nullptr;
  if (list) {
    EXPECT_EQ(list->GetItem(index, &item), S_OK);
  }
  return ComPtr<IUnknown>(item);
}

ComPtr<IUnknown> ItemOf(const ComPtr<IUnknown>& array, uint32_t index) { return Item(array.Get(), index); }

namespace {

std::u16string TakeBstr(BSTR bstr) {
  std::u16string text = bstr == nullptr ? u"" : std::u16string(bstr, LoadComponent().SysStringLen(bstr));
  LoadComponent().SysFreeString(bstr);
  return text;
}

}  // namespace

std::u16string Name2(IUnknown* info2) {
  BSTR bstr = nullptr;
  EXPECT_EQ(Query<IURLInfo2>(info2, IID_IURLInfo2)->GetName(&bstr), S_OK);
  return TakeBstr(bstr);
}

std::u16string URL2(IUnknown* info2) {
  BSTR bstr = nullptr;
  EXPECT_EQ(Query<IURLInfo2>(info2, IID_IURLInfo2)->GetURL(&bstr, 0), S_OK);
  return TakeBstr(bstr);
}

uint32_t ID2(IUnknown* info2) {
  uint32_t id = 0;
  EXPECT_EQ(Query<IURLInfo2>(info2, IID_IURLInfo2)->GetID(&id), S_OK);
  return id;
}

std::u16string Extra(IUnknown* info2, std::u16string_view key) {
  Bstr name(key);
  BSTR bstr = nullptr;
  if (Query<IURLInfo2>(info2, IID_IURLInfo2)->GetExtraInfo(name.Get(), &bstr) != S_OK) return u"<missing>";
  return TakeBstr(bstr);
}

uint32_t ExtraULong(IUnknown* info2, std::u16string_view key, HRESULT* hr) {
  Bstr name(key);
  uint32_t value = 0;
  HRESULT status = Query<IURLInfo2>(info2, IID_IURLInfo2)->GetExtraInfoULong(name.Get(), &value);
  if (hr != nullptr) *hr = status;
  return value;
}

ComPtr<IUnknown> ExtraObject(IUnknown* info2, std::u16string_view key) {
  Bstr name(key);
  IUnknown* object = nullptr;
  if (Query<IURLInfo2>(info2, IID_IURLInfo2)->GetExtraInfoUnknown(name.Get(), &object) != S_OK) return {};
  return ComPtr<IUnknown>(object);
}

std::u16string Name1(IUnknown* info) {
  BSTR bstr = nullptr;
  EXPECT_EQ(Query<IURLInfo>(info, IID_IURLInfo)->GetName(&bstr), S_OK);
  return TakeBstr(bstr);
}

std::u16string URL1(IUnknown* info) {
  BSTR bstr = nullptr;
  EXPECT_EQ(Query<IURLInfo>(info, IID_IURLInfo)->GetURL(&bstr), S_OK);
  return TakeBstr(bstr);
}

uint32_t ID1(IUnknown* info) {
  uint32_t id = 0;
  EXPECT_EQ(Query<IURLInfo>(info, IID_IURLInfo)->GetID(&id), S_OK);
  return id;
}

std::vector<std::u16string> URLs2(IUnknown* array) {
  std::vector<std::u16string> urls;
  uint32_t count = Count(array);
  for (uint32_t i = 0; i < count && count != 0xFFFFFFFF; ++i) urls.push_back(URL2(Item(array, i).Get()));
  return urls;
}

}  // namespace corvane::test
