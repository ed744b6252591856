// Echo requests.

#include "platform/windows/windows_icmp.h"
#include "platform/windows/windows_threads.h"
#include "windows/system_functions.h"

namespace corvane::test {

using platform::windows::SystemLibrary;
using platform::windows::WindowsIcmp;
using platform::windows::WindowsThreads;

namespace {

// What the system was asked, and the replies that it gives.
std::string g_Asked;
::DWORD g_Replies = 0;

std::string Text(const void* data, ::WORD size) {
  return std::string(static_cast<const char*>(data), size);
}
::HANDLE WINAPI Create() { return reinterpret_cast<::HANDLE>(0x40); }
::HANDLE WINAPI CreateNone() {
  ::SetLastError(ERROR_ACCESS_DENIED);
  return INVALID_HANDLE_VALUE;
}
::BOOL WINAPI Close(::HANDLE icmp) { return icmp == reinterpret_cast<::HANDLE>(0x40); }
::DWORD WINAPI Echo(::HANDLE, ::IPAddr to, void* data, ::WORD size, ::IP_OPTION_INFORMATION* how,
                    void* reply, ::DWORD replySize, ::DWORD timeout) {
  g_Asked = std::to_string(to) + " " + Text(data, size) + " ttl " + std::to_string(how->Ttl) +
            " room " + std::to_string(replySize) + " " + std::to_string(timeout) + " ms";
  static_cast<::ICMP_ECHO_REPLY*>(reply)->RoundTripTime = 12;
  static_cast<::ICMP_ECHO_REPLY*>(reply)->Options.Ttl = 60;
  if (g_Replies == 0) ::SetLastError(IP_REQ_TIMED_OUT);
  return g_Replies;
}
::DWORD WINAPI Echo6(::HANDLE, ::HANDLE event, ::FARPROC routine, void* context,
                     ::sockaddr_in6* from, ::sockaddr_in6* to, void* data, ::WORD size,
                     ::IP_OPTION_INFORMATION* how, void*, ::DWORD replySize, ::DWORD timeout) {
  g_Asked = std::string(event || routine || context ? "later " : "") +
            std::to_string(from->sin6_addr.s6_addr[15]) + " to " +
            std::to_string(to->sin6_addr.s6_addr[15]) + " scope " +
            std::to_string(to->sin6_scope_id) + " " + Text(data, size) + " ttl " +
            std::to_string(how->Ttl) + " room " + std::to_string(replySize) + " " +
            std::to_string(timeout) + " ms";
  if (g_Replies == 0) ::SetLastError(IP_REQ_TIMED_OUT);
  return g_Replies;
}

const SystemFunction kFunctions[] = {
    {"IcmpCreateFile", reinterpret_cast<void*>(&Create), nullptr},
    {"Icmp6CreateFile", reinterpret_cast<void*>(&CreateNone), nullptr},
    {"IcmpCloseHandle", reinterpret_cast<void*>(&Close), nullptr},
    {"IcmpSendEcho", reinterpret_cast<void*>(&Echo), nullptr},
    {"Icmp6SendEcho2", reinterpret_cast<void*>(&Echo6), nullptr},
};
const SystemLibrary kSimulated(+[](const char* name) { return FindIn(kFunctions, name); });

constexpr HANDLE kNone = nullptr;

std::vector<Operation<IcmpApi>> Operations() {
  static SOCKADDR_IN6 address;
  static char reply[64];
  return {
      {"IcmpCreateFile", [](auto& it) { return CodeOf(it.IcmpCreateFile()); }},
      {"Icmp6CreateFile", [](auto& it) { return CodeOf(it.Icmp6CreateFile()); }},
      {"IcmpCloseHandle", [](auto& it) { return CodeOf(it.IcmpCloseHandle(kNone)); }},
      {"IcmpSendEcho",
       [](auto& it) {
         return CodeOf(it.IcmpSendEcho(kNone, 1, nullptr, 0, nullptr, reply, 64, 1));
       }},
      {"Icmp6SendEcho2",
       [](auto& it) {
         return CodeOf(
             it.Icmp6SendEcho2(kNone, &address, &address, nullptr, 0, nullptr, reply, 64, 1));
       }},
  };
}

}  // namespace

TEST(WindowsIcmp, PassesOnWhatIsAskedAndKeepsWhyItFailed) {
  WindowsThreads threads;
  WindowsIcmp icmp(kSimulated);
  const HANDLE four = icmp.IcmpCreateFile();
  EXPECT_EQ(four, reinterpret_cast<HANDLE>(0x40));
  EXPECT_EQ(icmp.Icmp6CreateFile(), nullptr);
  EXPECT_EQ(threads.GetLastError(), ERROR_ACCESS_DENIED);
  IP_OPTION_INFORMATION options;
  options.Ttl = 3;
  ICMP_ECHO_REPLY reply;
  g_Replies = 1;
  EXPECT_EQ(icmp.IcmpSendEcho(four, 0x0100007F, "ping", 4, &options, &reply, sizeof reply, 500),
            1u);
  EXPECT_EQ(g_Asked, "16777343 ping ttl 3 room 40 500 ms");
  EXPECT_EQ(reply.RoundTripTime, 12u);
  EXPECT_EQ(reply.Options.Ttl, 60);
  SOCKADDR_IN6 from, to;
  from.sin6_addr[15] = 1;
  to.sin6_addr[15] = 2;
  to.sin6_scope_id = 7;
  char room[100];
  EXPECT_EQ(icmp.Icmp6SendEcho2(four, &from, &to, "six", 3, &options, room, sizeof room, 900), 1u);
  EXPECT_EQ(g_Asked, "1 to 2 scope 7 six ttl 3 room 116 900 ms");
  EXPECT_EQ(threads.GetLastError(), ERROR_ACCESS_DENIED) << "none of these has failed";
  g_Replies = 0;
  EXPECT_EQ(icmp.IcmpSendEcho(four, 1, "ping", 4, &options, &reply, sizeof reply, 500), 0u);
  EXPECT_EQ(threads.GetLastError(), IP_REQ_TIMED_OUT);
  EXPECT_EQ(icmp.IcmpCloseHandle(four), TRUE);
}

TEST(WindowsIcmp, AFaultOrAMissingLibraryIsTheFailureOfOneOperation) {
  WindowsIcmp missing(kMissing), faulting(kFaulting);
  ExpectFailures<IcmpApi>(Operations(), missing, faulting);
}

// By the system's own library: this machine answers itself, or may not be asked without rights.
TEST(WindowsIcmp, TheSystemsOwnLibraryAsksThisMachine) {
  WindowsThreads threads;
  WindowsIcmp icmp;
  const HANDLE four = icmp.IcmpCreateFile();
  ASSERT_NE(four, nullptr);
  struct {
    ICMP_ECHO_REPLY reply;
    char room[64];
  } answer{};
  const DWORD replies =
      icmp.IcmpSendEcho(four, 0x0100007F, "ping", 4, nullptr, &answer, sizeof answer, 1000);
  if (replies == 0) {
    EXPECT_NE(threads.GetLastError(), ERROR_SUCCESS);
  } else {
    EXPECT_EQ(answer.reply.Address, 0x0100007Fu);
    EXPECT_EQ(answer.reply.Status, platform::DWORD{IP_SUCCESS});
    EXPECT_EQ(answer.reply.DataSize, 4);
  }
  EXPECT_EQ(icmp.IcmpCloseHandle(four), TRUE);
  // Not every system has ICMP for IPv6 (Wine 8 has not).
  const HANDLE six = icmp.Icmp6CreateFile();
  if (six) {
    EXPECT_EQ(icmp.IcmpCloseHandle(six), TRUE);
  } else {
    EXPECT_EQ(threads.GetLastError(), 120u);
  }
}

}  // namespace corvane::test
