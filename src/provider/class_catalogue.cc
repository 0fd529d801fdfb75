#include "provider/class_catalogue.h"

#include "provider/provider_object.h"
#include "serving/common_use_manager.h"
#include "serving/favorite_manager.h"
#include "serving/focus_manager.h"
#include "serving/history_manager.h"
#include "serving/url_array.h"
#include "serving/url_info.h"
#include "serving/url_info2.h"

namespace corvane {

// A manager created here has no provider attached: its calls that need the
// database fail with E_FAIL.
const std::vector<ClassEntry>& ClassCatalogue() {
  static const std::vector<ClassEntry> classes = {
      {CLSID_CorvaneDataProviderObject, &CCorvaneDataProviderObject::CreateInstance},
      {CLSID_CommonUseURLsManager, &CCommonUseURLsManager::CreateInstance},
      {CLSID_FocusURLsManager, &CFocusURLsManager::CreateInstance},
      {CLSID_HistoryURLsManager, &CHistoryURLsManager::CreateInstance},
      {CLSID_FavoriteURLsManger, &CFavoriteURLsManger::CreateInstance},
      {CLSID_URLArray, &CURLArray::CreateInstance},
      {CLSID_URLInfo, &CURLInfo::CreateInstance},
      {CLSID_URLInfo2, &CURLInfo2::CreateInstance},
  };
  return classes;
}

}  // namespace corvane
