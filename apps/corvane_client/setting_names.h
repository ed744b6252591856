#pragma once
// Settings that clients may change. Pure.

#include <string>
#include <string_view>
#include <vector>

namespace corvane::client {

struct SettingName {
  std::string name;
  bool ofAdapter;     // else of the service
  std::string range;  // for people
};
const std::vector<SettingName>& SettingNames();
const SettingName* FindSetting(const std::string& name);  // compared without regard to case

}  // namespace corvane::client
