#include "model/base_netname.h"

namespace corvane {

void StripBandWord(WString* text) {
  static constexpr WStringView kWords[] = {u"-5ghz",   u"-5g",   u"5ghz",   u"5g",
                                           u"-2.4ghz", u"-2.4g", u"2.4ghz", u"2.4g",
                                           u"-2ghz",   u"-2g",   u"2ghz",   u"2g"};
  if (text->size() < 2) return;
  WString lower = ToLower(*text);
  for (const WStringView word : kWords) {
    std::size_t at = lower.find(word);
    if (at == WString::npos) continue;
    for (; at != WString::npos; at = lower.find(word, at)) {
      lower.erase(at, word.size());
      text->erase(at, word.size());
    }
    const std::size_t last = text->find_last_not_of(u" \t\n\r\f\v");
    text->resize(last == WString::npos ? 0 : last + 1);
    return;
  }
}

}  // namespace corvane
