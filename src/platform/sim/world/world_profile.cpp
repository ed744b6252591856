#include "platform/sim/world/world_profile.h"

#include <optional>
#include <string_view>

#include "platform/sim/kernel/sim_text.h"
#include "platform/sim/world/world_text.h"

namespace corvane::platform::sim {

namespace {

struct Names {
  LONG auth;
  const char16_t* text;
};
constexpr Names kAuthNames[] = {
    {DOT11_AUTH_ALGO_80211_OPEN, u"open"},
    {DOT11_AUTH_ALGO_80211_SHARED_KEY, u"shared"},
    {DOT11_AUTH_ALGO_WPA, u"WPA"},
    {DOT11_AUTH_ALGO_WPA_PSK, u"WPAPSK"},
    {DOT11_AUTH_ALGO_RSNA, u"WPA2"},
    {DOT11_AUTH_ALGO_RSNA_PSK, u"WPA2PSK"},
    {DOT11_AUTH_ALGO_WPA3, u"WPA3ENT192"},
    {DOT11_AUTH_ALGO_WPA3_SAE, u"WPA3SAE"},
    {kAuthOwe, u"OWE"},
};
constexpr Names kCipherNames[] = {
    {DOT11_CIPHER_ALGO_NONE, u"none"},
    {DOT11_CIPHER_ALGO_WEP40, u"WEP"},
    {DOT11_CIPHER_ALGO_TKIP, u"TKIP"},
    {DOT11_CIPHER_ALGO_CCMP, u"AES"},
};

struct Entity {
  char16_t character;
  const char16_t* text;
};
constexpr Entity kEntities[] = {
    {u'&', u"&amp;"}, {u'<', u"&lt;"}, {u'>', u"&gt;"}, {u'"', u"&quot;"}, {u'\'', u"&apos;"}};

template <std::size_t Count>
std::u16string NameOf(const Names (&table)[Count], LONG value) {
  for (const Names& row : table) {
    if (row.auth == value) return row.text;
  }
  return table[0].text;
}

template <std::size_t Count>
LONG ValueOf(const Names (&table)[Count], std::u16string_view text) {
  for (const Names& row : table) {
    if (text == row.text) return row.auth;
  }
  return table[0].auth;
}

std::u16string Escape(std::u16string_view text) {
  std::u16string out;
  for (const char16_t character : text) {
    const Entity* found = nullptr;
    for (const Entity& entity : kEntities) {
      if (entity.character == character) found = &entity;
    }
    found ? out += found->text : out += character;
  }
  return out;
}

std::u16string Unescape(std::u16string_view text) {
  std::u16string out;
  while (!text.empty()) {
    std::size_t taken = 1;
    char16_t character = text.front();
    for (const Entity& entity : kEntities) {
      const std::u16string_view name = entity.text;
      if (text.substr(0, name.size()) == name) {
        character = entity.character;
        taken = name.size();
      }
    }
    out += character;
    text.remove_prefix(taken);
  }
  return out;
}

std::u16string Tag(const std::u16string& name, const std::u16string& content) {
  return u"<" + name + u">" + content + u"</" + name + u">";
}

// What stands between the first <name> and its end.
std::optional<std::u16string_view> Inside(std::u16string_view xml, const std::u16string& name) {
  const std::u16string open = u"<" + name + u">", close = u"</" + name + u">";
  const std::size_t from = xml.find(open);
  if (from == std::u16string_view::npos) return std::nullopt;
  const std::size_t to = xml.find(close, from + open.size());
  if (to == std::u16string_view::npos) return std::nullopt;
  return xml.substr(from + open.size(), to - from - open.size());
}

std::u16string HexText(const std::string& bytes) {
  constexpr char16_t kDigits[] = u"0123456789ABCDEF";
  std::u16string out;
  for (const char character : bytes) {
    const auto byte = static_cast<unsigned char>(character);
    out += kDigits[byte >> 4];
    out += kDigits[byte & 15];
  }
  return out;
}

bool IsOneX(LONG auth) {
  return auth == DOT11_AUTH_ALGO_WPA || auth == DOT11_AUTH_ALGO_RSNA ||
         auth == DOT11_AUTH_ALGO_WPA3;
}

}  // namespace

std::u16string ProfileXml(const Profile& profile) {
  const Security& security = profile.security;
  const std::u16string ssid = Tag(
      u"SSID", Tag(u"hex", HexText(profile.ssid)) + Tag(u"name", Escape(FromUtf8(profile.ssid))));
  std::u16string secured =
      Tag(u"authEncryption", Tag(u"authentication", NameOf(kAuthNames, security.auth)) +
                                 Tag(u"encryption", NameOf(kCipherNames, security.cipher)) +
                                 Tag(u"useOneX", IsOneX(security.auth) ? u"true" : u"false"));
  if (!security.key.empty()) {
    const bool wep = security.cipher == DOT11_CIPHER_ALGO_WEP40;
    secured += Tag(u"sharedKey", Tag(u"keyType", wep ? u"networkKey" : u"passPhrase") +
                                     Tag(u"protected", u"false") +
                                     Tag(u"keyMaterial", Escape(security.key)));
  }
  return u"<?xml version=\"1.0\"?><WLANProfile "
         u"xmlns=\"http://www.microsoft.com/networking/WLAN/profile/v1\">" +
         Tag(u"name", Escape(profile.name)) +
         Tag(u"SSIDConfig",
             ssid + Tag(u"nonBroadcast", profile.nonBroadcast ? u"true" : u"false")) +
         Tag(u"connectionType", u"ESS") +
         Tag(u"connectionMode", profile.autoConnect ? u"auto" : u"manual") +
         Tag(u"MSM", Tag(u"security", secured)) + u"</WLANProfile>";
}

bool ReadProfileXml(const std::u16string& xml, Profile* profile) {
  const auto name = Inside(xml, u"name");
  const auto config = Inside(xml, u"SSIDConfig");
  if (!name || name->empty() || !config) return false;
  const auto ssid = Inside(*config, u"SSID");
  if (!ssid) return false;

  std::string bytes;
  if (const auto hex = Inside(*ssid, u"hex")) {
    if (!ReadHex(ToUtf8(*hex), &bytes)) return false;
  } else if (const auto text = Inside(*ssid, u"name")) {
    bytes = ToUtf8(Unescape(*text));
  }
  if (bytes.empty() || bytes.size() > sizeof(DOT11_SSID::ucSSID)) return false;

  profile->xml = xml;
  profile->name = Unescape(*name);
  profile->ssid = bytes;
  profile->nonBroadcast = Inside(*config, u"nonBroadcast") == u"true";
  // A profile of an infrastructure network without a mode connects by itself.
  profile->autoConnect = Inside(xml, u"connectionMode").value_or(u"auto") == u"auto";
  profile->security.auth = ValueOf(kAuthNames, Inside(xml, u"authentication").value_or(u"open"));
  profile->security.cipher = ValueOf(kCipherNames, Inside(xml, u"encryption").value_or(u"none"));
  profile->security.key = Unescape(Inside(xml, u"keyMaterial").value_or(u""));
  return true;
}

bool Admits(const AccessPoint& accessPoint, const Profile& profile) {
  return accessPoint.ssid == profile.ssid &&
         accessPoint.security.Enabled() == profile.security.Enabled() &&
         accessPoint.security.key == profile.security.key;
}

}  // namespace corvane::platform::sim
