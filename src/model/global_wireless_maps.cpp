#include "model/global_wireless_maps.h"

#include "elements/frequency_table.h"
#include "foundation/guarded.h"
#include "foundation/log_lines.h"

namespace corvane {

namespace {

constexpr std::uint32_t kSilentScansCounted = 2;

void ReportFault(const CWlanBssEntry& entry, const Footprint& footprint) {
  switch (footprint.fault) {
    case FootprintFault::kNone:
      break;
    case FootprintFault::kBadPrimary:
      LOG_ERROR(u"CGlobalWirelessMaps::ComputeNoiseLevelArray:[%s][%s] BAD Primary Channel #: %i\n",
                entry.m_BSSIDText, entry.m_SSIDW, footprint.badChannel);
      break;
    case FootprintFault::kBadSecondary:
      LOG_ERROR(
          u"CGlobalWirelessMaps::ComputeNoiseLevelArray:[%s][%s] BAD Secondary Channel #: %i\n",
          entry.m_BSSIDText, entry.m_SSIDW, footprint.badChannel);
      break;
    case FootprintFault::kBadChannel:
      LOG_ERROR(u"CGlobalWirelessMaps::ComputeNoiseLevelArray:[%s][%s] BAD Channel #: %lu\n",
                entry.m_BSSIDText, entry.m_SSIDW, footprint.badChannel);
      break;
  }
}

FootprintInputs InputsOf(const CWlanBssEntry& entry) {
  FootprintInputs in;
  in.band = BandOfFrequency(entry.GetFrequencyKhz());
  in.quality = entry.GetLQ();
  in.width = entry.m_Width;
  in.channel = entry.m_Channel;
  if (const CIEBlob* blob = entry.m_IEBlob.get()) {
    in.hasElements = true;
    in.eightyPlusEighty = blob->m_VHT80Plus80;
    in.dsss = blob->m_HasDsssRate;
    in.centerChannel = blob->m_LoadCenterChannel;
    in.seg0Channel = blob->m_LoadSeg0Channel;
    in.seg1Channel = blob->m_LoadSeg1Channel;
    in.loadPct = blob->m_QBSSLoadPct;
  }
  return in;
}

void DumpLoad(const ChannelLoadMap& map) {
  WString text = u"WLAN Load array:\n";
  for (int channel = 0; channel <= 196; ++channel) {
    if (channel % 10 == 0) text += Format(u"[%03i] ", channel);
    text += Format(u"%03u ", map.low.load[static_cast<std::size_t>(channel)]);
    if (channel % 10 == 9) text += u'\n';
  }
  LOG_DEBUG(DBG(20), u"%s\n", text);
}

}  // namespace

void CGlobalWirelessMaps::GetHiddenSsids(std::list<std::string>* ssids) {
  const CCritSecLock lock(m_Lock);
  for (const auto& [name, profile] : m_MapOfProfiles) {
    if (!profile || !profile->m_bNonBroadcast) continue;
    if (profile->m_SSIDA.empty()) profile->m_SSIDA = WideToUtf8(profile->m_Name);
    ssids->push_back(profile->m_SSIDA);
  }
}

void CGlobalWirelessMaps::Shutdown() {
  const CCritSecLock lock(m_Lock);
  LOG_DEBUG(DBG(29), u"CGlobalWirelessMaps::Shutdown: clearing m_MapOfProfiles, size=%u\n",
            m_MapOfProfiles.size());
  m_MapOfProfiles.clear();
  LOG_DEBUG(DBG(29), u"CGlobalWirelessMaps::Shutdown: clearing m_MapOfProfiles2, size=%u\n",
            m_MapOfProfiles2.size());
  m_MapOfProfiles2.clear();
}

std::shared_ptr<const ChannelLoadMap> CGlobalWirelessMaps::LoadMap(bool* valid) {
  const CCritSecLock lock(m_Lock);
  *valid = m_bLoadMapValid;
  return m_pLoadMap;
}

void CGlobalWirelessMaps::ComputeNoiseLevelArray(NetworkMap& networks) {
  try {
    ComputeNoiseLevelArray_internal(networks);
  } catch (const platform::PlatformFault& fault) {
    LOG_ERROR(u"CGlobalWirelessMaps::ComputeNoiseLevelArray: EXCEPTION - 0x%08x\n", fault.code);
  }
}

void CGlobalWirelessMaps::ComputeNoiseLevelArray_internal(NetworkMap& networks) {
  const CCritSecLock lock(m_Lock);
  // Published at once: whoever asks waits for the lock, and a computation that a fault ends leaves
  // what it has laid so far.
  const auto map = std::make_shared<ChannelLoadMap>();
  m_pLoadMap = map;
  Footprint footprint;
  for (const auto& [ssid, network] : networks) {
    for (const auto& [bssid, entry] : network->m_BssMap) {
      if (!entry->m_bss_scanned && entry->m_unscanned_count > kSilentScansCounted) continue;
      LayFootprint(InputsOf(*entry), map.get(), &footprint);
      entry->m_Footprint = footprint.channels;
      entry->m_FootprintText = footprint.text;
      if (footprint.fault != FootprintFault::kNone) ReportFault(*entry, footprint);
    }
  }
  m_bLoadMapValid = true;
  if (const log::Open open(DBG(20)); open) DumpLoad(*map);
}

}  // namespace corvane
