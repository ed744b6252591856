#pragma once
#include <atomic>
#include <cstdint>
#include <type_traits>

#include "platform/types.h"

namespace corvane {

class ISmartObj;

// The part of CThread that does not depend on the owner's type.
class CThreadBase {
 public:
  CThreadBase() = default;
  CThreadBase(const CThreadBase&) = delete;
  CThreadBase& operator=(const CThreadBase&) = delete;

  // Starts RunThreadLoop on a new thread. 0, or a failure as an HRESULT
  // (0x80070000 | low word of GetLastError). The earlier thread must have ended.
  platform::HRESULT BeginThread();
  bool IsRunning() const { return m_bRunning; }

  std::atomic<bool> m_bRun{false};      // the loop's condition
  std::atomic<bool> m_bRunning{false};  // from a successful start until the body has returned
  std::atomic<bool> m_bEnding{false};   // from the end of the loop to the end of the thread

 protected:
  // `name` is static text for reports.
  explicit CThreadBase(const char* name) : m_ThreadName(name) {}
  ~CThreadBase();  // the owner's destructor has called StopThread(1000)

  // Clears the run flag and waits; a thread that does not end in time is given up. Always returns:
  // true when the thread has ended, false when it was given up and may still use its owner.
  // Called by the thread itself, it lets the thread go without a wait.
  //
  // A thread that is given up may still run for a while, up to its next call of the platform. A
  // counted owner is kept alive until then, unless it is already being destroyed: so a class stops
  // its thread in an operation of its own, and the call in its destructor is only the net below.
  bool StopThread(std::uint32_t milliseconds) noexcept;

  // The thread's handle; null before the start and once the thread is stopped. The caller keeps
  // StopThread from running meanwhile.
  platform::HANDLE ThreadHandle() const { return m_hThread; }

  virtual void ThreadBody() = 0;
  virtual ISmartObj* CountedOwner() = 0;  // null for an owner that is not counted

 private:
  struct Frame;

  static platform::DWORD ThreadProc(void* frame);
  void LetGo(bool keepOwner) noexcept;

  const char* m_ThreadName = "thread";
  std::atomic<platform::DWORD> m_ThreadId{0xFFFFFFFF};
  platform::HANDLE m_hThread = nullptr;
  Frame* m_pFrame = nullptr;  // this object's share in it
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
  ISmartObj* CountedOwner() override {
    if constexpr (std::is_convertible_v<T*, ISmartObj*>) return static_cast<T*>(this);
    return nullptr;
  }
};

}  // namespace corvane
