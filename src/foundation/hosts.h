#pragma once
// The hosts that the program asks on the web and probes. Whoever ships it sets them here, once.

namespace corvane {

// Where statistics are posted, and the form of the address that the proxy probe asks about.
inline constexpr char16_t kStatisticsUrl[] = u"https://stats.corvane.example/trellis.php";
inline constexpr char16_t kStatisticsPlainUrl[] = u"http://stats.corvane.example/trellis.php";
// What the test of the HTTP client fetches.
inline constexpr char16_t kWebTestUrl[] = u"https://www.corvane.example/";
// Where the interference detector's probes go; it must answer ICMP echoes.
inline constexpr char kProbeHost[] = "probe.corvane.example";
// The survey pages.
inline constexpr char16_t kSurveyHost[] = u"https://survey.corvane.example";

}  // namespace corvane
