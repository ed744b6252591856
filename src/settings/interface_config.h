#pragma once
#include <atomic>
#include <cstdint>

#include "foundation/semaphore.h"
#include "foundation/smart_obj.h"
#include "report/etw_trellis.h"
#include "report/popup_suggestion.h"
#include "settings/config_allowlist.h"
#include "settings/config_denylist.h"
#include "settings/config_select_arbitrary.h"
#include "settings/inhibit_clock.h"
#include "settings/score_config.h"
#include "store/adapter_settings.h"
#include "store/adapter_state.h"
#include "store/registry.h"
#include "store/value_names.h"

namespace corvane {

struct ValueRow;

// Ids of the user-visible status texts (the program's string table).
enum StatusText : std::uint32_t {
  kStatusRestrictedToPrivate = 101,
  kStatusNoAutoConnectProfile = 102,
  kStatusBestNetwork = 103,
  kStatusAdapterDisabled = 104,
  kStatusRadioDisabled = 105,
  kStatusExternalRoaming = 106,
  kStatusNoAdapter = 107,
  kStatusNoProfileInRange = 108,
  kStatusBetterHead = 109,
  kStatusBetterTail = 110,
  kStatusNeedCredentials = 111,
  kStatusWeakSignal = 112,
  kStatusVpn = 113,
};
// Empty for an id without a text.
WStringView LookUpStatusText(std::uint32_t id);

// The two ends of the score differences of some rounds; -1 and -1 for none.
struct CandidateSummary {
  std::int32_t min = -1;
  std::int32_t max = -1;
};

// A client's order to connect. It is one while `bssid` is not empty, and lives for one policy
// round.
struct UIConnectRequest {
  WString ssid;
  WString bssid;    // six hexadecimal pairs joined by "-"
  WString profile;  // XML of a profile to connect with; empty: the stored one
  bool save = false;
};

// Everything that belongs to one adapter and is not the adapter itself. Its object lock is the
// configuration's lock. What needs only the settings or the flags takes those structs.
class CQUAYInterfaceConfig : public SmartObjEx<CQUAYInterfaceConfig, SmartObj<>>,
                             public CRegistryHelperBase,
                             public IReportConfig,
                             public AdapterSettings,
                             public AdapterState {
 public:
  CQUAYInterfaceConfig();
  ~CQUAYInterfaceConfig() override;
  const char* GetClassName() const override { return "CQUAYInterfaceConfig"; }

  // Opens the adapter's key, writes the project defaults, reads the settings.
  void Initialize(int index, WStringView keyPath, WStringView guid, WStringView name,
                  WStringView description);
  // Drops registry, score weights and semaphore; later calls do nothing.
  void Shutdown();
  void RefreshFromRegistry();

  int GetConfigIdx() const { return m_ConfigIdx; }
  const WString& GetGuidText() const { return m_Guid; }

  // Status line: false when the id has no text.
  bool SetStatusMessage(std::uint32_t id);
  bool ClearStatusMessage(std::uint32_t id);
  bool ClearStatusMessageIfOlder(std::uint32_t id, std::uint64_t ms);
  bool SetSuggestedNetworkReason(std::uint32_t id) override;
  bool SetSuggestedNetworkReasonPercent(std::int32_t percent) override;

  // The inhibit clock: while it runs the worker decides nothing. Any thread.
  void Set_InhibitQUAY(std::uint32_t ms, const char* tag);  // `tag` is static text
  bool Get_InhibitQUAY(std::uint64_t* remainingMs);         // remainingMs may be null
  std::uint64_t GetInhibitRemainingMs() const;
  const char* GetInhibitReason() const;
  bool IsNoDelayOpen() const;
  double GetNoDelayRemainingSecs() const;
  void OpenNoDelay(std::uint32_t ms);  // expiry and flag
  void CloseNoDelay();

  void SetRoamingInhibit();
  void ClearRoamingInhibit();
  std::uint64_t GetRoamingInhibitTick();  // 0 for none
  std::uint64_t GetRoamingInhibitAgeMs();

  void ResolveUp_APScoreDeltaThreshold(const CandidateSummary& summary);

  void SignalMainLoopSemaphore();
  bool WaitMainLoopSemaphore(std::uint32_t ms);  // true when woken

  std::uint32_t GetMainLoopSleepMs() const;  // by power
  void Set_MainLoopSleepMs(std::uint32_t ms);
  std::uint32_t GetScanIntervalSecs() const;  // by power

  bool IsGatewayRoaming() const;
  bool IsRoamingEnabled() const;

  void SetConnectedNetwork(WStringView display, WStringView ssid, WStringView bssid);
  void SetVPNInhibited(bool inhibited);
  void SetAirplaneInhibited(bool inhibited);
  void SetRadioInhibited(bool inhibited);

  bool SetDWORD(WStringView name, std::uint32_t value) override {
    return CRegistryHelperBase::SetDWORD(name, value);
  }
  bool SetString(WStringView name, WStringView text) override {
    return CRegistryHelperBase::SetString(name, text);
  }
  bool GetString(WStringView name, WString* out) const override {
    return CRegistryHelperBase::GetString(name, out);
  }

  // The machine's radio management state, 1 for airplane mode; false, with *value as it was, when
  // it can't be read.
  static bool GetAirplaneMode(std::uint32_t* value);

  // The client's connect order: written by the pipe threads, taken up by the policy round.
  void SetUIConnectRequest(UIConnectRequest request);
  // Its pieces; a target that is not empty makes an order of them.
  void SetUIConnectProfile(WString xml);
  void SetUIConnectSave(bool save);
  void SetUIConnectTarget(WString ssid, WString bssid);
  UIConnectRequest TakeUIConnectRequest();  // the next one may come as soon as this one is taken

  const WString& GetDescription() const { return m_Description; }

  ScoreWeights GetScoreWeights() const;  // the defaults when there is no score object

  // The AP lists; their rows change on the adapter's worker only.
  CConfigDenylist m_Denylist;
  CConfigAllowlist m_Allowlist;
  CConfigSelectArbitrary m_SelectArbitrary;

  bool IsEtwMode() const override { return SuggestsByEvent(); }
  bool IsOptimizerPresent() const override;

  // The reporters of suggestions and states.
  CEtwTrellis m_Etw;
  CPopupSuggestion m_Popup;

 private:
  void SetProjectDefaults();
  void ReadSetting(const ValueRow& row);
  void ReadWeights();  // ScoreCfgJson

  WString m_KeyPath;
  WString m_Guid;
  WString m_Description;
  int m_ConfigIdx = -1;
  CSmartPointer<CSemaphore> m_pMainLoopSemaphore;  // under m_PartsLock
  CSmartPointer<CScoreConfig> m_pScoreConfig;      // under m_PartsLock
  mutable CCritSec m_PartsLock{"configuration parts", LockRank::kLeaf};

  UIConnectRequest m_UIConnect;  // under m_PartsLock

  mutable CCritSec m_InhibitLock{"inhibit clock", LockRank::kLeaf};
  InhibitClock m_Inhibit;  // under m_InhibitLock

  std::atomic<std::uint64_t> m_StatusTick{0};
  std::atomic<std::uint64_t> m_RoamingInhibitTick{0};
};

}  // namespace corvane
