#include "pipe/csec.h"

#include <vector>

#include "foundation/guarded.h"
#include "platform/pipe_api.h"
#include "platform/platform.h"
#include "platform/thread_api.h"

namespace corvane {

using namespace platform;

namespace {

constexpr DWORD kDescriptorRevision = 1;
constexpr std::uint32_t kVersionWithIntegrity = 6;

// A token of the pipe service, closed at the end of its scope.
class PipeToken {
 public:
  PipeToken() = default;
  ~PipeToken() {
    if (m_hToken) GiveBack("PipeToken", "CloseToken", [this] { Os().pipes.CloseToken(m_hToken); });
  }
  PipeToken(const PipeToken&) = delete;
  PipeToken& operator=(const PipeToken&) = delete;

  // The thread's, and without one the process's.
  bool Open() {
    if (Os().pipes.OpenThreadToken(&m_hToken)) return true;
    m_hToken = nullptr;
    if (Os().threads.GetLastError() != ERROR_NO_TOKEN) return false;
    if (Os().pipes.OpenProcessToken(&m_hToken)) return true;
    m_hToken = nullptr;
    return false;
  }
  HANDLE Get() const { return m_hToken; }

 private:
  HANDLE m_hToken = nullptr;
};

}  // namespace

WString PipeDescriptorText(WStringView sid, std::uint32_t majorVersion) {
  WString text = u"D:(A;;GA;;;";
  text += sid;
  text += u")(A;;GWGR;;;AU)";
  if (majorVersion >= kVersionWithIntegrity) text += u"S:(ML;;NW;;;S-1-16-0)";
  return text;
}

CSEC::~CSEC() {
  if (m_pDescriptor) GiveBack("CSEC", "LocalFree", [this] { Os().pipes.LocalFree(m_pDescriptor); });
}

bool CSEC::ReadSid(WString* sid) {
  auto& pipes = Os().pipes;
  PipeToken token;
  if (!token.Open()) return false;
  DWORD size = 0;
  if (!pipes.GetTokenUser(token.Get(), nullptr, 0, &size) &&
      Os().threads.GetLastError() != ERROR_INSUFFICIENT_BUFFER) {
    return false;
  }
  std::vector<BYTE> user(size);
  return pipes.GetTokenUser(token.Get(), user.data(), size, &size) &&
         pipes.ConvertSidToStringSidW(user.data(), sid);
}

const SECURITY_ATTRIBUTES* CSEC::GetAttributes() {
  if (!m_pDescriptor) {
    WString sid;
    if (!ReadSid(&sid)) return nullptr;
    const WString text = PipeDescriptorText(sid, Os().pipes.GetMajorVersion());
    void* descriptor = nullptr;
    if (!Os().pipes.ConvertStringSecurityDescriptorToSecurityDescriptorW(
            text.c_str(), kDescriptorRevision, &descriptor)) {
      return nullptr;
    }
    m_pDescriptor = descriptor;
  }
  m_Attributes.nLength = sizeof(m_Attributes);
  m_Attributes.lpSecurityDescriptor = m_pDescriptor;
  m_Attributes.bInheritHandle = TRUE;
  return &m_Attributes;
}

}  // namespace corvane
