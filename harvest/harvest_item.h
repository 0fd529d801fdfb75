// harvest_item.h: one delivered entry of the extraction library. Its texts
// belong to the ItemStore that holds it (item_store.h) and stay valid until
// the store is cleared.

#ifndef CORVANE_HARVEST_HARVEST_ITEM_H_
#define CORVANE_HARVEST_HARVEST_ITEM_H_

#include "corvane/VisitHarvest.h"

namespace corvane::harvest {

class HarvestItem final : public IExtractItem {
 public:
  HarvestItem(uint32_t kind, uint32_t browser, const char16_t* name, const char16_t* url, const char16_t* path,
              const SYSTEMTIME& time, int32_t visitCount, uint32_t typedCount)
      : m_kind(kind), m_browser(browser), m_name(name), m_url(url), m_path(path), m_time(time),
        m_visitCount(visitCount), m_typedCount(typedCount) {}

  uint32_t GetKind() override { return m_kind; }
  uint32_t GetBrowser() override { return m_browser; }
  uint32_t GetTypedCount() override { return m_typedCount; }
  void GetVisitTime(SYSTEMTIME* lpTime) override {
    if (lpTime != nullptr) *lpTime = m_time;
  }
  const char16_t* GetName() override { return m_name; }
  const char16_t* GetURL() override { return m_url; }
  const char16_t* GetPath() override { return m_path; }
  int32_t GetVisitCount() override { return m_visitCount; }

 private:
  uint32_t m_kind;
  uint32_t m_browser;
  const char16_t* m_name;
  const char16_t* m_url;
  const char16_t* m_path;
  SYSTEMTIME m_time;
  int32_t m_visitCount;
  uint32_t m_typedCount;
};

}  // namespace corvane::harvest

#endif  // CORVANE_HARVEST_HARVEST_ITEM_H_
