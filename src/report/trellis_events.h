#pragma once
// The events of the provider: thirteen reports, each with a record of its own for either adapter.

#include "report/trace_metadata.h"

namespace corvane::trellis {

enum Category : std::int32_t { kFact = 2, kState = 3 };  // a state stands until its clearing event

// The two numbers of a report, for the first and the second adapter.
struct Numbers {
  std::int32_t nic1 = 0;
  std::int32_t nic2 = 0;
  constexpr const std::int32_t& Of(bool second) const { return second ? nic2 : nic1; }
};

template <std::size_t Size1, std::size_t Size2, bool HasClear, class... Fields>
struct EventPair {
  static constexpr bool kHasClear = HasClear;  // carries the EventType that ends the state
  static constexpr std::size_t kFields = sizeof...(Fields);

  std::array<std::uint8_t, Size1> metadata1;
  std::array<std::uint8_t, Size2> metadata2;
  Numbers type;
  std::int32_t category = kFact;
  Numbers clear;

  // Whether values of these types are what the fields behind the head take.
  template <class... Values>
  static consteval bool Takes() {
    if constexpr (sizeof...(Values) == sizeof...(Fields))
      return ((TraceTypeOf<Values>::kType == Fields::kType) && ...);
    return false;
  }
};

namespace detail {
inline constexpr auto kType = Int32Field("EventType");
inline constexpr auto kCategory = Int32Field("EventCategory");
inline constexpr auto kToClear = Int32Field("EventToClear");
}  // namespace detail

// A report without a clearing event.
template <std::size_t N1, std::size_t N2, class... Fields>
consteval auto Plain(const char (&nic1)[N1], const char (&nic2)[N2], Numbers type,
                     Category category, const Fields&... fields) {
  const auto metadata1 =
      MakeEventMetadata(std::to_array(nic1), detail::kType, detail::kCategory, fields...);
  const auto metadata2 =
      MakeEventMetadata(std::to_array(nic2), detail::kType, detail::kCategory, fields...);
  return EventPair<metadata1.size(), metadata2.size(), false, Fields...>{
      metadata1, metadata2, type, category, {}};
}

// A report whose state the EventType `clear` ends.
template <std::size_t N1, std::size_t N2, class... Fields>
consteval auto Clearable(const char (&nic1)[N1], const char (&nic2)[N2], Numbers type,
                         Category category, Numbers clear, const Fields&... fields) {
  const auto metadata1 = MakeEventMetadata(std::to_array(nic1), detail::kType, detail::kCategory,
                                           detail::kToClear, fields...);
  const auto metadata2 = MakeEventMetadata(std::to_array(nic2), detail::kType, detail::kCategory,
                                           detail::kToClear, fields...);
  return EventPair<metadata1.size(), metadata2.size(), true, Fields...>{metadata1, metadata2, type,
                                                                        category, clear};
}

inline constexpr auto kSsid = TextField("ssid");
inline constexpr auto kBssid = TextField("bssid");
inline constexpr auto kGuid = TextField("InterfaceGUID");
inline constexpr auto kAdapterClass = TextField("adapterClass");
inline constexpr auto kApClass = TextField("apClass");
inline constexpr auto kChannel = UInt32Field("Channel");
inline constexpr auto kSignalQuality = UInt32Field("SignalQuality");

inline constexpr auto kProviderMetadata = MakeProviderMetadata("TRBUILD_ETWProvider");

inline constexpr auto kSuggest =
    Clearable("TRELLIS_N_SUGGEST_AP", "TRELLIS_N_SUGGEST_AP_2", {11, 31}, kState, {20, 40}, kSsid,
              kBssid, kGuid, Int32Field("Percentage"), kSignalQuality);
inline constexpr auto kBest =
    Plain("TRELLIS_N_BEST_AP", "TRELLIS_N_BEST_AP_2", {20, 40}, kFact, kSsid, kBssid, kGuid);

inline constexpr auto kApBetter =
    Clearable("TRELLIS_N_MISMATCH_AP_BETTER_NIC1", "TRELLIS_N_MISMATCH_AP_BETTER_NIC2", {41, 61},
              kState, {80, 100}, kSsid, kBssid, kGuid, kAdapterClass, kApClass);
inline constexpr auto kClear1 =
    Plain("TRELLIS_N_MISMATCH_CLEAR1_NIC1", "TRELLIS_N_MISMATCH_CLEAR1_NIC2", {80, 100}, kFact,
          kSsid, kBssid, kGuid, kAdapterClass, kApClass);
inline constexpr auto kWifiBetter =
    Clearable("TRELLIS_N_MISMATCH_WIFI_BETTER_NIC1", "TRELLIS_N_MISMATCH_WIFI_BETTER_NIC2",
              {51, 71}, kState, {90, 110}, kSsid, kBssid, kGuid, kAdapterClass, kApClass);
inline constexpr auto kClear2 =
    Plain("TRELLIS_N_MISMATCH_CLEAR2_NIC1", "TRELLIS_N_MISMATCH_CLEAR2_NIC2", {90, 110}, kFact,
          kSsid, kBssid, kGuid, kAdapterClass, kApClass);

inline constexpr auto kQualityBad =
    Clearable("TRELLIS_N_WIFI_QUALITY_NIC1_BAD", "TRELLIS_N_WIFI_QUALITY_NIC2_BAD", {81, 91},
              kState, {50, 60}, kSignalQuality, kSsid, kBssid, kGuid);
inline constexpr auto kQualityGood =
    Plain("TRELLIS_N_WIFI_QUALITY_NIC1_GOOD", "TRELLIS_N_WIFI_QUALITY_NIC2_GOOD", {50, 60}, kFact,
          kSignalQuality, kSsid, kBssid, kGuid);
inline constexpr auto kQualityCleared =
    Plain("TRELLIS_N_WIFI_QUALITY_NIC1_GOOD", "TRELLIS_N_WIFI_QUALITY_NIC2_GOOD", {50, 60}, kFact,
          Int32Field("SignalQuality"), kSsid, kBssid, kGuid);

inline constexpr auto kConnected = Plain(
    "TRELLIS_N_AP_CONNECTED_NIC1", "TRELLIS_N_AP_CONNECTED_NIC2", {120, 130}, kFact, kSsid, kBssid,
    kGuid, UInt32Field("LinkSpeedTxKbps"), UInt32Field("LinkSpeedRxKbps"), Int32Field("ApScore"),
    kAdapterClass, kApClass, UInt32Field("LQ"), TextField("AdapterDescription"));
inline constexpr auto kDisconnected =
    Clearable("TRELLIS_N_AP_DISCONNECTED_NIC1", "TRELLIS_N_AP_DISCONNECTED_NIC2", {140, 150}, kFact,
              {120, 130}, kSsid, kBssid, kGuid);

inline constexpr auto kContention = Clearable(
    "TRELLIS_N_WIFI_AP_CONTENTION_NIC1", "TRELLIS_N_WIFI_AP_CONTENTION_NIC2", {201, 211}, kState,
    {200, 210}, kSsid, kBssid, kChannel, TextField("opp_summary_csv"), TextField("opp_ssids_csv"),
    TextField("opp_bssids_csv"), TextField("opp_sqs_csv"), kGuid);
inline constexpr auto kNoContention =
    Plain("TRELLIS_N_NO_WIFI_AP_CONTENTION_NIC1", "TRELLIS_N_NO_WIFI_AP_CONTENTION_NIC2",
          {200, 210}, kFact, kSsid, kBssid, kChannel, kGuid);

}  // namespace corvane::trellis
