#include "platform/windows/windows_sockets.h"

#include <algorithm>
#include <cstring>

#include "platform/windows/system_call.h"

namespace corvane::platform::windows {

namespace {

constexpr ::DWORD kPauseMs = 1;   // between two looks at a read that ends
constexpr int kMostLooks = 1000;  // at one that the system does not know

thread_local DWORD t_LastError = 0;

int Fail(DWORD code) {
  t_LastError = code;
  WindowsThreads::KeepLastError(code);
  return kSocketError;
}

// One call that answers by -1 and leaves the reason with the system, which is taken right behind
// it.
template <typename Fn>
auto ForwardSocket(const char* operation, Fn&& call) {
  EnterGate(operation);
  struct Answer {
    std::invoke_result_t<Fn> result;
    int error;
  };
  const Answer answer = OrFault([&] {
    Answer it{call(), 0};
    it.error = ::WSAGetLastError();
    return it;
  });
  if (answer.result == static_cast<std::invoke_result_t<Fn>>(-1)) {
    Fail(static_cast<DWORD>(answer.error));
  }
  return answer.result;
}

// As long as `length` beside it says.
const ::sockaddr* Address(const SOCKADDR_INET* address) {
  return reinterpret_cast<const ::sockaddr*>(address);
}

// A node of the lists that are given out: an address is read by its whole record, of which the
// system gives only the bytes in use.
struct AddressNode {
  ADDRINFO info;
  SOCKADDR_INET address;
  std::string name;
};

ADDRINFO* CopyOf(const ::ADDRINFOA* list) {
  ADDRINFO* first = nullptr;
  ADDRINFO** end = &first;
  for (; list; list = list->ai_next) {
    auto* const node = new AddressNode;
    ADDRINFO& info = node->info;
    info.ai_flags = list->ai_flags;
    info.ai_family = list->ai_family;
    info.ai_socktype = list->ai_socktype;
    info.ai_protocol = list->ai_protocol;
    info.ai_addrlen = std::min(list->ai_addrlen, sizeof node->address);
    if (list->ai_addr) {
      std::memcpy(static_cast<void*>(&node->address), list->ai_addr, info.ai_addrlen);
      info.ai_addr = &node->address;
    }
    if (list->ai_canonname) {
      node->name = list->ai_canonname;
      info.ai_canonname = node->name.data();
    }
    *end = &info;
    end = &info.ai_next;
  }
  return first;
}

}  // namespace

// What the system writes to until the read has ended.
struct WindowsSockets::Read {
  ::OVERLAPPED overlapped{};
  ::DWORD flags = 0;

  bool HasEnded() const { return HasOverlappedIoCompleted(&overlapped); }
};

WindowsSockets::WindowsSockets() = default;

WindowsSockets::~WindowsSockets() {
  for (auto& [socket, read] : m_Reads) {
    if (!read->HasEnded()) static_cast<void>(read.release());
  }
}

int WindowsSockets::WSAStartup(WORD version) {
  ::WSADATA data{};
  return Forward("WSAStartup", [&] { return ::WSAStartup(version, &data); });
}

int WindowsSockets::WSACleanup() {
  return ForwardSocket("WSACleanup", [] { return ::WSACleanup(); });
}

DWORD WindowsSockets::WSAGetLastError() { return t_LastError; }

int WindowsSockets::getaddrinfo(const char* name, const char* service, const ADDRINFO* hints,
                                ADDRINFO** result) {
  ::ADDRINFOA asked{};
  if (hints) {
    asked.ai_flags = hints->ai_flags;
    asked.ai_family = hints->ai_family;
    asked.ai_socktype = hints->ai_socktype;
    asked.ai_protocol = hints->ai_protocol;
  }
  ::ADDRINFOA* list = nullptr;
  const int code = Forward(
      "getaddrinfo", [&] { return ::getaddrinfo(name, service, hints ? &asked : nullptr, &list); });
  if (code != 0) return code;
  *result = CopyOf(list);
  OrFault([&] { ::freeaddrinfo(list); });
  return code;
}

void WindowsSockets::freeaddrinfo(ADDRINFO* list) {
  EnterGate("freeaddrinfo");
  while (list) {
    // The record begins with what was given out.
    const std::unique_ptr<AddressNode> node(reinterpret_cast<AddressNode*>(list));
    list = list->ai_next;
  }
}

SOCKET WindowsSockets::socket(int family, int type, int protocol) {
  return ForwardSocket("socket", [&] { return ::socket(family, type, protocol); });
}

int WindowsSockets::bind(SOCKET socket, const SOCKADDR_INET* address, int length) {
  return ForwardSocket("bind", [&] { return ::bind(socket, Address(address), length); });
}

int WindowsSockets::setsockopt(SOCKET socket, int level, int option, const void* value,
                               int length) {
  return ForwardSocket("setsockopt", [&] {
    return ::setsockopt(socket, level, option, static_cast<const char*>(value), length);
  });
}

int WindowsSockets::ioctlsocket(SOCKET socket, DWORD command, ULONG* argument) {
  return ForwardSocket("ioctlsocket", [&] {
    return ::ioctlsocket(socket, static_cast<::LONG>(command), As32(argument));
  });
}

int WindowsSockets::WSAIoctl(SOCKET socket, DWORD code, const void* input, DWORD inputSize,
                             void* output, DWORD outputSize, DWORD* returned) {
  return ForwardSocket("WSAIoctl", [&] {
    return ::WSAIoctl(socket, code, const_cast<void*>(input), inputSize, output, outputSize,
                      As32(returned), nullptr, nullptr);
  });
}

int WindowsSockets::WSARecvFrom(SOCKET socket, void* buffer, DWORD size, HANDLE event) {
  auto read = std::make_unique<Read>();
  Read* const it = read.get();
  it->overlapped.hEvent = event;
  {
    const std::lock_guard lock(m_Mutex);
    m_Reads.emplace(socket, std::move(read));
  }
  ::WSABUF room{size, static_cast<char*>(buffer)};  // copied by the call
  const int result = ForwardSocket("WSARecvFrom", [&] {
    return ::WSARecvFrom(socket, &room, 1, nullptr, &it->flags, nullptr, nullptr, &it->overlapped,
                         nullptr);
  });
  if (result != 0 && t_LastError != WSA_IO_PENDING) Drop(it);  // it has not begun
  return result;
}

std::size_t WindowsSockets::PendingReads() {
  const std::lock_guard lock(m_Mutex);
  return m_Reads.size();
}

void WindowsSockets::Drop(const Read* read) {
  const std::lock_guard lock(m_Mutex);
  std::erase_if(m_Reads, [&](const auto& own) { return own.second.get() == read; });
}

int WindowsSockets::sendto(SOCKET socket, const void* data, int size, int flags,
                           const SOCKADDR_INET* to, int length) {
  return ForwardSocket("sendto", [&] {
    return ::sendto(socket, static_cast<const char*>(data), size, flags, Address(to), length);
  });
}

// The reads end before the socket goes, as the buffers are their owners' again when it has gone.
int WindowsSockets::closesocket(SOCKET socket) {
  EnterGate("closesocket");
  EndReads(socket);
  return ForwardSocket("closesocket", [&] { return ::closesocket(socket); });
}

// Cancelling only asks for the end; that it has come is told by the record's state, which is the
// last that the system writes. A read that the system does not know and that does not end is one
// whose call has faulted: its record is left alone.
void WindowsSockets::EndReads(SOCKET socket) {
  std::unordered_multimap<SOCKET, std::unique_ptr<Read>> reads;
  {
    const std::lock_guard lock(m_Mutex);
    while (auto read = m_Reads.extract(socket)) reads.insert(std::move(read));
  }
  for (auto& [own, read] : reads) {
    ::OVERLAPPED* const overlapped = &read->overlapped;
    for (int looks = 0; !read->HasEnded(); ++looks) {
      const BOOL known =
          OrFault([&] { return ::CancelIoEx(reinterpret_cast<::HANDLE>(socket), overlapped); });
      if (!known && looks >= kMostLooks) {
        static_cast<void>(read.release());
        break;
      }
      ::Sleep(kPauseMs);
    }
  }
}

}  // namespace corvane::platform::windows
