// Windows sockets of this machine.

#include <cstring>
#include <string>
#include <vector>

#include "platform/windows/windows_sockets.h"
#include "platform/windows/windows_threads.h"
#include "windows/system_functions.h"

namespace corvane::test {

using platform::windows::WindowsSockets;
using platform::windows::WindowsThreads;

namespace {

constexpr int kStream = 1;     // SOCK_STREAM
constexpr int kDatagrams = 2;  // SOCK_DGRAM
constexpr DWORD kLong = 10'000;

class WindowsSocketsTest : public testing::Test {
 protected:
  WindowsSocketsTest() { EXPECT_EQ(sockets.WSAStartup(0x0202), 0); }
  ~WindowsSocketsTest() override { EXPECT_EQ(sockets.WSACleanup(), 0); }

  // A socket of datagrams on a port of this machine that the system chooses.
  SOCKET Bound(SOCKADDR_INET* address) {
    const SOCKET it = sockets.socket(AF_INET, kDatagrams, 0);
    EXPECT_NE(it, INVALID_SOCKET);
    auto& four = *reinterpret_cast<SOCKADDR_IN*>(address);
    four = {};
    four.sin_addr[0] = 127;
    four.sin_addr[3] = 1;
    EXPECT_EQ(sockets.bind(it, address, sizeof four), 0);
    int length = sizeof four;
    EXPECT_EQ(::getsockname(it, reinterpret_cast<::sockaddr*>(address), &length), 0);
    return it;
  }

  WindowsThreads threads;
  WindowsSockets sockets;
};

}  // namespace

TEST_F(WindowsSocketsTest, APostedReadTakesADatagramAndSetsTheEvent) {
  SOCKADDR_INET address;
  const SOCKET receiver = Bound(&address);
  const SOCKET sender = sockets.socket(AF_INET, kDatagrams, 0);
  const HANDLE event = threads.CreateEventW(TRUE, FALSE, "read");
  char room[16] = {};
  ASSERT_EQ(sockets.WSARecvFrom(receiver, room, sizeof room, event), -1);
  ASSERT_EQ(sockets.WSAGetLastError(), 997u);
  EXPECT_EQ(threads.WaitForSingleObject(event, 0), WAIT_TIMEOUT);
  EXPECT_EQ(sockets.sendto(sender, "hello", 5, 0, &address, sizeof(SOCKADDR_IN)), 5);
  EXPECT_EQ(threads.WaitForSingleObject(event, kLong), WAIT_OBJECT_0);
  EXPECT_STREQ(room, "hello");
  EXPECT_EQ(sockets.closesocket(receiver), 0);
  EXPECT_EQ(sockets.closesocket(sender), 0);
  EXPECT_TRUE(threads.CloseHandle(event));
}

// The buffer is its owner's again when the socket has gone: nothing writes there any more.
TEST_F(WindowsSocketsTest, ClosingEndsReadsThatNothingHasCome) {
  SOCKADDR_INET address;
  for (int round = 0; round < 20; ++round) {
    const SOCKET receiver = Bound(&address);
    const HANDLE first = threads.CreateEventW(TRUE, FALSE, "first");
    const HANDLE second = threads.CreateEventW(TRUE, FALSE, "second");
    std::vector<char> room(64);
    EXPECT_EQ(sockets.WSARecvFrom(receiver, room.data(), 32, first), -1);
    EXPECT_EQ(sockets.WSARecvFrom(receiver, room.data() + 32, 32, second), -1);
    EXPECT_EQ(sockets.PendingReads(), 2u);
    EXPECT_EQ(sockets.closesocket(receiver), 0);
    EXPECT_EQ(sockets.PendingReads(), 0u);
    EXPECT_EQ(threads.WaitForSingleObject(first, kLong), WAIT_OBJECT_0) << "the read has ended";
    EXPECT_EQ(threads.WaitForSingleObject(second, kLong), WAIT_OBJECT_0);
    EXPECT_TRUE(threads.CloseHandle(first));
    EXPECT_TRUE(threads.CloseHandle(second));
  }
}

TEST_F(WindowsSocketsTest, AReadThatCannotBeginIsNotWaitedFor) {
  const SOCKET bare = sockets.socket(AF_INET, kStream, 0);
  char room[16];
  EXPECT_EQ(sockets.WSARecvFrom(bare, room, sizeof room, nullptr),
            -1);  // there is nobody to read from
  EXPECT_EQ(sockets.WSAGetLastError(), 10057u);
  EXPECT_EQ(sockets.PendingReads(), 0u);
  EXPECT_EQ(sockets.closesocket(bare), 0);
  EXPECT_EQ(sockets.WSARecvFrom(bare, room, sizeof room, nullptr), -1);
  EXPECT_EQ(sockets.WSAGetLastError(), 10038u);
  EXPECT_EQ(sockets.closesocket(bare), -1);
}

TEST_F(WindowsSocketsTest, KeepsTheErrorOfFailuresForTheirThread) {
  EXPECT_EQ(sockets.socket(99, 1, 0), INVALID_SOCKET);
  const DWORD family = sockets.WSAGetLastError();
  EXPECT_TRUE(family == 10047 || family == 10022) << family;
  EXPECT_EQ(threads.GetLastError(), family);
  threads.SetLastError(5);
  auto body = [&]() -> DWORD {
    EXPECT_EQ(sockets.WSAGetLastError(), 0u);
    EXPECT_EQ(sockets.closesocket(INVALID_SOCKET), -1);
    return sockets.WSAGetLastError();
  };
  const HANDLE thread =
      threads.CreateThread([](void* it) -> DWORD { return (*static_cast<decltype(body)*>(it))(); },
                           &body, "other", nullptr);
  EXPECT_EQ(threads.WaitForSingleObject(thread, kLong), WAIT_OBJECT_0);
  DWORD code = 0;
  EXPECT_TRUE(threads.GetExitCodeThread(thread, &code));
  EXPECT_TRUE(threads.CloseHandle(thread));
  EXPECT_EQ(code, 10038u);
  // Neither another thread's failure nor a success nor another service's touches it.
  SOCKADDR_INET address;
  const SOCKET good = Bound(&address);
  EXPECT_EQ(sockets.closesocket(good), 0);
  EXPECT_EQ(sockets.WSAGetLastError(), family);
}

TEST_F(WindowsSocketsTest, OptionsReachTheSocket) {
  SOCKADDR_INET address;
  const SOCKET it = Bound(&address);
  const int ttl = 3, room = 100'000;
  EXPECT_EQ(sockets.setsockopt(it, 0, 4, &ttl, sizeof ttl), 0);
  EXPECT_EQ(sockets.setsockopt(it, 0xFFFF, 0x1001, &room, sizeof room), 0);
  int got = 0, length = sizeof got;
  EXPECT_EQ(::getsockopt(it, IPPROTO_IP, IP_TTL, reinterpret_cast<char*>(&got), &length), 0);
  EXPECT_EQ(got, 3);
  platform::ULONG nonBlocking = 1;
  EXPECT_EQ(sockets.ioctlsocket(it, 0x8004667E, &nonBlocking), 0);
  char none[4];
  EXPECT_EQ(::recv(it, none, sizeof none, 0), -1);
  EXPECT_EQ(::WSAGetLastError(), WSAEWOULDBLOCK);
  SOCKADDR_INET own;
  DWORD returned = 0;
  if (sockets.WSAIoctl(it, 0xC8000014, &address, sizeof(SOCKADDR_IN), &own, sizeof own,
                       &returned) == 0) {
    EXPECT_EQ(own.si_family, AF_INET);
  } else {
    EXPECT_NE(sockets.WSAGetLastError(), 0u);
  }
  EXPECT_EQ(sockets.setsockopt(it, 0, 4, &ttl, 0), -1);
  EXPECT_EQ(sockets.closesocket(it), 0);
}

TEST_F(WindowsSocketsTest, AddressesComeAsWholeRecordsOfTheirOwn) {
  ADDRINFO hints;
  hints.ai_family = AF_INET;
  hints.ai_socktype = kDatagrams;
  ADDRINFO* list = nullptr;
  ASSERT_EQ(sockets.getaddrinfo("127.0.0.1", "80", &hints, &list), 0);
  ASSERT_NE(list, nullptr);
  EXPECT_EQ(list->ai_family, AF_INET);
  EXPECT_EQ(list->ai_socktype, kDatagrams);
  EXPECT_EQ(list->ai_addrlen, sizeof(SOCKADDR_IN));
  const SOCKADDR_INET whole = *list->ai_addr;
  const auto& four = reinterpret_cast<const SOCKADDR_IN&>(whole);
  EXPECT_EQ(four.sin_addr[0], 127);
  EXPECT_EQ(four.sin_port, 80 << 8);
  EXPECT_EQ(whole.words[5], 0u) << "nothing behind the address";
  EXPECT_EQ(list->ai_next, nullptr);
  sockets.freeaddrinfo(list);
  hints.ai_family = AF_INET6;
  ASSERT_EQ(sockets.getaddrinfo("::1", nullptr, &hints, &list), 0);
  EXPECT_EQ(reinterpret_cast<SOCKADDR_IN6*>(list->ai_addr)->sin6_addr[15], 1);
  sockets.freeaddrinfo(list);
  hints.ai_flags = 1;  // to bind to: every address of this machine
  hints.ai_family = AF_INET;
  ASSERT_EQ(sockets.getaddrinfo(nullptr, "0", &hints, &list), 0);
  EXPECT_EQ(reinterpret_cast<SOCKADDR_IN*>(list->ai_addr)->sin_addr[0], 0);
  sockets.freeaddrinfo(list);
  hints.ai_flags = 4;  // AI_NUMERICHOST
  EXPECT_EQ(sockets.getaddrinfo("no address", nullptr, &hints, &list), 11001);
  sockets.freeaddrinfo(nullptr);
}

TEST_F(WindowsSocketsTest, AFaultIsTheFailureOfOneOperation) {
  SOCKADDR_INET address;
  const SOCKET it = Bound(&address);
  // The system reads and writes where it is told; some systems answer WSAEFAULT for it.
  DWORD answer = 0;
  const DWORD fault = FaultCodeOf(
      [&] { answer = static_cast<DWORD>(sockets.ioctlsocket(it, 0x8004667E, nullptr)); });
  EXPECT_TRUE(fault == EXCEPTION_ACCESS_VIOLATION || answer != 0);
  EXPECT_EQ(sockets.closesocket(it), 0);
}

}  // namespace corvane::test
