#include "provider/provider_object.h"

#include "common/debug_log.h"
#include "common/utf.h"
#include "platform/app_data.h"
#include "platform/bstr.h"
#include "platform/data_folder_rights.h"
#include "platform/file_notes.h"
#include "platform/folder_access.h"
#include "platform/paths.h"
#include "provider/command_parse.h"
#include "serving/manager_factory.h"
#include "settings/setting_parse.h"

namespace corvane {
namespace {

constexpr char16_t kDatabaseFileName[] = u"CorvaneAppDB.db";

}  // namespace

HRESULT CCorvaneDataProviderObject::CreateInstance(const IID& riid, void** ppvObject) {
  CCorvaneDataProviderObject* object = CreateObject<CCorvaneDataProviderObject>();
  if (object == nullptr) return E_OUTOFMEMORY;
  HRESULT hr = object->QueryInterface(riid, ppvObject);
  object->Release();
  return hr;
}

CCorvaneDataProviderObject::~CCorvaneDataProviderObject() { static_cast<void>(m_db.Close()); }

void CCorvaneDataProviderObject::ApplySettingsCommands(BSTR bstrParam) {
  if (bstrParam == nullptr) return;
  CCommandParse parser;
  std::u16string text = BstrToString(bstrParam);
  static_cast<void>(parser.Parse(text.c_str()));
  // "Settings" first, then "ForceSettings"; a command without a value only
  // reloads what stands.
  const std::pair<const char16_t*, int32_t> kCommands[] = {{u"Settings", 0}, {u"ForceSettings", 1}};
  for (const auto& [name, force] : kCommands) {
    const CCommand* command = parser.FindCommand(name);
    if (command == nullptr) continue;
    if (const std::u16string* value = command->GetCommandValue(0)) {
      CSettingParse saver(nullptr);
      static_cast<void>(saver.SaveSetting(value->c_str(), force));
    }
    m_settings.Reload();
  }
}

HRESULT CCorvaneDataProviderObject::Initialize(BSTR bstrParam) {
  DebugLog("!!!!CorvaneDataProvider::Initialize(%s)\r\n", ToUtf8(BstrToString(bstrParam)).c_str());
  ApplySettingsCommands(bstrParam);
  std::u16string folder;
  if (!GetDataFolder(&folder)) return E_FAIL;
  static_cast<void>(KeepDataFolderPrivate(folder));
  const std::u16string configPath = PathJoin(folder, u"DBConfig.ini");
  if (ConfigFileDamaged(configPath) && !SetDamagedFileAside(ToUtf8(configPath)).empty()) {
    NoteFileProblem(kConfigNoteKey, "DBConfig.ini was damaged: set aside, and its stamps are read as missing, so the "
                                    "history is read again");
  }
  static_cast<void>(GrantFolderAccess(folder, kUsersAccount, kGenericAll));
  std::u16string databasePath = PathJoin(folder, kDatabaseFileName);
  HRESULT hr = m_db.Open(databasePath, false);
  if (FAILED(hr)) return hr;
  static_cast<void>(GrantFolderAccess(databasePath, kUsersAccount, kGenericAll));
  return RunUpdateCycle(false);
}

HRESULT CCorvaneDataProviderObject::Uninitialize() { return S_OK; }

HRESULT CCorvaneDataProviderObject::ForceUpdateData() {
  // Before a successful Initialize there is no database to update.
  if (!m_db.IsOpen()) return E_FAIL;
  return RunUpdateCycle(true);
}

HRESULT CCorvaneDataProviderObject::GetURLsManager(uint32_t uManagerID, IUnknown** lppURLsMgr) {
  if (uManagerID < kFirstManagerID || uManagerID > kLastManagerID) return E_NOINTERFACE;
  if (lppURLsMgr == nullptr) return E_POINTER;
  // The manager keeps a reference to this provider's inner interface, so
  // the provider lives at least as long as any manager it handed out.
  ComPtr<IURLsManager> manager(CreateURLsManager(uManagerID, AsUnknown()));
  if (!manager) return E_FAIL;
  return manager->QueryInterface(IID_IUnknown, reinterpret_cast<void**>(lppURLsMgr));
}

HRESULT CCorvaneDataProviderObject::GetValue(BSTR bstrKey, BSTR* lpbstrValue) {
  if (bstrKey == nullptr || lpbstrValue == nullptr) return E_INVALIDARG;
  std::u16string value;
  if (FAILED(m_db.GetConfig(BstrToString(bstrKey), &value, u""))) return E_FAIL;
  return SUCCEEDED(BstrOut(value, lpbstrValue)) ? S_OK : E_FAIL;
}

HRESULT CCorvaneDataProviderObject::GetCorvaneDB(IUnknown** lppURLsMgr) {
  // The interface is reachable by any host through QueryInterface.
  if (lppURLsMgr == nullptr) return E_POINTER;
  *reinterpret_cast<CCorvaneDB**>(lppURLsMgr) = &m_db;
  return S_OK;
}

}  // namespace corvane
