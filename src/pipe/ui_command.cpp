// What a user interface sends while it is on screen.

#include "foundation/log_lines.h"
#include "notify/notification_manager.h"
#include "pipe/commands.h"
#include "pipe/reply_text.h"
#include "settings/global_config_container.h"
#include "wlan/wifi_client_container.h"

namespace corvane::commands {

namespace {

// The adapter that a request of this command means: the one named by GUID, else the one at the
// index.
struct Target {
  std::int32_t index = 0;
  WString guid;
  CSmartPointer<CQUAYInterfaceConfig> byGuid;  // null: the GUID is not known
  CSmartPointer<CQUAYInterfaceConfig> config;
};

void AppendBssid(const MacAddress& bssid, WString* array) {
  *array += Format(u"%s\"%02x:%02x:%02x:%02x:%02x:%02x\"", array->size() > 1 ? u"," : u"", bssid[0],
                   bssid[1], bssid[2], bssid[3], bssid[4], bssid[5]);
}

// The access points of a network as a JSON array; the position is that of the adapter in the list
// of the WLAN client.
WString AccessPointsOf(std::int32_t position, WStringView ssid) {
  WString array = u"[";
  const WString wanted = ToLower(ssid);
  if (const auto adapter = CWifiClientContainer::GetInstance().GetInterface(position)) {
    const CCritSecLock lock(adapter->ObjectLock());
    for (const auto& [name, network] : adapter->Networks()) {
      if (ToLower(name) != wanted) continue;
      for (const auto& [bssid, entry] : network->m_BssMap) AppendBssid(bssid, &array);
    }
  }
  return array + u"]";
}

void OpenWindow(const Target& target) {
  target.config->OpenNoDelay(kNoDelayMs);
  if (target.byGuid) {
    LOG_INFO(
        u"CNamedPipeListenerJson::HandleJsonCommand: SET UI NODELAY: CFG-index = %i, USE guid = %s",
        target.config->GetConfigIdx(), target.guid);
  } else {
    LOG_INFO(u"CNamedPipeListenerJson::HandleJsonCommand: SET UI NODELAY: [ONLY] index = %i",
             target.index);
  }
}

// A client that asks again and again doesn't stretch its window: only 0 lets the next one open.
void NoDelay(const Target& target, std::uint32_t number) {
  auto& isArmed = CGlobalConfigContainer::GetInstance().m_ui_no_delay_armed;
  if (number == 0) {
    target.config->CloseNoDelay();
    QueueNotification(u"Dummy", u"Dummy", u"Dummy");
    isArmed = true;
  } else if (isArmed.exchange(false)) {
    OpenWindow(target);
  } else {
    LOG_INFO(u"CNamedPipeListenerJson::HandleJsonCommand: IGNORE UI NODELAY");
  }
}

WString AcceptAPSuggestion(const CClientRequest& request, const Target& target,
                           std::uint32_t number) {
  if (!target.byGuid) return FailureReply(kReplyUnknownAdapter, request.GetText());
  if (number != 0) {
    target.byGuid->OpenNoDelay(kNoDelayMs);
    target.byGuid->m_accept_suggestion = true;
  }
  return EchoReply(request.GetText());
}

}  // namespace

WString UICommand(const CClientRequest& request) {
  Target target;
  if (!request.GetInt("idx", &target.index)) return FailureReply(kReplyNoIndex, request.GetText());
  if (!request.GetString("guid", &target.guid))
    return FailureReply(kReplyBadRequest, request.GetText());
  auto& global = CGlobalConfigContainer::GetInstance();
  target.byGuid = global.GetIFConfigByGuid(target.guid);
  target.config = target.byGuid ? target.byGuid : global.FindIFConfig(target.index);
  if (!target.config) return FailureReply(kReplyNoTarget, request.GetText());

  WString name, text;
  std::uint32_t number = 0;
  const bool isNamed = request.GetString("name", &name);
  if (isNamed && request.GetString("value", &text)) {
    if (name != u"GetAPsForNetwork") return FailureReply(kReplyUnknownName, request.GetText());
    return ListReply(AccessPointsOf(target.index, text));
  }
  if (!isNamed || !request.GetUint("value", &number))
    return FailureReply(kReplyNoNameOrValue, request.GetText());
  if (name == u"AcceptAPSuggestion") return AcceptAPSuggestion(request, target, number);
  if (name != u"NoDelay") return FailureReply(kReplyUnknownName, request.GetText());
  NoDelay(target, number);
  return EchoReply(request.GetText());
}

}  // namespace corvane::commands
