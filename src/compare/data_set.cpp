#include "compare/data_set.h"

#include <algorithm>
#include <map>
#include <utility>

#include "base/errors.h"
#include "formats/foreign_matrix.h"
#include "language/lexer.h"
#include "matrix/blocks.h"
#include "matrix/costs/step_matrices.h"
#include "matrix/matrix_layout.h"
#include "matrix/settings/character_settings.h"
#include "matrix/settings/continuous_scales.h"
#include "matrix/settings/named_groups.h"
#include "matrix/settings/taxon_settings.h"
#include "trees/tree_groups.h"
#include "trees/tree_store.h"

namespace zeb {
namespace {

constexpr int widest_cell = 4;            // bytes
constexpr std::size_t longest_word = 20;  // with "Unique_to_" the name of a group

std::string without_quotes(const std::string& title) {
  if (title.size() < 2 || title.front() != '\'' || title.back() != '\'') return title;
  return title.substr(1, title.size() - 2);
}

// Cells that hold any state, or any but the highest, hold those of 32 states, too.
std::uint32_t widened(std::uint32_t states, const character_record& record) {
  if (record.is_continuous || matrix.cell_bytes == widest_cell) return states;
  const auto type = static_cast<data_type>(record.type);
  if (states == matrix.state_mask) return missing_cell;
  if (states == star_mask(type, matrix.cell_bytes)) return star_mask(type, widest_cell);
  return states;
}

data_character copy_of_character(int character) {
  const auto c = at(character);
  data_character copy;
  if (c < matrix.char_names.size()) {
    copy.name = matrix.char_names[c].name;
    copy.states = matrix.char_names[c].states;
  }
  copy.settings = matrix.characters[c];
  copy.costs = costs_set_for(character);
  if (c < matrix.scales.size()) copy.scale = matrix.scales[c];
  return copy;
}

void copy_cells(data_set& data) {
  for (int t = 0; t < matrix.ntax; ++t) {
    for (int c = 0; c < matrix.nchar; ++c) {
      const std::size_t place = data.place(t, c);
      const std::uint32_t states = cell(t, c);
      data.cells[place] = widened(states, matrix.characters[at(c)]);
      std::uint8_t notes = says_nothing(c, states) ? silent_note : std::uint8_t{0};
      if (was_gap(t, c)) notes |= gap_note;
      data.notes[place] = notes;
    }
  }
}

std::vector<int> block_starts(const data_set& data) {
  std::vector<int> starts;
  for (int c = 0; c < data.nchar(); ++c) {
    const int block = data.characters[at(c)].settings.block;
    if (c == 0 || block != data.characters[at(c) - 1].settings.block) starts.push_back(c);
  }
  return starts;
}

int longest_name(const data_set& data) {
  std::size_t longest = 0;
  for (const std::string& name : data.taxa) longest = std::max(longest, name.size());
  return static_cast<int>(longest);
}

void put_cells(const data_set& data) {
  for (int t = 0; t < data.ntax(); ++t) {
    blank_row(t);
    set_taxon_name(t, data.taxa[at(t)]);
    for (int c = 0; c < data.nchar(); ++c) {
      if (data.characters[at(c)].is_landmark()) continue;
      set_cell(t, c, data.states(t, c));
      if (data.notes[data.place(t, c)] & gap_note) note_gap(t, c);
    }
  }
}

void put_landmarks(const data_set& data) {
  for (const landmark_configuration& from : data.landmarks) {
    add_landmark_configuration(from.character, from.dimensions, from.points);
    for (int t = 0; t < data.ntax(); ++t) {
      const auto first = from.coordinates.begin() + t * from.points;
      std::copy_n(first, from.points, changeable_landmarks_of(from.character, t).begin());
    }
  }
}

void put_costs(int character, const data_character& from) {
  if (from.costs) set_costs(character, from.costs);
  if (from.settings.root_states) set_root_states(character, from.settings.root_states);
  if (from.settings.user_min_steps >= 0 || from.settings.user_max_state >= 0)
    set_user_steps(character, from.settings.user_min_steps, from.settings.user_max_state);
  change_character(character, {.sankoff = from.settings.is_sankoff != 0});
}

// The settings are as they were kept by `ckeep` from now on.
void put_settings(const data_set& data) {
  for (int i = 0; i < static_cast<int>(data.step_matrices.size()); ++i)
    set_step_matrix(i, data.step_matrices[at(i)]);
  for (int c = 0; c < data.nchar(); ++c) {
    const data_character& from = data.characters[at(c)];
    put_costs(c, from);
    change_character(c, {.additive = from.settings.additive != 0,
                         .active = from.settings.active != 0,
                         .sankoff = {},
                         .weight = from.settings.weight,
                         .internal_steps = from.settings.internal_steps});
    if (from.is_continuous())
      set_scale(c, from.scale.factor, from.scale.shift, from.settings.log_scale != 0);
    if (!from.name.empty() || !from.states.empty()) set_character_name(c, {from.name, from.states});
  }
  keep_settings();
  if (std::count(data.taxon_active.begin(), data.taxon_active.end(), 1) >= fewest_active_taxa) {
    set_outgroup(data.outgroup);
    std::vector<std::uint8_t> active = data.taxon_active;
    active[at(data.outgroup)] = 1;
    set_active_taxa(active);
  }
}

std::vector<group_copy> copy_tree_groups() {
  std::vector<group_copy> groups;
  for (int g = 0; g < tree_groups.limit; ++g) {
    if (!tree_group_defined(g)) continue;
    group_copy group{g, tree_groups.names[at(g)], {}};
    for (int tree = 0; tree < store.ntrees; ++tree) group.members.push_back(in_tree_group(tree, g));
    groups.push_back(std::move(group));
  }
  return groups;
}

void put_groups(const data_set& data) {
  for (const group_copy& group : data.taxon_groups) put_back_taxon_group(group);
  for (const group_copy& group : data.character_groups) put_back_character_group(group);
  for (const group_copy& group : data.tree_groups) {
    define_tree_group(group.number, group.name);
    for (int tree = 0; tree < store.ntrees; ++tree)
      set_tree_group_member(tree, group.number, group.members[at(tree)] != 0);
  }
}

void put_trees(const data_set& data) {
  make_room_for_trees(data.trees.size());
  for (const std::vector<tree_node>& tree : data.trees) {
    const tree_span slot = take_slot();
    std::copy(tree.begin(), tree.end(), slot.begin());
  }
}

}  // namespace

bool data_set::is_silent(int taxon, int character) const {
  return (notes[place(taxon, character)] & silent_note) != 0;
}

entry_range data_set::values(int taxon, int character) const {
  const std::uint32_t stored = states(taxon, character);
  const continuous_scale& scale = characters[at(character)].scale;
  return {(stored & 0xffffU) / 1000.0 * scale.factor + scale.shift,
          (stored >> 16) / 1000.0 * scale.factor + scale.shift};
}

const landmark_configuration* data_set::landmarks_of(int character) const {
  const auto found = std::find_if(
      landmarks.begin(), landmarks.end(),
      [character](const landmark_configuration& l) { return l.character == character; });
  return found == landmarks.end() ? nullptr : &*found;
}

void data_set::resize(int taxa_count, int character_count) {
  taxa.resize(at(taxa_count));
  taxon_active.resize(at(taxa_count), 1);
  characters.resize(at(character_count));
  cells.assign(at(taxa_count) * at(character_count), missing_cell);
  notes.assign(cells.size(), silent_note);
}

data_set data_in_memory(const std::string& file) {
  data_set data;
  data.file = file;
  data.word = word_of_file(file);
  data.title = without_quotes(matrix.title);
  data.resize(matrix.ntax, matrix.nchar);
  for (int t = 0; t < matrix.ntax; ++t) {
    data.taxa[at(t)] = taxon_name(t);
    data.taxon_active[at(t)] = matrix.taxon_active[at(t)];
  }
  data.outgroup = matrix.outgroup;
  for (int c = 0; c < matrix.nchar; ++c) {
    data.characters[at(c)] = copy_of_character(c);
    if (const landmark_configuration* found = configuration_of(c)) data.landmarks.push_back(*found);
  }
  data.block_names = matrix.block_names;
  data.step_matrices = matrix.step_matrices;
  copy_cells(data);
  data.taxon_groups = copy_taxon_groups();
  data.character_groups = copy_character_groups();
  data.tree_groups = copy_tree_groups();
  for (int tree = 0; tree < store.ntrees; ++tree) {
    const tree_span record = stored_tree(tree);
    data.trees.emplace_back(record.begin(), record.end());
  }
  return data;
}

void put_into_memory(const data_set& data) {
  limit_names_to(std::max(lexer.name_limit, longest_name(data) + 1));
  wipe_matrix();
  set_cell_width(widest_cell);
  lay_out_foreign_matrix(data.file, data.ntax(), data.nchar(), "'" + data.title + "'", false);
  put_cells(data);
  for (int c = 0; c < data.nchar(); ++c) {
    const character_record& record = data.characters[at(c)].settings;
    set_character_type(c, static_cast<data_type>(record.type), record.gap_is_state != 0);
  }
  put_landmarks(data);
  // Blocks can't have names where there are landmarks.
  lay_out_blocks(block_starts(data),
                 data.landmarks.empty() ? data.block_names : std::vector<std::string>());
  finish_matrix();
  put_settings(data);
  put_trees(data);
  put_groups(data);
}

bool are_of_one_kind(const data_set& first, int character, const data_set& second, int other) {
  const data_character& a = first.characters[at(character)];
  if (a.settings.type != second.characters[at(other)].settings.type) return false;
  if (!a.is_landmark()) return true;
  const landmark_configuration* here = first.landmarks_of(character);
  const landmark_configuration* there = second.landmarks_of(other);
  return here && there && here->points == there->points && here->dimensions == there->dimensions;
}

bool has_step_matrices(const data_set& data) {
  return std::ranges::any_of(data.characters,
                             [](const data_character& c) { return c.settings.is_sankoff != 0; });
}

void drop_costs(data_character& character) {
  character.costs = nullptr;
  character.settings.is_sankoff = 0;
  character.settings.root_states = 0;
  character.settings.user_min_steps = -1;
  character.settings.user_max_state = -1;
}

void warn_of_step_matrices() {
  warning(
      "Sankoff characters in matrix combination/comparison not yet implemented.\n"
      "Sankoff characters will be converted to non-additive");
}

void tell_words_apart(const std::vector<data_set*>& sets) {
  constexpr std::size_t longest = longest_word - 4;  // with the number
  std::map<std::string, int> count;
  for (const data_set* set : sets) ++count[set->word];
  std::map<std::string, int> last;
  for (data_set* set : sets) {
    const std::string word = set->word;
    if (count[word] == 1) continue;
    do {
      set->word = word.substr(0, longest) + "_" + std::to_string(++last[word]);
    } while (count.contains(set->word));
    count[set->word] = 1;
  }
}

std::string word_of_file(const std::string& file) {
  std::string name = file.substr(file.find_last_of('/') + 1);
  const std::size_t dot = name.find_last_of('.');
  if (dot != std::string::npos && dot > 0) name.resize(dot);
  return group_name_of(name).substr(0, longest_word);
}

}  // namespace zeb
