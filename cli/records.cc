#include "cli/records.h"

#include "cli/com_ref.h"
#include "cli/host_text.h"

namespace corvane::cli {
namespace {

// Items of an array, each with one reference.
HRESULT ArrayItems(IUnknown* lpArray, std::vector<ComRef<IUnknown>>* lpItems) {
  ComRef<IURLArray> array = QueryAs<IURLArray>(lpArray, IID_IURLArray);
  if (!array) return E_NOINTERFACE;
  uint32_t count = 0;
  HRESULT hr = array->GetCount(&count);
  for (uint32_t i = 0; SUCCEEDED(hr) && i < count; ++i) {
    ComRef<IUnknown> item;
    hr = array->GetItem(i, item.Put());
    if (SUCCEEDED(hr)) lpItems->push_back(std::move(item));
  }
  return hr;
}

std::string ExtraText(IURLInfo2* info, const char* key) {
  OwnedBstr name(key);
  OwnedBstr value;
  if (info->GetExtraInfo(name.Get(), value.Put()) != S_OK) return std::string();
  return value.Utf8();
}

std::optional<uint32_t> ExtraNumber(IURLInfo2* info, const char* key) {
  OwnedBstr name(key);
  uint32_t value = 0;
  if (info->GetExtraInfoULong(name.Get(), &value) != S_OK) return std::nullopt;
  return value;
}

HRESULT ReadSite(IUnknown* lpItem, SiteRecord* lpOut) {
  ComRef<IURLInfo2> info = QueryAs<IURLInfo2>(lpItem, IID_IURLInfo2);
  if (!info) return E_NOINTERFACE;
  OwnedBstr name, url;
  HRESULT hr = info->GetID(&lpOut->id);
  if (SUCCEEDED(hr)) hr = info->GetName(name.Put());
  if (SUCCEEDED(hr)) hr = info->GetURL(url.Put(), 0);
  if (FAILED(hr)) return hr;
  lpOut->name = name.Utf8();
  lpOut->url = url.Utf8();
  lpOut->domain = ExtraText(info.Get(), "Domain");
  lpOut->mainDomain = ExtraText(info.Get(), "MainDomain");
  lpOut->lastVisit = ExtraText(info.Get(), "LastVisitTime");
  lpOut->fixedUrl = ExtraText(info.Get(), "FixedURL");
  lpOut->weight = ExtraNumber(info.Get(), "Weight");
  if (!lpOut->weight) lpOut->weight = ExtraNumber(info.Get(), "Score");
  lpOut->hide = ExtraNumber(info.Get(), "Hide");
  lpOut->whiteList = ExtraNumber(info.Get(), "WhiteList");
  lpOut->visitCount = ExtraNumber(info.Get(), "VisitCount");
  lpOut->focusId = ExtraNumber(info.Get(), "FocusID");
  OwnedBstr key("SubDomain");
  ComRef<IUnknown> sub;
  if (info->GetExtraInfoUnknown(key.Get(), sub.Put()) == S_OK) return ReadSiteArray(sub.Get(), &lpOut->subSites);
  return S_OK;
}

HRESULT ReadUrl(IUnknown* lpItem, UrlRecord* lpOut) {
  ComRef<IURLInfo> info = QueryAs<IURLInfo>(lpItem, IID_IURLInfo);
  if (!info) return E_NOINTERFACE;
  OwnedBstr name, url, path, time;
  HRESULT hr = info->GetID(&lpOut->id);
  if (SUCCEEDED(hr)) hr = info->GetName(name.Put());
  if (SUCCEEDED(hr)) hr = info->GetURL(url.Put());
  if (SUCCEEDED(hr)) hr = info->GetPath(path.Put());
  if (SUCCEEDED(hr)) hr = info->GetLastVisitTime(time.Put());
  lpOut->name = name.Utf8();
  lpOut->url = url.Utf8();
  lpOut->path = path.Utf8();
  lpOut->lastVisit = time.Utf8();
  return hr;
}

}  // namespace

HRESULT ReadSiteArray(IUnknown* lpArray, std::vector<SiteRecord>* lpOut) {
  std::vector<ComRef<IUnknown>> items;
  HRESULT hr = ArrayItems(lpArray, &items);
  for (size_t i = 0; SUCCEEDED(hr) && i < items.size(); ++i) {
    SiteRecord record;
    hr = ReadSite(items[i].Get(), &record);
    if (SUCCEEDED(hr)) lpOut->push_back(std::move(record));
  }
  return hr;
}

HRESULT ReadUrlArray(IUnknown* lpArray, std::vector<UrlRecord>* lpOut) {
  std::vector<ComRef<IUnknown>> items;
  HRESULT hr = ArrayItems(lpArray, &items);
  for (size_t i = 0; SUCCEEDED(hr) && i < items.size(); ++i) {
    UrlRecord record;
    hr = ReadUrl(items[i].Get(), &record);
    if (SUCCEEDED(hr)) lpOut->push_back(std::move(record));
  }
  return hr;
}

HRESULT ReadDayGroups(IUnknown* lpArray, std::vector<DayGroup>* lpOut) {
  std::vector<ComRef<IUnknown>> days;
  HRESULT hr = ArrayItems(lpArray, &days);
  for (size_t i = 0; SUCCEEDED(hr) && i < days.size(); ++i) {
    std::vector<UrlRecord> rows;
    hr = ReadUrlArray(days[i].Get(), &rows);
    if (FAILED(hr) || rows.empty()) continue;
    // Item 0 of a day is its title record; the visits follow it.
    DayGroup group{rows.front().name, std::vector<UrlRecord>(rows.begin() + 1, rows.end())};
    lpOut->push_back(std::move(group));
  }
  return hr;
}

const char* SiteKindName(const SiteRecord& record) {
  switch (record.whiteList.value_or(0xFFFFFFFFu)) {
    case 0: return "url";
    case 1: return "site";
    case 2: return "subsite";
    case 3: return "part";
    case kPinRecord: return "pin";
    default: return "recent";
  }
}

const char* HideStateName(std::optional<uint32_t> hide) {
  if (!hide) return "";
  switch (static_cast<int32_t>(*hide)) {
    case 0: return "visible";
    case 1: return "hidden";
    case 2: return "hidden until rebuild";
    case -1: return "lowered";
    default: return "unknown";
  }
}

}  // namespace corvane::cli
