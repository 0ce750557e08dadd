// Text as characters: how wide it stands on a screen, where it can be cut, when two texts are the
// same. Text is bytes; what is well-formed UTF-8 counts by character, any other byte as one column.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace zeb {

/// Bytes of the character that begins at `place`; 1 where none does. Its code goes to `code`: that
/// of the byte where no character begins.
std::size_t character_bytes(std::string_view text, std::size_t place, std::int32_t* code = nullptr);
/// Bytes of the character that ends before `place`, which isn't 0.
std::size_t character_bytes_before(std::string_view text, std::size_t place);
/// More bytes can make these the beginning of a character of more than one byte.
bool is_partial_character(std::string_view bytes);
/// Adds the character of that code.
void append_character(std::string& text, std::int32_t code);
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
/// A name in the form in which names are kept and compared, letters composed with their marks: an
/// "e" with a mark after it is the same as the one letter. What isn't UTF-8 stays as it is.
std::string normal_form(std::string_view name);

}  // namespace zeb
