#include "corvane_lab/made_world.h"

#include <algorithm>

#include "corvane_lab/arguments.h"
#include "corvane_lab/made_places.h"

namespace corvane::lab {

namespace {

using Draw = void (*)(MadeDraft&);

// One of these places, by chance, with an option that makes it another story.
void DrawOneOf(MadeDraft& draft, std::initializer_list<Draw> places, const MadeOptions& options,
               const std::string& text) {
  draft.SetOptions(options);
  const Draw draw = *(places.begin() + draft.Below(static_cast<int>(places.size())));
  draw(draft);
  draft.Describe(text);
}

void DrawCold(MadeDraft& draft) {
  DrawOneOf(draft, {&DrawFlat, &DrawHouse, &DrawOffice}, {.cold = true},
            "The PC starts in a flat, a house or an office, and the system connects it.");
}

void DrawDriver(MadeDraft& draft) {
  DrawOneOf(draft, {&DrawHouse, &DrawOffice, &DrawCarried}, {.roamingDriver = true},
            "A driver that roams by itself, where there is much to roam to.");
}

void DrawBackground(MadeDraft& draft) {
  DrawOneOf(draft, {&DrawFlat, &DrawHouse, &DrawOffice}, {.background = true},
            "Something trickles all the time, which is neither idle nor traffic.");
}

void DrawPair(MadeDraft& draft) {
  DrawOneOf(draft, {&DrawHouse, &DrawOffice, &DrawCafe}, {.twoAdapters = true},
            "Two adapters of one PC among several access points.");
  draft.Traffic(1);
}

constexpr MadeKind kKinds[] = {
    {"flat", "one router with two bands, rooms near and far", &DrawFlat},
    {"house", "the nodes of a mesh", &DrawHouse},
    {"office", "a corridor of access points, meetings", &DrawOffice},
    {"train", "signals that rise and fall, tunnels", &DrawTrain},
    {"loaded", "the strongest one is full", &DrawLoaded},
    {"dying", "the good one restarts, refuses, falters", &DrawDying},
    {"cafe", "loads that change, many neighbours", &DrawCafe},
    {"bands", "2.4, 5 and 6 GHz under one name", &DrawBands},
    {"carried", "walks without much rest", &DrawCarried},
    {"block", "a router and a repeater among dozens", &DrawBlock},
    {"enterprise", "802.1X and fast transition in two corridors", &DrawEnterprise},
    {"cold", "not connected at the start", &DrawCold},
    {"driver", "a driver that roams by itself", &DrawDriver},
    {"background", "a trickle that never ends", &DrawBackground},
    {"pair", "two adapters", &DrawPair},
};

}  // namespace

std::span<const MadeKind> MadeKinds() { return kKinds; }

void CheckKind(const std::string& kind) {
  if (std::ranges::none_of(kKinds, [&](const MadeKind& one) { return kind == one.name; }))
    throw UsageError("no kind \"" + kind + "\"; make-world --kinds tells which there are");
}

std::string MadeWorldText(const std::string& kind, std::uint64_t seed, const MadeOptions& options) {
  CheckKind(kind);
  const auto found =
      std::ranges::find_if(kKinds, [&](const MadeKind& one) { return kind == one.name; });
  MadeDraft draft(kind, seed);
  found->draw(draft);
  draft.SetOptions(options);
  if (draft.Options().background) draft.Trickle(draft.Between(0.08, 0.3));
  return draft.Text();
}

}  // namespace corvane::lab
