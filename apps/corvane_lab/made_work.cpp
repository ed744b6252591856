// Made worlds of work, of public places and of travel.

#include <algorithm>
#include <utility>

#include "corvane_lab/made_places.h"
#include "foundation/format.h"

namespace corvane::lab {

namespace {

constexpr int kFloor5[] = {36, 44, 52, 60, 100, 108, 116, 132, 149};
constexpr std::uint64_t kSecondMs = 1000;

// The load of an access point changes every few minutes, around a middle.
void ChangeLoads(MadeDraft& draft, std::size_t ap, int least, int most) {
  for (std::uint64_t ms = draft.Minutes(1, 6); ms < draft.DurationMs(); ms += draft.Minutes(3, 9)) {
    const int load = least + draft.Below(most - least);
    draft.At(ms, FormatA(R"("do": "load", "bssid": "%s", "stations": %i, "utilisation": %i)",
                         draft.Bssid(ap), load / 8, load));
  }
}

// A row of access points down a corridor, some with a radio at 2.4 GHz.
void Corridor(MadeDraft& draft, const char* ssid, int count, double apart, double y) {
  for (int i = 0; i < count; ++i) {
    const Point at{i * apart + draft.Between(-2, 2), y + draft.Between(-2, 2)};
    const std::size_t five = draft.Own({.ssid = ssid,
                                        .channel = kFloor5[draft.Below(9)],
                                        .phy = draft.Chance(0.5) ? "he" : "vht",
                                        .widthMHz = draft.Chance(0.5) ? 40 : 80,
                                        .at = at,
                                        .power = draft.Between(14, 18),
                                        .load = 10 + draft.Below(110)});
    if (draft.Chance(0.4)) ChangeLoads(draft, five, 10, 170);
    if (draft.Chance(0.5)) continue;
    draft.Own({.ssid = ssid,
               .band = MadeBand::k2,
               .channel = i % 2 == 0 ? 1 : 11,
               .phy = "ht",
               .widthMHz = 20,
               .at = at,
               .power = 13.0,
               .load = 60 + draft.Below(140)});
  }
}

}  // namespace

void DrawOffice(MadeDraft& draft) {
  draft.Describe("An office floor: desk, meetings, coffee.");
  draft.Last(30, 60);
  draft.Air(draft.Between(3.0, 3.5), 4.0);
  const int count = 4 + draft.Below(3);
  const double apart = draft.Between(14, 22);
  Corridor(draft, "Office", count, apart, 3.0);
  draft.Neighbours(4, 60.0);
  std::vector<Point> rooms;
  for (int i = 0; i < 6; ++i)
    rooms.push_back({draft.Between(0, (count - 1) * apart), draft.Between(-6, 6)});
  draft.Begin(rooms[0]);
  LiveIn(draft, rooms, 3.0, 12.0);
  draft.Traffic(0);
}

void DrawEnterprise(MadeDraft& draft) {
  draft.Describe("Two corridors of a company with 802.1X, fast transition and many stations.");
  draft.Last(30, 60);
  draft.Secure("wpa2-enterprise");
  draft.FastTransition(4660);
  draft.Air(draft.Between(3.0, 3.4), 4.0);
  const double apart = draft.Between(15, 20);
  Corridor(draft, "Company", 4, apart, 0.0);
  Corridor(draft, "Company", 4, apart, 22.0);
  draft.Neighbours(3, 60.0);
  std::vector<Point> rooms;
  for (int i = 0; i < 7; ++i)
    rooms.push_back({draft.Between(0, 3 * apart),
                     draft.Chance(0.5) ? draft.Between(-5, 5) : draft.Between(17, 27)});
  draft.Begin(rooms[0]);
  LiveIn(draft, rooms, 3.0, 10.0);
  draft.Traffic(0);
}

// The strongest is full, and another time it is the other one that is.
void DrawLoaded(MadeDraft& draft) {
  draft.Describe("A hall where the access point that is heard best is the one that is full.");
  draft.Last(30, 50);
  draft.Air(3.2, 3.0);
  const int count = 2 + draft.Below(2);
  for (int i = 0; i < count; ++i) {
    const std::size_t ap =
        draft.Own({.ssid = "Hall",
                   .channel = kFloor5[i * 3],
                   .at = {8.0 + 9.0 * i, draft.Between(-4, 4)},
                   .power = 18.0,
                   .load = i == 0 ? 200 + draft.Below(40) : 20 + draft.Below(60)});
    if (draft.Chance(0.6)) ChangeLoads(draft, ap, 20, 240);
  }
  draft.Own({.ssid = "Hall",
             .band = MadeBand::k2,
             .channel = 6,
             .phy = "ht",
             .widthMHz = 20,
             .at = {8, 0},
             .power = 15.0,
             .load = 150 + draft.Below(80)});
  draft.Neighbours(3, 40.0);
  const std::vector<Point> rooms{{3, 0}, {10, 3}, {17, -2}};
  draft.Begin(rooms[0]);
  LiveIn(draft, rooms, 8.0, 20.0);
  draft.Traffic(0);
}

void DrawCafe(MadeDraft& draft) {
  draft.Describe("A cafe at its busy hour: two access points, people come and go.");
  draft.Last(25, 60);
  draft.Air(draft.Between(3.0, 3.4), 3.5);
  const Point counter{0, 0}, back{draft.Between(12, 16), draft.Between(-3, 3)};
  for (const Point& at : {counter, back}) {
    const std::size_t five = draft.Own({.ssid = "Cafe",
                                        .channel = kFloor5[draft.Below(9)],
                                        .widthMHz = draft.Chance(0.5) ? 40 : 80,
                                        .at = at,
                                        .power = 17.0,
                                        .load = 30 + draft.Below(120)});
    ChangeLoads(draft, five, 30, 190);
    draft.Own({.ssid = "Cafe",
               .band = MadeBand::k2,
               .channel = at.x == 0 ? 1 : 6,
               .phy = "ht",
               .widthMHz = 20,
               .at = at,
               .power = 16.0,
               .load = 120 + draft.Below(110)});
  }
  draft.Neighbours(10 + draft.Below(8), 35.0);
  const std::vector<Point> tables{{4, 2}, {8, -2}, {14, 3}};
  draft.Begin(tables[static_cast<std::size_t>(draft.Below(3))]);
  LiveIn(draft, tables, 12.0, 25.0);
  draft.Traffic(0);
}

// The good one goes and comes back, refuses for a while, or grows weak.
void DrawDying(MadeDraft& draft) {
  draft.Describe("A good access point that restarts, refuses and falters, beside a poorer one.");
  draft.Last(30, 55);
  draft.Air(3.3, 3.0);
  const std::size_t good = draft.Own({.ssid = "Home", .channel = 52, .at = {4, 1}, .power = 19.0});
  draft.Own({.ssid = "Home",
             .band = MadeBand::k2,
             .channel = 6,
             .phy = "ht",
             .widthMHz = 20,
             .at = {4, 1},
             .power = 17.0});
  draft.Own({.ssid = "Home",
             .channel = 116,
             .widthMHz = 40,
             .at = {draft.Between(15, 22), 2},
             .power = 17.0});
  draft.Neighbours(4, 35.0);
  draft.Begin({0, 0});
  LiveIn(draft, {{0, 0}, {6, 4}, {9, 1}}, 8.0, 20.0);
  const std::string bssid = FormatA(R"("bssid": "%s")", draft.Bssid(good));
  for (std::uint64_t ms = draft.Minutes(3, 8); ms < draft.DurationMs();
       ms += draft.Minutes(6, 14)) {
    const std::uint64_t endMs = ms + draft.Minutes(0.7, 5.0);
    switch (draft.Below(3)) {
      case 0:
        draft.At(ms, R"("do": "accessPoint", "on": false, )" + bssid);
        draft.At(endMs, R"("do": "accessPoint", "on": true, )" + bssid);
        break;
      case 1:  // it restarts, and takes nobody back at first
        draft.At(ms, R"("do": "accessPoint", "on": false, )" + bssid);
        draft.At(ms + kSecondMs, R"("do": "refuse", "reason": 229378, )" + bssid);
        draft.At(ms + 40 * kSecondMs, R"("do": "accessPoint", "on": true, )" + bssid);
        draft.At(endMs + 40 * kSecondMs, R"("do": "refuse", "reason": 0, )" + bssid);
        break;
      default:
        draft.At(ms, FormatA(R"("do": "signal", "dbm": %i, %s)", -80 - draft.Below(9), bssid));
        draft.At(endMs, R"("do": "signal", "dbm": null, )" + bssid);
        break;
    }
  }
  draft.Traffic(0);
}

// Cars with an access point each, past which somebody does not walk: people, doors and the next car
// make the signals rise and fall.
void DrawTrain(MadeDraft& draft) {
  draft.Describe("A train: the access points of the cars rise and fall, tunnels take them all.");
  draft.Last(25, 60);
  const int cars = 3 + draft.Below(2);
  std::vector<std::pair<std::uint64_t, std::uint64_t>> alive;
  std::uint64_t from = 0;
  for (std::uint64_t ms = draft.Minutes(5, 12); ms < draft.DurationMs();
       ms += draft.Minutes(8, 18)) {
    alive.emplace_back(from, ms);
    from = ms + draft.Minutes(0.3, 1.0);
  }
  alive.emplace_back(from, draft.DurationMs() + 3'600'000);
  for (int car = 0; car < cars; ++car) {
    std::vector<std::pair<std::uint64_t, double>> track;
    const double offset = draft.Between(0.0, 6.0);
    for (std::uint64_t ms = 0; ms < draft.DurationMs(); ms += draft.Minutes(1.0, 4.0)) {
      const double dbm = draft.Chance(0.3) ? draft.Between(-62, -50) : draft.Between(-84, -62);
      track.emplace_back(ms, static_cast<int>(dbm - offset));
    }
    const bool low = car == cars - 1 && draft.Chance(0.5);
    draft.Own({.ssid = "Rail",
               .band = low ? MadeBand::k2 : MadeBand::k5,
               .channel = low ? 6 : kFloor5[car * 2],
               .phy = low ? "ht" : "vht",
               .widthMHz = low ? 20 : 40,
               .load = 40 + draft.Below(110),
               .track = std::move(track),
               .alive = alive});
  }
  draft.Begin({0, 0});
  draft.Traffic(0);
}

}  // namespace corvane::lab
