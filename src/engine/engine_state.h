#pragma once
#include <array>
#include <atomic>

#include "engine/engine_settings.h"
#include "engine/engine_table.h"
#include "engine/wlan_access.h"
#include "foundation/crit_sec.h"
#include "foundation/smart_obj.h"
#include "platform/types.h"

namespace corvane {

// What one run of the engine owns: heap, tables, locks, words, events, WLAN access. Each thread of
// the run holds it, so a thread that was given up inside the driver finds it in place until it has
// unwound; the last holder gives everything back.
//
// The engine lock guards the table while a pass runs. The words are atomic in addition, because the
// link thread changes them without it.
class CLBEngineState : public SmartObjEx<CLBEngineState, SmartObj<>> {
 public:
  CLBEngineState() = default;
  ~CLBEngineState() override;
  const char* GetClassName() const override { return "CLBEngineState"; }

  // A heap of the engine's own. 0 or ERROR_OUTOFMEMORY.
  platform::DWORD CreateHeap();
  // Both tables in that heap. 0, ERROR_INVALID_HANDLE without a heap, or ERROR_OUTOFMEMORY; what
  // was made until then goes with the object.
  platform::DWORD LBBuildTables();
  // ERROR_NOT_READY when one cannot be made.
  platform::DWORD CreateEvents();

  // From the registry; takes or frees the catch-all gateway slot by them. Before the driver knows
  // the table.
  void ReadSettings();
  bool IsTracing() const { return m_bTrace; }

  // Raises the stop flag, and wakes the threads that sleep.
  void RaiseStop() { m_bStop = true; }
  void WakeThreads();
  bool IsStopping() const { return m_bStop; }

  // The start is through with settings, WLAN access and the first handshake, which from then on
  // belong to the discovery thread.
  void SetBuilt() { m_bBuilt = true; }
  bool IsBuilt() const { return m_bBuilt; }

  std::uint32_t StateWord() const { return m_StateWord; }
  void SetState(std::uint32_t bits) { m_StateWord.fetch_or(bits); }
  void ClearState(std::uint32_t bits) { m_StateWord.fetch_and(~bits); }

  enum Event { kDiscoveryEvent, kLinkEvent, kLinkTurnEvent, kEventCount = 8 };
  platform::HANDLE GetEvent(Event event) const { return m_Events[event]; }

  // Waits on the event, up to that long, and resets it. False when the wait itself failed.
  bool WaitOn(Event event, platform::DWORD milliseconds);

  LBEngineTable* Table() { return m_pTable; }
  LBLinkRecord* LinkRecords() { return m_pLinks; }
  const LBSettings& Settings() const { return m_Settings; }

  CCritSec m_EngineLock{"engine", LockRank::kEngine};
  CCritSec m_GatewayLock{"engine gateways", LockRank::kEngineSlots};
  CCritSec m_PassLock{"engine pass", LockRank::kLeaf};
  std::atomic<std::uint32_t> m_OwedWord{0};    // kStartOwed
  std::atomic<std::uint32_t> m_TunnelWord{0};  // 1 while a tunnel that is not managed is up
  CLBWlanAccess m_Wlan;                        // of the starting thread, then of discovery

 private:
  platform::HANDLE m_hHeap = nullptr;
  LBEngineTable* m_pTable = nullptr;
  LBLinkRecord* m_pLinks = nullptr;
  LBSettings m_Settings;
  std::array<platform::HANDLE, kEventCount> m_Events{};
  std::atomic<std::uint32_t> m_StateWord{0};
  std::atomic<bool> m_bStop{false};
  std::atomic<bool> m_bBuilt{false};
  std::atomic<bool> m_bTrace{false};  // of the settings, for threads that run while they are read
};

}  // namespace corvane
