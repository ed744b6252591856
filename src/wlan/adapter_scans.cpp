#include "wlan/adapter_scans.h"

#include <algorithm>

#include "foundation/guarded.h"
#include "foundation/log_lines.h"
#include "model/global_wireless_maps.h"
#include "platform/clock_api.h"
#include "platform/platform.h"
#include "settings/global_config_container.h"
#include "wlan/scan_lines.h"

namespace corvane {

namespace {

using namespace platform;

constexpr std::uint64_t kScanLog = DBG(0) | DBG(3);
constexpr std::uint64_t kRecentScanMs = 120000;
constexpr std::size_t kLongestSsid = sizeof(DOT11_SSID::ucSSID);

bool MakeSsid(const std::string& bytes, DOT11_SSID* ssid) {
  if (bytes.empty() || bytes.size() > kLongestSsid) return false;
  *ssid = {};
  ssid->uSSIDLength = static_cast<ULONG>(bytes.size());
  std::copy(bytes.begin(), bytes.end(), ssid->ucSSID);
  return true;
}

// Compared over the length of the connected SSID.
bool IsConnectedSsid(const DOT11_SSID& ssid, const DOT11_SSID& connected) {
  const std::size_t length = std::min<std::size_t>(connected.uSSIDLength, kLongestSsid);
  return std::equal(connected.ucSSID, connected.ucSSID + length, ssid.ucSSID);
}

}  // namespace

std::int32_t AdapterScans::DiscoverNetworksSynchronous(bool force_scan, bool first,
                                                       std::int32_t* aux_error) {
  std::int32_t found = 0;
  const auto discover = [&] {
    const std::uint64_t now = Os().clock.GetTickCount64();
    if (m_Deciding.Now().GetHabits().measuresBeforeScan) m_Traffic.Poll();
    const double rate = m_Traffic.Mbps();
    const bool scans = MayScan(force_scan, now, rate);
    if (scans) RunScans(now);
    m_Lists.Read(scans, first, &found, aux_error);
    RememberRate(rate);
  };
  Contained(discover, [this](const Failure& failure) {
    LOG_ERROR(u"[%i] CWlanInterface::DiscoverNetworksSynchronous: %hs: %hs\n", m_Adapter.Idx(),
              failure.Kind(), failure.what);
  });
  // A scan that fails takes its time too: what is decided next goes by the traffic of now.
  m_Traffic.Poll();
  return found;
}

bool AdapterScans::MayScan(bool force_scan, std::uint64_t now, double rate) {
  const auto config = m_Adapter.Config();
  ScanInputs in;
  in.force_scan = force_scan;
  in.connected = m_Link.IsConnected();
  in.ulScan = CGlobalConfigContainer::GetInstance().m_bULScan;
  in.deltaMs = now - m_LastScanTime;
  in.intervalSecs = config->GetScanIntervalSecs();
  in.mainLoopSleepMs = config->GetMainLoopSleepMs();
  in.deferrals = m_consec_ScanDeferrals;
  in.forceCounter = config->m_force_scan_counter;
  in.rate = rate;
  in.gateLow = config->m_rate_gate_low;
  in.gateHigh = config->m_rate_gate_high;
  in.previousRates = m_RateHistory;

  const ScanDecision decision = m_Deciding.Now().Scan(in);
  if (decision.rule == ScanRule::kForcedCount) --config->m_force_scan_counter;
  if (decision.rule == ScanRule::kDeferrals) m_consec_ScanDeferrals = 0;
  if (decision.countsDeferral) {
    m_LastScanTime = now;
    ++m_consec_ScanDeferrals;
  }
  if (!decision.Scans()) m_scan_fresh = false;
  if (const log::Open open(m_Adapter.Idx(), kScanLog); open) {
    const ScanCounts& counts = m_Operations.Scans();
    LogScanDecision(
        {m_Adapter.Idx(), counts.m_ScanSuccesses, counts.m_ScanAttempts, m_consec_ScanDeferrals,
         m_Link.ConnAttrs().wlanAssociationAttributes.wlanSignalQuality, m_Link.MaxSignalQuality(),
         config->m_LQCThreshold, config->m_force_scan_counter},
        in, decision);
  }
  return decision.Scans();
}

void AdapterScans::RunScans(std::uint64_t now) {
  m_LastScanTime = m_LastScanStart = now;
  m_scan_fresh = false;  // until it has run
  {
    // One broadcast scan at a time on this machine: two at once would spoil each other's air.
    const CCritSecLock lock(CGlobalConfigContainer::GetInstance().GetSecondLock());
    m_Operations.ScanSynchronous(nullptr);
  }
  RunHiddenScans();
  m_scan_fresh = true;
  m_consec_ScanDeferrals = 0;
  const bool connected = m_Link.IsConnected();
  m_connected_scan_count = connected ? m_connected_scan_count + 1 : 0;
  m_disconnected_scan_count = connected ? 0 : m_disconnected_scan_count + 1;
}

// A network that hides its name answers only to a scan that asks for it.
void AdapterScans::RunHiddenScans() {
  std::list<std::string> hidden;
  CGlobalWirelessMaps::GetInstance().GetHiddenSsids(&hidden);
  for (const std::string& bytes : hidden) {
    DOT11_SSID ssid;
    if (!MakeSsid(bytes, &ssid)) continue;
    if (m_Link.IsConnected() &&
        IsConnectedSsid(ssid, m_Link.ConnAttrs().wlanAssociationAttributes.dot11Ssid)) {
      LOG_ADAPTER(
          m_Adapter.Idx(), kScanLog,
          u"\n[%i] CWlanInterface::DiscoverNetworksSynchronous(): _SKIP_ Active Scanning HIDDEN "
          u"NETWORK: %S [currently connected]\n",
          m_Adapter.Idx(), bytes);
      continue;
    }
    LOG_ADAPTER(m_Adapter.Idx(), kScanLog,
                u"\n[%i] CWlanInterface::DiscoverNetworksSynchronous(): Active Scanning HIDDEN "
                u"NETWORK: %S\n",
                m_Adapter.Idx(), bytes);
    Contained([&] { m_Operations.ScanSynchronous(&ssid); },
              [&](const Failure& failure) {
                LOG_ERROR(
                    u"[%i] CWlanInterface::DiscoverNetworksSynchronous: ScanSynchronous(%S) failed "
                    u"- %hs %hs\n",
                    m_Adapter.Idx(), bytes, failure.Kind(), failure.what);
              });
  }
}

void AdapterScans::RememberRate(double rate) {
  m_RateHistory.insert(m_RateHistory.begin(), rate);
  if (m_RateHistory.size() > kRatesRemembered) m_RateHistory.resize(kRatesRemembered);
}

bool AdapterScans::HasHeardSurroundings() const {
  const bool scannedLately =
      m_LastScanStart != 0 && Os().clock.GetTickCount64() - m_LastScanStart <= kRecentScanMs;
  return m_connected_scan_count != 0 || scannedLately;
}

}  // namespace corvane
