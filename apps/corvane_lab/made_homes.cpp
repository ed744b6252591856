// Made worlds of places where people live.

#include "corvane_lab/made_places.h"
#include "foundation/format.h"

namespace corvane::lab {

namespace {

constexpr int kPhase5[] = {36, 52, 100, 116, 132, 149};

}  // namespace

// Somebody works, gets up and sits down elsewhere, until the story is over.
void LiveIn(MadeDraft& draft, const std::vector<Point>& rooms, double fromMinutes,
            double toMinutes) {
  while (draft.ClockMs() < draft.DurationMs()) {
    draft.Pause(draft.Minutes(fromMinutes, toMinutes));
    const Point room = rooms[static_cast<std::size_t>(draft.Below(static_cast<int>(rooms.size())))];
    draft.WalkTo({room.x + draft.Between(-1.0, 1.0), room.y + draft.Between(-1.0, 1.0)},
                 draft.Between(0.7, 1.4));
  }
}

void DrawFlat(MadeDraft& draft) {
  draft.Describe("A flat with one router, and somebody who takes a notebook from room to room.");
  draft.Last(25, 45);
  draft.Air(draft.Between(3.4, 4.0), 4.0);
  draft.Node("Flat", {0, 0}, true);
  draft.Neighbours(4 + draft.Below(5), 22.0);
  const std::vector<Point> rooms{{3, 1}, {7, 4}, {11, 2}, {17, 6}, {24, 3}};
  draft.Begin(rooms[static_cast<std::size_t>(draft.Below(5))]);
  LiveIn(draft, rooms, 3.0, 9.0);
  draft.Traffic(0);
}

void DrawHouse(MadeDraft& draft) {
  draft.Describe("A house with the nodes of a mesh, and somebody who moves about.");
  draft.Last(30, 60);
  draft.Air(draft.Between(3.3, 3.9), 4.0);
  draft.Node("House", {0, 0}, true);
  draft.Node("House", {draft.Between(14, 19), draft.Between(-3, 5)}, true);
  if (draft.Chance(0.8)) draft.Node("House", {draft.Between(2, 9), draft.Between(12, 18)}, true);
  draft.Neighbours(2 + draft.Below(4), 45.0);
  const std::vector<Point> rooms{{2, 2}, {8, 1}, {16, 3}, {13, 9}, {5, 14}, {-3, 8}};
  draft.Begin(rooms[static_cast<std::size_t>(draft.Below(6))]);
  LiveIn(draft, rooms, 3.0, 10.0);
  draft.Traffic(0);
}

// One name on three bands: what carries furthest is seldom what carries most.
void DrawBands(MadeDraft& draft) {
  draft.Describe("A router on 2.4, 5 and 6 GHz under one name, near and far.");
  draft.Last(25, 45);
  draft.Air(draft.Between(3.2, 3.7), 4.0);
  draft.Hear6GHz();
  const int routers = 1 + draft.Below(2);
  for (int i = 0; i < routers; ++i) {
    const Point at{i * draft.Between(15, 20), draft.Between(0, 3)};
    draft.Own({.ssid = "Bands",
               .band = MadeBand::k2,
               .channel = i == 0 ? 1 : 11,
               .phy = "he",
               .widthMHz = 20,
               .at = at,
               .power = 18.0});
    draft.Own({.ssid = "Bands",
               .channel = i == 0 ? 36 : 100,
               .phy = "he",
               .widthMHz = draft.Chance(0.4) ? 160 : 80,
               .at = at,
               .power = 20.0});
    draft.Own({.ssid = "Bands",
               .band = MadeBand::k6,
               .channel = i == 0 ? 37 : 5,
               .phy = "he",
               .widthMHz = draft.Chance(0.6) ? 160 : 80,
               .at = at,
               .power = draft.Between(18.0, 22.0)});
  }
  draft.Neighbours(3 + draft.Below(4), 30.0);
  const std::vector<Point> rooms{{2, 1}, {6, 3}, {10, 1}, {14, 5}, {20, 2}};
  draft.Begin(rooms[static_cast<std::size_t>(draft.Below(5))]);
  LiveIn(draft, rooms, 3.0, 9.0);
  draft.Traffic(0);
}

void DrawBlock(MadeDraft& draft) {
  draft.Describe("A block of flats: a router and a repeater among dozens of neighbours.");
  draft.Last(25, 50);
  draft.Air(draft.Between(3.4, 3.9), 4.5);
  const Point repeater{draft.Between(9, 13), draft.Between(2, 6)};
  draft.Own({.ssid = "Block",
             .band = MadeBand::k2,
             .channel = 6,
             .phy = "ht",
             .widthMHz = 20,
             .at = {0, 0},
             .power = 17.0,
             .load = 90 + draft.Below(120)});
  draft.Own({.ssid = "Block",
             .channel = kPhase5[draft.Below(6)],
             .at = {0, 0},
             .power = 19.0,
             .load = 10 + draft.Below(100)});
  draft.Own({.ssid = "Block",
             .band = MadeBand::k2,
             .channel = 11,
             .phy = "ht",
             .widthMHz = 20,
             .at = repeater,
             .power = 15.0,
             .load = 90 + draft.Below(120)});
  if (draft.Chance(0.6)) {
    draft.Own({.ssid = "Block",
               .channel = kPhase5[draft.Below(6)],
               .widthMHz = 40,
               .at = repeater,
               .power = 16.0,
               .load = 10 + draft.Below(60)});
  }
  draft.Neighbours(18 + draft.Below(14), 28.0);
  const std::vector<Point> rooms{{2, 1}, {6, 3}, {10, 5}, {14, 2}};
  draft.Begin(rooms[static_cast<std::size_t>(draft.Below(4))]);
  LiveIn(draft, rooms, 4.0, 12.0);
  draft.Traffic(0);
}

// Up and down the whole time, with little rest.
void DrawCarried(MadeDraft& draft) {
  draft.Describe("Somebody carries the notebook through a long house and talks while walking.");
  draft.Last(20, 40);
  draft.Air(draft.Between(3.2, 3.6), 4.0);
  const int nodes = 3 + draft.Below(2);
  for (int i = 0; i < nodes; ++i)
    draft.Node("Carried", {i * draft.Between(16, 22), draft.Between(-2, 4)}, draft.Chance(0.7));
  draft.Neighbours(3, 60.0);
  std::vector<Point> rooms;
  for (int i = 0; i < 7; ++i) rooms.push_back({i * 10.0, draft.Between(-3, 5)});
  draft.Begin(rooms[0]);
  LiveIn(draft, rooms, 0.4, 2.5);
  draft.Traffic(0);
}

}  // namespace corvane::lab
