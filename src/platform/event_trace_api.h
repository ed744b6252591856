#pragma once
#include "platform/types.h"

namespace corvane::platform {

using REGHANDLE = std::uint64_t;

struct EVENT_DESCRIPTOR {
  std::uint16_t Id = 0;
  std::uint8_t Version = 0;
  std::uint8_t Channel = 0;
  std::uint8_t Level = 0;
  std::uint8_t Opcode = 0;
  std::uint16_t Task = 0;
  std::uint64_t Keyword = 0;
};
static_assert(sizeof(EVENT_DESCRIPTOR) == 16);

inline constexpr std::uint8_t EVENT_DATA_DESCRIPTOR_TYPE_NONE = 0;
inline constexpr std::uint8_t EVENT_DATA_DESCRIPTOR_TYPE_EVENT_METADATA = 1;
inline constexpr std::uint8_t EVENT_DATA_DESCRIPTOR_TYPE_PROVIDER_METADATA = 2;

struct EVENT_DATA_DESCRIPTOR {
  std::uint64_t Ptr = 0;  // address of the data
  std::uint32_t Size = 0;
  std::uint8_t Type = EVENT_DATA_DESCRIPTOR_TYPE_NONE;
  std::uint8_t Reserved1 = 0;
  std::uint16_t Reserved2 = 0;
};
static_assert(sizeof(EVENT_DATA_DESCRIPTOR) == 16);

inline constexpr DWORD EventProviderSetTraits = 2;  // class of EventSetInformation

// What a session tells a provider.
inline constexpr DWORD EVENT_CONTROL_CODE_DISABLE_PROVIDER = 0;
inline constexpr DWORD EVENT_CONTROL_CODE_ENABLE_PROVIDER = 1;
inline constexpr DWORD EVENT_CONTROL_CODE_CAPTURE_STATE = 2;

// Event tracing. Results are error codes. Safe for use from every thread.
class EventTraceApi {
 public:
  // Tells a provider that a session begins or ends to listen (EVENT_CONTROL_CODE_...), and its
  // level, 0 for all; also called within EventRegister.
  using EnableCallback = void (*)(const GUID* source, DWORD isEnabled, BYTE level,
                                  ULONGLONG matchAnyKeyword, ULONGLONG matchAllKeyword,
                                  void* filter, void* context);
  virtual ~EventTraceApi() = default;
  virtual ULONG EventRegister(const GUID* provider, EnableCallback callback, void* context,
                              REGHANDLE* handle);
  virtual ULONG EventSetInformation(REGHANDLE handle, DWORD informationClass,
                                    const void* information, ULONG length);
  // `data` begins with the provider's metadata and the event's.
  virtual ULONG EventWriteTransfer(REGHANDLE handle, const EVENT_DESCRIPTOR* descriptor,
                                   const GUID* activity, const GUID* related, ULONG count,
                                   const EVENT_DATA_DESCRIPTOR* data);
  // No callback runs afterwards.
  virtual ULONG EventUnregister(REGHANDLE handle);
};

}  // namespace corvane::platform
