#include "serving/serving_host.h"

#include <filesystem>
#include <fstream>

#include "common/utf.h"
#include "store/schema.h"

namespace corvane::test {

bool SeedDb::Open(const std::string& path) {
  sqlite3* db = nullptr;
  const int rc = sqlite3_open_v2(path.c_str(), &db, SQLITE_OPEN_READWRITE, nullptr);
  m_db.reset(db);
  return rc == SQLITE_OK;
}

void SeedDb::Exec(const std::string& sql) {
  char* message = nullptr;
  int rc = sqlite3_exec(m_db.get(), sql.c_str(), nullptr, nullptr, &message);
  EXPECT_EQ(rc, SQLITE_OK) << sql.substr(0, 300) << ": " << (message != nullptr ? message : "");
  sqlite3_free(message);
}

std::string SeedDb::Scalar(const std::string& sql) {
  sqlite3_stmt* stmt = nullptr;
  std::string out;
  if (sqlite3_prepare_v2(m_db.get(), sql.c_str(), -1, &stmt, nullptr) == SQLITE_OK && sqlite3_step(stmt) == SQLITE_ROW) {
    const unsigned char* text = sqlite3_column_text(stmt, 0);
    if (text != nullptr) out = reinterpret_cast<const char*>(text);
  }
  sqlite3_finalize(stmt);
  return out;
}

namespace {

// sqlite3_exec callbacks of Dump: a row as "value|value|", a table as its
// name and its rows.
int AppendRow(void* text, int n, char** values, char**) {
  for (int i = 0; i < n; ++i) *static_cast<std::string*>(text) += (values[i] != nullptr ? values[i] : "NULL") + std::string("|");
  *static_cast<std::string*>(text) += "\n";
  return 0;
}

int AppendTable(void* db, int, char** name, char**) {
  auto* out = static_cast<std::pair<sqlite3*, std::string>*>(db);
  out->second += "[" + std::string(name[0]) + "]\n";
  const std::string sql = "select * from \"" + std::string(name[0]) + "\" order by rowid";
  return sqlite3_exec(out->first, sql.c_str(), AppendRow, &out->second, nullptr);
}

}  // namespace

std::string SeedDb::Dump() {
  std::pair<sqlite3*, std::string> out{m_db.get(), ""};
  // The search index's shadow tables have no rowid; the index itself is
  // dumped through its table THistorySearch.
  const char* tables = "select name from sqlite_master where type = 'table' and name not like 'THistorySearch^_%' "
                       "escape '^' order by name";
  EXPECT_EQ(sqlite3_exec(m_db.get(), tables, AppendTable, &out, nullptr), SQLITE_OK);
  return out.second;
}

ServingTest::ServingTest()
    : m_appData("CORVANE_APPDATA", m_dir.Path().c_str()), m_now("CORVANE_TEST_NOW", "2024-03-05 09:07:03.041") {
  std::filesystem::create_directories(m_dir.Path() + "/CorvaneApp");
}

ServingTest::~ServingTest() {
  for (ComPtr<IURLsManager>* manager : {&m_commonUrls, &m_focus, &m_history, &m_favorites}) manager->Reset();
  m_common.Reset();
  m_provider.Reset();
  EXPECT_EQ(LoadComponent().DllCanUnloadNow(), S_OK) << "an object of the component outlived its test";
}

void ServingTest::WriteConfig(const std::string& extraLines) {
  std::ofstream(DataFile("DBConfig.ini"), std::ios::trunc) << "[DBConfig]\nLastUpdate=2024.03.05 2 00:00:01.000\n"
                                                           << extraLines;
}

void ServingTest::SetUp() {
  WriteConfig(ConfigLines());
  m_provider = CreateProvider();
  ASSERT_TRUE(m_provider);
  ASSERT_EQ(m_provider->Initialize(nullptr), S_OK);
  ASSERT_TRUE(m_db.Open(DataFile("CorvaneAppDB.db")));
  for (const char16_t* sql : {schema::kCreateRecommendURL, schema::kCreateRecentHistory, schema::kCreateRecentDomain,
                               schema::kCreateNames}) {
    m_db.Exec(ToUtf8(sql));
  }
  for (const char* table : {"TZS", "TSubDomain"}) {  // built as TRecommendDomain is
    std::string sql = ToUtf8(schema::kCreateRecommendDomain);
    m_db.Exec(sql.replace(sql.find("TRecommendDomain"), 16, table));
  }
  m_common = Manager<ICommonUseURLsManager>(1, IID_ICommonUseURLsManager);
  m_commonUrls = Query<IURLsManager>(m_common.Get(), IID_IURLsManager);
  m_focus = Manager<IURLsManager>(2, IID_IURLsManager);
  m_history = Manager<IURLsManager>(3, IID_IURLsManager);
  m_favorites = Manager<IURLsManager>(4, IID_IURLsManager);
  ASSERT_TRUE(m_common && m_commonUrls && m_focus && m_history && m_favorites);
}

ComPtr<IUnknown> ServingTest::Recom(uint32_t uCount, uint32_t uType) {
  IUnknown* array = nullptr;
  EXPECT_EQ(m_common->GetRecomURLs(0, uCount, &array, uType), S_OK);
  return ComPtr<IUnknown>(array);
}

std::string Q(const std::string& text) {
  std::string out = "'";
  for (char c : text) out += c == '\'' ? std::string("''") : std::string(1, c);
  return out + "'";
}

uint32_t Count(IUnknown* array) {
  ComPtr<IURLArray> list = Query<IURLArray>(array, IID_IURLArray);
  uint32_t count = 0;
  EXPECT_TRUE(list && list->GetCount(&count) == S_OK) << "no array";
  return count;
}

ComPtr<IUnknown> Item(IUnknown* array, uint32_t index) {
  ComPtr<IURLArray> list = Query<IURLArray>(array, IID_IURLArray);
  IUnknown* item = nullptr;
  EXPECT_TRUE(list && list->GetItem(index, &item) == S_OK) << "no item " << index;
  return ComPtr<IUnknown>(item);
}

namespace {

std::string Take(BSTR bstr) {
  std::string text = ToUtf8(std::u16string_view(bstr, bstr == nullptr ? 0 : LoadComponent().SysStringLen(bstr)));
  LoadComponent().SysFreeString(bstr);
  return text;
}

struct Fields { uint32_t id = 0; std::string name, url; };

Fields Read(IUnknown* record) {
  Fields fields;
  BSTR name = nullptr, url = nullptr;
  if (ComPtr<IURLInfo2> info2 = Query<IURLInfo2>(record, IID_IURLInfo2)) {
    EXPECT_TRUE(info2->GetID(&fields.id) == S_OK && info2->GetName(&name) == S_OK && info2->GetURL(&url, 0) == S_OK);
  } else if (ComPtr<IURLInfo> info = Query<IURLInfo>(record, IID_IURLInfo)) {
    EXPECT_TRUE(info->GetID(&fields.id) == S_OK && info->GetName(&name) == S_OK && info->GetURL(&url) == S_OK);
  } else {
    ADD_FAILURE() << "no record";
  }
  fields.name = Take(name);
  fields.url = Take(url);
  return fields;
}

std::string ExtraText(IURLInfo2* info, const char* key, std::initializer_list<const char*> keys) {
  Bstr name(FromUtf8(key));
  uint32_t number = 0;
  BSTR text = nullptr;
  IUnknown* object = nullptr;
  if (info->GetExtraInfoULong(name.Get(), &number) == S_OK) return std::to_string(number);
  if (info->GetExtraInfo(name.Get(), &text) == S_OK) return Take(text);
  if (info->GetExtraInfoUnknown(name.Get(), &object) != S_OK) return "-";
  ComPtr<IUnknown> array(object);
  return "[" + ShowAll(array.Get(), keys) + "]";
}

}  // namespace

std::string Show(IUnknown* record, std::initializer_list<const char*> keys) {
  const Fields fields = Read(record);
  std::string text = std::to_string(fields.id) + "|" + fields.name + "|" + fields.url;
  ComPtr<IURLInfo2> info2 = Query<IURLInfo2>(record, IID_IURLInfo2);
  for (const char* key : keys) text += std::string(" ") + key + "=" + (info2 ? ExtraText(info2.Get(), key, keys) : "?");
  return text;
}

std::string ShowAll(IUnknown* array, std::initializer_list<const char*> keys) {
  std::string text;
  for (uint32_t i = 0, n = Count(array); i < n; ++i) text += (i == 0 ? "" : "; ") + Show(Item(array, i).Get(), keys);
  return text;
}

std::string URLs(IUnknown* array) {
  std::string text;
  for (uint32_t i = 0, n = Count(array); i < n; ++i) text += (i == 0 ? "" : " ") + Read(Item(array, i).Get()).url;
  return text;
}

std::string Days(IUnknown* outer) {
  std::string text;
  for (uint32_t d = 0, days = Count(outer); d < days; ++d) {
    ComPtr<IUnknown> day = Item(outer, d);
    text += (d == 0 ? "" : " | ") + Read(Item(day.Get(), 0).Get()).name + ":";
    for (uint32_t i = 1, n = Count(day.Get()); i < n; ++i) text += " " + Read(Item(day.Get(), i).Get()).url;
  }
  return text;
}

}  // namespace corvane::test
