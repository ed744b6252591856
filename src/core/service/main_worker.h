#pragma once
#include <cstdint>

#include "core/foundation/smart_obj.h"
#include "core/foundation/thread.h"
#include "wlan/binding/wlan_interface.h"

namespace corvane {

// The thread that runs one adapter: each round it reads the connection, discovers, decides and sleeps.
class CQUAYMainWorker : public SmartObjEx<CQUAYMainWorker, SmartObj<>>, public CThread<CQUAYMainWorker> {
 public:
  CQUAYMainWorker();
  ~CQUAYMainWorker() override;
  const char* GetClassName() const override { return "CQUAYMainWorker"; }

  // Before the thread starts. `index` is the adapter index.
  void Bind(int index, CWlanInterface* pInterface);
  void RunThreadLoop();
  // Ends the thread (2000 ms, then it is given up), clears what clients read of the adapter, lets the
  // adapter go.
  void Shutdown();

 private:
  // --- The loop (main_worker.cpp)
  void WorkThreadProc();
  bool GoesOn() const { return m_bRun && m_pInterface; }
  bool AwaitRadio();    // the early check loop; false when the thread is to end
  bool IsRadioSeenOn();
  void PrepareRunning();
  bool RunRound();      // false when the round ended early and does not count
  void RefreshSettings();
  bool IsBlockedByVPN();
  void HoldForVPN();
  bool MayRun();
  bool IsInhibited();   // a check point
  void ReleaseRoamingInhibit();
  void Discover();
  void SleepBetweenRounds();

  // --- The connection (connection_round.cpp)
  struct Connection {
    bool connected = false;
    platform::WLAN_CONNECTION_ATTRIBUTES attrs;
    std::uint32_t channel = 0;
    WString ssid;
    WString displayName;  // SSID and channel
    MacAddress bssid{};
    WString bssidText;
    CSmartPointer<CWlanBssEntry> entry;  // of the model, if it has one
    std::uint32_t quality = 0;           // 0 to 100
  };
  // Makes interface, registry and roaming inhibit agree with the connection. A failed query is no error:
  // it is how "not connected" reads.
  void UpdateConnectionState();
  // The part of it that runs while the inhibit clock does.
  void SurgicalUpdateIfInhibited();
  void QueryConnection(Connection* now);
  void PublishConnection(const Connection& now);
  void PublishDisconnection();
  void OnDisconnected();
  void DetectRoam(const Connection& now, bool bssidChanged, bool ssidDiffers);
  void LogConnection(const Connection& now, bool isNew) const;
  // Points, never below 0 (connection_score.cpp).
  std::int32_t ComputeBackupScore(const platform::WLAN_CONNECTION_ATTRIBUTES& attrs, std::uint32_t channel);

  int m_ConfigIdx = -1;
  CSmartPointer<CWlanInterface> m_pInterface;
  CSmartPointer<CQUAYInterfaceConfig> m_pConfig;
  Connection m_Connection;       // of the present round
  PreferredApRows m_forcedArbitrary;  // read when the running loop is entered
  std::int32_t m_Last2GhzQbssScore = -1;  // the bands' last average load points above 0
  std::int32_t m_Last5GhzQbssScore = -1;
  std::uint32_t m_Round = 0;     // completed rounds since the running loop was entered
  bool m_bNoDelayActive = false; // a no-delay sleep was taken, the window has yet to be closed
};

}  // namespace corvane
