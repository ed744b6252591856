#include "engine/engine_state.h"

#include "foundation/guarded.h"
#include "platform/driver_api.h"
#include "platform/heap_api.h"
#include "platform/platform.h"

namespace corvane {

using namespace platform;

namespace {

constexpr char kClassName[] = "CLBEngineState";
constexpr std::size_t kFirstHeapBytes = 0x200000;

void* Allocate(HANDLE heap, std::size_t bytes) {
  return Guarded(kClassName, "HeapAlloc", static_cast<void*>(nullptr),
                 [=] { return Os().heap.HeapAlloc(heap, HEAP_ZERO_MEMORY, bytes); });
}

}  // namespace

CLBEngineState::~CLBEngineState() {
  for (HANDLE const event : m_Events) {
    if (event) GiveBack(kClassName, "CloseHandle", [event] { Os().threads.CloseHandle(event); });
  }
  if (!m_hHeap) return;
  GiveBack(kClassName, "HeapDestroy", [this] { Os().heap.HeapDestroy(m_hHeap); });
}

DWORD CLBEngineState::CreateHeap() {
  m_hHeap = Guarded(kClassName, "HeapCreate", HANDLE{},
                    [] { return Os().heap.HeapCreate(0, kFirstHeapBytes, 0); });
  return m_hHeap ? ERROR_SUCCESS : ERROR_OUTOFMEMORY;
}

DWORD CLBEngineState::LBBuildTables() {
  if (!m_hHeap) return ERROR_INVALID_HANDLE;
  m_pTable = static_cast<LBEngineTable*>(Allocate(m_hHeap, sizeof(LBEngineTable)));
  if (!m_pTable) return ERROR_OUTOFMEMORY;
  InitTable(m_pTable);
  m_pLinks = static_cast<LBLinkRecord*>(Allocate(m_hHeap, kLinkRecords * sizeof(LBLinkRecord)));
  if (!m_pLinks) return ERROR_OUTOFMEMORY;
  InitLinkRecords(m_pLinks);
  return ERROR_SUCCESS;
}

DWORD CLBEngineState::CreateEvents() {
  for (HANDLE& event : m_Events) {
    event = Guarded(kClassName, "CreateEvent", HANDLE{},
                    [] { return Os().threads.CreateEventW(TRUE, FALSE, "engine"); });
    if (!event) return ERROR_NOT_READY;
  }
  return ERROR_SUCCESS;
}

void CLBEngineState::ReadSettings() {
  const LBSettings settings = ReadLBSettings();
  const CCritSecLock lock(m_EngineLock);
  m_Settings = settings;
  m_bTrace = settings.HasTrace();
  if (m_Settings.HasCatchAll()) TakeCatchAll(&m_pTable->gateways[kCatchAllSlot]);
}

void CLBEngineState::WakeThreads() {
  for (const Event event : {kDiscoveryEvent, kLinkEvent}) {
    HANDLE const handle = m_Events[event];
    if (!handle) continue;
    GiveBack(kClassName, "SetEvent", [handle] { Os().threads.SetEvent(handle); });
  }
}

bool CLBEngineState::WaitOn(Event event, DWORD milliseconds) {
  HANDLE const handle = m_Events[event];
  const DWORD result = Guarded(kClassName, "Wait", WAIT_FAILED, [=] {
    return Os().threads.WaitForSingleObject(handle, milliseconds);
  });
  GiveBack(kClassName, "ResetEvent", [=] { Os().threads.ResetEvent(handle); });
  return result == WAIT_OBJECT_0 || result == WAIT_TIMEOUT;
}

}  // namespace corvane
