#pragma once
#include <cstdint>

namespace corvane {

struct LBSettings {
  std::uint32_t enable11ad = 1;              // 1: 802.11ad and mobile adapters are managed
  std::uint32_t enableOpenVpn = 0;           // 1: so are TAP adapters
  std::uint32_t supportOemDevice = 3;        // bit 0: the last gateway slot is a catch-all
  std::uint32_t discoveryIntervalMs = 2000;  // between two passes
  std::uint32_t traceEnabled = 0;            // not 0: the engine's steps are in the log

  bool Has11ad() const { return enable11ad == 1; }
  bool HasOpenVpn() const { return enableOpenVpn == 1; }
  bool HasTrace() const { return traceEnabled != 0; }
  bool HasCatchAll() const { return (supportOemDevice & 1) != 0; }
};

// From the registry; a value that is missing or no DWORD keeps its default.
LBSettings ReadLBSettings();

// The system's version, major in the hundreds, such as 603 for 6.3; 0 when it is not told.
std::uint32_t ReadSystemVersion();
// Of a text such as "6.3"; 0 for one that is none.
std::uint32_t VersionNumber(const char16_t* text);

}  // namespace corvane
