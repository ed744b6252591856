#pragma once
#include "foundation/smart_obj.h"
#include "foundation/text.h"

namespace corvane {

// What a subscriber is told: who raises it, what it is, when, and up to five texts. Filled by one
// thread; not changed once it is queued.
class CNotificationEvent : public SmartObjEx<CNotificationEvent, SmartObj<>> {
 public:
  CNotificationEvent() : SmartObjEx("notification event") {}
  const char* GetClassName() const override { return "CNotificationEvent"; }

  // Names the event and stamps it with the current time (UTC).
  void Set(WStringView nameSpace, WStringView category, WStringView type, bool state);
  // The event on the wire: one line of JSON. Nothing is escaped here; that is the producer's part.
  WString GetJson() const;

  // Characters of all its texts.
  std::size_t GetTextSize() const;

  WString m_Timestamp;  // day/month/yearThour:minute:second.millisecondsZ
  WString m_Namespace;
  WString m_Category;
  WString m_Type;
  bool m_bState = false;
  WString m_Data1, m_Data2, m_Data3, m_Data4, m_Data5;
};

// Takes the events. SendNotification runs on the notification thread under the queue's lock: it
// must neither wait for the global configuration lock nor queue an event of its own from another
// thread.
class INotificationProvider : public virtual ISmartObj {
 public:
  virtual void SendNotification(CNotificationEvent* event) = 0;

 protected:
  ~INotificationProvider() = default;
};

}  // namespace corvane
