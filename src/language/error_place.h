// Where an error happened, as the user sees it.
#pragma once

#include <string>
#include <vector>

namespace zeb {

struct error_place {
  std::vector<std::string> lines;  // "Error reading" file, loop and round
  std::string text;                // at most 75 bytes around the place; empty: none to show
  int caret = 0;                   // columns before the place
};

/// Takes what is to be shown of `text`, in which the reader stands at `position`; nothing where the
/// position lies outside of the text.
void show_around(error_place& place, const char* text, const char* position);
/// Emits lines, text and caret.
void emit_place(const error_place& place);

}  // namespace zeb
