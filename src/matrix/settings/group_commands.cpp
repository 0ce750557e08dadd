// `agroup` and `xgroup`: named groups of taxa and of characters.
#include "base/errors.h"
#include "base/indices.h"
#include "base/message_text.h"
#include "console/output.h"
#include "language/group_definition.h"
#include "language/input.h"
#include "language/interpreter.h"
#include "language/lexer.h"
#include "matrix/blocks.h"
#include "matrix/commands.h"
#include "matrix/matrix.h"
#include "matrix/settings/group_selectors.h"

namespace zeb {
namespace {

void set_bit(std::uint32_t& word, int bit, bool value) {
  const std::uint32_t mask = 1U << bit;
  word = value ? word | mask : word & ~mask;
}

/// The three places that hold the groups of one kind.
struct group_store {
  std::span<std::uint32_t> members;
  std::uint32_t* defined;
  std::vector<std::string>* names;
};
group_store taxon_store() {
  return {matrix.taxon_groups, &matrix.defined_taxon_groups, &matrix.taxon_group_names};
}
group_store character_store() {
  return {matrix.character_groups, &matrix.defined_character_groups, &matrix.character_group_names};
}

template <group_store (*get)()>
group_kind kind_of(std::string_view kind, std::string_view command, int elements) {
  return {
      .element_kind = kind,
      .command = command,
      .limit = matrix_state::group_count,
      .elements = elements,
      .defined = [](int group) { return ((*get().defined >> group) & 1U) != 0; },
      .name = [](int group) { return std::string_view((*get().names)[at(group)]); },
      .in_group = [](int e, int group) { return ((get().members[at(e)] >> group) & 1U) != 0; },
      .define =
          [](int group, std::string_view name) {
            if (!name.empty()) (*get().names)[at(group)] = name;
            set_bit(*get().defined, group, true);
          },
      .undefine =
          [](int group) {
            set_bit(*get().defined, group, false);
            (*get().names)[at(group)] = text_of("Group_%i", group);
            for (std::uint32_t& word : get().members) set_bit(word, group, false);
          },
      .set_member = [](int e, int group, bool in) { set_bit(get().members[at(e)], group, in); },
  };
}

/// A character group for each data block, from group 0.
void groups_from_blocks() {
  if (matrix.nblocks > matrix_state::group_count) {
    error_end("Cannot create so many char. groups (", matrix.nblocks, "blocks present)");
  }
  const group_kind kind = kind_of<character_store>("character", "xgroup", matrix.nchar);
  for (int block = 1; block <= matrix.nblocks; ++block) {
    int first = 0;
    int end = 0;
    characters_of_block(block, &first, &end);
    kind.define(block - 1, text_of("Block_%i", block));
    for (int c = 0; c < matrix.nchar; ++c) kind.set_member(c, block - 1, c >= first && c < end);
  }
  report_line(matrix.nblocks, "char. groups defined");
}

}  // namespace

void agroup_command() {
  no_timing();
  require_data("defining groups of taxa");
  group_kind kind = kind_of<taxon_store>("taxon", "agroup", matrix.ntax);
  kind.label = taxon_label;
  kind.active = [](int taxon) { return matrix.taxon_active[at(taxon)] != 0; };
  define_groups(kind);
}

void xgroup_command() {
  no_timing();
  require_data("defining groups of characters");
  if (accept_char('/')) {
    if (skip_blanks_peek() != ';') error_end("Must use =, > or <");
    return groups_from_blocks();
  }
  group_kind kind = kind_of<character_store>("character", "xgroup", matrix.nchar);
  kind.label = character_label;
  kind.active = [](int c) { return matrix.characters[at(c)].active != 0; };
  kind.selector = select_characters;
  kind.zaps = true;
  define_groups(kind);
}

}  // namespace zeb
