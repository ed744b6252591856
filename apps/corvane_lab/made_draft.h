#pragma once
#include <cstdint>
#include <string>
#include <vector>

#include "corvane_lab/made_world.h"
#include "platform/sim/kernel/seeded_random.h"
#include "platform/sim/world/world.h"

namespace corvane::lab {

using platform::sim::Point;

enum class MadeBand { k2, k5, k6 };

// An access point of a draft; what is not given is what most of them are.
struct MadeAp {
  std::string ssid;
  MadeBand band = MadeBand::k5;
  int channel = 36;
  const char* phy = "vht";
  int widthMHz = 80, streams = 2;
  Point at{};
  double power = 18.0;  // dBm
  int load = -1;        // channel utilisation, 0 to 255; -1: no load element
  std::vector<std::pair<std::uint64_t, double>> track{};  // ms and dBm, in place of place and power
  std::vector<std::pair<std::uint64_t, std::uint64_t>> alive{};  // ms; empty: always
};

// A made world while it is drawn. All that is left to chance comes of kind and seed.
class MadeDraft {
 public:
  MadeDraft(const std::string& kind, std::uint64_t seed);

  int Below(int limit) { return static_cast<int>(m_Random.Below(static_cast<unsigned>(limit))); }
  double Between(double from, double to) { return from + (to - from) * m_Random.Unit(); }
  bool Chance(double share) { return m_Random.Unit() < share; }
  std::uint64_t Minutes(double from, double to);  // in ms, whole seconds

  void Describe(const std::string& text) { m_Description = text; }
  void Last(double fromMinutes, double toMinutes) {
    m_DurationMs = Minutes(fromMinutes, toMinutes);
  }
  std::uint64_t DurationMs() const { return m_DurationMs; }
  void Air(double exponent, double shadowingDb);
  void Secure(const std::string& security) { m_Security = security; }
  void FastTransition(int domain) { m_Domain = domain; }
  void Hear6GHz() { m_b6GHz = true; }
  void SetOptions(const MadeOptions& options);
  const MadeOptions& Options() const { return m_Options; }

  // An access point of the PC's own network, which has a profile, or a neighbour's.
  std::size_t Own(MadeAp ap);
  void Neighbours(int count, double widthMetres);
  // The usual pair of a router or node: 2.4 GHz and, with `wide`, something better at 5 GHz.
  void Node(const std::string& ssid, Point at, bool wide);

  // Where the machine begins, and its walks: each leg begins when the clock of the walk says so.
  void Begin(Point at);
  void Pause(std::uint64_t ms) { m_ClockMs += ms; }
  void WalkTo(Point to, double metresPerSecond);
  std::uint64_t ClockMs() const { return m_ClockMs; }

  // Calls, videos, downloads and bursts with idle minutes between, for the whole story.
  void Traffic(int adapter);
  void Trickle(double mbps);
  // An entry of the timeline: the members behind "at", as JSON text.
  void At(std::uint64_t ms, const std::string& members);
  std::string Bssid(std::size_t own) const;

  // The file; the draft is done.
  std::string Text();

 private:
  struct Flow {
    int adapter = 0;
    std::uint64_t fromMs = 0, toMs = 0;
    double in = 0.0, out = 0.0;
  };
  struct Leg {
    std::uint64_t fromMs = 0;
    Point to;
    double speed = 1.0;
  };
  struct Event {
    std::uint64_t ms = 0;
    std::string members;
  };
  int Adapters() const { return m_Options.twoAdapters ? 2 : 1; }
  std::size_t StartAp();
  double NominalDbm(const MadeAp& ap) const;  // at the start, without shadowing

  template <class Json>
  void WriteAp(Json& json, std::size_t number) const;
  template <class Json>
  void WriteAdapter(Json& json, int number, std::size_t start) const;
  template <class Json>
  void WriteProfiles(Json& json) const;
  template <class Json>
  void WriteWay(Json& json) const;
  template <class Json>
  void WriteTimeline(Json& json);

  platform::sim::SeededRandom m_Random;
  const std::string m_Kind;
  const std::uint64_t m_Seed;
  std::string m_Description, m_Security = "wpa2";
  MadeOptions m_Options;
  std::uint64_t m_DurationMs = 0, m_ClockMs = 0;
  double m_Exponent = 3.4, m_ShadowingDb = 4.0;
  int m_Domain = -1;
  bool m_b6GHz = false;
  Point m_Start, m_Place;
  std::vector<MadeAp> m_Aps;
  std::vector<bool> m_Own;  // by access point
  std::vector<Flow> m_Flows;
  std::vector<Leg> m_Legs;
  std::vector<Event> m_Events;
};

}  // namespace corvane::lab
