#include "platform/token_user.h"

#include <algorithm>
#include <cstring>

namespace corvane::platform {

namespace {

constexpr std::size_t kSidAt = 16;   // behind the pointer to it and the attributes
constexpr std::size_t kPartsAt = 8;  // of a SID: revision, count, six bytes of authority
constexpr std::size_t kMaximumParts = 15;

void AppendDecimal(std::u16string* text, std::uint32_t number) {
  const std::string digits = std::to_string(number);
  text->append(digits.begin(), digits.end());
}

// "(...)(...)" with five semicolons in each; takes it off the text.
bool TakeEntries(std::u16string_view* text) {
  bool any = false;
  while (text->starts_with(u'(')) {
    const std::size_t end = text->find(u')');
    if (end == text->npos) return false;
    const std::u16string_view entry = text->substr(1, end - 1);
    if (std::ranges::count(entry, u';') != 5 || entry.ends_with(u';')) return false;
    text->remove_prefix(end + 1);
    any = true;
  }
  return any;
}

}  // namespace

std::vector<std::uint8_t> MakeTokenUser(std::uint8_t authority,
                                        std::initializer_list<std::uint32_t> parts) {
  std::vector<std::uint8_t> bytes(kSidAt + kPartsAt + parts.size() * 4);
  std::uint8_t* const sid = bytes.data() + kSidAt;
  sid[0] = 1;
  sid[1] = static_cast<std::uint8_t>(parts.size());
  sid[7] = authority;
  std::uint8_t* at = sid + kPartsAt;
  for (const std::uint32_t part : parts) {
    std::memcpy(at, &part, sizeof part);
    at += sizeof part;
  }
  return bytes;
}

std::optional<std::u16string> SidText(const void* tokenUser) {
  const auto* sid = static_cast<const std::uint8_t*>(tokenUser) + kSidAt;
  if (sid[0] != 1 || sid[1] > kMaximumParts) return std::nullopt;
  std::u16string text = u"S-1-";
  AppendDecimal(&text, sid[7]);
  for (std::size_t i = 0; i < sid[1]; ++i) {
    std::uint32_t part;
    std::memcpy(&part, sid + kPartsAt + i * sizeof part, sizeof part);
    text += u'-';
    AppendDecimal(&text, part);
  }
  return text;
}

bool IsSecurityText(std::u16string_view sddl) {
  if (!sddl.starts_with(u"D:")) return false;
  sddl.remove_prefix(2);
  if (!TakeEntries(&sddl)) return false;
  if (sddl.empty()) return true;
  if (!sddl.starts_with(u"S:")) return false;
  sddl.remove_prefix(2);
  return TakeEntries(&sddl) && sddl.empty();
}

}  // namespace corvane::platform
