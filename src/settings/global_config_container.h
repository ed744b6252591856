#pragma once
#include <atomic>
#include <cstdint>
#include <list>
#include <map>
#include <memory>
#include <vector>

#include "foundation/singleton.h"
#include "launch/launcher.h"
#include "score/network_facts.h"
#include "settings/interface_config.h"
#include "store/csv_helper.h"
#include "store/global_settings.h"
#include "store/registry.h"

namespace corvane {

struct ValueRow;

// Global settings, the adapter configurations and the policy lock. Lives for the process; its
// registry and configurations live for one pass of the outer loop.
class CGlobalConfigContainer final : public CRegistryHelperBase,
                                     public IClientFileFinder,
                                     public GlobalSettings {
 public:
  static CGlobalConfigContainer& GetInstance() {
    return Singleton<CGlobalConfigContainer>::GetInstance();
  }

  // The lock that lets one policy round at a time run over all adapters, and the second lock that
  // is held around the broadcast scan.
  CCritSec& GetLock() { return m_Lock; }
  CCritSec& GetSecondLock() { return m_SecondLock; }

  void Initialize(bool forceDefaults);
  void Shutdown(bool killPopups);
  // The values that the main loop reads again in every round, in their order.
  void RefreshGlobals();

  // Throws Exception for an index out of range. Takes no lock that is ever held for long.
  CSmartPointer<CQUAYInterfaceConfig> GetIFConfig(int index);
  CSmartPointer<CQUAYInterfaceConfig> FindIFConfig(int index);  // null for an index out of range
  CSmartPointer<CQUAYInterfaceConfig> GetIFConfigByGuid(WStringView guidText);  // null: none
  int GetIFConfigCount();
  int AddIFConfig(WStringView guid, WStringView name, WStringView description);

  void SetUserTempPath(std::string path);
  std::string GetUserTempPath() const;
  void SetProxyPresent(bool present);
  bool IsProxyPresent() const;
  // This installation's identity as "{...}" text.
  WString GetSystemGuidText() const;
  // Directories that clients gave; false when the list holds this one already (compared exactly).
  [[nodiscard]] bool SetClientDir(WStringView path);
  // The first path <directory>\<name>, in list order, that is a file; false without one.
  bool FindFileInClientDirs(WStringView name, WString* found) override;
  // The one-shot flags: true and cleared when the value reads exactly 1.
  bool ReadFlagAndClear(WStringView name);
  bool IsEnabledForWeek(int week);

  // True when GetSystemPowerStatus succeeds and reports mains.
  static bool IsOnACPower();

  // The platform's filter lists, by SSID text: NetworkFilter. The table never changes; what is set
  // comes with the next one.
  std::shared_ptr<const NetworkFilters> GetNetworkFilters() const;
  std::uint32_t GetNetworkFilter(WStringView ssid);
  void SetNetworkFilters(const NetworkFilters& rows);  // those of other networks stay
  std::atomic<std::uint32_t> m_PermitFilterCount{0};   // permit rows of the last refresh

  std::atomic<bool> m_bForceLQEtw{false};  // by an option of the command line; adapters inherit it
  // Whether the next order of a user interface for rounds without delay opens a window.
  std::atomic<bool> m_ui_no_delay_armed{true};
  // A client has seen real-time audio begin or end.
  void SetRTAudioDetected(bool detected);
  // Ends audio that nobody has ended within an hour; true when it did.
  bool ExpireRTAudio();
  std::atomic<bool> m_rt_audio{false};            // real-time audio in progress
  std::atomic<std::uint64_t> m_rt_audio_tick{0};  // when it was set

 private:
  friend class Singleton<CGlobalConfigContainer>;
  CGlobalConfigContainer();
  ~CGlobalConfigContainer();

  void InitPostSettings();
  void ReadSetting(CRegistry& registry, const ValueRow& row);
  void ReadWeeks(CRegistry& registry);
  void ReadSystemGuid(CRegistry& registry);
  std::vector<CSmartPointer<CQUAYInterfaceConfig>> TakeIFConfigs();  // leaves none

  CCritSec m_Lock{"global configuration", LockRank::kGlobalConfig};
  CCritSec m_SecondLock{"global configuration, second", LockRank::kGlobalConfigSecond};
  mutable CCritSec m_TableLock{"configuration table", LockRank::kLeaf};  // guards what follows
  std::vector<CSmartPointer<CQUAYInterfaceConfig>> m_IFConfigs;          // index = adapter index
  int m_IFConfigCount = 0;
  std::map<WString, CSmartPointer<CQUAYInterfaceConfig>, std::less<>> m_IFConfigByGuid;
  std::shared_ptr<const NetworkFilters> m_NetworkFilters = std::make_shared<NetworkFilters>();
  std::list<WString> m_ClientDirs;
  std::string m_UserTempPath;
  bool m_bProxyPresent = false;
  platform::GUID m_SystemGuid;
  CSmartPointer<CSVHelper> m_pRandomCsv;
};

}  // namespace corvane
