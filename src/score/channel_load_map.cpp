#include "score/channel_load_map.h"

#include <algorithm>

#include "score/text_builder.h"

namespace corvane {

namespace {

constexpr std::uint8_t kQuietNoise = 10;
constexpr std::int32_t kFirstChannel = 1;
constexpr std::int32_t kLastFootprintChannel = 196;
constexpr std::int32_t kEightyReach = 7;

void AddSaturating(std::uint8_t* cell, std::uint32_t amount) {
  *cell = static_cast<std::uint8_t>(std::min(*cell + amount, std::uint32_t{255}));
}

// The range of channels that a segment covers with full weight.
struct Segment {
  std::int32_t low;
  std::int32_t high;
  bool halfEdges;
};

Segment Around(std::int32_t center, std::int32_t reach, bool halfEdges) {
  return {std::max(center - reach, kFirstChannel), std::min(center + reach, kLastFootprintChannel),
          halfEdges};
}

class Layer {
 public:
  Layer(const FootprintInputs& in, ChannelLoadMap* map, Footprint* out)
      : m_In(in), m_Band(map->OfBand(in.band)), m_Out(*out) {}

  void Run() {
    if (m_In.hasElements && m_In.eightyPlusEighty) {
      if (!ChannelLoadMap::IsChannel(m_In.seg0Channel)) {
        return Fail(FootprintFault::kBadPrimary, m_In.seg0Channel);
      }
      if (!ChannelLoadMap::IsChannel(m_In.seg1Channel)) {
        return Fail(FootprintFault::kBadSecondary, m_In.seg1Channel);
      }
      Count(m_In.seg0Channel);
      Count(m_In.seg1Channel);
      Lay(Around(m_In.seg0Channel, kEightyReach, true));
      m_Out.text += ", ";
      Lay(Around(m_In.seg1Channel, kEightyReach, true));
    } else {
      const std::int64_t channel = m_In.hasElements && m_In.centerChannel > 0
                                       ? std::int64_t{m_In.centerChannel}
                                       : std::int64_t{m_In.channel};
      if (!ChannelLoadMap::IsChannel(channel)) return Fail(FootprintFault::kBadChannel, channel);
      const auto center = static_cast<std::int32_t>(channel);
      const auto reach = static_cast<std::int32_t>(m_In.width / 10);
      Count(center);
      if (m_In.hasElements && m_In.dsss) {
        Lay(Around(center, reach, false));
      } else {
        Lay(Around(center, reach - 1, true));
      }
    }
    SpreadLoad();
  }

 private:
  void Fail(FootprintFault fault, std::int64_t channel) {
    m_Out.fault = fault;
    m_Out.badChannel = channel;
  }

  void Count(std::int32_t channel) {
    AddSaturating(&m_Band.apCount[static_cast<std::size_t>(channel)], 1);
  }

  void Touch(std::int32_t channel, std::uint32_t weight) {
    AddSaturating(&m_Band.noise[static_cast<std::size_t>(channel)], weight);
    m_Out.channels.push_back(channel);
  }

  void Lay(const Segment& segment) {
    const std::uint32_t full = m_In.quality / 10;
    const std::uint32_t half = m_In.quality / 2 / 10;
    const std::size_t start = m_Out.channels.size();
    if (segment.halfEdges && segment.low > kFirstChannel) Touch(segment.low - 1, half);
    for (std::int32_t channel = segment.low; channel <= segment.high; ++channel)
      Touch(channel, full);
    if (segment.halfEdges && segment.high < kLastFootprintChannel) Touch(segment.high + 1, half);
    if (m_Out.channels.size() == start) return;
    TextBuilder(&m_Out.text) << "{" << m_Out.channels[start] << "}-{" << m_Out.channels.back()
                             << "}";
  }

  // The running figure of a channel: the last BSSes visited weigh most.
  void SpreadLoad() {
    if (!(m_In.loadPct > 0.0)) return;
    const auto percent = static_cast<std::uint32_t>(std::min(m_In.loadPct, 100.0));
    for (const std::int32_t channel : m_Out.channels) {
      std::uint8_t& load = m_Band.load[static_cast<std::size_t>(channel)];
      const bool first = load == 0 || load == ChannelLoadMap::kNoLoad;
      load = static_cast<std::uint8_t>(first ? percent : (2u * load + percent) / 3);
    }
  }

  const FootprintInputs& m_In;
  ChannelLoadMap::Band& m_Band;
  Footprint& m_Out;
};

}  // namespace

void ChannelLoadMap::Reset() {
  low = six = Band{};
  low.load.fill(kNoLoad);
}

bool ChannelLoadMap::IsQuiet(int band, std::int32_t channel) const {
  return !IsChannel(channel) ||
         OfBand(band).noise[static_cast<std::size_t>(channel)] <= kQuietNoise;
}

std::uint8_t ChannelLoadMap::LoadOf(int band, std::int32_t channel) const {
  if (band == 0 || !IsChannel(channel)) return 0;
  return OfBand(band).load[static_cast<std::size_t>(channel)];
}

std::uint8_t ChannelLoadMap::ApCountOf(int band, std::int64_t channel) const {
  return IsChannel(channel) ? OfBand(band).apCount[static_cast<std::size_t>(channel)]
                            : std::uint8_t{0};
}

void LayFootprint(const FootprintInputs& in, ChannelLoadMap* map, Footprint* out) {
  out->fault = FootprintFault::kNone;
  out->channels.clear();
  out->text.clear();
  Layer(in, map, out).Run();
}

}  // namespace corvane
