#include "wlan/adapter_operations.h"

#include "foundation/log_lines.h"
#include "platform/platform.h"
#include "platform/thread_api.h"
#include "platform/wlan_api.h"
#include "wlan/air_watch.h"
#include "wlan/reason_text.h"
#include "wlan/wlan_call.h"

namespace corvane {

namespace {

using namespace platform;

constexpr std::uint64_t kConnectLog = DBG(4);
constexpr std::uint32_t kQueuePauseMs = 100;
constexpr std::uint32_t kScanWaitMs = 20000;
constexpr std::uint32_t kPollMs = 1000;
constexpr int kPollsMax = 60;  // an adapter that is still not connected then never will be
constexpr std::uint32_t kRestoreTimeoutMs = 15000;
constexpr std::uint32_t kDisconnectTimeoutMs = 5000;

// What is logged and thrown of an operation that ends otherwise than well. Lines of a wait take the
// adapter and 0, those of a reason the adapter, the notification code, the reason and its text. The
// end of a scan has no reason that counts.
struct EndTexts {
  const char16_t* timeOut;
  const char* timeOutThrown;
  const char16_t* exit;
  const char* exitThrown;
  const char16_t* failed;
  const char* failedThrown;
};

constexpr EndTexts kScanTexts = {
    u"\n[%i] CWlanInterface::ScanSynchronous: [waitBool=%i] _AFTER_ "
    u"m_pScanSyncEvent->WaitOnEvent() !!!!!!!!!!!!! TIMEOUT!",
    "ScanSynchronous() - Event Timeout!",
    u"\n[%i] CWlanInterface::ScanSynchronous: [waitBool=%i] _AFTER_ "
    u"m_pScanSyncEvent->WaitOnEvent() !!!!!!!!!!!!! GOT EXIT EVENT!",
    "ScanSynchronous() - Got Exit Event!",
    nullptr,
    nullptr};
constexpr EndTexts kConnectTexts = {
    u"[%i]CWlanInterface::ConnectSynchronous: [waitBool=%i] Got EXIT/ABORT/TIMEOUT Event!",
    "CWlanInterface::ConnectSynchronous: Got EXIT/ABORT?TIMEOUT Event!",
    u"[%i]CWlanInterface::ConnectSynchronous: [waitBool=%i] Got EXIT/ABORT/TIMEOUT Event!",
    "CWlanInterface::ConnectSynchronous: Got EXIT/ABORT?TIMEOUT Event!",
    u"[%i] CWlanInterface::ConnectSynchronous(): FAILED! NotificationCode=%lu, reason code=%lu "
    u"'%s'\n",
    "WlanConnect(pConnectParams) failed, reason: %i"};
constexpr EndTexts kDisconnectTexts = {
    u"[%i]CWlanInterface::DisconnectSynchronous: [waitBool=%i] done WaitOnEvent - due to TIMEOUT!",
    "WlanDisconnect() - Got Timeout!",
    u"[%i]CWlanInterface::DisconnectSynchronous: [waitBool=%i] done WaitOnEvent - due to "
    u"EXIT/ABORT!",
    "WlanDisconnect() - Got Exit Event!",
    u"[%i]CWlanInterface::DisconnectSynchronous: FAILED! NotificationCode=%lu, reason code = %lu "
    u"[%s]",
    "WlanDisconnect() failed, reason: %i"};

const EndTexts& TextsOf(WlanOperation kind) {
  if (kind == WlanOperation::kScan) return kScanTexts;
  return kind == WlanOperation::kConnect ? kConnectTexts : kDisconnectTexts;
}

// Says of a scan that it runs, until it has ended in whatever way.
class InFlightFlag {
 public:
  explicit InFlightFlag(std::atomic<bool>* flag) : m_Flag(*flag) {}
  ~InFlightFlag() { m_Flag = false; }
  InFlightFlag(const InFlightFlag&) = delete;
  InFlightFlag& operator=(const InFlightFlag&) = delete;

 private:
  std::atomic<bool>& m_Flag;
};

// Throws when the connect has ended without a completion that counts.
void NoteConnectEnd(int idx, const OperationGate::Outcome& outcome) {
  LOG_ADAPTER(idx, kConnectLog,
              u"[%i]CWlanInterface::ConnectSynchronous: done WaitOnEvent - NotificationCode=%lu, "
              u"reason code = %lu",
              idx, outcome.m_op_code, outcome.m_op_reason);
  if (outcome.m_op_reason != kNoCompletion) return;
  LOG_ERROR(u"[%i] CWlanInterface::ConnectSynchronous(): FAILED! NO NotificationCode!\n", idx);
  throw Exception("WlanConnect(pConnectParams) failed, NO NOTIFICATION");
}

}  // namespace

bool AdapterOperations::Begin(WlanOperation kind, const std::function<void()>& call) {
  for (;;) {
    {
      const CCritSecLock lock(m_Lock);
      if (!m_Adapter.Client()) return false;
      if (m_Gate.TryBegin(kind)) {
        try {
          call();
        } catch (...) {
          m_Gate.Abort();
          throw;
        }
        return true;
      }
    }
    Os().threads.Sleep(kQueuePauseMs);
  }
}

std::optional<OperationGate::Result> AdapterOperations::Run(WlanOperation kind,
                                                            const std::function<void()>& call,
                                                            std::uint32_t timeoutMs) {
  if (!Begin(kind, call)) return std::nullopt;
  TellOperation(m_Adapter.Idx(), kind, false);
  const OperationGate::Result result = m_Gate.Await(kind, timeoutMs);
  TellOperation(m_Adapter.Idx(), kind, true);
  return result;
}

void AdapterOperations::Finish(WlanOperation kind, const OperationGate::Result& result) const {
  const EndTexts& texts = TextsOf(kind);
  const OperationGate::Outcome& outcome = result.outcome;
  if (result.end != OperationGate::End::kDone) {
    const bool exit = result.end == OperationGate::End::kExit;
    LOG_ERROR(exit ? texts.exit : texts.timeOut, m_Adapter.Idx(), false);
    throw Exception(exit ? texts.exitThrown : texts.timeOutThrown);
  }
  if (!texts.failed || outcome.m_op_reason == 0) return;
  const auto reason = static_cast<DWORD>(outcome.m_op_reason);
  LOG_ERROR(texts.failed, m_Adapter.Idx(), outcome.m_op_code, reason, ReasonText(reason));
  throw Exception(texts.failedThrown, reason);
}

void AdapterOperations::ScanSynchronous(const DOT11_SSID* pSsid) {
  std::optional<OperationGate::Result> result;
  try {
    const InFlightFlag inFlight(&m_scan_in_flight);
    const auto call = [&] {
      m_scan_in_flight = true;
      ScanInternal(pSsid);
    };
    result = Run(WlanOperation::kScan, call, kScanWaitMs);
  } catch (const Exception& e) {
    LOG_ERROR(u"[%i]CWlanInterface::ScanSynchronous: Exception: %S", m_Adapter.Idx(), e.what());
    throw;
  } catch (const std::exception& e) {
    LOG_ERROR(u"[%i]CWlanInterface::ScanSynchronous: std:exception: %S", m_Adapter.Idx(), e.what());
    throw;
  }
  if (result) Finish(WlanOperation::kScan, *result);
}

void AdapterOperations::ScanInternal(const DOT11_SSID* pSsid) {
  const auto client = m_Adapter.Client();
  ++m_Scans.m_ScanAttempts;
  DWORD result = ERROR_SUCCESS;
  try {
    result = Os().wlan.WlanScan(client.Handle(), &m_Adapter.Guid(), pSsid, nullptr, nullptr);
  } catch (const PlatformFault& fault) {
    ++m_Scans.m_ScanFailures;
    LOG_ERROR(u"[%i]CWlanInterface::ScanInternal: WlanScan EXCEPTION: 0x%08x", m_Adapter.Idx(),
              fault.code);
    throw Exception("WlanScan() failed: 0x%08lx", fault.code);
  }
  if (result == ERROR_SUCCESS) {
    ++m_Scans.m_ScanSuccesses;
    return;
  }
  ++m_Scans.m_ScanFailures;
  LOG_ERROR(u"[%i]CWlanInterface::ScanInternal:: WlanScan FAILED %lu", m_Adapter.Idx(), result);
  throw Exception("WlanScan() failed: %i", result);
}

void AdapterOperations::ConnectSynchronous(const WLAN_CONNECTION_PARAMETERS& parameters, bool save,
                                           std::uint32_t timeoutMs) {
  try {
    const auto result = Run(
        WlanOperation::kConnect, [&] { ConnectInternal(parameters); }, timeoutMs);
    if (!result) return;
    if (result->end == OperationGate::End::kDone) NoteConnectEnd(m_Adapter.Idx(), result->outcome);
    Finish(WlanOperation::kConnect, *result);
    AwaitConnectedState();
    if (save && parameters.wlanConnectionMode == wlan_connection_mode_temporary_profile &&
        parameters.strProfile && *parameters.strProfile) {
      m_Profiles.QueueTempProfile(m_Link.ConnAttrs(), parameters);
    }
  } catch (const Exception& e) {
    LOG_ERROR(u"[%i] CWlanInterface::ConnectToNetwork: Exception: %hs\n", m_Adapter.Idx(),
              e.what());
    throw;
  } catch (const std::exception& e) {
    LOG_ERROR(u"[%i] CWlanInterface::ConnectToNetwork: std:exception: %hs\n", m_Adapter.Idx(),
              e.what());
    throw;
  }
}

// The completion may come before the adapter is in the connected state.
void AdapterOperations::AwaitConnectedState() {
  for (int poll = 0; poll < kPollsMax; ++poll) {
    WLAN_CONNECTION_ATTRIBUTES attrs;
    m_Link.QueryCurrentConnection(&attrs, true);
    const auto& association = attrs.wlanAssociationAttributes;
    LOG_ADAPTER(
        m_Adapter.Idx(), kConnectLog,
        u"[%i] Profile: %s, Mode: %i, SSID: %s, BSSID: %S, PHY: %i, SQ: %lu, Rx: %lu, Tx: %lu\n",
        m_Adapter.Idx(), attrs.strProfileName, attrs.wlanConnectionMode,
        SsidText(association.dot11Ssid), MacTextA(ToMac(association.dot11Bssid)),
        association.dot11PhyType, association.wlanSignalQuality, association.ulRxRate,
        association.ulTxRate);
    if (attrs.isState == wlan_interface_state_connected) {
      LOG_ADAPTER(m_Adapter.Idx(), kConnectLog, u"...State = %i [CONNECTED!]\n", attrs.isState);
      return;
    }
    LOG_ADAPTER(m_Adapter.Idx(), kConnectLog, u"State = %i [waiting]\n", attrs.isState);
    Os().threads.Sleep(kPollMs);
  }
  throw Exception("WlanConnect(pConnectParams) failed, not connected after %i polls", kPollsMax);
}

void AdapterOperations::ConnectInternal(const WLAN_CONNECTION_PARAMETERS& parameters) {
  const auto client = m_Adapter.Client();
  const HANDLE handle = client.Handle();
  DWORD result = ERROR_SUCCESS;
  try {
    result = Os().wlan.WlanConnect(handle, &m_Adapter.Guid(), &parameters, nullptr);
  } catch (const PlatformFault& fault) {
    LOG_ERROR(u"[%i]CWlanInterface::ConnectInternal:: WlanConnect EXCEPTION: 0x%08x",
              m_Adapter.Idx(), fault.code);
    throw Exception("WlanConnect() failed: 0x%08lx", fault.code);
  }
  if (result != ERROR_SUCCESS) {
    LOG_ERROR(
        u"[%i]CWlanInterface::ConnectInternal: WlanConnect FAILED: pConnectParams=0x%p, rc=%lu%s, "
        u"client "
        u"handle=0x%p, IfIdx=%i, strProfile=%s",
        m_Adapter.Idx(), &parameters, result,
        result == ERROR_INVALID_PARAMETER ? u" [ERROR_INVALID_PARAMETER]" : u"", handle,
        m_Adapter.Idx(), parameters.strProfile);
    throw Exception("WlanConnect(pConnectParams) failed: %i", result);
  }
  if (!parameters.pDesiredBssidList) return;
  m_Link.SetOwnBssid(ToMac(parameters.pDesiredBssidList->BSSIDs[0]));
}

void AdapterOperations::ConnectToNetwork(const WString& ssid) {
  WLAN_CONNECTION_PARAMETERS parameters;
  parameters.wlanConnectionMode = wlan_connection_mode_profile;
  parameters.strProfile = ssid.c_str();
  parameters.dot11BssType = dot11_BSS_type_infrastructure;
  ConnectSynchronous(parameters, false, kRestoreTimeoutMs);
  // The platform has chosen the access point; the move to it is the program's own all the same.
  m_Link.SetOwnBssid(ToMac(m_Link.ConnAttrs().wlanAssociationAttributes.dot11Bssid));
}

void AdapterOperations::DisconnectSynchronous(WStringView text) {
  LOG_ADAPTER(m_Adapter.Idx(), kConnectLog, u"[%i]CWlanInterface::DisconnectSynchronous: %s",
              m_Adapter.Idx(), text);
  const auto result = Run(
      WlanOperation::kDisconnect, [this] { DisconnectInternal(); }, kDisconnectTimeoutMs);
  if (result) Finish(WlanOperation::kDisconnect, *result);
}

void AdapterOperations::DisconnectInternal() {
  const auto client = m_Adapter.Client();
  const DWORD result = CodeOfCall("CWlanInterface", "WlanDisconnect", [&] {
    return Os().wlan.WlanDisconnect(client.Handle(), &m_Adapter.Guid(), nullptr);
  });
  if (result == ERROR_SUCCESS) return;
  LOG_ERROR(u"[%i]CWlanInterface::DisconnectInternal: WlanDisconnect failed - rc=%lu [IfIdx=%i]",
            m_Adapter.Idx(), result, m_Adapter.Idx());
  throw Exception("WlanDisconnect() failed: %i", result);
}

}  // namespace corvane
