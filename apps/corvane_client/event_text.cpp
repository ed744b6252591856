#include "corvane_client/event_text.h"

#include "corvane_client/text_table.h"
#include "store/json_text.h"

namespace corvane::client {

namespace {

std::string Member(const rapidjson::Document& event, const char* name) {
  const auto found = event.FindMember(name);
  if (found == event.MemberEnd() || !found->value.IsString()) return {};
  return std::string(JsonText(found->value));
}

// "9:05:07" of "25/11/2026T9:05:07.12Z", the hour with two digits.
std::string TimeOfDay(const std::string& stamp) {
  const std::size_t start = stamp.find('T');
  const std::size_t end = stamp.find('.');
  if (start == stamp.npos || end == stamp.npos || end <= start) return stamp;
  const std::string time = stamp.substr(start + 1, end - start - 1);
  return time.find(':') == 1 ? "0" + time : time;
}

std::string Happened(const rapidjson::Document& event, const std::string& category,
                     const std::string& type) {
  const std::string first = ShortSummary(Member(event, "evtData1"));
  const std::string second = ShortSummary(Member(event, "evtData2"));
  const std::string adapter = " [" + Member(event, "evtData4") + "]";
  if (category == "ConnectionChange") {
    if (type == "Autoswitch") return "switched to " + first + " from " + second + adapter;
    if (type == "NewConnection") return "connected to " + first + adapter;
    if (type == "SuggestionAccepted") return "suggestion accepted: " + first + adapter;
    if (type == "ExternalConnect") return "somebody else connected to " + first + adapter;
    if (type == "ExternalDisconnect") return "was disconnected" + adapter;
  }
  if (category == "ConnectionStatus" && type == "Connected") {
    return "is connected to " + first + adapter;
  }
  if (category == "ConnectionStatus" && type == "Disconnected") return "is not connected" + adapter;
  if (category == "Suggestion" && type == "AP") {
    return "suggests " + second + " instead of " + ShortSummary(Member(event, "evtData3")) + " [" +
           Member(event, "evtData5") + "]";
  }
  std::string text =
      Member(event, "evtNamespace") + "." + category + "." + type + " " + Member(event, "evtState");
  for (const char* name : {"evtData1", "evtData2", "evtData3", "evtData4", "evtData5"}) {
    const std::string data = Member(event, name);
    if (!data.empty()) text += " | " + data;
  }
  return text;
}

}  // namespace

std::string ShortSummary(const std::string& summary) {
  constexpr std::string_view kScore = "Score ";
  constexpr std::string_view kRate = "Max datarate ";
  const std::size_t scoreEnd = summary.find(", ");
  const std::size_t rate = summary.find(kRate);
  if (!summary.starts_with(kScore) || scoreEnd == summary.npos || rate == summary.npos) {
    return summary;
  }
  const std::size_t bssidEnd = summary.find(", ", scoreEnd + 2);
  const std::size_t ssid = summary.find(", ", rate);  // of what follows, the SSID may hold commas
  if (bssidEnd == summary.npos || ssid == summary.npos) return summary;
  return summary.substr(ssid + 2) + " " + summary.substr(scoreEnd + 2, bssidEnd - scoreEnd - 2) +
         " (score " + summary.substr(kScore.size(), scoreEnd - kScore.size()) + ")";
}

std::string EventLine(const std::string& event) {
  rapidjson::Document document;
  ParseJson(event, &document);
  if (document.HasParseError() || !document.IsObject()) return Printable(event);
  return Printable(
      TimeOfDay(Member(document, "evtTimestamp")) + "  " +
      Happened(document, Member(document, "evtCategory"), Member(document, "evtType")));
}

}  // namespace corvane::client
