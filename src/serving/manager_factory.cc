#include "serving/manager_factory.h"

#include "platform/com_object.h"
#include "serving/common_use_manager.h"
#include "serving/favorite_manager.h"
#include "serving/focus_manager.h"
#include "serving/history_manager.h"

namespace corvane {
namespace {

template <class T>
IURLsManager* CreateAttached(IUnknown* provider) {
  T* manager = CreateObject<T>();
  if (manager == nullptr) return nullptr;
  if (FAILED(manager->Attach(provider))) {
    manager->Release();
    return nullptr;
  }
  return static_cast<IURLsManager*>(manager);
}

}  // namespace

IURLsManager* CreateURLsManager(uint32_t uManagerID, IUnknown* provider) {
  switch (uManagerID) {
    case 1:
      return CreateAttached<CCommonUseURLsManager>(provider);
    case 2:
      return CreateAttached<CFocusURLsManager>(provider);
    case 3:
      return CreateAttached<CHistoryURLsManager>(provider);
    case 4:
      return CreateAttached<CFavoriteURLsManger>(provider);
    default:
      return nullptr;
  }
}

}  // namespace corvane
