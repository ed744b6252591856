#include "wlan/adapter_identity.h"

#include "monitors/utils.h"
#include "settings/global_config_container.h"
#include "store/address_text.h"
#include "store/value_names.h"
#include "wlan/connection_name.h"
#include "wlan/wlan_client.h"

namespace corvane {

namespace {

// 802.11ax by the maker's wording: the capability list of early drivers does not tell it.
bool TellsOfHE(WStringView description) {
  const WString text = ToLower(description);
  const auto holds = [&text](WStringView word) { return text.find(word) != WString::npos; };
  return holds(u"ax") && (holds(u"vantor") || holds(u"intel"));
}

}  // namespace

ClientHold::ClientHold(CSmartPointer<CWlanClient> client) : m_pClient(std::move(client)) {}

ClientHold::~ClientHold() = default;

platform::HANDLE ClientHold::Handle() const { return m_pClient ? m_pClient->GetHandle() : nullptr; }

AdapterIdentity::AdapterIdentity() = default;

AdapterIdentity::~AdapterIdentity() = default;

void AdapterIdentity::Initialize(CWlanClient* client, const platform::WLAN_INTERFACE_INFO& info) {
  {
    const CCritSecLock lock(m_ClientLock);
    m_pClient = client;
  }
  m_Info = info;
  m_GuidText = corvane::GuidText(info.InterfaceGuid);
  m_ConnectionKeyPath = ConnectionKeyPath(m_GuidText);
  m_ConnectionName = ReadConnectionName(m_ConnectionKeyPath);
  m_OsIfIndex = CUtils::GetIfIndexFromGUIDStr(m_GuidText);
  CUtils::GetDescriptionForIfIndex(m_OsIfIndex, &m_Description);

  auto& global = CGlobalConfigContainer::GetInstance();
  m_ConfigIdx = global.AddIFConfig(m_GuidText, m_ConnectionName, m_Description);
  m_pConfig = global.GetIFConfig(m_ConfigIdx);
}

void AdapterIdentity::Publish() {
  m_pConfig->SetString(value::kAdapterGuid, m_GuidText);
  m_pConfig->SetString(value::kAdapterName, m_ConnectionName);
  if (CUtils::GetMacStrForIfIndex(m_OsIfIndex, &m_MacText)) {
    m_pConfig->SetString(value::kAdapterMac, m_MacText);
  }
  if (!m_Description.empty()) m_pConfig->SetString(value::kAdapterDescription, m_Description);
  m_pConfig->m_bHECapable = TellsOfHE(m_Description);
  m_pConfig->SetDWORD(value::kWifi6, m_pConfig->m_bHECapable);
}

void AdapterIdentity::Detach() {
  CSmartPointer<CWlanClient> client;  // dropped outside the lock
  const CCritSecLock lock(m_ClientLock);
  m_pClient.Swap(client);
}

CSmartPointer<CQUAYInterfaceConfig> AdapterIdentity::Config() const {
  if (!m_pConfig) throw Exception("CWlanInterface::Config: no configuration");
  return m_pConfig;
}

ClientHold AdapterIdentity::Client() const {
  const CCritSecLock lock(m_ClientLock);
  return ClientHold(m_pClient);
}

}  // namespace corvane
