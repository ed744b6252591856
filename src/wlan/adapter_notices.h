#pragma once
// What the platform tells of an adapter, on its own thread: the service's own operations are told
// from outside ones, and only shared state is changed.

#include "wlan/adapter_radio.h"
#include "wlan/ap_contention.h"

namespace corvane {

// Nothing leaves into the platform's thread: a handler that fails or faults is logged.
class AdapterNotices {
 public:
  AdapterNotices(const AdapterIdentity& adapter, AdapterRadio& radio, AdapterLink& link,
                 AdapterAir& air, AdapterProfiles& profiles, AdapterOperations& operations,
                 AdapterTraffic& traffic, AdapterScans& scans, ApContention& contention,
                 DecidingProfile& deciding)
      : m_Adapter(adapter),
        m_Radio(radio),
        m_Link(link),
        m_Air(air),
        m_Profiles(profiles),
        m_Operations(operations),
        m_Traffic(traffic),
        m_Scans(scans),
        m_Contention(contention),
        m_Deciding(deciding) {}

  void ConnectionNotification(platform::DWORD code, const void* data);
  void ScanNotification(platform::DWORD code, platform::DWORD reason);
  void MSMNotification(const void* data);
  void MSMRadioStateNotification(const void* data);
  void MSMSignalQualityNotification(platform::DWORD quality);
  void MSMAdapterOperationModeNotification(platform::DWORD mode);

 private:
  // Handlers proper, behind the fault guards of the operations above.
  void ConnectionNotification_internal(platform::DWORD code, const void* data);
  void ScanNotification_internal(platform::DWORD code, platform::DWORD reason);
  void MSMNotification_internal(const void* data);
  void MSMRadioStateNotification_internal(const void* data);
  void MSMSignalQualityNotification_internal(platform::DWORD quality);
  void MSMAdapterOperationModeNotification_internal(platform::DWORD mode);
  template <typename Handler>
  void GuardHandler(const char* operation, Handler&& handler);

  void OnNoCompletion(platform::DWORD code, bool weInitiated);
  void OnOutsideCompletion(platform::DWORD code, bool xSide, const WString& ssid);
  void OnOutsideDisconnect(platform::DWORD code, bool xSide, const WString& ssid);
  void OnOutsideConnect(platform::DWORD code, const WString& ssid);
  void OnOwnCompletion(platform::DWORD code, WlanOperation kind, platform::DWORD reason,
                       const WString& ssid);
  std::uint32_t ChannelNow();
  void TellOfOutsideConnect(const ConnectionFacts& facts);
  void ResetReports(platform::DWORD code);
  void ForgetConnection(const WString& ssid);  // what every completed disconnect does

  const AdapterIdentity& m_Adapter;
  AdapterRadio& m_Radio;
  AdapterLink& m_Link;
  AdapterAir& m_Air;
  AdapterProfiles& m_Profiles;
  AdapterOperations& m_Operations;
  AdapterTraffic& m_Traffic;
  AdapterScans& m_Scans;
  ApContention& m_Contention;
  DecidingProfile& m_Deciding;
};

}  // namespace corvane
