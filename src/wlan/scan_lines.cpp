#include "wlan/scan_lines.h"

#include "foundation/log_lines.h"

namespace corvane {

namespace {

constexpr std::uint32_t kQualityMargin = 10;

std::uint64_t IntervalMs(const ScanInputs& in) { return std::uint64_t{in.intervalSecs} * 1000; }

void IdleVetoed(const ScanLineFacts& facts, const ScanInputs& in) {
  WString rates;
  for (const double rate : in.previousRates) rates += Format(u"%0.2lf ", rate);
  LOG_INFO(
      u"\n[%i] CWlanInterface::DiscoverNetworksSynchronous(): __FORCE__: net_is_idle to false, "
      u"DUE to "
      u"previous rates: %s\n",
      facts.idx, rates);
}

// Tells why the counter stood there; the quality chooses nothing but the line.
void ForcedByCount(const ScanLineFacts& facts, const ScanInputs& in, bool netIsIdle) {
  const std::uint32_t quality = facts.quality, peak = facts.peakQuality;
  if (in.connected && quality < facts.qualityThreshold) {
    LOG_INFO(
        u"\n[%i] CWlanInterface::DiscoverNetworksSynchronous():[F-COUNT %i --> %i][LQ %lu < "
        u"%lu] SET "
        u"force_scan = true\n",
        facts.idx, in.forceCounter, in.forceCounter - 1, quality, facts.qualityThreshold);
  } else if (peak > kQualityMargin && quality <= peak - kQualityMargin) {
    LOG_INFO(
        u"\n[%i] CWlanInterface::DiscoverNetworksSynchronous():[F-COUNT %i --> %i][LQ %lu < "
        u"max-10(%lu)] SET force_scan = true\n",
        facts.idx, in.forceCounter, in.forceCounter - 1, quality, peak - kQualityMargin);
  } else {
    LOG_INFO(
        u"\n[%i] CWlanInterface::DiscoverNetworksSynchronous():[F-COUNT %i --> "
        u"%i][net_is_idle=%i] SET "
        u"force_scan = true\n",
        facts.idx, in.forceCounter, in.forceCounter - 1, netIsIdle);
  }
}

void HeldBackByTraffic(const ScanLineFacts& facts, const ScanInputs& in, bool countsDeferral) {
  if (!countsDeferral) {
    LOG_INFO(
        u"\n[%i] CWlanInterface::DiscoverNetworksSynchronous():[%lu/%lu, csd %lu] <<< *not* "
        u"scanning "
        u"[leave m_LastScanTime][force=%i] due to bitrate >>> delta=%llu vs %lu, mbps %0.2lf "
        u">= %0.2lf "
        u"<=_____________\n",
        facts.idx, facts.successes, facts.attempts, facts.deferrals, in.force_scan, in.deltaMs,
        IntervalMs(in), in.rate, in.gateLow);
  } else if (in.ulScan) {
    LOG_INFO(
        u"\n[%i] CWlanInterface::DiscoverNetworksSynchronous():[%lu/%lu, csd %lu] <<< *not* "
        u"scanning "
        u"[ULS Enabled][m_LastScanTime=now] delta=%llu, mbps %0.2lf vs "
        u"%0.2lf<-----------------------\n",
        facts.idx, facts.successes, facts.attempts, facts.deferrals, in.deltaMs, in.rate,
        in.gateLow);
  } else {
    LOG_INFO(
        u"\n[%i] CWlanInterface::DiscoverNetworksSynchronous():[%lu/%lu, csd %lu] <<< *not* "
        u"scanning "
        u"[m_LastScanTime=now][force=%i] due to bitrate >>> delta=%llu, mbps %0.2lf >= "
        u"%0.2lf<-----------------------\n",
        facts.idx, facts.successes, facts.attempts, facts.deferrals, in.force_scan, in.deltaMs,
        in.rate, in.gateLow);
  }
}

void Scanning(const ScanLineFacts& facts, const ScanInputs& in, bool netIsIdle) {
  LOG_INFO(
      u"\n[%i] CWlanInterface::DiscoverNetworksSynchronous():[%lu/%lu, csd %lu] [[[ *scanning* "
      u"]]] "
      u"delta=%llu, interval=%lu, forceScanCounter=%i, net_is_idle=%i <-+-+-+-+-+-+-+-+-+-+-+-\n",
      facts.idx, facts.successes, facts.attempts, facts.deferrals, in.deltaMs, IntervalMs(in),
      facts.forceCounter, netIsIdle);
}

}  // namespace

void LogScanDecision(const ScanLineFacts& facts, const ScanInputs& in,
                     const ScanDecision& decision) {
  if (decision.idleVetoed) IdleVetoed(facts, in);
  switch (decision.rule) {
    case ScanRule::kForcedCount:
      ForcedByCount(facts, in, decision.netIsIdle);
      break;
    case ScanRule::kLongHeldBack:
      LOG_INFO(
          u"[%i] CWlanInterface::DiscoverNetworksSynchronous():SET force_scan = true, DUE to delta "
          u"%I64u >= "
          u"%lu and net_is_sorta_idle !!!!!!!!!!\n",
          facts.idx, in.deltaMs, IntervalMs(in) + kLongRuleExtraSecs * 1000);
      break;
    case ScanRule::kDeferrals:
      LOG_INFO(
          u"[%i] CWlanInterface::DiscoverNetworksSynchronous():[delta %I64u] SET force_scan = "
          u"true, DUE to "
          u"m_consec_ScanDeferrals %lu, clearing...\n",
          facts.idx, in.deltaMs, in.deferrals);
      break;
    case ScanRule::kTooEarly:
      LOG_INFO(
          u"\n[%i] CWlanInterface::DiscoverNetworksSynchronous():[%lu/%lu, csd %lu] <<< *not* "
          u"scanning "
          u"[force=%i] >>> delta=%llu vs %lu<-----------------------\n",
          facts.idx, facts.successes, facts.attempts, facts.deferrals, in.force_scan, in.deltaMs,
          IntervalMs(in));
      break;
    case ScanRule::kTraffic:
      HeldBackByTraffic(facts, in, decision.countsDeferral);
      break;
    case ScanRule::kForced:
    case ScanRule::kDisconnected:
    case ScanRule::kIdle:
      break;
  }
  if (decision.Scans()) Scanning(facts, in, decision.netIsIdle);
}

}  // namespace corvane
