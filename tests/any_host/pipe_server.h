#pragma once
#include <gtest/gtest.h>

#include <cstring>
#include <functional>
#include <mutex>
#include <set>
#include <string>
#include <vector>

#include "any_host/pipe_kernel.h"

namespace corvane::test {

inline constexpr platform::DWORD kPipeBufferBytes = 1'000'000;
inline constexpr platform::DWORD kLongMs = 10'000;

// Answers each message with what `answer` makes of it, on a thread of its own that ends when its
// owner gives it up. `ended` has the codes by which clients went.
class PipeServer {
 public:
  using Answer = std::function<std::string(std::string)>;

  // `path` is that of the kernel when it is null.
  PipeServer(PipeKernel& kernel, Answer answer, platform::LPCWSTR path = nullptr)
      : m_Kernel(kernel), m_Answer(std::move(answer)), m_Path(path ? path : kernel.pipePath) {
    auto& threads = m_Kernel.threads;
    m_Listening.hEvent = m_Event = threads.CreateEventW(platform::TRUE, platform::FALSE, "connect");
    m_Ready = threads.CreateEventW(platform::TRUE, platform::FALSE, "ready");
    m_Thread = threads.CreateThread(
        [](void* self) -> platform::DWORD { return static_cast<PipeServer*>(self)->Run(); }, this,
        "server", nullptr);
    threads.WaitForSingleObject(m_Ready, kLongMs);
  }
  ~PipeServer() {
    auto& threads = m_Kernel.threads;
    threads.TerminateThread(m_Thread, 1);
    EXPECT_TRUE(threads.AwaitAbandoned(kLongMs));
    while (!m_Records.empty()) Close(*m_Records.begin());
    if (m_Waiting) m_Kernel.pipes.CloseHandle(m_Waiting);
    for (const platform::HANDLE handle : {m_Event, m_Ready, m_Thread}) threads.CloseHandle(handle);
  }
  PipeServer(const PipeServer&) = delete;
  PipeServer& operator=(const PipeServer&) = delete;

  platform::HANDLE Thread() const { return m_Thread; }
  std::vector<platform::DWORD> Ended() {
    const std::lock_guard lock(m_Mutex);
    return m_Ended;
  }
  // Whether so many clients have gone within a while.
  bool AwaitEnded(std::size_t count) {
    for (int i = 0; i < 1'000 && Ended().size() < count; ++i) m_Kernel.threads.Sleep(10);
    return Ended().size() >= count;
  }

 private:
  // What the server keeps of a client, as the program does: one block with the OVERLAPPED as its
  // head.
  struct Record : platform::OVERLAPPED {
    platform::HANDLE pipe;
    PipeServer* server;
    platform::DWORD toWrite;
    char request[kPipeBufferBytes];
    char reply[kPipeBufferBytes];
  };

  platform::DWORD Run() {
    auto& pipes = m_Kernel.pipes;
    Listen();
    m_Kernel.threads.SetEvent(m_Ready);
    for (;;) {
      const auto result = pipes.WaitForMultipleObjectsEx(1, &m_Event, platform::TRUE,
                                                         platform::INFINITE, platform::TRUE);
      if (result == platform::WAIT_IO_COMPLETION) continue;
      if (result != platform::WAIT_OBJECT_0) return result;
      platform::DWORD none = 0;
      if (m_bPending) {
        EXPECT_TRUE(pipes.GetOverlappedResult(m_Waiting, &m_Listening, &none, platform::FALSE));
      }
      auto* const record = static_cast<Record*>(pipes.GlobalAlloc(sizeof(Record)));
      record->pipe = std::exchange(m_Waiting, nullptr);
      record->server = this;
      m_Records.insert(record);
      OnWritten(0, 0, record);
      Listen();
    }
  }
  // A client may be there before it is waited for.
  void Listen() {
    m_Kernel.threads.ResetEvent(m_Event);
    m_Waiting = m_Kernel.pipes.CreateNamedPipeW(
        m_Path, platform::PIPE_ACCESS_DUPLEX | platform::FILE_FLAG_OVERLAPPED,
        platform::PIPE_TYPE_MESSAGE | platform::PIPE_READMODE_MESSAGE, 255, kPipeBufferBytes,
        kPipeBufferBytes, 0, nullptr);
    EXPECT_NE(m_Waiting, nullptr);
    EXPECT_FALSE(m_Kernel.pipes.ConnectNamedPipe(m_Waiting, &m_Listening));
    m_bPending = m_Kernel.threads.GetLastError() == platform::ERROR_IO_PENDING;
    if (m_bPending) return;
    EXPECT_EQ(m_Kernel.threads.GetLastError(), platform::ERROR_PIPE_CONNECTED);
    m_Kernel.threads.SetEvent(m_Event);
  }
  static void OnWritten(platform::DWORD error, platform::DWORD bytes,
                        platform::OVERLAPPED* overlapped) {
    auto* const record = static_cast<Record*>(overlapped);
    PipeServer& self = *record->server;
    EXPECT_TRUE(error != 0 || bytes == record->toWrite);
    if (error != 0) return self.End(record, error);
    if (!self.m_Kernel.pipes.ReadFileEx(record->pipe, record->request, kPipeBufferBytes, record,
                                        &OnRead)) {
      self.End(record, self.m_Kernel.threads.GetLastError());
    }
  }
  static void OnRead(platform::DWORD error, platform::DWORD bytes,
                     platform::OVERLAPPED* overlapped) {
    auto* const record = static_cast<Record*>(overlapped);
    PipeServer& self = *record->server;
    if (error != 0) return self.End(record, error);
    const std::string reply = self.m_Answer({record->request, bytes});
    std::memcpy(record->reply, reply.data(), reply.size());
    record->toWrite = static_cast<platform::DWORD>(reply.size());
    if (!self.m_Kernel.pipes.WriteFileEx(record->pipe, record->reply, record->toWrite, record,
                                         &OnWritten)) {
      self.End(record, self.m_Kernel.threads.GetLastError());
    }
  }
  void End(Record* record, platform::DWORD error) {
    Close(record);
    const std::lock_guard lock(m_Mutex);
    m_Ended.push_back(error);
  }
  void Close(Record* record) {
    EXPECT_TRUE(m_Kernel.pipes.DisconnectNamedPipe(record->pipe));
    EXPECT_TRUE(m_Kernel.pipes.CloseHandle(record->pipe));
    m_Records.erase(record);
    m_Kernel.pipes.GlobalFree(record);
  }

  PipeKernel& m_Kernel;
  const Answer m_Answer;
  const platform::LPCWSTR m_Path;
  platform::OVERLAPPED m_Listening;
  platform::HANDLE m_Event = nullptr;
  platform::HANDLE m_Ready = nullptr;
  platform::HANDLE m_Waiting = nullptr;
  platform::HANDLE m_Thread = nullptr;
  bool m_bPending = false;
  std::set<Record*> m_Records;
  std::mutex m_Mutex;
  std::vector<platform::DWORD> m_Ended;
};

inline std::string EchoOf(std::string message) { return message; }

}  // namespace corvane::test
