#pragma once
// The engine's first table as the driver knows it: by offsets alone.

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "platform/types.h"

namespace corvane::platform::sim {

// A copy of the table's first part, with all adapter and gateway slots.
class SimDriverTable {
 public:
  static constexpr DWORD kBytes = 112'704;        // of the whole table
  static constexpr DWORD kLinkBytes = 0x1000000;  // of the second one
  static constexpr std::size_t kSlots = 16;
  static constexpr std::size_t kGateways = 8;
  static constexpr BYTE kNone = 255;

  explicit SimDriverTable(std::vector<std::uint32_t> words) : m_Words(std::move(words)) {}
  static std::size_t WordsToCopy();

  DWORD Word(std::size_t at) const { return m_Words[at / 4]; }  // at a multiple of 4
  WORD Half(std::size_t at) const;
  BYTE Byte(std::size_t at) const;

  static std::size_t SlotAt(std::size_t slot) { return slot * 832; }
  static std::size_t StatusAt(std::size_t slot) { return SlotAt(slot) + 24; }
  static std::size_t GatewayAt(std::size_t gateway) { return 13'328 + gateway * 92; }
  bool InUse(std::size_t slot) const { return Byte(SlotAt(slot) + 28) != kNone; }
  bool IsUp(std::size_t slot) const { return (Byte(SlotAt(slot) + 29) & 1) != 0; }
  bool IsManaged(std::size_t slot) const { return (Byte(SlotAt(slot) + 29) & 16) == 0; }
  BYTE GatewayOf(std::size_t slot) const { return Byte(SlotAt(slot) + 30); }

  // Each gives the first thing that is torn; empty when all holds.
  //
  // What holds at every instant: indexes that lie within the tables, counts that never say more
  // than their lists hold, addresses that are there once they are counted.
  std::string CheckAlways() const;
  // What holds besides while no slot is being written, as behind a notification: each slot by
  // itself, and with the gateway slot that it names.
  std::string CheckSlots() const;
  // What holds besides between two passes: the count words and the gateways' use counts.
  std::string CheckSettled() const;
  // A table that is handed over; passes may have filled it before the driver was ready.
  std::string CheckHandedOver() const;

 private:
  bool IsZero(std::size_t at, std::size_t bytes) const;
  std::string CheckList(std::size_t slot, std::size_t listAt, std::size_t countAt, const char* what,
                        bool whole) const;
  std::string CheckSlot(std::size_t slot) const;
  std::string CheckGateway(std::size_t gateway) const;

  std::vector<std::uint32_t> m_Words;
};

}  // namespace corvane::platform::sim
