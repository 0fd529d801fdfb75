#include "platform/app_data.h"

#include <cstdlib>

#include "common/utf.h"
#include "platform/data_folder_rights.h"
#include "platform/paths.h"

namespace corvane {
namespace {

const char* NonEmptyEnv(const char* name) {
  const char* value = std::getenv(name);
  return (value == nullptr || *value == '\0') ? nullptr : value;
}

}  // namespace

bool GetAppDataFolder(std::u16string* lpPath) {
  if (const char* appData = NonEmptyEnv("CORVANE_APPDATA")) {
    *lpPath = FromUtf8(appData);
    return true;
  }
  if (const char* dataHome = NonEmptyEnv("XDG_DATA_HOME")) {
    *lpPath = FromUtf8(dataHome);
    return true;
  }
  if (const char* home = NonEmptyEnv("HOME")) {
    *lpPath = PathJoin(FromUtf8(home), u".local/share");
    return true;
  }
  return false;
}

bool GetDataFolder(std::u16string* lpPath) {
  std::u16string appData;
  if (!GetAppDataFolder(&appData)) return false;
  *lpPath = PathJoin(appData, kDataFolderName);
  static_cast<void>(CreatePrivateFolder(*lpPath));
  return true;
}

}  // namespace corvane
