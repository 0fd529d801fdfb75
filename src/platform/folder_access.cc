#include "platform/folder_access.h"

#include "common/debug_log.h"
#include "common/utf.h"

namespace corvane {

// Access lists are not written yet: the folder keeps the rights it was
// created with.
bool GrantFolderAccess(std::u16string_view path, std::u16string_view account, uint32_t mask) {
  DebugLog("GrantFolderAccess(%s, %s, %08X) not available\r\n", ToUtf8(path).c_str(), ToUtf8(account).c_str(), mask);
  return false;
}

}  // namespace corvane
