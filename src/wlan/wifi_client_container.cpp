#include "wlan/wifi_client_container.h"

#include "foundation/guarded.h"
#include "foundation/log_lines.h"
#include "platform/clock_api.h"
#include "platform/platform.h"

namespace corvane {

namespace {

// A connect that its adapter's next round has yet to see.
bool IsJustConnectedTo(const CWlanInterface& adapter, const MacAddress& bssid) {
  return ToMac(adapter.GetConnAttrs().wlanAssociationAttributes.dot11Bssid) == bssid;
}

std::optional<MacAddress> ClaimedBy(CWlanInterface& adapter, const Habits& habits,
                                    ClaimsThatCount claims) {
  const CandidateClaim& claim = adapter.Claim();
  if (!habits.claimsFade) return claim.Held();
  const std::uint64_t now = Os().clock.GetTickCount64();
  return claims == ClaimsThatCount::kAll ? claim.HeldWithin(kClaimFadesMs, now)
                                         : claim.HeldUnasked(kClaimFadesMs, now);
}

}  // namespace

CSmartPointer<CWlanClient> CWifiClientContainer::Client() {
  const CCritSecLock lock(m_Lock);
  return m_pClient;
}

CSmartPointer<CWlanClient> CWifiClientContainer::MakeClient() {
  try {
    auto client = CWlanClient::CreateObject();
    const CCritSecLock lock(m_Lock);
    m_pClient = client;
    return client;
  } catch (const std::exception&) {
    LOG_ERROR(u"CWifiClientContainer::CWifiClientContainer: Failed to create Wlan Client!");
    throw;
  }
}

void CWifiClientContainer::Initialize() {
  const auto initialize = [this] {
    auto client = Client();
    if (!client) client = MakeClient();
    client->EnumerateInterfaces();
    client->PublishAdapters();
  };
  Contained(initialize, [this](const Failure& failure) {
    ReportFailure("CWifiClientContainer::Initialize", failure);
    Shutdown();
  });
}

void CWifiClientContainer::Shutdown() {
  CSmartPointer<CWlanClient> client;
  {
    const CCritSecLock lock(m_Lock);
    m_pClient.Swap(client);
  }
  if (client) client->Shutdown();
}

int CWifiClientContainer::GetCount() {
  const auto client = Client();
  return client ? static_cast<int>(client->GetCount()) : 0;
}

CSmartPointer<CWlanInterface> CWifiClientContainer::GetInterface(int position) {
  const auto client = Client();
  if (!client || position < 0) return nullptr;
  return client->GetInterfaceByIndex(static_cast<std::size_t>(position));
}

CSmartPointer<CWlanInterface> CWifiClientContainer::GetInterfaceByGuid(const platform::GUID& guid) {
  const auto client = Client();
  return client ? client->GetInterfaceByGuid(guid) : nullptr;
}

bool CWifiClientContainer::AdapterCountChanged() {
  const auto client = Client();
  return client && client->CheckForChangeInInterfaceCount();
}

bool CWifiClientContainer::IsBehindAnother(const CWlanInterface& adapter) {
  const auto client = Client();
  if (!client || !adapter.IsConnected()) return false;
  const MacAddress own = adapter.GetConnectedBssid();
  for (std::size_t i = 0;; ++i) {
    const auto other = client->GetInterfaceByIndex(i);
    if (!other) return false;
    if (other->GetConfigIdx() < adapter.GetConfigIdx() && other->IsConnected() &&
        other->GetConnectedBssid() == own) {
      return true;
    }
  }
}

bool CWifiClientContainer::AvoidThisCandidateOnMyIF(CWlanBssEntry* bss, CWlanInterface* myInterface,
                                                    ClaimsThatCount claims) {
  if (!bss || !myInterface) {
    throw Exception("CWifiClientContainer::AvoidThisCandidateOnMyIF(): Invalid args!");
  }
  const auto client = Client();
  if (!client) return false;
  const MacAddress wanted = bss->GetBssid();
  for (std::size_t i = 0;; ++i) {
    const auto other = client->GetInterfaceByIndex(i);
    if (!other) return false;
    if (other.get() == myInterface) continue;
    if (const MacAddress connected = other->GetConnectedBssid();
        other->IsConnected() && (connected == wanted || IsJustConnectedTo(*other, wanted))) {
      LOG_DEBUG(
          DBG(19),
          u"CWifiClientContainer::AvoidThisCandidateOnMyIF: *MATCHED* BSSID: candidate ssid: %s, "
          u"bssid: %s, other IF connected bssid: %S",
          bss->m_SSIDW, bss->m_BSSIDText, MacTextA(wanted));
      return true;
    }
    if (ClaimedBy(*other, myInterface->Profile().GetHabits(), claims) == wanted) {
      LOG_DEBUG(
          DBG(19),
          u"CWifiClientContainer::AvoidThisCandidateOnMyIF: *MATCHED* RESERVED BSSID: candidate "
          u"ssid: %s, candidate bssid: %s, other RESERVED bssid: %S",
          bss->m_SSIDW, bss->m_BSSIDText, MacTextA(wanted));
      return true;
    }
  }
}

}  // namespace corvane
