#include "any_host/pipe_peer.h"

#include <utility>

#include "platform/utf.h"
#include "platform/windows/win32.h"

namespace corvane::test {

using namespace platform;

namespace {

constexpr DWORD kLimitMs = 10'000;
constexpr DWORD kPauseMs = 10;
constexpr std::size_t kMostBytes = 1'000'002;

HANDLE HandleOf(std::intptr_t end) { return reinterpret_cast<HANDLE>(end); }

// One read or write: how many bytes; none when it fails or takes too long.
template <typename Begin>
std::optional<DWORD> Transfer(HANDLE pipe, Begin begin) {
  ::OVERLAPPED overlapped{};
  overlapped.hEvent = ::CreateEventW(nullptr, TRUE, FALSE, nullptr);
  ::DWORD count = 0;
  bool done = begin(&overlapped) || ::GetLastError() == ERROR_IO_PENDING;
  if (done) {
    if (::WaitForSingleObject(overlapped.hEvent, kLimitMs) != WAIT_OBJECT_0)
      ::CancelIoEx(pipe, &overlapped);
    done = ::GetOverlappedResult(pipe, &overlapped, &count, TRUE) != FALSE;
  }
  ::CloseHandle(overlapped.hEvent);
  return done ? std::optional<DWORD>(count) : std::nullopt;
}

}  // namespace

PipePeer::PipePeer(const std::string& path) {
  const std::u16string name = platform::ToUtf16(path);
  const ULONGLONG until = ::GetTickCount64() + kLimitMs;
  HANDLE pipe;
  do {
    pipe = ::CreateFileW(windows::Wide(name.c_str()), GENERIC_READ | GENERIC_WRITE, 0, nullptr,
                         OPEN_EXISTING, FILE_FLAG_OVERLAPPED, nullptr);
    if (pipe != INVALID_HANDLE_VALUE || ::GetLastError() != ERROR_PIPE_BUSY) break;
    ::Sleep(kPauseMs);
  } while (::GetTickCount64() < until);
  if (pipe == INVALID_HANDLE_VALUE) return;
  ::DWORD mode = PIPE_READMODE_MESSAGE;
  ::SetNamedPipeHandleState(pipe, &mode, nullptr, nullptr);
  m_End = reinterpret_cast<std::intptr_t>(pipe);
}

PipePeer::PipePeer(PipePeer&& other) noexcept : m_End(std::exchange(other.m_End, kNone)) {}

bool PipePeer::Send(std::u16string_view message) {
  std::string bytes(reinterpret_cast<const char*>(message.data()), message.size() * 2);
  bytes.append(2, '\0');
  return SendBytes(bytes);
}

bool PipePeer::SendBytes(std::string_view bytes) {
  const auto size = static_cast<DWORD>(bytes.size());
  return Transfer(HandleOf(m_End), [&](::OVERLAPPED* overlapped) {
           return ::WriteFile(HandleOf(m_End), bytes.data(), size, nullptr, overlapped);
         }) == size;
}

std::optional<std::u16string> PipePeer::Receive() {
  std::u16string message(kMostBytes / 2, u'\0');
  const auto count = Transfer(HandleOf(m_End), [&](::OVERLAPPED* overlapped) {
    return ::ReadFile(HandleOf(m_End), message.data(), kMostBytes, nullptr, overlapped);
  });
  if (!count || *count < 2) return std::nullopt;
  message.resize(*count / 2 - 1);
  return message;
}

bool PipePeer::IsAtEnd() {
  char byte;
  const auto count = Transfer(HandleOf(m_End), [&](::OVERLAPPED* overlapped) {
    return ::ReadFile(HandleOf(m_End), &byte, 1, nullptr, overlapped);
  });
  const DWORD error = ::GetLastError();
  return !count && (error == ERROR_BROKEN_PIPE || error == ERROR_PIPE_NOT_CONNECTED);
}

void PipePeer::Vanish() {
  if (m_End != kNone) ::CloseHandle(HandleOf(m_End));
  m_End = kNone;
}

}  // namespace corvane::test
