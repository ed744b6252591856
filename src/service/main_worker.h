#pragma once
#include <atomic>
#include <cstdint>

#include "foundation/smart_obj.h"
#include "foundation/thread.h"
#include "monitors/power_subscriber.h"
#include "notify/notification_event.h"
#include "wlan/wlan_interface.h"

namespace corvane {

// The thread that runs one adapter: each round it reads the connection, discovers, decides and
// sleeps.
class CQUAYMainWorker : public SmartObjEx<CQUAYMainWorker, SmartObj<>>,
                        public CThread<CQUAYMainWorker>,
                        public IPowerSubscriber {
 public:
  CQUAYMainWorker();
  ~CQUAYMainWorker() override;
  const char* GetClassName() const override { return "CQUAYMainWorker"; }

  // Before the thread starts. `index` is the adapter index.
  void Bind(int index, CWlanInterface* pInterface);
  void RunThreadLoop();
  // Ends the thread (2000 ms, then it is given up), clears what clients read of the adapter, lets
  // the adapter go.
  void Shutdown();

  // The next round acts on them. On the power window's thread, without a lock.
  void OnResume() override;
  void OnSuspend() override;

 private:
  // --- The loop (main_worker.cpp)
  void WorkThreadProc();
  bool GoesOn() const { return m_bRun && m_pInterface; }
  bool AwaitRadio();  // the early check loop; false when the thread is to end
  bool IsRadioSeenOn();
  void TellRadioOff() const;
  void PrepareRunning();
  bool RunRound();  // false when it ended early, and does not count
  void RefreshSettings();
  bool IsBlockedByVPN();
  bool IsHeldBack(bool vpnBlock);  // having slept, when it is
  void HoldForVPN();
  bool MayRun();
  bool PassesCheckPoint();
  void ReleaseRoamingInhibit();
  void LatchToPrivate();
  bool TakePowerEvents();  // true when the machine slept or woke: a scan is due
  void ForgetSurroundings();
  void Discover(bool force);
  void DecideUnderLock();
  void SleepBetweenRounds();
  bool SleepWithoutDelay();
  void AwaitClient(std::uint32_t sleepMs);

  // --- The connection (connection_round.cpp)
  struct Connection {
    bool connected = false;
    bool wasConnected = false;  // when the round began, for the log
    platform::WLAN_CONNECTION_ATTRIBUTES attrs;
    std::uint32_t channel = 0;
    WString ssid;
    WString displayName;  // SSID and channel
    MacAddress bssid{};
    WString bssidText;
    CSmartPointer<CWlanBssEntry> entry;  // of the model, if it has one
    std::uint32_t quality = 0;           // 0 to 100
  };
  // Makes interface, registry, notifications, history and roaming inhibit agree with the
  // connection. A failed query is no error: it is how "not connected" reads.
  void UpdateConnectionState();
  void TakeConnection();  // throws when there is none
  // The part of it that runs while the inhibit clock does, or while something else holds the
  // adapter back.
  void SurgicalUpdateIfInhibited(bool isHeldBack = false);
  void QueryConnection(Connection* now);
  void PublishConnection(const Connection& now);
  void PublishDisconnection();
  void OnDisconnected();
  void DetectRoam(const Connection& now, bool bssidChanged, bool ssidDiffers);
  // Points, never below 0 (connection_score.cpp).
  std::int32_t ComputeBackupScore(const platform::WLAN_CONNECTION_ATTRIBUTES& attrs,
                                  std::uint32_t channel);

  // --- The interference detector (interference.cpp)
  void AimDetector();
  void ResetDetector(const char* why);
  void ProbeLink();
  void ReportInterference(const InterferenceRecord& record);

  // --- What is told of it (connection_reports.cpp)
  void ReportNewConnection(const Connection& now);
  void ReportStandingConnection(const Connection& now);
  void ReportDisconnection();
  void SendConnectionStatus(const Connection* now);  // null: disconnected
  void WriteHistoryRow(const Connection& now);
  void WriteDisconnectedRow();
  void WriteRow(const WString& row);
  void DumpConnection(const Connection& now, bool isNew) const;  // to the log

  // --- Capability and signal events (link_events.cpp); `entry` may be null
  void HandleQUAYSpecialEtwEvents(CWlanBssEntry* entry, const char* context);
  void CompareCapabilities(CWlanBssEntry& entry, const char* context);
  void ReportSignal(CWlanBssEntry& entry, const char* context);
  void ReportNoConnection(const char* context);

  int m_ConfigIdx = -1;
  CSmartPointer<CWlanInterface> m_pInterface;
  CSmartPointer<CQUAYInterfaceConfig> m_pConfig;
  Connection m_Connection;                // of the present round
  PreferredApRows m_forcedArbitrary;      // read when the running loop is entered
  std::int32_t m_Last2GhzQbssScore = -1;  // the bands' last average load points above 0
  std::int32_t m_Last5GhzQbssScore = -1;
  std::int32_t m_CsvFileSizeMB =
      2;                     // limit of the history file in million bytes, 0 or less for none
  std::uint32_t m_IDET = 0;  // not 0: the interference detector is on, and cuts the sleep in slices
  CSmartPointer<CNotificationEvent> m_pLastInterferenceEvent;  // the last one sent
  std::uint32_t m_Round = 0;      // completed rounds since the running loop was entered
  bool m_bNoDelayActive = false;  // a no-delay sleep was taken, the window has yet to be closed
  std::atomic<bool> m_bPowerSuspendSeen{false};
  std::atomic<bool> m_bPowerResumeSeen{false};
  // The adapter, for the power window's thread, which may outlast this one's.
  CSmartPointer<CWlanInterface> m_pWokenInterface;
};

}  // namespace corvane
