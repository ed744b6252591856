#pragma once

namespace corvane {

inline constexpr char16_t kVersion[] = u"0.1.0";
inline constexpr char16_t kBuildDate[] = u"" __DATE__;
inline constexpr char16_t kBuildTime[] = u"" __TIME__;

}  // namespace corvane
