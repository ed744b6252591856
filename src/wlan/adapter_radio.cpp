#include "wlan/adapter_radio.h"

#include <algorithm>

#include "foundation/log_lines.h"
#include "store/value_names.h"
#include "wlan/wlan_queries.h"

namespace corvane {

namespace {

using namespace platform;

constexpr std::uint64_t kAdapterLog = DBG(0);
constexpr DWORD kMaxPhys = 64;
static_assert(std::size(decltype(WLAN_INTERFACE_CAPABILITY::dot11PhyTypes){}) == kMaxPhys);
static_assert(std::size(decltype(WLAN_RADIO_STATE::PhyRadioState){}) == kMaxPhys);

WString PhyText(LONG type) {
  switch (type) {
    case dot11_phy_type_unknown:
      return u"(UNKNOWN)";
    case dot11_phy_type_fhss:
      return u"(FHSS)";
    case dot11_phy_type_dsss:
      return u"(DSSS)";
    case dot11_phy_type_irbaseband:
      return u"(IR)";
    case dot11_phy_type_ofdm:
      return u"(OFDM)";
    case dot11_phy_type_hrdsss:
      return u"(HRDSS)";
    case dot11_phy_type_erp:
      return u"(ERP)";
    case dot11_phy_type_ht:
      return u"(HT)";
    case dot11_phy_type_vht:
      return u"(VHT)";
    case dot11_phy_type_he:
      return u"(HE)";
    default:
      return Format(u"(IHV - 0x%08x)", type);
  }
}

}  // namespace

AdapterRadio::AdapterRadio(const AdapterIdentity& adapter) : m_Adapter(adapter) {
  for (auto& phy : m_RadioState.PhyRadioState) phy.dwPhyIndex = static_cast<DWORD>(-1);
}

void AdapterRadio::DetermineInterfaceCapability() {
  m_Capability = QueryCapability(m_Adapter);
  const DWORD count = std::min(m_Capability.dwNumberOfSupportedPhys, kMaxPhys);
  LOG_ADAPTER(m_Adapter.Idx(), kAdapterLog,
              u"[%i] CWlanInterface::DetermineInterfaceCapability: interfaceType = %i, "
              u"dwNumberOfSupportedPhys = %lu",
              m_Adapter.Idx(), m_Capability.interfaceType, m_Capability.dwNumberOfSupportedPhys);
  for (DWORD i = 0; i < count; ++i) NotePhy(i, m_Capability.dot11PhyTypes[i]);
  if (!std::exchange(m_bHighestPhyPending, false)) return;
  m_Adapter.Config()->SetString(value::kAdapterHighestPHYClass, ClassText());
}

void AdapterRadio::NotePhy(std::uint32_t position, std::int32_t type) {
  struct Row {
    LONG type;
    std::atomic<std::int32_t>* index;
    const char16_t* name;
  };
  const Row rows[] = {
      {dot11_phy_type_he, &m_HE_PhyIdx, u"m_HE_PhyIdx"},
      {dot11_phy_type_vht, &m_VHT_PhyIdx, u"m_VHT_PhyIdx"},
      {dot11_phy_type_ht, &m_HT_PhyIdx, u"m_HT_PhyIdx"},
      {dot11_phy_type_erp, &m_G_PhyIdx, u"m_G_PhyIdx"},
      {dot11_phy_type_hrdsss, &m_B_PhyIdx, u"m_B_PhyIdx"},
      {dot11_phy_type_ofdm, &m_A_PhyIdx, u"m_A_PhyIdx"},
  };
  const auto row = std::find_if(std::begin(rows), std::end(rows),
                                [type](const Row& candidate) { return candidate.type == type; });
  if (row == std::end(rows)) {
    LOG_ADAPTER(m_Adapter.Idx(), kAdapterLog, u"[%i] dot11PhyTypes[%u] = %i %s", m_Adapter.Idx(),
                position, type, PhyText(type));
    return;
  }
  *row->index = static_cast<std::int32_t>(position);
  LOG_ADAPTER(m_Adapter.Idx(), kAdapterLog, u"[%i] dot11PhyTypes[%u] = %i %s, SET %s",
              m_Adapter.Idx(), position, type, PhyText(type), row->name);
}

WStringView AdapterRadio::ClassText() const {
  if (m_HE_PhyIdx >= 0) return u"ax";
  if (m_VHT_PhyIdx >= 0) return u"ac";
  if (m_HT_PhyIdx >= 0) return u"n";
  if (m_G_PhyIdx >= 0) return u"g";
  if (m_B_PhyIdx >= 0) return u"b";
  if (m_A_PhyIdx >= 0) return u"a";
  return u"802.11";
}

bool AdapterRadio::IsRadioOff() const {
  const CCritSecLock lock(m_Lock);
  const auto isOff = [this](std::int32_t index) {
    if (index < 0) return false;
    const auto& states = m_RadioState.PhyRadioState;
    return std::any_of(std::begin(states), std::end(states),
                       [index](const WLAN_PHY_RADIO_STATE& state) {
                         return state.dwPhyIndex == static_cast<DWORD>(index) &&
                                state.dot11SoftwareRadioState == dot11_radio_state_off;
                       });
  };
  return isOff(m_HT_PhyIdx) || isOff(m_VHT_PhyIdx);
}

void AdapterRadio::Store(const WLAN_RADIO_STATE& state) {
  const CCritSecLock lock(m_Lock);
  const DWORD count = std::min(state.dwNumberOfPhys, kMaxPhys);
  m_RadioState = state;
  m_RadioState.dwNumberOfPhys = count;
  for (DWORD i = count; i < std::size(m_RadioState.PhyRadioState); ++i) {
    m_RadioState.PhyRadioState[i] = {static_cast<DWORD>(-1), 0, 0};
  }
}

void AdapterRadio::Store(const WLAN_PHY_RADIO_STATE& state) {
  const CCritSecLock lock(m_Lock);
  for (auto& known : m_RadioState.PhyRadioState) {
    if (known.dwPhyIndex != state.dwPhyIndex && known.dwPhyIndex != static_cast<DWORD>(-1))
      continue;
    known = state;
    return;
  }
}

}  // namespace corvane
