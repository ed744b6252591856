#include "foundation/open_file.h"

#include "foundation/guarded.h"
#include "platform/file_api.h"
#include "platform/platform.h"

namespace corvane {

OpenFile::OpenFile(const WString& path)
    : m_hFile(
          Os().files.CreateFileW(path.c_str(), platform::GENERIC_READ, platform::OPEN_EXISTING)) {}

OpenFile::~OpenFile() {
  if (m_hFile) GiveBack("OpenFile", "CloseFile", [this] { Os().files.CloseFile(m_hFile); });
}

bool OpenFile::ReadAll(std::size_t most, std::string* bytes) const {
  bytes->clear();
  platform::ULONGLONG size = 0;
  if (!Os().files.GetFileSizeEx(m_hFile, &size) || size > most) return false;
  bytes->resize(size);
  std::size_t done = 0;
  while (done < bytes->size()) {
    platform::DWORD read = 0;
    if (!Os().files.ReadFile(m_hFile, bytes->data() + done,
                             static_cast<platform::DWORD>(size - done), &read)) {
      return false;
    }
    if (read == 0) break;  // cut short by its writer since
    done += read;
  }
  bytes->resize(done);
  return true;
}

}  // namespace corvane
