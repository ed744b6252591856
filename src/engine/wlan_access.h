#pragma once
#include "foundation/text.h"
#include "platform/wlan_types.h"

namespace corvane {

// The engine's own client of the WLAN service. Not locked: one thread at a time.
class CLBWlanAccess {
 public:
  CLBWlanAccess() = default;
  ~CLBWlanAccess() { Close(); }
  CLBWlanAccess(const CLBWlanAccess&) = delete;
  CLBWlanAccess& operator=(const CLBWlanAccess&) = delete;

  // Opens the client and keeps a default interface. A system older than 6.3, or one without the
  // service's library, has no WLAN support; where the service only fails, the client is opened at
  // the first need.
  void Start(std::uint32_t systemVersion);
  void Close() noexcept;

  // Opens the client where it is not; false without support, or when the service fails.
  bool Ensure();
  // The interface of an adapter, by its kept name; ERROR_NOT_FOUND when there is none.
  platform::DWORD FindInterface(WStringView name, platform::GUID* adapter);
  platform::HANDLE Client() const { return m_hClient; }
  // The interface to ask when an adapter's own is not found; null without one.
  const platform::GUID* DefaultInterface() const { return m_bDefault ? &m_Default : nullptr; }

 private:
  bool Open();

  platform::HANDLE m_hClient = nullptr;
  platform::GUID m_Default;
  bool m_bDefault = false;
  bool m_bSupported = false;
};

// Which of the interfaces the name belongs to: the one of exactly this description, else the first
// whose description begins with it, because names are kept cut. -1 for none.
int FindInterfaceByName(const platform::WLAN_INTERFACE_INFO* interfaces, std::size_t count,
                        WStringView name);

// The place of the interface that a client keeps as its default: of every second one, the last.
constexpr std::size_t DefaultInterfacePlace(std::size_t count) {
  return count == 0 ? 0 : (count - 1) / 2 * 2;
}

}  // namespace corvane
