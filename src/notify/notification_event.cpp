#include "notify/notification_event.h"

#include "foundation/format.h"
#include "platform/clock_api.h"

namespace corvane {

void CNotificationEvent::Set(WStringView nameSpace, WStringView category, WStringView type,
                             bool state) {
  m_Namespace = nameSpace;
  m_Category = category;
  m_Type = type;
  m_bState = state;
  const platform::SYSTEMTIME now = platform::SystemTimeNow();
  m_Timestamp = Format(u"%02d/%02d/%02dT%d:%02d:%02d.%02dZ", now.wDay, now.wMonth, now.wYear,
                       now.wHour, now.wMinute, now.wSecond, now.wMilliseconds);
}

std::size_t CNotificationEvent::GetTextSize() const {
  std::size_t size = 0;
  for (const WString* text : {&m_Timestamp, &m_Namespace, &m_Category, &m_Type, &m_Data1, &m_Data2,
                              &m_Data3, &m_Data4, &m_Data5}) {
    size += text->size();
  }
  return size;
}

WString CNotificationEvent::GetJson() const {
  WString json;
  const auto append = [&](WStringView member, WStringView value) {
    json += json.empty() ? u"{ \"" : u", \"";
    json += member;
    json += u"\":\"";
    json += value;
    json += u'"';
  };
  append(u"evtNamespace", m_Namespace);
  append(u"evtCategory", m_Category);
  append(u"evtType", m_Type);
  append(u"evtTimestamp", m_Timestamp);
  append(u"evtState", m_bState ? u"true" : u"false");
  append(u"evtData1", m_Data1);
  append(u"evtData2", m_Data2);
  append(u"evtData3", m_Data3);
  append(u"evtData4", m_Data4);
  append(u"evtData5", m_Data5);
  return json + u" }";
}

}  // namespace corvane
