#include "platform/windows/windows_pipe_client.h"

#include "platform/sim/kernel/sim_text.h"
#include "platform/windows/win32.h"
#include "platform/windows/windows_client_host.h"
#include "platform/windows/windows_error.h"

namespace corvane::platform::windows {

namespace {

constexpr std::size_t kLongestMessage = 1'000'000;  // bytes with the NUL
constexpr std::size_t kLongestPath = 32'768;        // characters, with the NUL
constexpr DWORD kSendMs = 10'000;
constexpr DWORD kBusyMs = 5'000;
constexpr DWORD kBusyPauseMs = 20;
// A server may learn who asks, and not act for them.
constexpr ::DWORD kFlags = FILE_FLAG_OVERLAPPED | SECURITY_SQOS_PRESENT | SECURITY_IDENTIFICATION;

}  // namespace

// A read or write on a pipe, which outlives it.
struct WindowsPipeClient::Operation {
  explicit Operation(HANDLE thePipe) : pipe(thePipe) {
    overlapped.hEvent = ::CreateEventW(nullptr, TRUE, FALSE, nullptr);
  }
  ~Operation() { ::CloseHandle(overlapped.hEvent); }
  Operation(const Operation&) = delete;
  Operation& operator=(const Operation&) = delete;

  // False when time is over, or on Ctrl-C, and it goes on.
  bool Await(DWORD ms) {
    const HANDLE all[] = {overlapped.hEvent, InterruptEvent()};
    return ::WaitForMultipleObjects(all[1] ? 2 : 1, all, FALSE, ms) == WAIT_OBJECT_0;
  }
  // What it has come to, a system error code; waits for the end.
  DWORD End(::DWORD* bytes) {
    return ::GetOverlappedResult(pipe, &overlapped, bytes, TRUE) ? DWORD{ERROR_SUCCESS}
                                                                 : DWORD{::GetLastError()};
  }
  void Cancel() {
    ::DWORD bytes = 0;
    ::CancelIoEx(pipe, &overlapped);
    End(&bytes);
  }

  const HANDLE pipe;
  ::OVERLAPPED overlapped{};
};

std::unique_ptr<WindowsPipeClient> WindowsPipeClient::Connect(const std::u16string& path,
                                                              std::string* reason) {
  const ULONGLONG until = ::GetTickCount64() + kBusyMs;
  for (;;) {
    const HANDLE pipe = ::CreateFileW(Wide(path.c_str()), GENERIC_READ | GENERIC_WRITE, 0, nullptr,
                                      OPEN_EXISTING, kFlags, nullptr);
    if (pipe != INVALID_HANDLE_VALUE) {
      ::DWORD mode = PIPE_READMODE_MESSAGE;
      if (::SetNamedPipeHandleState(pipe, &mode, nullptr, nullptr))
        return std::unique_ptr<WindowsPipeClient>(new WindowsPipeClient(pipe));
      *reason = ErrorText(::GetLastError());
      ::CloseHandle(pipe);
      return nullptr;
    }
    // All instances have clients; the next one comes in a moment.
    const DWORD error = ::GetLastError();
    if (error != ERROR_PIPE_BUSY || ::GetTickCount64() >= until || IsInterrupted()) {
      *reason = ErrorText(error);
      return nullptr;
    }
    ::Sleep(kBusyPauseMs);
  }
}

WindowsPipeClient::WindowsPipeClient(HANDLE pipe)
    : m_Pipe(pipe),
      m_pWrite(std::make_unique<Operation>(pipe)),
      m_pRead(std::make_unique<Operation>(pipe)) {}

WindowsPipeClient::~WindowsPipeClient() {
  if (m_bReading) m_pRead->Cancel();
  ::CloseHandle(m_Pipe);
}

bool WindowsPipeClient::Send(std::u16string_view message) {
  const std::u16string text(message);
  const auto size = static_cast<::DWORD>((text.size() + 1) * sizeof(char16_t));
  ::DWORD sent = 0;
  if (!::WriteFile(m_Pipe, text.c_str(), size, nullptr, &m_pWrite->overlapped) &&
      ::GetLastError() != ERROR_IO_PENDING) {
    return false;
  }
  if (!m_pWrite->Await(kSendMs)) {
    m_pWrite->Cancel();
    return false;
  }
  return m_pWrite->End(&sent) == ERROR_SUCCESS && sent == size;
}

WindowsPipeClient::Result WindowsPipeClient::Receive(int ms, std::u16string* message) {
  if (!m_bReading) {
    m_Buffer.resize(kLongestMessage / sizeof(char16_t));
    const ::BOOL done =
        ::ReadFile(m_Pipe, m_Buffer.data(), kLongestMessage, nullptr, &m_pRead->overlapped);
    const DWORD error = done ? ERROR_SUCCESS : ::GetLastError();
    if (!done && error != ERROR_IO_PENDING && error != ERROR_MORE_DATA) return Result::kEnd;
    m_bReading = true;
  }
  if (!m_pRead->Await(static_cast<DWORD>(ms))) return Result::kNothing;
  m_bReading = false;
  ::DWORD bytes = 0;
  const DWORD error = m_pRead->End(&bytes);
  // The rest of a longer message is the next one.
  if (error != ERROR_SUCCESS && error != ERROR_MORE_DATA) return Result::kEnd;
  message->assign(m_Buffer, 0, bytes / sizeof(char16_t));
  if (!message->empty() && message->back() == u'\0') message->pop_back();
  return Result::kMessage;
}

std::optional<std::string> WindowsPipeClient::ServerFolder() const {
  ::ULONG id = 0;
  if (!::GetNamedPipeServerProcessId(m_Pipe, &id)) return std::nullopt;
  const HANDLE process = ::OpenProcess(PROCESS_QUERY_LIMITED_INFORMATION, FALSE, id);
  if (!process) return std::nullopt;
  std::u16string path(kLongestPath, u'\0');
  auto size = static_cast<::DWORD>(path.size());
  if (!::QueryFullProcessImageNameW(process, 0, Wide(path.data()), &size)) size = 0;
  ::CloseHandle(process);
  path.resize(size);
  const std::size_t end = path.rfind(u'\\');
  if (end == path.npos) return std::nullopt;
  return sim::ToUtf8(std::u16string_view(path).substr(0, end));
}

}  // namespace corvane::platform::windows
