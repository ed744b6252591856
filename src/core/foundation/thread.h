#pragma once
#include <atomic>
#include <cstdint>

#include "platform/types.h"

namespace corvane {

// The part of CThread that does not depend on the owner's type.
class CThreadBase {
 public:
  CThreadBase() = default;
  CThreadBase(const CThreadBase&) = delete;
  CThreadBase& operator=(const CThreadBase&) = delete;

  // Starts RunThreadLoop on a new thread. 0, or a failure as an HRESULT
  // (0x80070000 | low word of GetLastError).
  platform::HRESULT BeginThread();
  bool IsRunning() const { return m_bRunning; }

  std::atomic<bool> m_bRun{false};      // the loop's condition
  std::atomic<bool> m_bRunning{false};  // from a successful start until the body has returned
  std::atomic<bool> m_bEnding{false};

 protected:
  // `name` is static text for reports.
  explicit CThreadBase(const char* name) : m_ThreadName(name) {}
  ~CThreadBase() = default;  // the owner's destructor calls StopThread(1000)

  // Clears the run flag and waits; a thread that does not end in time is given up. Always returns.
  void StopThread(std::uint32_t milliseconds);

  virtual void ThreadBody() = 0;

 private:
  static platform::DWORD ThreadProc(void* self);

  const char* m_ThreadName = "thread";
  platform::DWORD m_ThreadId = 0xFFFFFFFF;
  platform::HANDLE m_hThread = nullptr;
};

// Base of a class with a worker thread; T has RunThreadLoop(). An Exception or std::exception that
// leaves it is logged and ends the thread. T's destructor calls StopThread(1000).
template <class T>
class CThread : public CThreadBase {
 protected:
  explicit CThread(const char* name) : CThreadBase(name) {}
  ~CThread() = default;

 private:
  void ThreadBody() override { static_cast<T*>(this)->RunThreadLoop(); }
};

}  // namespace corvane
