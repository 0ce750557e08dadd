#include "base/text_columns.h"

#include <utf8proc.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <memory>

namespace zeb {
namespace {

bool is_ascii(char c) { return static_cast<unsigned char>(c) < 0x80; }

constexpr std::size_t longest_character = 4;

std::string blanks(int count) {
  return std::string(static_cast<std::size_t>(std::max(0, count)), ' ');
}

}  // namespace

std::size_t character_bytes(std::string_view text, std::size_t place, std::int32_t* code) {
  const std::string_view rest = text.substr(place, longest_character);
  std::int32_t read = static_cast<unsigned char>(rest[0]);
  std::ptrdiff_t n = 1;
  if (!is_ascii(rest[0])) {
    const auto* bytes = reinterpret_cast<const utf8proc_uint8_t*>(rest.data());
    n = utf8proc_iterate(bytes, static_cast<utf8proc_ssize_t>(rest.size()), &read);
    if (n < 1) read = *bytes;
  }
  if (code) *code = read;
  return n < 1 ? 1 : static_cast<std::size_t>(n);
}

std::size_t character_bytes_before(std::string_view text, std::size_t place) {
  for (std::size_t n = 2; n <= std::min(longest_character, place); ++n) {
    if (character_bytes(text, place - n) == n) return n;
  }
  return 1;
}

bool is_partial_character(std::string_view bytes) {
  // After some first bytes only the low continuations are good, after others only the high ones.
  constexpr std::array continuations = {'\x80', '\xbf'};
  return std::any_of(continuations.begin(), continuations.end(), [bytes](char continuation) {
    const std::string whole = std::string(bytes) + std::string(longest_character, continuation);
    return character_bytes(whole, 0) > bytes.size();
  });
}

void append_character(std::string& text, std::int32_t code) {
  std::array<utf8proc_uint8_t, longest_character> bytes{};
  const utf8proc_ssize_t n = utf8proc_encode_char(code, bytes.data());
  text.append(bytes.begin(), bytes.begin() + n);
}

int character_columns(std::string_view character) {
  if (character.size() < 2) return 1;
  std::int32_t code = 0;
  character_bytes(character, 0, &code);
  return utf8proc_charwidth(code);
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
  for (std::size_t back = 1; back <= std::min(longest_character - 1, most); ++back) {
    if (character_bytes(text, most - back) > back) return text.substr(0, most - back);
  }
  return text.substr(0, most);
}

std::string normal_form(std::string_view name) {
  if (std::all_of(name.begin(), name.end(), is_ascii)) return std::string(name);
  utf8proc_uint8_t* composed = nullptr;
  const utf8proc_ssize_t size =
      utf8proc_map(reinterpret_cast<const utf8proc_uint8_t*>(name.data()),
                   static_cast<utf8proc_ssize_t>(name.size()), &composed,
                   static_cast<utf8proc_option_t>(UTF8PROC_STABLE | UTF8PROC_COMPOSE));
  const std::unique_ptr<utf8proc_uint8_t, decltype(&std::free)> owner(composed, std::free);
  return size < 0 ? std::string(name) : std::string(composed, composed + size);
}

}  // namespace zeb
