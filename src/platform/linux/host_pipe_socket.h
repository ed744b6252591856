#pragma once
#include <memory>
#include <string>

#include "platform/types.h"

namespace corvane::platform::linux_host {

// The place in the file system where clients find a pipe: a listening UNIX stream socket of the
// pipe's name in the folder, which everybody may connect to. It is gone with this object.
class HostPipeSocket {
 public:
  // Makes the folder where it is missing, and takes the place of a socket that nobody serves any
  // more. Null with the reason in *code: ERROR_ACCESS_DENIED when somebody does.
  static std::unique_ptr<HostPipeSocket> Open(const std::string& folder, const std::string& name,
                                              DWORD* code);
  ~HostPipeSocket();
  HostPipeSocket(const HostPipeSocket&) = delete;
  HostPipeSocket& operator=(const HostPipeSocket&) = delete;

  int Descriptor() const { return m_Listen; }
  // The next client that waits; -1 when there is none. When descriptors have run out, one is turned
  // away, which gives -1, too. Never blocks.
  int Accept();

 private:
  HostPipeSocket(std::string path, int folder) : m_Path(std::move(path)), m_Folder(folder) {}
  DWORD Bind(const std::string& name);

  const std::string m_Path;
  const int m_Folder;
  int m_Listen = -1;
  int m_Spare = -1;  // a descriptor to turn clients away with
  bool m_bBound = false;
};

// Whether a name can be that of a file in the pipes' folder.
bool IsPipeFileName(std::string_view name);

}  // namespace corvane::platform::linux_host
