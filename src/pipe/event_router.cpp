// Events that a client posts to all subscribers.

#include <array>

#include "notify/notification_manager.h"
#include "pipe/commands.h"
#include "pipe/reply_text.h"
#include "settings/global_config_container.h"
#include "store/json_text.h"

namespace corvane::commands {

namespace {

bool TakeText(const rapidjson::Value& event, const char* name, WString* out) {
  const auto member = event.FindMember(name);
  if (member == event.MemberEnd() || !member->value.IsString()) return false;
  *out = Utf8ToWide(JsonText(member->value));
  return true;
}

// False when the event is not complete.
bool TakeEvent(const rapidjson::Value& json, CNotificationEvent* event) {
  WString state;
  struct Member {
    const char* name;
    WString* text;
  };
  const std::array<Member, 10> members = {{
      {"evtNamespace", &event->m_Namespace},
      {"evtCategory", &event->m_Category},
      {"evtType", &event->m_Type},
      {"evtTimestamp", &event->m_Timestamp},
      {"evtState", &state},
      {"evtData1", &event->m_Data1},
      {"evtData2", &event->m_Data2},
      {"evtData3", &event->m_Data3},
      {"evtData4", &event->m_Data4},
      {"evtData5", &event->m_Data5},
  }};
  for (const Member& member : members) {
    if (!TakeText(json, member.name, member.text)) return false;
  }
  event->m_bState = state == u"true";
  return true;
}

}  // namespace

WString EventRouter(const CClientRequest& request) {
  WString type;
  if (!request.GetString("type", &type)) return FailureReply(kReplyBadRequest, request.GetText());
  const rapidjson::Value* const json = request.FindObject("event");
  const auto event = CNotificationEvent::CreateObject();
  if (type != u"json1" || !json || !TakeEvent(*json, event.get()))
    return FailureReply(kReplyBadEvent, request.GetText());
  if (event->m_Namespace == u"Corvane" && event->m_Category == u"StreamDetect" &&
      event->m_Type == u"RTAudio") {
    CGlobalConfigContainer::GetInstance().SetRTAudioDetected(event->m_bState);
  }
  CNotificationManagerSingleton::GetInstance().QueueNotification(event.get());
  return EchoReply(request.GetText());
}

}  // namespace corvane::commands
