#pragma once
#include <list>
#include <map>
#include <memory>
#include <string>

#include "foundation/singleton.h"
#include "model/wlan_network.h"
#include "model/wlan_profile_data.h"
#include "score/channel_load_map.h"

namespace corvane {

// What all adapters share: the stored profiles and the channel load map. Every operation takes the
// maps lock; where the interface lock is needed too, that one is taken first.
class CGlobalWirelessMaps {
 public:
  static CGlobalWirelessMaps& GetInstance() {
    return Singleton<CGlobalWirelessMaps>::GetInstance();
  }

  using ProfileMap = std::map<WString, CSmartPointer<CWlanProfileData>, std::less<>>;

  CCritSec& GetLock() { return m_Lock; }  // guards the maps of profiles below

  void GetHiddenSsids(std::list<std::string>* ssids);
  void Shutdown();

  // Works the load map out anew from one adapter's networks. The caller holds the interface lock.
  void ComputeNoiseLevelArray(NetworkMap& networks);
  // The map of the last computation, which never changes, and whether one has come to its end.
  std::shared_ptr<const ChannelLoadMap> LoadMap(bool* valid);

  ProfileMap m_MapOfProfiles;   // hidden networks and profiles looked up
  ProfileMap m_MapOfProfiles2;  // all profiles of the last refresh

 private:
  friend class Singleton<CGlobalWirelessMaps>;
  CGlobalWirelessMaps() = default;
  void ComputeNoiseLevelArray_internal(NetworkMap& networks);

  CCritSec m_Lock{"wireless maps", LockRank::kMaps};
  bool m_bLoadMapValid = false;
  std::shared_ptr<const ChannelLoadMap> m_pLoadMap = std::make_shared<const ChannelLoadMap>();
};

}  // namespace corvane
