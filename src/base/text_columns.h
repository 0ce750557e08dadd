// How wide text stands on a screen. Text is bytes; what is well-formed UTF-8 counts by character,
// any other byte as one column.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace zeb {

/// Bytes of the character that begins at `place`; 1 where none does.
std::size_t character_bytes(std::string_view text, std::size_t place);
/// Bytes of the character that ends before `place`, which isn't 0.
std::size_t character_bytes_before(std::string_view text, std::size_t place);
/// Columns of one character: 0 for combining marks, 2 for wide East Asian ones and pictographs.
int character_columns(std::string_view character);
/// Columns of a text without control characters.
int text_columns(std::string_view text);
/// The beginning of `text` that takes at most `most` bytes and cuts no character.
std::string_view text_in_bytes(std::string_view text, std::size_t most);
/// The part of `text` that stands in columns `first` to `first + width - 1`.
std::string_view text_in_columns(std::string_view text, std::size_t first, std::size_t width);
/// The text with blanks in front of it, or after it, up to `width` columns.
std::string padded_left(std::string_view text, int width);
std::string padded_right(std::string_view text, int width);

}  // namespace zeb
