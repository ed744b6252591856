#include "history/data_folder.h"

#include "platform/file_api.h"
#include "platform/platform.h"

namespace corvane {

WString DataFolder() {
  WString folder;
  if (Os().files.SHGetFolderPathW(platform::CSIDL_COMMON_APPDATA, &folder) < 0) return {};
  for (const char16_t* part : {u"OstrelNetworks", u"Corvane"}) {
    folder += platform::kPathSeparator;
    folder += part;
  }
  const platform::DWORD attributes = Os().files.GetFileAttributesW(folder.c_str());
  const bool isFolder = attributes != platform::INVALID_FILE_ATTRIBUTES &&
                        (attributes & platform::FILE_ATTRIBUTE_DIRECTORY) != 0;
  return isFolder ? folder : WString();
}

}  // namespace corvane
