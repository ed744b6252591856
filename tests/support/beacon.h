#pragma once
// Beacons for tests: Beacon(u8"Office").Channel(36).Vht80(2).Rsn({AKM_PSK}).Bytes()

#include "platform/sim/world/beacon_builder.h"
#include "platform/sim/world/element_facts.h"

namespace corvane::test {

using platform::sim::Beacon;
using enum platform::sim::Akm;

}  // namespace corvane::test
