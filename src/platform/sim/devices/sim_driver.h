#pragma once
#include <atomic>
#include <cstdint>
#include <mutex>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "platform/driver_api.h"
#include "platform/sim/devices/sim_driver_table.h"
#include "platform/sim/kernel/seam_gate.h"
#include "platform/sim/kernel/seeded_random.h"
#include "platform/sim/world/driver_part.h"

namespace corvane::platform {
class ClockApi;
class ThreadApi;
}  // namespace corvane::platform

namespace corvane::platform::sim {

class SimHeap;

// The load-balance driver of the simulated PC, a strict partner: it checks every record that it is
// handed, and walks the tables as a driver would, behind each control call, between two passes, and
// at random calls of the platform. What it finds wrong it keeps.
//
// It holds no lock while it waits, and calls nothing of the devices.
class SimDriver final : public DriverApi {
 public:
  struct Services {
    SeamGate& gate;
    ThreadApi& threads;
    ClockApi& clock;
    SimHeap& heap;
  };
  // `start` empty: no driver is installed.
  SimDriver(const Services& services, std::uint64_t seed, const std::optional<DriverPart>& start);

  HANDLE CreateFileW(LPCWSTR device, DWORD access, DWORD share) override;
  BOOL DeviceIoControl(HANDLE device, DWORD code, const void* input, DWORD inputSize, void* output,
                       DWORD outputSize, DWORD* returned) override;
  BOOL CloseHandle(HANDLE device) override;  // closes, also where the call fails by injection

  void Apply(const DriverPart& change);  // an entry of the timeline; it installs the driver
  bool IsInstalled() const;
  bool IsPresent() const;
  bool StartService();  // whether the device is there now

  void Glance();        // at any instant of any thread; mostly it does not look
  void OnPassBegins();  // the engine is about to list the adapters

  // A notification that the driver was sent.
  struct Heard {
    std::uint64_t atMs = 0;
    DWORD device = 0;
    DWORD kind = 0;
    DWORD value = 0;
  };
  // What the driver knows and does.
  struct Report {
    bool installed = false;
    bool present = false;
    bool handshaken = false;  // has the tables
    bool started = false;
    DWORD command = 0;  // of the last that was given: 1 pauses, 2 runs; 0: none
    DWORD mode = 0;
    std::uint64_t handshakes = 0;  // asked for, whatever the answer
    std::uint64_t stops = 0;
    std::uint64_t walks = 0;
    std::vector<Heard> heard;
    std::vector<int> steered;  // slots that it steers over now
    std::vector<std::string> findings;
  };
  Report Tell() const;
  std::size_t OpenHandles() const;

 private:
  struct Call {
    DWORD code;
    const BYTE* input;
    DWORD inputSize;
    BYTE* output;
    DWORD outputSize;
  };
  using Check = std::string (SimDriverTable::*)() const;

  // Each under the lock.
  DWORD Serve(const Call& call);
  DWORD Handshake(const Call& call);
  DWORD TakeTables(std::uint64_t table, std::uint64_t links);
  DWORD Steer(const Call& call);
  DWORD Notified(const Call& call);
  void Use(const SimDriverTable& table, DWORD device);
  bool WantsSizes(const Call& call, DWORD in, DWORD out);
  void Expect(bool holds, const std::string& otherwise);
  std::optional<SimDriverTable> Copy();
  void Walk(Check check, const char* when);
  void Forget();
  std::uint64_t NowMs() const;

  Services m;
  const std::uint64_t m_StartTick;
  std::atomic<bool> m_bHasTables{false};  // for Glance, which most callers need not be held up by
  mutable std::mutex m_Mutex;             // guards what follows
  SeededRandom m_Random;
  bool m_bInstalled = false;
  bool m_bPresent = false;
  bool m_bStarts = false;
  DriverAnswer m_Answer = DriverAnswer::kReady;
  DWORD m_DelayMs = 0;
  std::vector<DWORD> m_Fails;
  std::uint64_t m_Table = 0, m_Links = 0;
  std::set<HANDLE> m_Open;   // of the device that is there
  std::set<HANDLE> m_Stale;  // of one that has gone
  std::uintptr_t m_Next = 0;
  Report m_Report;
};

// A gate that lets the driver look at the tables now and then before it opens.
class SimGlancingGate final : public SeamGate {
 public:
  SimGlancingGate(SeamGate& inner, SimDriver& driver) : m_Inner(inner), m_Driver(driver) {}
  DWORD Enter(const char* operation, DWORD ordinary) override {
    m_Driver.Glance();
    return m_Inner.Enter(operation, ordinary);
  }

 private:
  SeamGate& m_Inner;
  SimDriver& m_Driver;
};

}  // namespace corvane::platform::sim
