// provider_object.h: CCorvaneDataProviderObject, the one object a host
// creates.
//
// It owns the scoring settings and the database, runs the update cycle at
// most once per calendar day (or whenever ForceUpdateData asks), and hands
// out the four managers. Managers keep a reference to its inner interface,
// so the provider and its database outlive every manager. Every call runs to
// its end on the caller's thread.

#ifndef CORVANE_PROVIDER_PROVIDER_OBJECT_H_
#define CORVANE_PROVIDER_PROVIDER_OBJECT_H_

#include "corvane/CorvaneDataProvider.h"
#include "platform/com_object.h"
#include "settings/score_settings.h"
#include "store/corvane_db.h"

namespace corvane {

class CCorvaneDataProviderObject final
    : public ComObject<ICorvaneDataProviderObject, ICorvaneDataProviderInner> {
 public:
  static HRESULT CreateInstance(const IID& riid, void** ppvObject);

  // ICorvaneDataProviderObject
  HRESULT Initialize(BSTR bstrParam) override;
  HRESULT Uninitialize() override;
  HRESULT GetURLsManager(uint32_t uManagerID, IUnknown** lppURLsMgr) override;
  HRESULT ForceUpdateData() override;
  HRESULT GetValue(BSTR bstrKey, BSTR* lpbstrValue) override;

  // ICorvaneDataProviderInner: writes a plain CCorvaneDB pointer, no
  // reference taken; E_POINTER for a null out argument.
  HRESULT GetCorvaneDB(IUnknown** lppURLsMgr) override;

 private:
  CCorvaneDataProviderObject() = default;
  ~CCorvaneDataProviderObject() override;
  template <class T, class... Args>
  friend T* CreateObject(Args&&... args);

  // "Settings" and "ForceSettings" of the parameter text.
  void ApplySettingsCommands(BSTR bstrParam);
  // The once-a-day cycle; bForce skips the date gate (update_cycle.cc).
  HRESULT RunUpdateCycle(bool bForce);
  // Rebuilds the reference tables from WhiteList.js; the result is ignored.
  HRESULT LoadWhiteList();

  // Constant after construction.
  CScoreSettings m_settings;
  CCorvaneDB m_db;
};

}  // namespace corvane

#endif  // CORVANE_PROVIDER_PROVIDER_OBJECT_H_
