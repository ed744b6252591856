#include "platform/windows/windows_instance.h"

#include "platform/windows/trusted_owner.h"
#include "platform/windows/win32.h"
#include "platform/windows/windows_error.h"

namespace corvane::platform::windows {

namespace {

constexpr wchar_t kMutex[] = L"Global\\OstrelNetworks.Corvane.Running";
constexpr wchar_t kStop[] = L"Global\\OstrelNetworks.Corvane.Stop";
// All of the system and of administrators; everybody may see whether it runs, and whose it is
// (SYNCHRONIZE, READ_CONTROL).
constexpr wchar_t kAccess[] = L"D:(A;;GA;;;SY)(A;;GA;;;BA)(A;;0x120000;;;WD)";
constexpr DWORD kPauseMs = 50;

class Access {
 public:
  Access() {
    ::ConvertStringSecurityDescriptorToSecurityDescriptorW(kAccess, SDDL_REVISION_1, &m_Descriptor,
                                                           nullptr);
    m_Attributes.lpSecurityDescriptor = m_Descriptor;
  }
  ~Access() { ::LocalFree(m_Descriptor); }
  Access(const Access&) = delete;
  Access& operator=(const Access&) = delete;
  ::SECURITY_ATTRIBUTES* Get() { return m_Descriptor ? &m_Attributes : nullptr; }

 private:
  void* m_Descriptor = nullptr;
  ::SECURITY_ATTRIBUTES m_Attributes{sizeof(m_Attributes), nullptr, FALSE};
};

}  // namespace

WindowsInstance::WindowsInstance(bool share) {
  Access access;
  if (!share) {
    m_Mutex = ::CreateMutexW(access.Get(), FALSE, kMutex);
    const DWORD error = ::GetLastError();
    if (!m_Mutex && error != ERROR_ACCESS_DENIED) {
      throw WindowsError("it cannot be told whether another instance runs: " + ErrorText(error));
    }
    if (!m_Mutex || error == ERROR_ALREADY_EXISTS) {
      const bool runs = IsRunning();
      if (m_Mutex) ::CloseHandle(m_Mutex);
      throw WindowsError(runs ? "another instance runs on this machine; end it first"
                              : "the name that tells of a running instance is taken by another "
                                "account; end the program that has taken it");
    }
    m_Stop = ::CreateEventW(access.Get(), TRUE, FALSE, kStop);
    if (m_Stop && ::GetLastError() == ERROR_ALREADY_EXISTS) Adopt();
  } else {
    m_Stop = ::CreateEventW(nullptr, TRUE, FALSE, nullptr);
  }
  if (!m_Stop) {
    const DWORD error = ::GetLastError();
    if (m_Mutex) ::CloseHandle(m_Mutex);
    throw WindowsError("the event that stops it cannot be made: " + ErrorText(error));
  }
}

// Whoever asked the last instance to stop may hold its event still. One that any other user has
// made is his to set at will.
void WindowsInstance::Adopt() const {
  if (HasTrustedOwner(m_Stop)) {
    ::ResetEvent(m_Stop);
    return;
  }
  ::CloseHandle(m_Stop);
  ::CloseHandle(m_Mutex);
  throw WindowsError(
      "the event that stops it belongs to another account; end the program that "
      "has made it");
}

WindowsInstance::~WindowsInstance() {
  ::CloseHandle(m_Stop);
  if (m_Mutex) ::CloseHandle(m_Mutex);
}

// Every user can make a mutex of that name. An instance's own lets everybody see its owner.
bool WindowsInstance::IsRunning() {
  const HANDLE mutex = ::OpenMutexW(SYNCHRONIZE | READ_CONTROL, FALSE, kMutex);
  if (!mutex) return false;
  const bool isOwn = HasTrustedOwner(mutex);
  ::CloseHandle(mutex);
  return isOwn;
}

DWORD WindowsInstance::RequestStop(DWORD milliseconds) {
  const HANDLE stop = ::OpenEventW(EVENT_MODIFY_STATE, FALSE, kStop);
  if (!stop) return ::GetLastError();
  ::SetEvent(stop);
  ::CloseHandle(stop);
  const ULONGLONG until = ::GetTickCount64() + milliseconds;
  while (IsRunning()) {
    if (::GetTickCount64() >= until) return WAIT_TIMEOUT;
    ::Sleep(kPauseMs);
  }
  return ERROR_SUCCESS;
}

}  // namespace corvane::platform::windows
