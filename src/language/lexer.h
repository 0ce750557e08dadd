// Lexical helpers that all handlers share. "Blank" is any character with a code below 33.
#pragma once

#include <array>
#include <string>
#include <string_view>

namespace zeb {

struct lexer_state {
  char token[2049] = {};  // what the last helper read
  int token_length = 0;
  int name_limit = 32;  // longest word that `read_word` accepts; set by `taxname +N`
};
extern lexer_state lexer;
/// What the last helper left in `token`.
std::string_view token();

/// The character itself where it may stand in a plain name (letters, also those beyond
/// ASCII, and "_-.+"), else 0.
extern const std::array<unsigned char, 256> name_chars;

/// Next non-blank character, left unread.
int skip_blanks_peek();
/// Next non-blank character, consumed.
int next_nonblank();
/// Skips blanks; consumes the next character if it is `c`.
bool accept_char(int c);
/// Consumes up to `c`, which stays unread.
void skip_to(int c);
/// Letters only, folded to lower case; returns the length. Over `name_limit`: "Name too long".
int read_word();
/// A name in normal form: characters of `name_chars`, and digits after the first. Same limit.
int read_name();
/// Up to a blank or ";" (unread), at most 2,048 characters; returns the length, 0 before ";".
int read_item();
/// The name of a file: an item, or what stands between double quotes, where blanks, commas and
/// semicolons are parts of it.
int read_file_name();
/// The text up to ";" (unread), without the blanks around it; line ends become blanks. A comma in
/// parentheses, as in the code of a colour, belongs to the text wherever it was typed.
std::string read_text_to_semicolon();
/// Optionally consumes one character, then tells whether the next is blank or ";".
bool at_end_of_word(bool consume);

/// The same as `expect_end`, with the ";" left unread: for work that may fail yet, so that the
/// place shown is the end of the arguments.
void check_end();
/// The arguments end here: consumes the ";". Anything else is the error "Wrong argument for" the
/// command.
void expect_end();

/// The text of a quotation up to ";" (consumed): one leading blank goes, ".," stands for ";".
std::string read_quoted_text();
/// What stands up to ";" (consumed), as it is.
std::string read_to_semicolon();
/// The token becomes the name of a file.
void set_token(std::string_view text);
/// The longest word that `read_word` accepts from now on.
void limit_names_to(int length);

/// Case-insensitive: is `word` a prefix of `name`? An empty word matches nothing.
bool is_prefix(std::string_view word, std::string_view name);

/// The one routine that reads a number for all commands. Returns false, with nothing but blanks
/// consumed, where no number comes next. The macro language replaces it by one that takes
/// expressions. `parenthesised` (if not null) tells whether it was an expression, whose fraction
/// may be dropped.
bool read_value(double* value, bool* parenthesised);
bool plain_read_value(double* value, bool* parenthesised);
/// True and the value when a (possibly signed) whole number of any size comes next; false and
/// nothing consumed else. A literal fraction is the error "Expected integral number".
bool read_optional_whole(double* value);
/// The same, and what doesn't fit an int is the error "Number too large".
bool read_optional_int(int* value);
/// Integer argument: -1 if there is no number.
int read_int();
/// Number argument; a negative value if there is none.
double read_float();
bool read_optional_float(double* value);

}  // namespace zeb
