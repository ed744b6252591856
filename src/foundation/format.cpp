#include "foundation/format.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <utility>

namespace corvane {
namespace {

// Bounds of a field, so that a broken format can't ask for the whole memory.
constexpr int kMaxWidth = 4096;
constexpr int kMaxDigits = 512;

// One conversion: %[flags][width][.precision][size]type.
struct Conversion {
  bool left = false;
  bool plus = false;
  bool space = false;
  bool alternate = false;
  bool zero = false;
  int width = 0;
  int precision = -1;  // none
  char type = '\0';
};

template <typename Ch>
void AppendAscii(const char* begin, const char* end, std::basic_string<Ch>* out) {
  if constexpr (std::is_same_v<Ch, char>) {
    out->append(begin, end);
  } else {
    const std::size_t at = out->size();
    out->resize(at + static_cast<std::size_t>(end - begin));
    std::copy(begin, end, out->begin() + static_cast<std::ptrdiff_t>(at));
  }
}

// Text of either width: a byte becomes the wide character of its value, a wide character its low
// byte.
template <typename Ch, typename From>
void AppendConverted(std::basic_string_view<From> text, std::basic_string<Ch>* out) {
  if constexpr (std::is_same_v<Ch, From>) {
    out->append(text);
  } else {
    const std::size_t at = out->size();
    out->resize(at + text.size());
    std::transform(
        text.begin(), text.end(), out->begin() + static_cast<std::ptrdiff_t>(at),
        [](From c) { return static_cast<Ch>(static_cast<std::make_unsigned_t<From>>(c)); });
  }
}

std::size_t Missing(int wanted, std::size_t have) {
  const auto size = static_cast<std::size_t>(wanted);
  return wanted > 0 && size > have ? size - have : 0;
}

template <typename Ch, typename From>
void AppendText(const Conversion& how, std::basic_string_view<From> text,
                std::basic_string<Ch>* out) {
  if (how.precision >= 0) text = text.substr(0, static_cast<std::size_t>(how.precision));
  const std::size_t padding = Missing(how.width, text.size());
  if (!how.left) out->append(padding, how.zero ? Ch{'0'} : Ch{' '});
  AppendConverted(text, out);
  if (how.left) out->append(padding, Ch{' '});
}

// `prefix` is the sign or the mark of the base, at most two characters.
template <typename Ch>
void AppendNumber(const Conversion& how, std::string_view prefix, std::string_view digits,
                  std::basic_string<Ch>* out) {
  std::size_t zeros = Missing(std::min(how.precision, kMaxDigits), digits.size());
  std::size_t padding = Missing(how.width, prefix.size() + zeros + digits.size());
  if (how.zero && !how.left && how.precision < 0) zeros += std::exchange(padding, 0);
  if (!how.left) out->append(padding, Ch{' '});
  AppendAscii(prefix.data(), prefix.data() + prefix.size(), out);
  out->append(zeros, Ch{'0'});
  AppendAscii(digits.data(), digits.data() + digits.size(), out);
  if (how.left) out->append(padding, Ch{' '});
}

template <typename Ch>
void AppendInteger(const Conversion& how, std::uint64_t magnitude, bool negative, unsigned base,
                   bool isSigned, std::basic_string<Ch>* out) {
  const char* const alphabet = how.type == 'X' ? "0123456789ABCDEF" : "0123456789abcdef";
  std::array<char, 24> buffer{};  // 22 octal digits at most
  char* const end = buffer.data() + buffer.size();
  char* begin = end;
  for (std::uint64_t rest = magnitude; rest != 0; rest /= base) *--begin = alphabet[rest % base];
  if (begin == end && how.precision != 0) *--begin = '0';
  if (how.alternate && base == 8 && (begin == end || *begin != '0')) *--begin = '0';

  std::string_view prefix;
  if (isSigned) {
    prefix = negative ? "-" : how.plus ? "+" : how.space ? " " : "";
  } else if (how.alternate && base == 16 && magnitude != 0) {
    prefix = how.type == 'X' ? "0X" : "0x";
  }
  AppendNumber(how, prefix, {begin, static_cast<std::size_t>(end - begin)}, out);
}

// An address as Windows prints it: 16 digits in upper case.
template <typename Ch>
void AppendPointer(Conversion how, std::uint64_t address, std::basic_string<Ch>* out) {
  how.type = 'X';
  how.precision = 16;
  how.alternate = false;
  AppendInteger(how, address, false, 16, false, out);
}

template <typename Ch, typename Real>
void AppendReal(const Conversion& how, Real value, std::basic_string<Ch>* out) {
  const bool isReal = std::string_view("fFeEgGaA").find(how.type) != std::string_view::npos;
  char format[16];
  char* p = format;
  *p++ = '%';
  if (how.left) *p++ = '-';
  if (how.plus) *p++ = '+';
  if (how.space) *p++ = ' ';
  if (how.alternate) *p++ = '#';
  if (how.zero) *p++ = '0';
  *p++ = '*', *p++ = '.', *p++ = '*';
  if constexpr (std::is_same_v<Real, long double>) *p++ = 'L';
  *p++ = isReal ? how.type : 'f';
  *p = '\0';

  const int precision = isReal ? std::min(how.precision, kMaxDigits) : -1;
  char buffer[512];
  const int length = std::snprintf(buffer, sizeof(buffer), format, how.width, precision, value);
  if (length < 0) return;
  if (static_cast<std::size_t>(length) < sizeof(buffer)) {
    AppendAscii(buffer, buffer + length, out);
    return;
  }
  std::string large(static_cast<std::size_t>(length) + 1, '\0');
  std::snprintf(large.data(), large.size(), format, how.width, precision, value);
  AppendAscii(large.data(), large.data() + length, out);
}

std::uint64_t WidthMask(const FormatArg& arg) {
  return arg.GetBits() >= 64 ? ~std::uint64_t{0} : (std::uint64_t{1} << arg.GetBits()) - 1;
}

template <typename Ch>
void AppendSigned(const Conversion& how, std::int64_t value, std::basic_string<Ch>* out) {
  const auto bits = static_cast<std::uint64_t>(value);
  AppendInteger(how, value < 0 ? 0 - bits : bits, value < 0, 10, true, out);
}

// A whole number under the type of the format. Its own width counts: a 32-bit -1 reads 4294967295
// under %u and ffffffff under %x, a 32-bit 4294967295 reads -1 under %i.
template <typename Ch>
void AppendWhole(Conversion how, const FormatArg& arg, std::basic_string<Ch>* out) {
  const bool isSigned = arg.GetKind() == FormatArg::Kind::kSigned;
  const std::uint64_t bits =
      (isSigned ? static_cast<std::uint64_t>(arg.Signed()) : arg.Unsigned()) & WidthMask(arg);
  switch (how.type) {
    case 'd':
    case 'i':
      if (isSigned) return AppendSigned(how, arg.Signed(), out);
      if (arg.GetBits() == 32) return AppendSigned(how, static_cast<std::int32_t>(bits), out);
      return AppendSigned(how, static_cast<std::int64_t>(bits), out);
    case 'u':
      return AppendInteger(how, bits, false, 10, false, out);
    case 'o':
      return AppendInteger(how, bits, false, 8, false, out);
    case 'x':
    case 'X':
      return AppendInteger(how, bits, false, 16, false, out);
    case 'p':
      return AppendPointer(how, bits, out);
    case 'c':
    case 'C': {
      const Ch one = static_cast<Ch>(bits);
      how.precision = -1;
      return AppendText(how, std::basic_string_view<Ch>(&one, 1), out);
    }
    default:  // the format expects a text or a real number
      how.precision = -1;
      if (isSigned) return AppendSigned(how, arg.Signed(), out);
      return AppendInteger(how, bits, false, 10, false, out);
  }
}

template <typename Ch>
void AppendArg(Conversion how, const FormatArg& arg, std::basic_string<Ch>* out) {
  using Kind = FormatArg::Kind;
  const bool takesText = how.type == 's' || how.type == 'S';
  switch (arg.GetKind()) {
    case Kind::kSigned:
    case Kind::kUnsigned:
      return AppendWhole(how, arg, out);
    case Kind::kDouble:
      return AppendReal(how, arg.Double(), out);
    case Kind::kLongDouble:
      return AppendReal(how, arg.LongDouble(), out);
    case Kind::kPointer:
      return AppendPointer(how, reinterpret_cast<std::uintptr_t>(arg.Pointer()), out);
    case Kind::kNarrow:
      if (!takesText) how.precision = -1, how.zero = false;
      return AppendText(how, arg.NarrowText(), out);
    case Kind::kWide:
      if (!takesText) how.precision = -1, how.zero = false;
      return AppendText(how, arg.WideText(), out);
  }
}

template <typename Ch>
class Formatter {
 public:
  using View = std::basic_string_view<Ch>;

  Formatter(View format, const FormatArg* args, std::size_t count)
      : m_Format(format), m_pArgs(args), m_Count(count) {}

  std::basic_string<Ch> Run() {
    m_Out.reserve(m_Format.size() + 64);
    std::size_t at = 0;
    while (at < m_Format.size()) {
      const std::size_t percent = std::min(m_Format.find(Ch{'%'}, at), m_Format.size());
      m_Out.append(m_Format, at, percent - at);
      at = percent < m_Format.size() ? Convert(percent) : percent;
    }
    return std::move(m_Out);
  }

 private:
  // Carries out the conversion whose '%' stands at `percent`; gives the place behind it. What is no
  // conversion stands in the output as it is.
  std::size_t Convert(std::size_t percent) {
    m_At = percent + 1;
    if (Peek() == Ch{'%'}) {
      m_Out.push_back(Ch{'%'});
      return m_At + 1;
    }
    const std::size_t firstArg = m_Next;
    Conversion how;
    ReadFlags(&how);
    how.width = ReadField(kMaxWidth);
    if (how.width < 0) how.left = true, how.width = -how.width;
    if (Peek() == Ch{'.'}) {
      ++m_At;
      how.precision = std::max(-1, ReadField(1 << 20));
    }
    SkipSize();
    const Ch type = Peek();
    if (!IsType(type)) {
      m_Next = firstArg;
      m_Out.append(m_Format, percent, m_At - percent);
      return m_At;
    }
    how.type = static_cast<char>(type);
    if (m_Next < m_Count) {
      AppendArg(how, m_pArgs[m_Next++], &m_Out);
    } else {
      AppendConverted(std::string_view("(missing)"), &m_Out);
    }
    return m_At + 1;
  }

  Ch Peek() const { return m_At < m_Format.size() ? m_Format[m_At] : Ch{}; }

  static bool IsType(Ch c) {
    switch (c) {
      case 'd':
      case 'i':
      case 'u':
      case 'o':
      case 'x':
      case 'X':
      case 'p':
      case 'c':
      case 'C':
      case 's':
      case 'S':
      case 'f':
      case 'F':
      case 'e':
      case 'E':
      case 'g':
      case 'G':
      case 'a':
      case 'A':
        return true;
      default:
        return false;
    }
  }

  void ReadFlags(Conversion* how) {
    for (;; ++m_At) {
      switch (Peek()) {
        case '-':
          how->left = true;
          break;
        case '+':
          how->plus = true;
          break;
        case ' ':
          how->space = true;
          break;
        case '#':
          how->alternate = true;
          break;
        case '0':
          how->zero = true;
          break;
        default:
          return;
      }
    }
  }

  // Digits, or '*' for the next value; 0 for none.
  int ReadField(int limit) {
    if (Peek() == Ch{'*'}) {
      ++m_At;
      return ReadStar(limit);
    }
    int value = 0;
    for (; Peek() >= Ch{'0'} && Peek() <= Ch{'9'}; ++m_At) {
      value = std::min(limit, value * 10 + static_cast<int>(Peek() - Ch{'0'}));
    }
    return value;
  }

  int ReadStar(int limit) {
    if (m_Next >= m_Count) return 0;
    const FormatArg& arg = m_pArgs[m_Next];
    switch (arg.GetKind()) {
      case FormatArg::Kind::kSigned:
        ++m_Next;
        return static_cast<int>(std::clamp<std::int64_t>(arg.Signed(), -limit, limit));
      case FormatArg::Kind::kUnsigned:
        ++m_Next;
        return static_cast<int>(std::min(arg.Unsigned(), static_cast<std::uint64_t>(limit)));
      default:  // no number: it stays for the conversion itself
        return 0;
    }
  }

  // The size says nothing that the value's own type does not say better.
  void SkipSize() {
    for (;;) {
      switch (Peek()) {
        case 'I': {
          ++m_At;
          const View digits = m_Format.substr(m_At, 2);
          const Ch d64[] = {'6', '4'};
          const Ch d32[] = {'3', '2'};
          if (digits == View(d64, 2) || digits == View(d32, 2)) m_At += 2;
          break;
        }
        case 'h':
        case 'l':
        case 'L':
        case 'w':
        case 'z':
        case 'j':
        case 't':
          ++m_At;
          break;
        default:
          return;
      }
    }
  }

  const View m_Format;
  const FormatArg* const m_pArgs;
  const std::size_t m_Count;
  std::basic_string<Ch> m_Out;
  std::size_t m_At = 0;    // in the format
  std::size_t m_Next = 0;  // value
};

}  // namespace

WString FormatV(WStringView format, const FormatArg* args, std::size_t count) {
  return Formatter<char16_t>(format, args, count).Run();
}

std::string FormatV(std::string_view format, const FormatArg* args, std::size_t count) {
  return Formatter<char>(format, args, count).Run();
}

std::string JoinPieces(const FormatArg* pieces, std::size_t count) {
  constexpr std::size_t kUsual = 256;  // characters of a record
  std::string text;
  text.reserve(kUsual);
  Conversion how;
  how.type = 's';
  for (std::size_t i = 0; i < count; ++i) AppendArg(how, pieces[i], &text);
  return text;
}

}  // namespace corvane
