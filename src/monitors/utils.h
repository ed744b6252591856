#pragma once
#include <atomic>
#include <cstdint>

#include "foundation/singleton.h"
#include "foundation/text.h"

namespace corvane {

// Small utilities of the process; the look-ups walk the interface table (GetIfTable) at each call.
class CUtils {
 public:
  static CUtils& GetInstance() { return Singleton<CUtils>::GetInstance(); }

  // A process that sees none of the windows of an interactive desktop runs as a service. Once, at
  // start.
  void DetectRunningAsService();
  bool IsRunningAsService() const { return m_bRunningAsService; }
  void SetRunningAsService(bool service) { m_bRunningAsService = service; }

  // The operating system's interface index of the row whose name, from its first "{", equals the
  // GUID text; 0xFFFFFFFF without one.
  static std::uint32_t GetIfIndexFromGUIDStr(const WString& guidText);
  // Description of the row with this index, every "/" as "_"; a "#" and the count of earlier rows
  // of the same description behind it, if there are any. False without such a row.
  static bool GetDescriptionForIfIndex(std::uint32_t ifIndex, WString* description);
  // "%02x-%02x-%02x-%02x-%02x-%02x". False without such a row or MAC.
  static bool GetMacStrForIfIndex(std::uint32_t ifIndex, WString* mac);

 private:
  friend class Singleton<CUtils>;
  CUtils() = default;

  std::atomic<bool> m_bRunningAsService{false};
};

}  // namespace corvane
