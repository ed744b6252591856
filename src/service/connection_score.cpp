// The score of the connection by itself, for rounds in which the model has no entry of it.

#include "monitors/network_list_manager.h"
#include "score/backup_score.h"
#include "score/score_terms.h"
#include "service/main_worker.h"

namespace corvane {

std::int32_t CQUAYMainWorker::ComputeBackupScore(const platform::WLAN_CONNECTION_ATTRIBUTES& attrs,
                                                 std::uint32_t channel) {
  const auto& association = attrs.wlanAssociationAttributes;
  const WString ssid = SsidText(association.dot11Ssid);

  const bool lowBand = IsLowBandChannel(channel);
  const std::int32_t average = lowBand ? m_pConfig->m_AvgQBSSScore2 : m_pConfig->m_AvgQBSSScore5;
  std::int32_t& remembered = lowBand ? m_Last2GhzQbssScore : m_Last5GhzQbssScore;
  if (average > 0) remembered = average;

  BackupScoreInputs in;
  in.quality = association.wlanSignalQuality;
  in.weights = m_pConfig->GetScoreWeights();
  in.isPrivate = CNetworkListManager::CategoryOf(ssid) == kCategoryPrivate;
  in.rxKbps = association.ulRxRate;
  in.txKbps = association.ulTxRate;
  in.phyType = static_cast<std::int32_t>(association.dot11PhyType);
  in.bandAverage = average;
  in.rememberedAverage = remembered;
  in.guest = IsGuestNetwork(ssid);
  return corvane::ComputeBackupScore(in);
}

}  // namespace corvane
