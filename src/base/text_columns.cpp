#include "base/text_columns.h"

#include <algorithm>
#include <cstdint>
#include <iterator>

namespace zeb {
namespace {

struct code_range {
  std::uint32_t first, last;
};

// Marks that stand on the character before them, and characters without any width.
constexpr code_range no_width[] = {{0x300, 0x36F},   {0x483, 0x489},   {0x591, 0x5BD},
                                   {0x610, 0x61A},   {0x64B, 0x65F},   {0x1AB0, 0x1AFF},
                                   {0x1DC0, 0x1DFF}, {0x200B, 0x200F}, {0x20D0, 0x20FF},
                                   {0xFE00, 0xFE0F}, {0xFE20, 0xFE2F}, {0xFEFF, 0xFEFF}};
constexpr code_range two_columns[] = {
    {0x1100, 0x115F}, {0x2E80, 0x303E},   {0x3041, 0x33FF},   {0x3400, 0x4DBF},  {0x4E00, 0x9FFF},
    {0xA000, 0xA4CF}, {0xAC00, 0xD7A3},   {0xF900, 0xFAFF},   {0xFE30, 0xFE6F},  {0xFF00, 0xFF60},
    {0xFFE0, 0xFFE6}, {0x1F300, 0x1F64F}, {0x1F900, 0x1F9FF}, {0x20000, 0x3FFFD}};

template <std::size_t n>
bool is_in(std::uint32_t code, const code_range (&ranges)[n]) {
  return std::any_of(std::begin(ranges), std::end(ranges),
                     [=](const code_range& r) { return code >= r.first && code <= r.last; });
}

bool continues(char c) { return (static_cast<unsigned char>(c) & 0xC0) == 0x80; }

std::size_t length_told_by(char c) {
  const auto byte = static_cast<unsigned char>(c);
  if (byte >= 0xC2 && byte < 0xE0) return 2;
  if (byte >= 0xE0 && byte < 0xF0) return 3;
  if (byte >= 0xF0 && byte < 0xF5) return 4;
  return 1;
}

std::string blanks(int count) {
  return std::string(static_cast<std::size_t>(std::max(0, count)), ' ');
}

}  // namespace

std::size_t character_bytes(std::string_view text, std::size_t place) {
  const std::size_t n = length_told_by(text[place]);
  if (place + n > text.size()) return 1;
  for (std::size_t i = 1; i < n; ++i) {
    if (!continues(text[place + i])) return 1;
  }
  return n;
}

std::size_t character_bytes_before(std::string_view text, std::size_t place) {
  for (std::size_t n = 2; n <= 4 && n <= place; ++n) {
    if (!continues(text[place - n + 1])) break;
    if (character_bytes(text, place - n) == n) return n;
  }
  return 1;
}

int character_columns(std::string_view character) {
  if (character.size() < 2) return 1;
  const auto lead = static_cast<unsigned char>(character[0]);
  std::uint32_t code = lead & (0xFFu >> (character.size() + 1));
  for (const char c : character.substr(1))
    code = code << 6 | (static_cast<unsigned char>(c) & 0x3F);
  if (is_in(code, no_width)) return 0;
  return is_in(code, two_columns) ? 2 : 1;
}

int text_columns(std::string_view text) {
  int columns = 0;
  for (std::size_t i = 0; i < text.size();) {
    const std::size_t n = character_bytes(text, i);
    columns += character_columns(text.substr(i, n));
    i += n;
  }
  return columns;
}

std::string_view text_in_columns(std::string_view text, std::size_t first, std::size_t width) {
  std::size_t column = 0;
  std::size_t begin = text.size();
  std::size_t end = text.size();
  for (std::size_t i = 0; i < text.size();) {
    const std::size_t n = character_bytes(text, i);
    const auto columns = static_cast<std::size_t>(character_columns(text.substr(i, n)));
    if (column + columns > first + width) {
      end = i;
      break;
    }
    if (column >= first && begin == text.size()) begin = i;
    column += columns;
    i += n;
  }
  return begin < end ? text.substr(begin, end - begin) : std::string_view();
}

std::string padded_left(std::string_view text, int width) {
  return blanks(width - text_columns(text)).append(text);
}

std::string padded_right(std::string_view text, int width) {
  return std::string(text) + blanks(width - text_columns(text));
}

std::string_view text_in_bytes(std::string_view text, std::size_t most) {
  if (text.size() <= most) return text;
  constexpr std::size_t longest_character = 4;
  for (std::size_t end = most; end > 0 && most - end < longest_character; --end) {
    if ((static_cast<unsigned char>(text[end]) & 0xc0) != 0x80) return text.substr(0, end);
  }
  return text.substr(0, most);
}

}  // namespace zeb
