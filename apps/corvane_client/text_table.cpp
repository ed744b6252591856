#include "corvane_client/text_table.h"

#include <algorithm>

#include "foundation/text.h"

namespace corvane::client {

namespace {

constexpr char kReplacement[] = "\xEF\xBF\xBD";

struct Range {
  char32_t first, last;
};
// Marks that stand over the letter before them, and characters without a width.
constexpr Range kNoColumn[] = {
    {0x300, 0x36F},   {0x483, 0x489},   {0x591, 0x5BD},    {0x610, 0x61A},   {0x64B, 0x65F},
    {0xE31, 0xE31},   {0xE34, 0xE3A},   {0xE47, 0xE4E},    {0x1AB0, 0x1AFF}, {0x1DC0, 0x1DFF},
    {0x200B, 0x200F}, {0x202A, 0x202E}, {0x2060, 0x206F},  {0x20D0, 0x20F0}, {0xFE00, 0xFE0F},
    {0xFE20, 0xFE2F}, {0xFEFF, 0xFEFF}, {0x1F3FB, 0x1F3FF}};
constexpr Range kTwoColumns[] = {{0x1100, 0x115F},   {0x2E80, 0x303E},   {0x3041, 0x33FF},
                                 {0x3400, 0x4DBF},   {0x4E00, 0x9FFF},   {0xA000, 0xA4CF},
                                 {0xAC00, 0xD7A3},   {0xF900, 0xFAFF},   {0xFE30, 0xFE6F},
                                 {0xFF00, 0xFF60},   {0xFFE0, 0xFFE6},   {0x1F300, 0x1F64F},
                                 {0x1F680, 0x1F6FF}, {0x1F900, 0x1FAFF}, {0x20000, 0x3FFFD}};

template <std::size_t N>
bool IsIn(char32_t c, const Range (&ranges)[N]) {
  return std::ranges::any_of(ranges, [c](Range r) { return c >= r.first && c <= r.last; });
}

std::size_t Columns(char32_t c) { return IsIn(c, kNoColumn) ? 0 : IsIn(c, kTwoColumns) ? 2 : 1; }

// The character at *at of a well-formed text, and moves behind it.
char32_t Next(std::u16string_view text, std::size_t* at) {
  const char32_t unit = text[(*at)++];
  if (unit < 0xD800 || unit > 0xDBFF || *at == text.size()) return unit;
  return 0x10000 + ((unit - 0xD800) << 10) + (text[(*at)++] - 0xDC00U);
}

bool IsControl(char32_t c) {
  // Overrides of the direction of writing would turn the rest of a line around.
  return c < 0x20 || (c >= 0x7F && c < 0xA0) || (c >= 0x202A && c <= 0x202E) ||
         (c >= 0x2066 && c <= 0x2069) || c == 0x2028 || c == 0x2029;
}

}  // namespace

std::size_t DisplayWidth(std::string_view utf8) {
  const WString text = Utf8ToWide(utf8);
  std::size_t width = 0;
  for (std::size_t at = 0; at < text.size();) width += Columns(Next(text, &at));
  return width;
}

std::string Printable(std::string_view utf8) {
  const WString text = Utf8ToWide(utf8);
  std::string safe;
  for (std::size_t at = 0; at < text.size();) {
    const std::size_t start = at;
    const char32_t c = Next(text, &at);
    safe += IsControl(c) ? kReplacement : WideToUtf8(WStringView(text).substr(start, at - start));
  }
  return safe;
}

std::string Clip(std::string_view utf8, std::size_t columns) {
  if (DisplayWidth(utf8) <= columns) return std::string(utf8);
  if (columns == 0) return {};
  const WString text = Utf8ToWide(utf8);
  std::size_t width = 0, end = 0;
  for (std::size_t at = 0; at < text.size(); end = at) {
    width += Columns(Next(text, &at));
    if (width > columns - 1) break;
  }
  return WideToUtf8(WStringView(text).substr(0, end)) + "…";
}

std::vector<std::string> TableLines(const std::vector<Row>& rows,
                                    const std::vector<std::size_t>& right) {
  std::vector<std::size_t> widths;
  for (const Row& row : rows) {
    widths.resize(std::max(widths.size(), row.size()));
    for (std::size_t i = 0; i < row.size(); ++i) {
      widths[i] = std::max(widths[i], DisplayWidth(row[i]));
    }
  }
  std::vector<std::string> lines;
  for (const Row& row : rows) {
    std::string line;
    for (std::size_t i = 0; i < row.size(); ++i) {
      const std::string pad(widths[i] - DisplayWidth(row[i]), ' ');
      const bool atRight = std::ranges::find(right, i) != right.end();
      line += (i > 0 ? "  " : "") + (atRight ? pad + row[i] : row[i] + pad);
    }
    line.erase(line.find_last_not_of(' ') + 1);
    lines.push_back(std::move(line));
  }
  return lines;
}

}  // namespace corvane::client
