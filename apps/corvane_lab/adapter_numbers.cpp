#include "corvane_lab/adapter_numbers.h"

#include "store/address_text.h"
#include "wlan/wifi_client_container.h"

namespace corvane::lab {

AdapterNumbers::AdapterNumbers(const platform::sim::World& world) {
  for (const auto& adapter : world.adapters) {
    m_ByGuid.emplace(GuidText(adapter.guid), static_cast<int>(m_ByGuid.size()));
  }
}

int AdapterNumbers::Of(const CWlanInterface& adapter) const {
  const auto found = m_ByGuid.find(adapter.GetGuidText());
  return found == m_ByGuid.end() ? -1 : found->second;
}

int AdapterNumbers::OfIndex(int index) const {
  const auto found = m_ByIndex.find(index);
  return found == m_ByIndex.end() ? -1 : found->second;
}

CSmartPointer<CWlanInterface> AdapterNumbers::Find(int number) const {
  auto& adapters = CWifiClientContainer::GetInstance();
  for (int position = 0;; ++position) {
    auto adapter = adapters.GetInterface(position);
    if (!adapter || Of(*adapter) == number) return adapter;
  }
}

}  // namespace corvane::lab
