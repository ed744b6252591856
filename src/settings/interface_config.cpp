#include "settings/interface_config.h"

#include <algorithm>
#include <utility>

#include "foundation/guarded.h"
#include "foundation/ignored.h"
#include "foundation/log_lines.h"
#include "platform/clock_api.h"
#include "platform/platform.h"
#include "platform/thread_api.h"
#include "settings/global_config_container.h"
#include "store/value_names.h"
#include "store/value_table.h"

namespace corvane {

namespace {

constexpr std::uint64_t kInhibitLog = DBG(30);
constexpr std::uint64_t kRoamLog = DBG(24);
constexpr std::uint32_t kThresholdStep = 2;
// Where the system keeps its radios' state: the key's default value.
constexpr char16_t kRadioStateKey[] =
    u"SYSTEM\\CurrentControlSet\\Control\\RadioManagement\\SystemRadioState";
constexpr char16_t kDefaultValue[] = u"";
constexpr std::uint64_t kLongestSleepMs = platform::INFINITE - 1;

std::uint64_t Now() { return Os().clock.GetTickCount64(); }

}  // namespace

CQUAYInterfaceConfig::CQUAYInterfaceConfig()
    : SmartObjEx("adapter configuration", LockRank::kAdapterConfig) {}
CQUAYInterfaceConfig::~CQUAYInterfaceConfig() = default;

void CQUAYInterfaceConfig::Initialize(int index, WStringView keyPath, WStringView guid,
                                      WStringView name, WStringView description) {
  m_KeyPath = keyPath;
  m_Guid = guid;
  m_Description = description;
  m_ConfigIdx = index;
  {
    auto score = CScoreConfig::CreateObject();
    auto semaphore = CSemaphore::CreateObject();
    semaphore->SetDebugName("main loop semaphore");
    const CCritSecLock lock(m_PartsLock);
    m_pScoreConfig.Swap(score);
    m_pMainLoopSemaphore.Swap(semaphore);
  }
  bool fresh = false;
  Ignored(InitializeRegistry(keyPath, &fresh));
  if (fresh) {
    SetProjectDefaults();
  } else if (std::uint32_t mode = 0;
             GetDWORD(value::kPassiveSuggestMode, &mode) && mode == kEventMode) {
    SetDWORD(value::kPassiveSuggestMode, kPopupMode);
  }
  RefreshFromRegistry();
  m_Etw.Start(index, this, guid, name, description);
  m_Popup.Start(index, this, guid);
  if (m_bPassive && m_bPopupMode && index <= 1) {
    SetDWORD(ReportedValueName(value::kSuggestCount, index), 0);
    SetDWORD(ReportedValueName(value::kBestCount, index), 0);
  }
  ClearStatusMessage(kStatusExternalRoaming);
  SetString(value::kConnectStatus, u"idle");
}

bool CQUAYInterfaceConfig::IsOptimizerPresent() const {
  return CGlobalConfigContainer::GetInstance().m_bPalisadeOptimizer;
}

void CQUAYInterfaceConfig::Shutdown() {
  ReleaseRegistry();
  CSmartPointer<CScoreConfig> score;
  CSmartPointer<CSemaphore> semaphore;
  const CCritSecLock lock(m_PartsLock);
  m_pScoreConfig.Swap(score);
  m_pMainLoopSemaphore.Swap(semaphore);
}

void CQUAYInterfaceConfig::SetProjectDefaults() {
  LOG_INFO(
      u"CRegistry::SetProjectDefaults: [Home Key Path = %s] Setting Defaults for "
      u"Trellis/VO/Corvane Build",
      m_KeyPath);
  for (const ValueRow* row : ValuesIn(ValueKey::kAdapter, ValueStep::kWriteFresh)) {
    SetDWORD(row->name, row->written.number);
  }
}

void CQUAYInterfaceConfig::RefreshFromRegistry() {
  if (!GetRegistry()) return;
  for (const ValueRow* row : ValuesIn(ValueKey::kAdapter, ValueStep::kReadEachRound)) {
    if (row->adapter.store) {
      ReadSetting(*row);
    } else {
      ReadWeights();
    }
  }
}

void CQUAYInterfaceConfig::ReadSetting(const ValueRow& row) {
  std::uint32_t number = 0;
  if (!GetDWORD(row.name, &number)) {
    if (row.returns) row.adapter.store(*this, *row.start);
  } else if (const auto taken = TakeNumber(row, number)) {
    row.adapter.store(*this, *taken);
  }
}

void CQUAYInterfaceConfig::ReadWeights() {
  WString json;
  if (!GetString(value::kScoreCfgJson, &json)) return;
  CSmartPointer<CScoreConfig> score;
  {
    const CCritSecLock lock(m_PartsLock);
    score = m_pScoreConfig;
  }
  if (score) Ignored(score->Initialize(json));
}

bool CQUAYInterfaceConfig::SetStatusMessage(std::uint32_t id) {
  const WStringView text = LookUpStatusText(id);
  if (text.empty()) return false;
  m_StatusTick = Now();
  WString stored;
  if (GetString(value::kStatusMessage, &stored) && stored == text) return true;
  const bool written = SetString(value::kStatusMessage, text);
  m_StatusTick = Now();
  return written;
}

bool CQUAYInterfaceConfig::ClearStatusMessage(std::uint32_t id) {
  const WStringView text = LookUpStatusText(id);
  if (text.empty()) return false;
  WString stored;
  if (!GetString(value::kStatusMessage, &stored) || stored != text) return true;
  m_StatusTick = Now();
  return SetString(value::kStatusMessage, u"");
}

bool CQUAYInterfaceConfig::ClearStatusMessageIfOlder(std::uint32_t id, std::uint64_t ms) {
  const WStringView text = LookUpStatusText(id);
  if (text.empty()) return false;
  WString stored;
  if (!GetString(value::kStatusMessage, &stored) || stored != text) return true;
  const std::uint64_t now = Now();
  if (now - m_StatusTick < ms) return true;
  m_StatusTick = now;
  return SetString(value::kStatusMessage, u"");
}

bool CQUAYInterfaceConfig::SetSuggestedNetworkReason(std::uint32_t id) {
  const WStringView text = LookUpStatusText(id);
  return !text.empty() && SetString(value::kSuggestedNetworkReason, text);
}

bool CQUAYInterfaceConfig::SetSuggestedNetworkReasonPercent(std::int32_t percent) {
  return SetString(value::kSuggestedNetworkReason,
                   Format(u"%s%i%% %s", LookUpStatusText(kStatusBetterHead), percent,
                          LookUpStatusText(kStatusBetterTail)));
}

void CQUAYInterfaceConfig::Set_InhibitQUAY(std::uint32_t ms, const char* tag) {
  std::uint64_t now = 0;
  InhibitClock::SetResult result;
  {
    // The tick is read under the lock: one read before it could be older than what a faster caller
    // has set, and would look like a clock that went back.
    const CCritSecLock lock(m_InhibitLock);
    now = Now();
    result = m_Inhibit.Set(ms, tag, now);
  }
  if (result.outsideScans >= kOutsideScansWarned) {
    LOG_INFO(
        u"=WARNING= | [%i]CQUAYInterfaceConfig::Set_InhibitQUAY(%lu) - CONSEC OUTSIDE SCANS %lu\n",
        m_ConfigIdx, ms, result.outsideScans);
  }
  if (result.outsideScans >= kOutsideScansIgnored) {
    LOG_INFO(
        u"=WARNING= | [%i]CQUAYInterfaceConfig::Set_InhibitQUAY(%lu) - CONSEC OUTSIDE SCANS %lu - "
        u"IGNORE INHIBIT / "
        u"CLEAR\n",
        m_ConfigIdx, ms, result.outsideScans);
  }
  if (result.outcome == InhibitClock::Outcome::kKeptLarger) {
    LOG_ADAPTER(m_ConfigIdx, kInhibitLog,
                u"[%i]CQUAYInterfaceConfig::Set_InhibitQUAY(%lu) - Keeping larger future, %I64u [+ "
                u"%I64u ms]\n",
                m_ConfigIdx, result.ms, result.future, result.future - now);
  } else {
    LOG_ADAPTER(m_ConfigIdx, kInhibitLog,
                u"[%i]CQUAYInterfaceConfig::Set_InhibitQUAY(%lu) - future = %I64u   "
                u"<==+==+==+==+==+==+==+== INHIBIT%s\n",
                m_ConfigIdx, result.ms, result.future,
                result.outcome == InhibitClock::Outcome::kSetAfterReset ? u" _CLOCK-RESET_" : u"");
  }
}

bool CQUAYInterfaceConfig::Get_InhibitQUAY(std::uint64_t* remainingMs) {
  std::uint64_t now = 0;
  InhibitClock::GetResult result;
  {
    const CCritSecLock lock(m_InhibitLock);
    now = Now();
    result = m_Inhibit.Get(now);
  }
  if (result.clockReset) {
    LOG_ADAPTER(
        m_ConfigIdx, kInhibitLog,
        u"[%i]CQUAYInterfaceConfig::Get_InhibitQUAY()- reset future = %lu + %I64u = %I64u   "
        u"<==!X=!X=!X=!X=!X=!X=!X= _CLOCK-RESET_\n",
        m_ConfigIdx, result.remainingMs, now, result.remainingMs + now);
  }
  if (result.inhibited && remainingMs) *remainingMs = result.remainingMs;
  return result.inhibited;
}

std::uint64_t CQUAYInterfaceConfig::GetInhibitRemainingMs() const {
  const std::uint64_t now = Now();
  const CCritSecLock lock(m_InhibitLock);
  return m_Inhibit.Remaining(now);
}

const char* CQUAYInterfaceConfig::GetInhibitReason() const {
  const CCritSecLock lock(m_InhibitLock);
  return m_Inhibit.m_InhibitReason;
}

bool CQUAYInterfaceConfig::IsNoDelayOpen() const { return Now() < m_NoDelayExpiry; }

double CQUAYInterfaceConfig::GetNoDelayRemainingSecs() const {
  const std::uint64_t now = Now(), expiry = m_NoDelayExpiry;
  return now < expiry ? static_cast<double>(expiry - now) / 1000.0 : 0.0;
}

void CQUAYInterfaceConfig::OpenNoDelay(std::uint32_t ms) {
  m_NoDelayExpiry = Now() + ms;
  m_no_delay = true;
}

void CQUAYInterfaceConfig::CloseNoDelay() {
  m_no_delay = false;
  m_NoDelayExpiry = 0;
}

void CQUAYInterfaceConfig::SetRoamingInhibit() {
  const CCritSecLock lock(ObjectLock());
  m_RoamingInhibitTick = Now();
  LOG_ADAPTER(m_ConfigIdx, kRoamLog, u"[%i]CQUAYInterfaceConfig::SetRoamingInhibit: tick %I64u\n",
              m_ConfigIdx, m_RoamingInhibitTick.load());
  SetStatusMessage(kStatusExternalRoaming);
}

void CQUAYInterfaceConfig::ClearRoamingInhibit() {
  const CCritSecLock lock(ObjectLock());
  LOG_ADAPTER(m_ConfigIdx, kRoamLog, u"[%i]CQUAYInterfaceConfig::ClearRoamingInhibit: was %I64u\n",
              m_ConfigIdx, m_RoamingInhibitTick.load());
  m_RoamingInhibitTick = 0;
  ClearStatusMessage(kStatusExternalRoaming);
}

std::uint64_t CQUAYInterfaceConfig::GetRoamingInhibitTick() {
  const CCritSecLock lock(ObjectLock());
  return m_RoamingInhibitTick;
}

std::uint64_t CQUAYInterfaceConfig::GetRoamingInhibitAgeMs() {
  const std::uint64_t since = GetRoamingInhibitTick(), now = Now();
  return since == 0 || now < since ? 0 : now - since;
}

void CQUAYInterfaceConfig::ResolveUp_APScoreDeltaThreshold(const CandidateSummary& summary) {
  const std::uint32_t threshold = m_APScoreThreshold += kThresholdStep;
  LOG_INFO(
      u"[%i]CQUAYInterfaceConfig::ResolveUp_APScoreDeltaThreshold(summary: %i, %i) BUMP SD "
      u"Threshold = %i "
      u"<~~~~~~~~~~!!!!!!!!!!!!!\n",
      m_ConfigIdx, summary.min, summary.max, threshold);
  SetDWORD(value::kAPScoreThreshold, threshold);
}

void CQUAYInterfaceConfig::SignalMainLoopSemaphore() {
  CSmartPointer<CSemaphore> semaphore;
  {
    const CCritSecLock lock(m_PartsLock);
    semaphore = m_pMainLoopSemaphore;
  }
  if (!semaphore) return;
  ContainedAt("CQUAYInterfaceConfig::SignalMainLoopSemaphore",
              [&] { semaphore->IncReleaseCount(); });
}

bool CQUAYInterfaceConfig::WaitMainLoopSemaphore(std::uint32_t ms) {
  CSmartPointer<CSemaphore> semaphore;
  {
    const CCritSecLock lock(m_PartsLock);
    semaphore = m_pMainLoopSemaphore;
  }
  if (semaphore) return semaphore->WaitOnSemaphore(ms);
  Os().threads.Sleep(ms);
  return false;
}

std::uint32_t CQUAYInterfaceConfig::GetMainLoopSleepMs() const {
  if (CGlobalConfigContainer::IsOnACPower()) return m_MainLoopSleepMs;
  const std::uint64_t batteryMs =
      std::uint64_t{CGlobalConfigContainer::GetInstance().m_BatteryModeSleepSecs} * 1000;
  return std::max(m_MainLoopSleepMs.load(),
                  static_cast<std::uint32_t>(std::min(batteryMs, kLongestSleepMs)));
}

void CQUAYInterfaceConfig::Set_MainLoopSleepMs(std::uint32_t ms) { m_MainLoopSleepMs = ms; }

std::uint32_t CQUAYInterfaceConfig::GetScanIntervalSecs() const {
  if (CGlobalConfigContainer::IsOnACPower()) return m_ScanInterval;
  return std::max<std::uint32_t>(m_ScanInterval,
                                 CGlobalConfigContainer::GetInstance().m_BatteryScanIntervalSecs);
}

bool CQUAYInterfaceConfig::IsGatewayRoaming() const {
  return CGlobalConfigContainer::GetInstance().m_bGatewayRoaming && m_GatewayRoaming;
}

bool CQUAYInterfaceConfig::IsRoamingEnabled() const {
  return CGlobalConfigContainer::GetInstance().m_bRoamingEnabled;
}

void CQUAYInterfaceConfig::SetConnectedNetwork(WStringView display, WStringView ssid,
                                               WStringView bssid) {
  SetString(value::kConnectedSsid, ssid);
  SetString(value::kConnectedBssid, bssid);
  WString status;
  const bool known = GetString(value::kConnectStatus, &status);
  if (bssid.empty()) {
    if (!known || status.empty() || status == u"connected")
      SetString(value::kConnectStatus, u"disconnected");
  } else if (status == u"connecting") {
    SetString(value::kConnectStatus, u"connected");
  }
  SetString(value::kConnectedNetwork, display);
}

void CQUAYInterfaceConfig::SetVPNInhibited(bool inhibited) {
  SetDWORD(value::kVPNInhibited, inhibited);
  m_VPNInhibited = inhibited;
}

void CQUAYInterfaceConfig::SetAirplaneInhibited(bool inhibited) {
  SetDWORD(value::kAirplaneInhibited, inhibited);
  m_AirplaneInhibited = inhibited;
}

void CQUAYInterfaceConfig::SetRadioInhibited(bool inhibited) {
  SetDWORD(value::kRadioInhibited, inhibited);
  m_RadioInhibited = inhibited;
}

bool CQUAYInterfaceConfig::GetAirplaneMode(std::uint32_t* value) {
  return CRegistry().GetRegistryDWORDValue(kRadioStateKey, kDefaultValue, value);
}

void CQUAYInterfaceConfig::SetUIConnectRequest(UIConnectRequest request) {
  const CCritSecLock lock(m_PartsLock);
  std::swap(m_UIConnect, request);
}

void CQUAYInterfaceConfig::SetUIConnectProfile(WString xml) {
  const CCritSecLock lock(m_PartsLock);
  m_UIConnect.profile.swap(xml);
}

void CQUAYInterfaceConfig::SetUIConnectSave(bool save) {
  const CCritSecLock lock(m_PartsLock);
  m_UIConnect.save = save;
}

void CQUAYInterfaceConfig::SetUIConnectTarget(WString ssid, WString bssid) {
  const CCritSecLock lock(m_PartsLock);
  m_UIConnect.ssid.swap(ssid);
  m_UIConnect.bssid.swap(bssid);
}

UIConnectRequest CQUAYInterfaceConfig::TakeUIConnectRequest() {
  const CCritSecLock lock(m_PartsLock);
  return std::exchange(m_UIConnect, {});
}

ScoreWeights CQUAYInterfaceConfig::GetScoreWeights() const {
  const CCritSecLock lock(m_PartsLock);
  return m_pScoreConfig ? m_pScoreConfig->Get() : ScoreWeights{};
}

}  // namespace corvane
