#pragma once
#include "foundation/smart_obj.h"

namespace corvane {

// Who is told when the machine goes to sleep and wakes. Both calls come on the thread that takes
// the platform's power events, in the order of the events; they take no lock and do not wait.
class IPowerSubscriber : public virtual ISmartObj {
 public:
  virtual void OnResume() = 0;
  virtual void OnSuspend() = 0;

 protected:
  ~IPowerSubscriber() = default;
};

}  // namespace corvane
