// The step of each round that refreshes what is known of the air: scan or not, then both lists.

#include <algorithm>

#include "foundation/log_lines.h"
#include "model/global_wireless_maps.h"
#include "platform/clock_api.h"
#include "platform/platform.h"
#include "platform/thread_api.h"
#include "platform/wlan_api.h"
#include "settings/global_config_container.h"
#include "wlan/wlan_call.h"
#include "wlan/wlan_interface.h"

namespace corvane {

namespace {

using namespace platform;

constexpr std::uint64_t kScanLog = DBG(0) | DBG(3);
constexpr std::uint32_t kQualityMargin = 10;
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

std::int32_t CWlanInterface::DiscoverNetworksSynchronous(bool force_scan, bool first,
                                                         std::int32_t* aux_error) {
  std::int32_t found = 0;
  try {
    const std::uint64_t now = Os().clock.GetTickCount64();
    const double rate = GetTrafficMbps();
    const bool scans = MayScan(force_scan, now, rate);
    if (scans) RunScans(now);
    ReadLists(scans, first, rate, &found, aux_error);
  } catch (const Exception& e) {
    LOG_ERROR(u"[%i] CWlanInterface::DiscoverNetworksSynchronous: Exception: %hs\n",
              m_Adapter.Idx(), e.what());
  } catch (const std::exception& e) {
    LOG_ERROR(u"[%i] CWlanInterface::DiscoverNetworksSynchronous: std:exception: %hs\n",
              m_Adapter.Idx(), e.what());
  }
  // A scan that fails takes its time too: what is decided next goes by the traffic of now.
  if (m_pInterfacePDH) m_pInterfacePDH->PollPDHCollection();
  return found;
}

bool CWlanInterface::MayScan(bool force_scan, std::uint64_t now, double rate) {
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

  const ScanDecision decision = DecideScan(in);
  if (decision.rule == ScanRule::kForcedCount) --config->m_force_scan_counter;
  if (decision.rule == ScanRule::kDeferrals) m_consec_ScanDeferrals = 0;
  if (decision.countsDeferral) {
    m_LastScanTime = now;
    ++m_consec_ScanDeferrals;
  }
  if (!decision.Scans()) m_scan_fresh = false;
  if (const log::Open open(m_Adapter.Idx(), kScanLog); open) LogScanDecision(in, decision);
  return decision.Scans();
}

void CWlanInterface::LogScanDecision(const ScanInputs& in, const ScanDecision& decision) const {
  const auto config = m_Adapter.Config();
  const std::uint32_t quality = m_Link.ConnAttrs().wlanAssociationAttributes.wlanSignalQuality;
  const std::uint32_t peak = m_Link.MaxSignalQuality();
  const std::uint64_t interval = std::uint64_t{in.intervalSecs} * 1000;
  const std::uint32_t done = m_Operations.Scans().m_ScanSuccesses,
                      tried = m_Operations.Scans().m_ScanAttempts,
                      deferred = m_consec_ScanDeferrals;

  if (decision.idleVetoed) {
    WString rates;
    for (const double rate : in.previousRates) rates += Format(u"%0.2lf ", rate);
    LOG_INFO(
        u"\n[%i] CWlanInterface::DiscoverNetworksSynchronous(): __FORCE__: net_is_idle to false, "
        u"DUE to "
        u"previous rates: %s\n",
        m_Adapter.Idx(), rates);
  }
  switch (decision.rule) {
    case ScanRule::kForcedCount:
      if (in.connected && quality < config->m_LQCThreshold) {
        LOG_INFO(
            u"\n[%i] CWlanInterface::DiscoverNetworksSynchronous():[F-COUNT %i --> %i][LQ %lu < "
            u"%lu] SET "
            u"force_scan = true\n",
            m_Adapter.Idx(), in.forceCounter, in.forceCounter - 1, quality, config->m_LQCThreshold);
      } else if (peak > kQualityMargin && quality <= peak - kQualityMargin) {
        LOG_INFO(
            u"\n[%i] CWlanInterface::DiscoverNetworksSynchronous():[F-COUNT %i --> %i][LQ %lu < "
            u"max-10(%lu)] SET force_scan = true\n",
            m_Adapter.Idx(), in.forceCounter, in.forceCounter - 1, quality, peak - kQualityMargin);
      } else {
        LOG_INFO(
            u"\n[%i] CWlanInterface::DiscoverNetworksSynchronous():[F-COUNT %i --> "
            u"%i][net_is_idle=%i] SET "
            u"force_scan = true\n",
            m_Adapter.Idx(), in.forceCounter, in.forceCounter - 1, decision.netIsIdle);
      }
      break;
    case ScanRule::kLongHeldBack:
      LOG_INFO(
          u"[%i] CWlanInterface::DiscoverNetworksSynchronous():SET force_scan = true, DUE to delta "
          u"%I64u >= "
          u"%lu and net_is_sorta_idle !!!!!!!!!!\n",
          m_Adapter.Idx(), in.deltaMs, interval + kLongRuleExtraSecs * 1000);
      break;
    case ScanRule::kDeferrals:
      LOG_INFO(
          u"[%i] CWlanInterface::DiscoverNetworksSynchronous():[delta %I64u] SET force_scan = "
          u"true, DUE to "
          u"m_consec_ScanDeferrals %lu, clearing...\n",
          m_Adapter.Idx(), in.deltaMs, in.deferrals);
      break;
    case ScanRule::kTooEarly:
      LOG_INFO(
          u"\n[%i] CWlanInterface::DiscoverNetworksSynchronous():[%lu/%lu, csd %lu] <<< *not* "
          u"scanning "
          u"[force=%i] >>> delta=%llu vs %lu<-----------------------\n",
          m_Adapter.Idx(), done, tried, deferred, in.force_scan, in.deltaMs, interval);
      break;
    case ScanRule::kTraffic:
      if (!decision.countsDeferral) {
        LOG_INFO(
            u"\n[%i] CWlanInterface::DiscoverNetworksSynchronous():[%lu/%lu, csd %lu] <<< *not* "
            u"scanning "
            u"[leave m_LastScanTime][force=%i] due to bitrate >>> delta=%llu vs %lu, mbps %0.2lf "
            u">= %0.2lf "
            u"<=_____________\n",
            m_Adapter.Idx(), done, tried, deferred, in.force_scan, in.deltaMs, interval, in.rate,
            in.gateLow);
      } else if (in.ulScan) {
        LOG_INFO(
            u"\n[%i] CWlanInterface::DiscoverNetworksSynchronous():[%lu/%lu, csd %lu] <<< *not* "
            u"scanning "
            u"[ULS Enabled][m_LastScanTime=now] delta=%llu, mbps %0.2lf vs "
            u"%0.2lf<-----------------------\n",
            m_Adapter.Idx(), done, tried, deferred, in.deltaMs, in.rate, in.gateLow);
      } else {
        LOG_INFO(
            u"\n[%i] CWlanInterface::DiscoverNetworksSynchronous():[%lu/%lu, csd %lu] <<< *not* "
            u"scanning "
            u"[m_LastScanTime=now][force=%i] due to bitrate >>> delta=%llu, mbps %0.2lf >= "
            u"%0.2lf<-----------------------\n",
            m_Adapter.Idx(), done, tried, deferred, in.force_scan, in.deltaMs, in.rate, in.gateLow);
      }
      break;
    case ScanRule::kForced:
    case ScanRule::kDisconnected:
    case ScanRule::kIdle:
      break;
  }
  if (decision.Scans()) {
    LOG_INFO(
        u"\n[%i] CWlanInterface::DiscoverNetworksSynchronous():[%lu/%lu, csd %lu] [[[ *scanning* "
        u"]]] "
        u"delta=%llu, interval=%lu, forceScanCounter=%i, net_is_idle=%i <-+-+-+-+-+-+-+-+-+-+-+-\n",
        m_Adapter.Idx(), done, tried, deferred, in.deltaMs, interval, config->m_force_scan_counter,
        decision.netIsIdle);
  }
}

void CWlanInterface::RunScans(std::uint64_t now) {
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
void CWlanInterface::RunHiddenScans() {
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
    try {
      m_Operations.ScanSynchronous(&ssid);
    } catch (const Exception& e) {
      LOG_ERROR(
          u"[%i] CWlanInterface::DiscoverNetworksSynchronous: ScanSynchronous(%S) failed - "
          u"Exception %hs\n",
          m_Adapter.Idx(), bytes, e.what());
    } catch (const std::exception& e) {
      LOG_ERROR(
          u"[%i] CWlanInterface::DiscoverNetworksSynchronous: ScanSynchronous(%S) failed - "
          u"std:exception "
          u"%hs\n",
          m_Adapter.Idx(), bytes, e.what());
    }
  }
}

}  // namespace corvane
