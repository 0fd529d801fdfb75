// harvest_item.h: the items of one delivery. Their texts belong to the
// ItemStore that holds them (item_store.h) and stay valid until the store
// is cleared.
//
// A visit is kept small, for a heavy user's history is a million visits
// and more: its page (texts and source, kept once per page) and the instant
// of the visit, 24 bytes with the item's table of functions. Its local
// calendar time is worked out when it is asked for.

#ifndef CORVANE_HARVEST_HARVEST_ITEM_H_
#define CORVANE_HARVEST_HARVEST_ITEM_H_

#include <cstdint>

#include "corvane/VisitHarvest.h"

namespace corvane::harvest {

// The kept texts of a page of a browser's history, and the source (the
// profile, from 0, and its browser value) whose page it is: a page belongs
// to one source, and its visits, far more, need not carry them. index is
// the page's place among the store's pages.
struct PageTexts {
  const char16_t* name;
  const char16_t* url;
  uint32_t typedCount;
  uint32_t browser;
  uint16_t source;
  uint32_t index;
};

class VisitItem final : public IExtractItem {
 public:
  VisitItem(const PageTexts* page, int64_t unixMicros) : m_page(page), m_unixMicros(unixMicros) {}

  uint32_t GetKind() override { return EXTRACT_HISTORY; }
  uint32_t GetBrowser() override { return m_page->browser; }
  uint32_t GetTypedCount() override { return m_page->typedCount; }
  void GetVisitTime(SYSTEMTIME* lpTime) override;
  const char16_t* GetName() override { return m_page->name; }
  const char16_t* GetURL() override { return m_page->url; }
  const char16_t* GetPath() override { return u""; }
  // Each item is one visit.
  int32_t GetVisitCount() override { return 1; }

  int64_t UnixMicros() const { return m_unixMicros; }
  uint16_t Source() const { return m_page->source; }
  const char16_t* KeptURL() const { return m_page->url; }
  const PageTexts* Page() const { return m_page; }

 private:
  const PageTexts* m_page;
  int64_t m_unixMicros;
};

static_assert(sizeof(VisitItem) <= 24, "a visit of a million-visit history is kept in 24 bytes");

class FavoriteItem final : public IExtractItem {
 public:
  FavoriteItem(uint32_t browser, const char16_t* name, const char16_t* url, const char16_t* path)
      : m_browser(browser), m_name(name), m_url(url), m_path(path) {}

  uint32_t GetKind() override { return EXTRACT_FAVORITES; }
  uint32_t GetBrowser() override { return m_browser; }
  uint32_t GetTypedCount() override { return 0; }
  void GetVisitTime(SYSTEMTIME* lpTime) override {
    if (lpTime != nullptr) *lpTime = SYSTEMTIME{};
  }
  const char16_t* GetName() override { return m_name; }
  const char16_t* GetURL() override { return m_url; }
  const char16_t* GetPath() override { return m_path; }
  int32_t GetVisitCount() override { return 0; }

 private:
  uint32_t m_browser;
  const char16_t* m_name;
  const char16_t* m_url;
  const char16_t* m_path;
};

}  // namespace corvane::harvest

#endif  // CORVANE_HARVEST_HARVEST_ITEM_H_
