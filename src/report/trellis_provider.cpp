#include "report/trellis_provider.h"

#include "foundation/guarded.h"
#include "foundation/log_lines.h"
#include "platform/platform.h"
#include "report/trellis_events.h"

namespace corvane {

using namespace platform;

namespace {

constexpr GUID kProviderId = {
    0x6F1D3C52, 0x8A47, 0x4E0B, {0x9B, 0x35, 0x2C, 0x71, 0xE4, 0x0D, 0xA8, 0x96}};
constexpr BYTE kAllLevels = 255;
constexpr EVENT_DESCRIPTOR kDescriptor = {.Channel = 11, .Level = 4, .Opcode = 0xCD};

EVENT_DATA_DESCRIPTOR Metadata(std::span<const std::uint8_t> blob, std::uint8_t type) {
  return {reinterpret_cast<std::uintptr_t>(blob.data()), static_cast<std::uint32_t>(blob.size()),
          type, 0, 0};
}

}  // namespace

class CTrellisProvider::Registration {
 public:
  static Registration& GetInstance() { return Singleton<Registration>::GetInstance(); }

  CCritSec m_Lock{"event provider registration"};
  CSmartPointer<CTrellisProvider> m_pProvider;  // null while there is no reporter
};

CTrellisProvider::~CTrellisProvider() {
  if (m_hProvider == 0) return;
  GiveBack("CTrellisProvider", "EventUnregister",
           [this] { Os().eventTrace.EventUnregister(m_hProvider); });
}

CSmartPointer<CTrellisProvider> CTrellisProvider::Share(HRESULT* status) {
  Registration& registration = Registration::GetInstance();
  const CCritSecLock lock(registration.m_Lock);
  *status = S_OK;
  if (!registration.m_pProvider) {
    const auto provider = CreateObject();
    *status = provider->Register();
    if (*status != S_OK) return nullptr;
    registration.m_pProvider = provider;
  }
  return registration.m_pProvider;
}

void CTrellisProvider::Leave(CSmartPointer<CTrellisProvider>* share) {
  if (!*share) return;
  Registration& registration = Registration::GetInstance();
  const CCritSecLock lock(registration.m_Lock);
  const bool isOurs = registration.m_pProvider == *share;
  share->reset();
  if (isOurs && registration.m_pProvider->GetRefCount() == 1) registration.m_pProvider.reset();
}

HRESULT CTrellisProvider::Register() {
  const ULONG registered =
      Os().eventTrace.EventRegister(&kProviderId, &OnEnable, this, &m_hProvider);
  if (registered != ERROR_SUCCESS) {
    m_hProvider = 0;
    return HRESULT_FROM_WIN32(registered);
  }
  // Each event carries the provider's metadata too, so it is readable even where this fails.
  const auto& traits = trellis::kProviderMetadata;
  const ULONG named = Os().eventTrace.EventSetInformation(m_hProvider, EventProviderSetTraits,
                                                          traits.data(), traits.size());
  if (named != ERROR_SUCCESS) {
    LOG_ERROR(u"CEtwTrellis::Start: EventSetInformation() failed 0x%08lx",
              HRESULT_FROM_WIN32(named));
  }
  return S_OK;
}

void CTrellisProvider::OnEnable(const GUID*, DWORD isEnabled, BYTE level, ULONGLONG, ULONGLONG,
                                void*, void* context) {
  auto& kept = static_cast<CTrellisProvider*>(context)->m_Level;
  if (isEnabled == EVENT_CONTROL_CODE_ENABLE_PROVIDER) {
    kept = level != 0 ? level : kAllLevels;
  } else if (isEnabled == EVENT_CONTROL_CODE_DISABLE_PROVIDER) {
    kept = 0;
  }
}

void CTrellisProvider::Write(std::span<const std::uint8_t> metadata,
                             std::span<EVENT_DATA_DESCRIPTOR> data) const {
  data[0] = Metadata(trellis::kProviderMetadata, EVENT_DATA_DESCRIPTOR_TYPE_PROVIDER_METADATA);
  data[1] = Metadata(metadata, EVENT_DATA_DESCRIPTOR_TYPE_EVENT_METADATA);
  Os().eventTrace.EventWriteTransfer(m_hProvider, &kDescriptor, nullptr, nullptr,
                                     static_cast<ULONG>(data.size()), data.data());
}

}  // namespace corvane
