#include "foundation/thread.h"

#include <exception>
#include <new>
#include <utility>

#include "foundation/exception.h"
#include "foundation/guarded.h"
#include "foundation/invariant.h"
#include "foundation/log_lines.h"
#include "foundation/smart_obj.h"
#include "foundation/spin_lock.h"
#include "platform/platform.h"
#include "platform/thread_api.h"

namespace corvane {

// What the thread's frame knows of its owner. The owner and the thread have a share each; the last
// one out frees it. So a thread that was given up never looks at an owner that may be gone.
struct CThreadBase::Frame {
  explicit Frame(CThreadBase* owner) : m_pOwner(owner) {}

  void Drop() {
    if (m_Shares.fetch_sub(1) == 1) delete this;
  }

  CSpinLock m_Lock;
  CThreadBase* m_pOwner;                 // under m_Lock; null once the thread was given up
  CSmartPointer<ISmartObj> m_KeptOwner;  // an owner that must outlive a thread given up
  std::atomic<int> m_Shares{2};
};

namespace {

// Clears the owner's flags and drops the thread's share, however the thread's body is left.
template <typename Frame>
class FrameEnd {
 public:
  explicit FrameEnd(Frame* frame) : m_pFrame(frame) {}
  ~FrameEnd() {
    {
      const CSpinLockGuard guard(m_pFrame->m_Lock);
      if (CThreadBase* owner = m_pFrame->m_pOwner) {
        owner->m_bRunning = false;
        owner->m_bEnding = false;
      }
    }
    m_pFrame->Drop();
  }
  FrameEnd(const FrameEnd&) = delete;
  FrameEnd& operator=(const FrameEnd&) = delete;

 private:
  Frame* m_pFrame;
};

platform::HRESULT HresultFromWin32(platform::DWORD code) {
  const auto asResult = static_cast<platform::HRESULT>(code);
  return asResult <= 0 ? asResult : static_cast<platform::HRESULT>(0x80070000 | (code & 0xFFFF));
}

}  // namespace

CThreadBase::~CThreadBase() { LetGo(false); }

platform::HRESULT CThreadBase::BeginThread() {
  Invariant(!m_bRunning, "a thread is begun after its earlier one has ended");
  LetGo(false);
  m_pFrame = new Frame(this);
  m_bRun = true;
  m_bEnding = false;
  // Set before the start: the new thread may have ended before CreateThread returns.
  m_bRunning = true;
  platform::DWORD id = 0xFFFFFFFF;
  platform::DWORD code = platform::ERROR_GEN_FAILURE;  // of a call that faults
  m_hThread = Contained("CThread", "CreateThread", platform::HANDLE{}, [&] {
    platform::HANDLE const made =
        Os().threads.CreateThread(&ThreadProc, m_pFrame, m_ThreadName, &id);
    if (!made) code = Os().threads.GetLastError();
    return made;
  });
  if (m_hThread) {
    m_ThreadId = id;
    return platform::S_OK;
  }
  const platform::HRESULT result = HresultFromWin32(code);
  m_bRunning = false;
  m_pFrame->Drop();  // the share of the thread that never was
  LetGo(false);
  return result;
}

bool CThreadBase::StopThread(std::uint32_t milliseconds) noexcept {
  bool givenUp = false;
  if (m_bRunning) {
    m_bRun = false;
    auto& threads = Os().threads;
    // Nothing may leave: this runs in destructors, and the owner's stop order goes on in any case.
    try {
      if (threads.GetCurrentThreadId() == m_ThreadId) {
        givenUp = true;
      } else if (threads.WaitForSingleObject(m_hThread, milliseconds) != platform::WAIT_OBJECT_0) {
        givenUp = true;
        threads.TerminateThread(m_hThread, 0xFFFFFFFF);
      }
    } catch (...) {
      givenUp = true;
    }
  }
  LetGo(givenUp);
  m_bRunning = false;
  m_bEnding = false;
  return !givenUp;
}

void CThreadBase::LetGo(bool keepOwner) noexcept {
  if (Frame* const frame = std::exchange(m_pFrame, nullptr)) {
    ISmartObj* const counted = keepOwner ? CountedOwner() : nullptr;
    {
      const CSpinLockGuard guard(frame->m_Lock);
      frame->m_pOwner = nullptr;
    }
    // An object without references is being destroyed, or was never counted.
    if (counted && counted->GetRefCount() > 0) frame->m_KeptOwner = counted;
    frame->Drop();
  }
  m_ThreadId = 0xFFFFFFFF;
  const platform::HANDLE handle = std::exchange(m_hThread, nullptr);
  if (!handle) return;
  GiveBack("CThread", "CloseHandle", [handle] { Os().threads.CloseHandle(handle); });
}

platform::DWORD CThreadBase::ThreadProc(void* parameter) {
  Frame* const frame = static_cast<Frame*>(parameter);
  const FrameEnd end(frame);
  CThreadBase* owner;
  {
    const CSpinLockGuard guard(frame->m_Lock);
    owner = frame->m_pOwner;
  }
  if (!owner) return 0;  // given up before it began
  try {
    ContainedAt("CThread::ThreadProc", [owner] { owner->ThreadBody(); });
  } catch (const std::exception&) {
    // The log itself failed; there is nobody left to tell.
  }
  const CSpinLockGuard guard(frame->m_Lock);
  if (frame->m_pOwner) frame->m_pOwner->m_bEnding = true;
  return 0;
}

}  // namespace corvane
