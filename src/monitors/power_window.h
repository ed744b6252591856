#pragma once
#include <atomic>
#include <cstdint>
#include <list>

#include "foundation/crit_sec.h"
#include "foundation/singleton.h"
#include "foundation/thread.h"
#include "monitors/power_subscriber.h"
#include "platform/power_api.h"
#include "platform/window_api.h"

namespace corvane {

// A hidden window, on a thread of its own, by which the system tells of sleep, waking and sessions.
// It passes sleep and waking on to its subscribers and only traces the rest.
class CPowerWindow final : public CThread<CPowerWindow> {
 public:
  static CPowerWindow& GetInstance() { return Singleton<CPowerWindow>::GetInstance(); }

  // Starts the thread, and does not wait for the window; false when there is no thread. Without a
  // window, or when the system refuses to tell, nobody hears of sleep, and all else goes on.
  bool Initialize(std::uint32_t first, std::uint32_t second);
  // Any thread. The subscriber is told until Shutdown, once for each time that it was added.
  void AddSubscriber(IPowerSubscriber* subscriber);
  // Any thread. Lets all its subscriptions go; it may still hear what is being told.
  void RemoveSubscriber(IPowerSubscriber* subscriber);
  // Lets the subscribers go, closes the window, and sees the thread end or gives it up.
  void Shutdown();

  void RunThreadLoop();

  // Prints every message to standard output, for whoever looks for one that is missing. Any thread.
  inline static std::atomic<bool> s_bTrace{false};

 private:
  friend Singleton<CPowerWindow>;
  CPowerWindow();
  ~CPowerWindow();

  void CreateHiddenWindow();
  void PumpMessages();
  void CloseWindow();  // and its registration; once
  static platform::LRESULT WindowProc(platform::HWND window, unsigned message,
                                      platform::WPARAM wParam, platform::LPARAM lParam);
  void TakeMessage(unsigned message, platform::WPARAM wParam, platform::LPARAM lParam);
  void OnPowerBroadcast(platform::WPARAM event);
  void Tell(void (IPowerSubscriber::*what)());

  std::atomic<platform::HANDLE> m_hNotification{nullptr};
  std::atomic<platform::HWND> m_hWindow{nullptr};
  std::uint32_t m_First = 0;
  std::uint32_t m_Second = 0;

  // The window thread's own.
  bool s_Suspended = false;  // a suspend came, and no resume yet
  std::uint64_t s_SuspendedCounter = 0;
  platform::SYSTEM_POWER_STATUS s_PowerStatus;

  CCritSec m_SubscribersLock{"power subscribers", LockRank::kLeaf};
  std::list<CSmartPointer<IPowerSubscriber>> s_Subscribers;  // in the order of subscription
};

}  // namespace corvane
