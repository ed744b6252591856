#pragma once
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/sim/devices/sim_device_loop.h"
#include "platform/sim/world/world.h"

namespace corvane::platform::sim {

// The state that the simulated devices share: the world as the timeline has made it by now, and the
// services that run. Touched under the devices' lock.
struct SimMachine {
  SimMachine(const World& start, std::uint64_t theSeed, SimDeviceLoop& theLoop);

  SimDeviceLoop& loop;
  const std::uint64_t seed;
  World world;
  bool wlanService = true;
  bool networkListService = true;
  bool suspended = false;

  Point Position() const;
  // What an adapter hears of the access point now; nothing when that is dead, or too weak or on a
  // band that the adapter does not hear.
  std::optional<double> SignalFor(const Adapter& adapter, std::size_t accessPoint) const;
  // Sets the signal for good, or gives it back to power and track.
  void FixSignal(std::size_t accessPoint, std::optional<double> dbm);
  // Elements as a probe response carries them, or as a beacon that hides the SSID does. Who keeps
  // them keeps what was sent then.
  using Elements = std::shared_ptr<const std::vector<BYTE>>;
  const Elements& ElementsOf(std::size_t accessPoint, bool named) const;
  void SetLoad(std::size_t accessPoint, int stations, int utilisation);

  std::optional<std::size_t> FindAccessPoint(const Mac& bssid) const;
  // The network that an adapter on this access point is on. The system makes one, public and named
  // after the SSID, when it has none.
  std::size_t NetworkOf(std::size_t accessPoint);

 private:
  struct Sent {
    Elements named;
    Elements nameless;
    std::optional<double> fixedDbm;
  };
  void Renew(std::size_t accessPoint);

  std::vector<Sent> m_Sent;  // by access point
};

DOT11_SSID ToDot11(std::string_view ssid);
std::string FromDot11(const DOT11_SSID& ssid);  // at most 32 bytes
// As much of the text as fits, with its NUL.
void CopyText(std::u16string_view text, char16_t* out, std::size_t chars);

}  // namespace corvane::platform::sim
