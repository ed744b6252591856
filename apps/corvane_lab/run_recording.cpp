#include "corvane_lab/run_recording.h"

#include <algorithm>
#include <exception>
#include <utility>

#include "foundation/format.h"
#include "foundation/text.h"
#include "platform/sim/kernel/sim_files.h"
#include "platform/sim/kernel/sim_kernel.h"
#include "store/value_names.h"

namespace corvane::lab {

void SetRecording(platform::sim::World* world, unsigned megabytes) {
  platform::sim::RegistryWrite write;
  write.key = platform::sim::kHomeKey;
  write.name = value::kRecordAirMB;
  write.number = megabytes;
  world->registry.push_back(std::move(write));
}

std::vector<RecordingPart> RecordingOf(platform::sim::SimulatedPc& pc) {
  std::vector<RecordingPart> parts;
  for (const char16_t* name : {u"air.1.jsonl", u"air.jsonl"}) {
    const std::u16string path =
        std::u16string(platform::sim::SimFiles::kDataFolder) + u"/OstrelNetworks/Corvane/" + name;
    if (auto text = pc.Kernel().Files().Read(path))
      parts.push_back({Narrow(name), *std::move(text)});
  }
  return parts;
}

std::string RecordingTrouble(platform::sim::SimulatedPc& pc, unsigned megabytes, bool read) {
  constexpr std::size_t kMegabyte = 1'000'000;
  constexpr std::size_t kLostShare = 7;
  std::vector<RecordingPart> parts = RecordingOf(pc);
  std::size_t bytes = 0, most = 0;
  for (const RecordingPart& part : parts) {
    bytes += part.text.size();
    most = std::max(most, part.text.size());
  }
  if (bytes > megabytes * kMegabyte) return FormatA("the recording has %llu bytes", bytes);
  if (!read || most == 0) return {};
  try {
    ReadRecording(parts);
    // A write that was under way may have got anywhere.
    std::string& newest = parts.back().text;
    const std::size_t first = newest.find('\n');
    newest.resize(
        std::max(std::min(first, newest.size()), newest.size() - newest.size() / kLostShare));
    ReadRecording(parts);
  } catch (const std::exception& e) {
    return std::string("the recording can't be read: ") + e.what();
  }
  return {};
}

}  // namespace corvane::lab
