#include "pipe/diagnosis.h"

#include "foundation/guarded.h"
#include "foundation/log_lines.h"
#include "monitors/adapters_addresses.h"
#include "pipe/reply_text.h"
#include "settings/global_config_container.h"
#include "wlan/wifi_client_container.h"

namespace corvane {

namespace {

WString Failed(const Diagnosis& diagnosis) {
  return DiagnosisFailureReply(kReplyNotDone, DiagnosisObject(diagnosis));
}

WString DiagnoseAdapter(CWlanInterface& adapter, CAdaptersAddresses* snapshot) {
  Diagnosis diagnosis;
  diagnosis.adapterClass = StandardText(adapter.AdapterClassText());
  ConnectionFacts facts;
  if (!adapter.GetConnectedSSID(&facts)) {
    diagnosis.status = u"error, not connected";
    return Failed(diagnosis);
  }
  double mbps = 0.0;
  if (adapter.IsScanInFlight()) {
    diagnosis.status = u"scan";  // nothing is measured, which is a result
  } else {
    adapter.DoBlast(snapshot);
    mbps = adapter.GetBlastMbps();
    diagnosis.status = u"ok";
  }
  diagnosis.blast = Format(u"%f", mbps);
  WString standard;
  std::int32_t rssi = 0;
  diagnosis.apScore = adapter.GetScoreFromBssEntry(facts.ssid, facts.bssid, &standard, &rssi);
  diagnosis.apClass = StandardText(standard);
  return DiagnosisReply(DiagnosisObject(diagnosis));
}

}  // namespace

WString StandardText(WStringView letters) {
  constexpr WStringView kPlain = u"802.11";
  if (letters == kPlain || letters == u"11") return WString(kPlain);
  return WString(kPlain) += letters;
}

WString Diagnose() {
  const auto diagnose = [] {
    auto& global = CGlobalConfigContainer::GetInstance();
    if (!global.FindIFConfig(0)) return Failed({});
    const CCritSecLock lock(global.GetSecondLock());
    const auto snapshot = CAdaptersAddresses::CreateObject();
    snapshot->Initialize();
    const auto adapter = CWifiClientContainer::GetInstance().GetInterface(0);
    if (!adapter) return Failed({});
    return DiagnoseAdapter(*adapter, snapshot.get());
  };
  return Contained(diagnose, [](const Failure& failure) {
    ReportFailure("CNamedPipeListenerJson::HandleJsonCommand", failure);
    return Failed({});
  });
}

}  // namespace corvane
