// corvane_store_bench: how fast the store takes a delivery of visits.
//
// Hands 1,000,000 visits (or the count given) to CCorvaneDB::AddNewHistory
// on an empty database, as the extraction driver does, and prints the rows
// stored per second. The delivery lives in memory, so the time is that of
// the store alone: one prepared insert in one transaction.

#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "common/utf.h"
#include "corvane/VisitHarvest.h"
#include "store/corvane_db.h"

namespace {

class Visit final : public IExtractItem {
 public:
  Visit(std::u16string url, SYSTEMTIME time) : m_url(std::move(url)), m_time(time) {}
  uint32_t GetKind() override { return 0; }
  uint32_t GetBrowser() override { return BROWSER_CHROME; }
  uint32_t GetTypedCount() override { return 0; }
  void GetVisitTime(SYSTEMTIME* lpTime) override { *lpTime = m_time; }
  const char16_t* GetName() override { return u"A page title of ordinary length"; }
  const char16_t* GetURL() override { return m_url.c_str(); }
  const char16_t* GetPath() override { return u""; }
  int32_t GetVisitCount() override { return 3; }

 private:
  std::u16string m_url;
  SYSTEMTIME m_time;
};

class Delivery final : public IExtractor {
 public:
  explicit Delivery(size_t count) {
    m_items.reserve(count);
    for (size_t i = 0; i < count; ++i) {
      uint16_t day = static_cast<uint16_t>(1 + (i / 40000) % 28);
      uint32_t second = static_cast<uint32_t>(i % 40000) * 2;
      SYSTEMTIME time{2026, 10, 0, day, static_cast<uint16_t>(second / 3600 % 24),
                      static_cast<uint16_t>(second / 60 % 60), static_cast<uint16_t>(second % 60), 0};
      std::string url = "https://host" + std::to_string(i % 3000) + ".example.com/page/" + std::to_string(i % 30000);
      m_items.push_back(std::make_unique<Visit>(corvane::FromUtf8(url), time));
    }
  }
  void Destroy() override {}
  uint32_t GetCount() override { return static_cast<uint32_t>(m_items.size()); }
  uint32_t GetBrowser() override { return BROWSER_CHROME; }
  bool GetNextItem(IExtractItem** lppItem) override { return GetItem(m_next++, lppItem); }
  bool GetItem(uint32_t uIndex, IExtractItem** lppItem) override {
    if (uIndex >= m_items.size()) return false;
    *lppItem = m_items[uIndex].get();
    return true;
  }
  void FreeItems() override { m_next = 0; }
  bool Extract(uint32_t, uint32_t) override { return true; }

 private:
  std::vector<std::unique_ptr<Visit>> m_items;
  uint32_t m_next = 0;
};

}  // namespace

int main(int argc, char** argv) {
  size_t count = argc > 1 ? std::strtoul(argv[1], nullptr, 10) : 1000000;
  std::filesystem::path folder = std::filesystem::temp_directory_path() / ("corvane-store-bench-" + std::to_string(getpid()));
  std::filesystem::create_directories(folder);
  setenv("CORVANE_APPDATA", folder.c_str(), 1);
  Delivery delivery(count);
  corvane::CCorvaneDB db;
  if (db.Open(corvane::FromUtf8((folder / "bench.db").string()), false) != S_OK) return 1;
  auto start = std::chrono::steady_clock::now();
  HRESULT hr = db.AddNewHistory(&delivery);
  double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
  std::u16string stored;
  static_cast<void>(db.GetConfig(u"AddHistoryCount", &stored, u"0"));
  static_cast<void>(db.Close());
  std::filesystem::remove_all(folder);
  long rows = std::strtol(corvane::ToUtf8(stored).c_str(), nullptr, 10);
  std::printf("stored %ld of %zu visits in %.3f s: %.0f rows/s (status %08x)\n", rows, count, seconds,
              seconds > 0 ? rows / seconds : 0.0, static_cast<unsigned>(hr));
  return hr == S_OK && static_cast<size_t>(rows) == count ? 0 : 1;
}
