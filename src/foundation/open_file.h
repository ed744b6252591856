#pragma once
#include <cstddef>
#include <string>

#include "foundation/text.h"
#include "platform/types.h"

namespace corvane {

// A file that is read, closed at the end of the scope.
class OpenFile {
 public:
  explicit OpenFile(const WString& path);
  ~OpenFile();
  OpenFile(const OpenFile&) = delete;
  OpenFile& operator=(const OpenFile&) = delete;

  explicit operator bool() const { return m_hFile != nullptr; }
  // The whole content. False when the platform fails, with its last error, or when the file has
  // more than `most` bytes.
  bool ReadAll(std::size_t most, std::string* bytes) const;

 private:
  platform::HANDLE m_hFile;
};

}  // namespace corvane
