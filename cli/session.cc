#include "cli/session.h"

#include <cstdio>
#include <map>

#include "cli/data_folder.h"
#include "cli/host_text.h"
#include "cli/ini_read.h"
#include "cli/store_reader.h"
#include "cli/white_list_install.h"

namespace corvane::cli {
namespace {

// DBConfig.ini keys under which the component tells of a damaged database
// it rebuilt and of files of the data folder it refused: "<stamp>|<sentence>".
constexpr const char* kNoteKeys[] = {"Recovered", "WhiteListRefused", "SettingsRefused", "DBConfigDamaged"};

constexpr uint32_t kRecommendManager = 1;
constexpr uint32_t kFocusManager = 2;
constexpr uint32_t kHistoryManager = 3;
constexpr uint32_t kFavoriteManager = 4;
// High half of a hide flag: hide until the next rebuild, lowering the score.
constexpr uint32_t kUntilRebuild = 0x00010000;

// The IDs of the nested sub-sites: their hosts' TRecommendDomain rows.
void NameNestedSites(std::vector<SiteRecord>* lpSites) {
  std::vector<std::string> hosts;
  for (const SiteRecord& site : *lpSites) {
    for (const SiteRecord& sub : site.subSites) hosts.push_back(sub.domain);
  }
  if (hosts.empty()) return;
  std::map<std::string, int64_t> ids = ReadDomainRowIds(DataFolderPath() + "/" + kDatabaseFile, hosts);
  for (SiteRecord& site : *lpSites) {
    for (SiteRecord& sub : site.subSites) {
      auto found = ids.find(sub.domain);
      sub.id = found == ids.end() ? 0 : static_cast<uint32_t>(found->second);
    }
  }
}

}  // namespace

// The notes as DBConfig.ini holds them now; read by the host itself, since
// the component writes some as soon as it is created.
std::map<std::string, std::string> ReadNotes() {
  std::map<std::string, std::string> notes;
  for (const char* key : kNoteKeys) {
    static_cast<void>(ReadIniValue(DataFolderPath() + "/" + kConfigFile, "DBConfig", key, &notes[key]));
  }
  return notes;
}

// A note is new when its stamp changed since the last look.
void ProviderSession::SayNewNotes() {
  std::map<std::string, std::string> now = ReadNotes();
  for (const auto& [key, note] : now) {
    if (note == m_notes[key]) continue;
    std::fprintf(stderr, "corvane: %s\n", note.substr(note.find('|') + 1).c_str());
    m_saidNotes.insert(key);
  }
  m_notes = std::move(now);
}

HRESULT ProviderSession::Fail(HRESULT hr, const std::string& what) {
  m_error = what + ": " + StatusText(hr);
  return hr;
}

HRESULT ProviderSession::Open(const std::string& param) {
  // The provider reads and may write its settings file as soon as it is
  // created, so the folder is checked before.
  bool openToOthers = false;
  if (!PrepareDataFolder(&m_error, &openToOthers)) return E_FAIL;
  static_cast<void>(InstallSampleWhiteList());
  m_notes = ReadNotes();
  ComRef<IClassFactory> factory;
  HRESULT hr = DllGetClassObject(CLSID_CorvaneDataProviderObject, IID_IClassFactory,
                                 reinterpret_cast<void**>(factory.Put()));
  if (FAILED(hr)) return Fail(hr, "getting the provider's class object");
  hr = factory->CreateInstance(nullptr, IID_ICorvaneDataProviderObject, reinterpret_cast<void**>(m_provider.Put()));
  if (FAILED(hr)) return Fail(hr, "creating the provider");
  // GetValue reads DBConfig.ini and works before Initialize; a missing key
  // fails and reads as empty.
  std::string before, after;
  static_cast<void>(GetValue("LastUpdate", &before));
  OwnedBstr text(param);
  hr = m_provider->Initialize(param.empty() ? nullptr : text.Get());
  if (FAILED(hr)) return Fail(hr, "Initialize");
  if (openToOthers) {
    std::fprintf(stderr, "corvane: %s was open to other accounts: it and its files are now yours alone\n",
                 DataFolderPath().c_str());
  }
  SayNewNotes();
  static_cast<void>(GetValue("LastUpdate", &after));
  m_updated = after != before;
  m_error.clear();
  return hr;
}

HRESULT ProviderSession::ForceUpdate() {
  HRESULT hr = m_provider->ForceUpdateData();
  SayNewNotes();
  return FAILED(hr) ? Fail(hr, "ForceUpdateData") : hr;
}

HRESULT ProviderSession::GetValue(const std::string& key, std::string* lpValue) {
  OwnedBstr name(key);
  OwnedBstr value;
  HRESULT hr = m_provider->GetValue(name.Get(), value.Put());
  if (FAILED(hr)) return Fail(hr, "GetValue(" + key + ")");
  *lpValue = value.Utf8();
  return hr;
}

HRESULT ProviderSession::Manager(uint32_t id, IUnknown** lppManager) {
  HRESULT hr = m_provider->GetURLsManager(id, lppManager);
  return FAILED(hr) ? Fail(hr, "GetURLsManager(" + std::to_string(id) + ")") : hr;
}

HRESULT ProviderSession::ListSites(uint32_t count, std::vector<SiteRecord>* lpOut) {
  ComRef<IUnknown> unknown;
  HRESULT hr = Manager(kRecommendManager, unknown.Put());
  ComRef<ICommonUseURLsManager> manager = QueryAs<ICommonUseURLsManager>(unknown.Get(), IID_ICommonUseURLsManager);
  if (FAILED(hr)) return hr;
  if (!manager) return Fail(E_NOINTERFACE, "querying the recommendation manager");
  // Bit 0 set starts a new listing with the focus sites; clear, it goes on
  // with the rest.
  for (uint32_t type : {1u, 0u}) {
    ComRef<IUnknown> array;
    hr = manager->GetRecomURLs(0, count, array.Put(), type);
    if (FAILED(hr)) return Fail(hr, "GetRecomURLs");
    size_t first = lpOut->size();
    hr = ReadSiteArray(array.Get(), lpOut);
    if (FAILED(hr)) return Fail(hr, "reading the recommendation records");
    for (size_t i = first; i < lpOut->size(); ++i) (*lpOut)[i].focus = (type == 1);
  }
  NameNestedSites(lpOut);
  return S_OK;
}

HRESULT ProviderSession::ListRecent(uint32_t count, std::vector<SiteRecord>* lpOut) {
  ComRef<IUnknown> unknown;
  HRESULT hr = Manager(kRecommendManager, unknown.Put());
  ComRef<ICommonUseURLsManager> manager = QueryAs<ICommonUseURLsManager>(unknown.Get(), IID_ICommonUseURLsManager);
  if (FAILED(hr)) return hr;
  if (!manager) return Fail(E_NOINTERFACE, "querying the recommendation manager");
  ComRef<IUnknown> array;
  hr = manager->GetRecentHistory(0, count, array.Put(), 0);
  if (FAILED(hr)) return Fail(hr, "GetRecentHistory");
  hr = ReadSiteArray(array.Get(), lpOut);
  return FAILED(hr) ? Fail(hr, "reading the recent records") : S_OK;
}

HRESULT ProviderSession::ListHistory(uint32_t count, const std::string& search, std::vector<DayGroup>* lpOut) {
  ComRef<IUnknown> unknown;
  HRESULT hr = Manager(kHistoryManager, unknown.Put());
  if (FAILED(hr)) return hr;
  ComRef<IUnknown> array;
  if (search.empty()) {
    ComRef<IURLsManager> manager = QueryAs<IURLsManager>(unknown.Get(), IID_IURLsManager);
    hr = manager ? manager->GetURLs(count, array.Put()) : E_NOINTERFACE;
  } else {
    ComRef<IHistoryURLsManager> manager = QueryAs<IHistoryURLsManager>(unknown.Get(), IID_IHistoryURLsManager);
    OwnedBstr text(search);
    hr = manager ? manager->SearchURLs(text.Get(), array.Put()) : E_NOINTERFACE;
  }
  if (FAILED(hr)) return Fail(hr, search.empty() ? "listing the history" : "SearchURLs");
  hr = ReadDayGroups(array.Get(), lpOut);
  if (FAILED(hr)) return Fail(hr, "reading the history records");
  // A search has no count of its own: cut the rows here.
  size_t left = count == 0 || search.empty() ? SIZE_MAX : count;
  for (DayGroup& group : *lpOut) {
    if (group.visits.size() > left) group.visits.resize(left);
    left -= group.visits.size();
  }
  std::erase_if(*lpOut, [](const DayGroup& group) { return group.visits.empty(); });
  return S_OK;
}

HRESULT ProviderSession::ListFavorites(uint32_t count, std::vector<UrlRecord>* lpOut) {
  ComRef<IUnknown> unknown;
  HRESULT hr = Manager(kFavoriteManager, unknown.Put());
  if (FAILED(hr)) return hr;
  ComRef<IURLsManager> manager = QueryAs<IURLsManager>(unknown.Get(), IID_IURLsManager);
  ComRef<IUnknown> array;
  hr = manager ? manager->GetURLs(count, array.Put()) : E_NOINTERFACE;
  if (FAILED(hr)) return Fail(hr, "listing the favourites");
  hr = ReadUrlArray(array.Get(), lpOut);
  return FAILED(hr) ? Fail(hr, "reading the favourite records") : S_OK;
}

HRESULT ProviderSession::ListPins(std::vector<UrlRecord>* lpOut) {
  ComRef<IUnknown> unknown;
  HRESULT hr = Manager(kFocusManager, unknown.Put());
  if (FAILED(hr)) return hr;
  ComRef<IURLsManager> manager = QueryAs<IURLsManager>(unknown.Get(), IID_IURLsManager);
  ComRef<IUnknown> array;
  hr = manager ? manager->GetURLs(0, array.Put()) : E_NOINTERFACE;
  if (FAILED(hr)) return Fail(hr, "listing the pinned sites");
  hr = ReadUrlArray(array.Get(), lpOut);
  return FAILED(hr) ? Fail(hr, "reading the pinned records") : S_OK;
}

HRESULT ProviderSession::AddPin(const std::string& url, const std::string& name) {
  ComRef<IUnknown> unknown;
  HRESULT hr = Manager(kFocusManager, unknown.Put());
  if (FAILED(hr)) return hr;
  ComRef<IURLsManager> manager = QueryAs<IURLsManager>(unknown.Get(), IID_IURLsManager);
  OwnedBstr bstrUrl(url), bstrName(name);
  hr = manager ? manager->AddURL(bstrUrl.Get(), bstrName.Get(), 0) : E_NOINTERFACE;
  return FAILED(hr) ? Fail(hr, "pinning " + url) : hr;
}

HRESULT ProviderSession::RemovePin(const std::string& id, bool byId) {
  ComRef<IUnknown> unknown;
  HRESULT hr = Manager(kFocusManager, unknown.Put());
  if (FAILED(hr)) return hr;
  ComRef<IURLsManager> manager = QueryAs<IURLsManager>(unknown.Get(), IID_IURLsManager);
  OwnedBstr text(id);
  hr = manager ? manager->RemoveURL(text.Get(), byId ? 0 : 1) : E_NOINTERFACE;
  return FAILED(hr) ? Fail(hr, "unpinning " + id) : hr;
}

HRESULT ProviderSession::Hide(HideKind kind, const std::string& id, bool byUrl, bool untilRebuild) {
  uint32_t managerId = kRecommendManager;
  if (kind == HideKind::kHistory) managerId = kHistoryManager;
  if (kind == HideKind::kFavorite) managerId = kFavoriteManager;
  ComRef<IUnknown> unknown;
  HRESULT hr = Manager(managerId, unknown.Put());
  if (FAILED(hr)) return hr;
  uint32_t flag = (untilRebuild ? kUntilRebuild : 0) | (byUrl ? 1 : 0);
  OwnedBstr text(id);
  if (kind == HideKind::kSite || kind == HideKind::kSubSite) {
    ComRef<ICommonUseURLsManager> manager = QueryAs<ICommonUseURLsManager>(unknown.Get(), IID_ICommonUseURLsManager);
    if (!manager) return Fail(E_NOINTERFACE, "querying the recommendation manager");
    hr = kind == HideKind::kSite ? manager->HideRecommendDomain(text.Get(), flag)
                                 : manager->HideSubDomain(text.Get(), flag);
  } else {
    // History and favourites know no "until rebuild": their flag is the
    // whole value, 0 for an ID.
    if (kind != HideKind::kUrl) flag = 0;
    ComRef<IURLsManager> manager = QueryAs<IURLsManager>(unknown.Get(), IID_IURLsManager);
    hr = manager ? manager->RemoveURL(text.Get(), flag) : E_NOINTERFACE;
  }
  return FAILED(hr) ? Fail(hr, "hiding " + id) : hr;
}

}  // namespace corvane::cli
