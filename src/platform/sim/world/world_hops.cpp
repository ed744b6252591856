// What stands behind an access point: the routers, and how noisy the way to them is.

#include "platform/sim/world/world_sections.h"

namespace corvane::platform::sim {

namespace {

constexpr double kLongestMs = 60'000.0;

}  // namespace

void TakeHops(JsonFields& fields, std::vector<Hop>* out) {
  fields.Each("hops", [&](const JsonNode& item) {
    JsonFields hop(item);
    Hop read;
    read.address = hop.Need("address").Address();
    read.rttMs = hop.Need("rttMs").Number(0.0, kLongestMs);
    hop.Finish();
    out->push_back(read);
  });
}

void TakeNoise(JsonFields& fields, std::vector<double>* out) {
  fields.Each("noise", [&](const JsonNode& item) {
    out->push_back(item.Value().IsNull() ? kEchoLost : item.Number(0.0, kLongestMs));
  });
}

}  // namespace corvane::platform::sim
