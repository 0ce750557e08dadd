#include "formats/foreign_matrix.h"

#include <algorithm>

#include "base/errors.h"
#include "base/indices.h"
#include "language/list_text.h"
#include "matrix/matrix_layout.h"
#include "matrix/matrix_memory.h"
#include "matrix/reading/matrix_reader.h"

namespace zeb {

void begin_foreign_matrix(const std::string& source, std::int64_t ntax, std::int64_t nchar,
                          const std::string& title) {
  constexpr std::int64_t most = 1'000'000'000;  // begin_matrix checks what really fits
  if (nchar < 1 || nchar > most) error_end("Must specify number of characters");
  if (ntax < 4 || ntax > most) error_end("Must specify number of taxa (4 or more)");
  warn_of_replacement(source.c_str());
  wipe_matrix();
  make_room_for_matrix(static_cast<int>(ntax), static_cast<int>(nchar));
  begin_matrix(static_cast<int>(ntax), static_cast<int>(nchar), matrix_rows::unset);
  set_matrix_source(title, source);
}

int foreign_taxa::find(const std::string& name) const {
  const auto found = by_name_.find(name);
  return found == by_name_.end() ? -1 : found->second;
}

int foreign_taxa::add(const std::string& name) {
  std::string word = name;
  std::replace(word.begin(), word.end(), ' ', '_');
  const int taxon = rows_.taxa_of_row(word, false).front();
  by_name_.emplace(name, taxon);
  return taxon;
}

void finish_sequences(data_type type) {
  for (int c = 0; c < matrix.nchar; ++c) set_character_type(c, type, matrix.gaps_are_states);
  finish_matrix();
  tell_what_was_read();
}

std::string characters_where(const std::function<bool(const character_record&)>& holds) {
  const auto of_number = [&holds](int character) {
    return holds(matrix.characters[at(character)]);
  };
  return wrapped_words(list_items(matrix.nchar, of_number), 0);
}

}  // namespace zeb
