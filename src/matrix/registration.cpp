#include "matrix/registration.h"

#include "base/command.h"
#include "base/indices.h"
#include "base/message_text.h"
#include "language/commands/memory_command.h"
#include "language/hooks.h"
#include "language/lexer.h"
#include "language/lists.h"
#include "language/methods.h"
#include "matrix/blocks.h"
#include "matrix/costs/cost_text.h"
#include "matrix/data_in_words.h"
#include "matrix/hooks.h"
#include "matrix/matrix.h"
#include "matrix/matrix_layout.h"

namespace zeb {
namespace {

std::string_view name_of_character(int character) {
  if (matrix.char_names.size() <= at(character)) return {};
  return matrix.char_names[at(character)].name;
}

std::string_view name_of_block(int block) {
  if (matrix.block_names.size() <= at(block)) return {};
  return matrix.block_names[at(block)];
}

bool in_bits(std::span<const std::uint32_t> words, int element, int group) {
  return words.size() > at(element) && ((words[at(element)] >> group) & 1U) != 0;
}

int block_named(std::string_view word) {
  for (int block = 0; block <= matrix.nblocks; ++block) {
    if (is_prefix(word, name_of_block(block))) return block;
  }
  return is_prefix(word, "all") ? 0 : -1;
}

void register_lists() {
  register_list_kind(
      {.noun = "taxon",
       .count = [] { return matrix.ntax; },
       .name = [](int taxon) { return taxon_name(taxon); },
       .group_count = [] { return matrix_state::group_count; },
       .group_name =
           [](int group) { return std::string_view(matrix.taxon_group_names[at(group)]); },
       .group_defined =
           [](int group) { return ((matrix.defined_taxon_groups >> group) & 1U) != 0; },
       .in_group = [](int taxon,
                      int group) { return in_bits(matrix.taxon_groups, taxon, group); }});
  register_list_kind(
      {.noun = "character",
       .count = [] { return matrix.nchar; },
       .name = name_of_character,
       .group_count = [] { return matrix_state::group_count; },
       .group_name =
           [](int group) { return std::string_view(matrix.character_group_names[at(group)]); },
       .group_defined =
           [](int group) { return ((matrix.defined_character_groups >> group) & 1U) != 0; },
       .in_group = [](int character,
                      int group) { return in_bits(matrix.character_groups, character, group); },
       .block_range = characters_of_block,
       .block_named = block_named,
       .block_count = [] { return matrix.nblocks; }});
  register_list_kind(
      {.noun = "block", .count = [] { return matrix.nblocks + 1; }, .name = name_of_block});
}

}  // namespace

matrix_hooks hooks_of_matrix;

namespace {

/// How data that commands read later are read.
std::vector<std::string> reading_as_commands() {
  if (!matrix.type_given && matrix.next_cell_bytes == 0) return {};
  const char* const type = matrix.default_type == dna_data       ? "dna "
                           : matrix.default_type == protein_data ? "proteins "
                           : matrix.one_scale                    ? "numeric "
                                                                 : "";
  return {text_of("nstates %s%i", type, 8 * next_cell_width())};
}

}  // namespace

void register_matrix() {
  register_lists();
  hooks_of_language.data_present = [] { return matrix.present; };
  hooks_of_language.drop_data = wipe_matrix;
  add_command_over_hook(drop_unfinished_matrix);
  add_methods(methods_part::data, data_in_words);
  add_methods(methods_part::choices, cost_settings);
  add_methods(methods_part::session, reading_as_commands);
}

}  // namespace zeb
