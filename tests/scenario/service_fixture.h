#pragma once
// The whole service on a simulated PC, watched from outside: what the radio does, what stands in
// the registry, what subscribers are told.

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "corvane_lab/service_run.h"
#include "notify/notification_event.h"
#include "platform/sim/devices/pc_observer.h"
#include "platform/sim/devices/sim_devices.h"
#include "platform/sim/kernel/sim_session.h"
#include "platform/trace_logging.h"
#include "settings/interface_config.h"
#include "support/pc_fixture.h"
#include "support/world_builder.h"
#include "wlan/wlan_interface.h"

namespace corvane::test {

using platform::sim::Cause;

// Something that happened on the air.
struct AirEvent {
  enum Kind {
    kScanStarted,
    kScanEnded,
    kConnectStarted,
    kConnected,
    kConnectFailed,
    kDisconnected,
    kRoamed
  };
  std::uint64_t ms = 0;
  Kind kind = kScanStarted;
  int adapter = 0;
  Cause cause = Cause::kProgram;
  std::string ssid;
  std::string bssid;
};

struct Notice {
  WString category, type, data1, data2, data3, data4, data5;
};

// An event of the reporter's provider.
struct Traced {
  std::uint64_t ms = 0;
  platform::TraceEvent event;
  std::string Text(std::string_view field) const {
    return WideToUtf8(event.Text(field).value_or(u"(none)"));
  }
  std::int64_t Number(std::string_view field) const { return event.Number(field).value_or(-1); }
};

class ServiceTest : public PcTest, private platform::sim::IPcObserver {
 protected:
  ~ServiceTest() override;
  void TearDown() override;

  // Boots a PC of this world, on which the suite that keeps the history is installed, and starts
  // the service on it.
  void Start(const WorldBuilder& world);
  // Between the PC and the service: a test puts services of its own in force.
  virtual void OnBooted() {}
  // The orderly stop; false when the service does not end.
  bool Stop() { return m_pService->Stop(); }
  int ExitCode() const { return m_pService->ExitCode(); }
  // A world of one adapter that acts by itself, on access point 1 of the secured network "Office",
  // at `dbm`; further ones are added with OfficeBeacon.
  static WorldBuilder OfficeWorld(double dbm = -75.0);
  static Beacon OfficeBeacon(int channel);
  static Beacon LabBeacon(int channel);  // a network of its own, just as good
  // `dbm` from this time on, and out of reach before.
  static std::vector<platform::sim::SignalPoint> HeardFrom(std::uint64_t ms, double dbm);
  // On a weak access point of "Office" in this mode (PassiveSuggestMode); from 60 s on access point
  // 2 of the network "Lab" is far better.
  static WorldBuilder BetterLabWorld(int mode, double dbm = -45.0);

  std::uint64_t Now() const { return static_cast<std::uint64_t>(m_pMachine->Now().count()); }
  void RunUntil(std::uint64_t ms) { RunFor(std::chrono::milliseconds(ms - Now())); }
  // Runs until `done` holds, asked every 100 ms; false when `limit` passes first.
  template <class Condition>
  bool RunUntilTrue(Condition done, std::chrono::milliseconds limit) {
    for (auto left = limit; left.count() > 0; left -= 100ms) {
      if (done()) return true;
      RunFor(100ms);
    }
    return done();
  }
  void Do(const char* action) { m_pMachine->Devices().Do(action); }

  // Values of the adapter's key and of the home key; empty and 0 where there is none.
  std::u16string Text(const char16_t* name, int adapter = 0) const;
  std::uint32_t Number(const char16_t* name, int adapter = 0) const;
  void Write(const char16_t* name, const char16_t* text, int adapter = 0);
  void Write(const char16_t* name, std::uint32_t number, int adapter = 0);
  std::u16string HomeText(const char16_t* name) const;
  std::uint32_t HomeNumber(const char16_t* name) const;
  void WriteHome(const char16_t* name, std::uint32_t number);
  std::string ConnectedBssid(int adapter = 0) const;
  bool IsOn(int accessPoint, int adapter = 0) const;  // as a client reads it

  // How many policy rounds of the adapter end in this time.
  int CountRounds(std::chrono::milliseconds time, int adapter = 0);

  std::vector<AirEvent> Events(AirEvent::Kind kind, std::uint64_t fromMs = 0,
                               Cause cause = Cause::kProgram, int adapter = 0) const;
  std::size_t Count(AirEvent::Kind kind, std::uint64_t fromMs = 0, Cause cause = Cause::kProgram,
                    int adapter = 0) const {
    return Events(kind, fromMs, cause, adapter).size();
  }
  // Events of this name.
  std::vector<Traced> TraceEvents(std::string_view name, std::uint64_t fromMs = 0) const;
  std::size_t CountNotices(WStringView category, WStringView type) const;
  Notice LastNotice(WStringView category, WStringView type = {}) const;  // empty texts without one
  // Rows of the history that hold `part`; the header is none.
  std::vector<std::string> HistoryRows(std::string_view part = {}) const;
  bool Printed(const std::string& text) const;

  // What was started in the user's session since the last call, by the program's name.
  std::vector<platform::sim::SimSession::Launch> TakeLaunches(std::u16string_view program) const;

  // What the commands of a client do.
  void AcceptSuggestion(int adapter = 0);  // heard in the next round
  void OrderConnect(int accessPoint, WStringView ssid, WStringView profile = {}, int adapter = 0);

  CSmartPointer<CQUAYInterfaceConfig> Config(int adapter = 0) const;
  CSmartPointer<CWlanInterface> Wlan(int adapter = 0) const;

  std::vector<Notice> notices;

 private:
  static void Trace(const platform::TraceEvent& event, void* self);
  void Note(AirEvent::Kind kind, int adapter, Cause cause, const std::string& ssid,
            const std::string& bssid = {});
  void OnScanStarted(int adapter, Cause cause, const std::string& ssid) override;
  void OnScanEnded(int adapter, Cause cause, bool good) override;
  void OnConnectStarted(int adapter, Cause cause, const std::string& ssid) override;
  void OnConnectEnded(int adapter, Cause cause, const std::string& ssid, const std::string& bssid,
                      platform::DWORD reason) override;
  void OnDisconnected(int adapter, Cause cause, const std::string& ssid) override;
  void OnRoamed(int adapter, Cause cause, const std::string& ssid,
                const std::string& bssid) override;

  platform::sim::SimulatedPc* m_pMachine = nullptr;
  std::unique_ptr<lab::ServiceRun> m_pService;
  std::vector<AirEvent> m_Events;
  std::vector<Traced> m_Traced;
};

std::string ApText(int accessPoint);  // BSSID text of an access point of WorldBuilder

}  // namespace corvane::test
