#pragma once
#include <atomic>
#include <cstdint>
#include <list>

#include "foundation/singleton.h"
#include "foundation/thread.h"
#include "foundation/win_event.h"
#include "store/registry.h"

namespace corvane {

// What the thread of CLBConfig is asked to do.
enum LBCommandCode : std::uint32_t {
  LBCMD_INIT_START = 1,
  LBCMD_STOP = 2,
  LBCMD_SET_WEIGHT_MODE = 3,
  LBCMD_PAUSE = 4,
  LBCMD_UNPAUSE = 5,
};

struct LBWorkItem {
  std::uint32_t cmd = 0;
  std::uint32_t weightMode = 0;  // when queued
  std::uint64_t tick = 0;        // when queued
};

inline constexpr std::uint32_t kLBWeightModeNotSet = 0xFFFFFFFF;

// Switches the load-balance engine on and off, tells it the weight mode, and keeps the registry in
// step. The engine's calls take seconds: what a client asks for is written to the registry and
// queued for the thread, which makes the calls one after another. The main thread makes them
// itself (bQueue false) and waits for the engine's answer.
//
// Results are those of the registry and the queue; how a queued command went is in the log.
class CLBConfig final : public CThread<CLBConfig>, public CRegistryHelperBase {
 public:
  static CLBConfig& GetInstance() { return Singleton<CLBConfig>::GetInstance(); }

  // Opens the home key; *created tells that it had to be made. With `bLoadRegistry` takes over what
  // is stored. Ends a pause, and starts or stops the engine as it is enabled.
  bool Initialize(bool* created, bool bLoadRegistry, bool bQueue);
  // A mode other than 1 and 2 keeps the one in force.
  bool EnableLBEngine(std::uint32_t mode, bool bQueue);
  // Without `bWriteRegistry` the stored wish stays.
  bool DisableLBEngine(bool bWriteRegistry, bool bQueue);
  bool SetLBWeightMode(std::uint32_t mode);  // 1 or 2
  bool Pause();
  bool Resume();

  // As stored; 0 when it is not.
  void GetLBEnabled(std::uint32_t* value) const;
  bool IsRunning() const { return m_Enabled != 0; }  // enabled, whatever became of the start
  std::uint32_t GetWeightMode() const { return m_WeightMode; }

  // Ends the thread within `milliseconds` or gives it up. The engine stays as it is; what is still
  // queued is not carried out, and later commands fail.
  void Stop(std::uint32_t milliseconds);

  void RunThreadLoop();

 private:
  friend class Singleton<CLBConfig>;
  CLBConfig();
  ~CLBConfig();

  bool SetPausedState(bool bPaused);
  std::uint32_t ReadNumber(const char16_t* name, std::uint32_t absent) const;

  void EnqueueWorkItem(std::uint32_t cmd);
  void WorkThreadProc(CWinEvent& wake);
  void HandleQueue();
  bool HandleFirst();  // false when there is none
  void LetCommandsIn();
  void Handle(const LBWorkItem& item);
  void HandleInitStart(const LBWorkItem& item, std::uint64_t delta1);
  void HandleStop(const LBWorkItem& item, std::uint64_t delta1);
  void HandleConfig(const char* name, std::uint32_t cmd, const LBWorkItem& item,
                    std::uint64_t delta1);

  bool DoInitLBEngine();
  bool DoConfigLBEngine(std::uint32_t cmd, std::uint32_t mode);
  bool DoStopLBEngine(bool bForce);

  CSmartPointer<CWinEvent> WakeEvent();

  // Written by the listener and the main thread, read by the worker.
  std::atomic<bool> m_bEngineUp{false};  // started, and not stopped since
  std::atomic<bool> m_bPaused{false};
  std::atomic<std::uint32_t> m_Enabled{0};
  std::atomic<std::uint32_t> m_WeightMode{2};
  CCritSec m_EventLock{"engine command event", LockRank::kLeaf};
  CSmartPointer<CWinEvent> m_pEvent;  // null after Stop
  // Held during the engine's calls of the thread, and free between two items: a command waits for
  // the item in progress, not for what has piled up behind it.
  CCritSec m_QueueLock{"engine commands", LockRank::kEngineQueue};
  std::list<LBWorkItem> m_Queue;
  std::atomic<int> m_Waiting{0};  // threads that wait for the queue
  // Held from a start or stop of the engine until m_bEngineUp tells of it: the main thread's calls
  // may run beside the worker's.
  CCritSec m_SwitchLock{"engine switch", LockRank::kEngineSwitch};
};

}  // namespace corvane
