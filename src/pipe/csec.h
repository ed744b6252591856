#pragma once
#include "foundation/smart_obj.h"
#include "foundation/text.h"
#include "platform/session_api.h"

namespace corvane {

// The security descriptor of a pipe as text: all for the account `sid`, reading and writing for
// authenticated users; from version 6 of the system on open to processes of any integrity.
WString PipeDescriptorText(WStringView sid, std::uint32_t majorVersion);

// The security attributes of a pipe; lives for the making of one instance.
class CSEC : public SmartObjEx<CSEC, SmartObj<>> {
 public:
  CSEC() : SmartObjEx("pipe security") {}
  ~CSEC() override;
  const char* GetClassName() const override { return "CSEC"; }

  // Built at the first call. Null on failure, with the reason in the last error. The object keeps
  // what is given.
  const platform::SECURITY_ATTRIBUTES* GetAttributes();

 private:
  bool ReadSid(WString* sid);

  platform::SECURITY_ATTRIBUTES m_Attributes;
  void* m_pDescriptor = nullptr;  // null until built
};

}  // namespace corvane
