#pragma once
// What an adapter can do, and whether its radio is on.

#include <atomic>

#include "wlan/adapter_identity.h"

namespace corvane {

// The worker asks for the capability; the radio's state comes from it and from the platform's
// thread, under a lock of its own. All threads read.
class AdapterRadio {
 public:
  explicit AdapterRadio(const AdapterIdentity& adapter);

  // Asks for the PHYs of the adapter, and publishes the class the first time. Throws Exception.
  // One that has gone since the last time is kept.
  void DetermineInterfaceCapability();
  WStringView ClassText() const;  // "ax", "ac", … "802.11"

  bool IsRadioOff() const;  // by the cached state of the HT or VHT PHY
  void Store(const platform::WLAN_RADIO_STATE& state);
  void Store(const platform::WLAN_PHY_RADIO_STATE& state);  // of one PHY

 private:
  void NotePhy(std::uint32_t position, std::int32_t type);

  const AdapterIdentity& m_Adapter;
  mutable CCritSec m_Lock{"radio state", LockRank::kLeaf};
  platform::WLAN_RADIO_STATE m_RadioState;  // under m_Lock; each dwPhyIndex -1 at the start
  platform::WLAN_INTERFACE_CAPABILITY m_Capability;
  std::atomic<std::int32_t> m_HE_PhyIdx{-1}, m_VHT_PhyIdx{-1}, m_HT_PhyIdx{-1};
  std::atomic<std::int32_t> m_G_PhyIdx{-1}, m_B_PhyIdx{-1}, m_A_PhyIdx{-1};
  bool m_bHighestPhyPending = true;
};

}  // namespace corvane
