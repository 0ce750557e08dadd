#include "matrix/matrix_growth.h"

#include <algorithm>
#include <utility>

#include "base/indices.h"
#include "matrix/landmarks.h"
#include "matrix/matrix_layout.h"

namespace zeb {

namespace {

template <class element>
std::vector<element> copy_of(std::span<element> elements) {
  return {elements.begin(), elements.end()};
}

// Cells that hold any state hold those of the present width, too.
std::uint32_t widened(std::uint32_t states, data_type type, int former_bytes) {
  if (type == continuous_data || former_bytes == matrix.cell_bytes) return states;
  if (states == mask_of_width(former_bytes)) return matrix.state_mask;
  if (states == star_mask(type, former_bytes)) return star_mask(type, matrix.cell_bytes);
  return states;
}

}  // namespace

data_aside::data_aside(int place, int count)
    : place_(place),
      count_(count),
      data_(matrix),
      characters_(copy_of(matrix.characters)),
      kept_characters_(copy_of(matrix.kept_characters)),
      scales_(copy_of(matrix.scales)),
      taxon_active_(copy_of(matrix.taxon_active)),
      taxon_groups_(copy_of(matrix.taxon_groups)),
      character_groups_(copy_of(matrix.character_groups)) {
  cells_.reserve(at(matrix.ntax) * at(matrix.nchar));
  for (int t = 0; t < matrix.ntax; ++t) {
    taxon_names_.emplace_back(taxon_name(t));
    for (int c = 0; c < matrix.nchar; ++c) {
      cells_.push_back(cell(t, c));
      gaps_.push_back(was_gap(t, c));
    }
  }
}

void data_aside::put_back_cells() const {
  matrix.title = data_.title;
  for (int c = 0; c < data_.nchar; ++c) {
    matrix.characters[at(new_number(c))] = characters_[at(c)];
    matrix.characters[at(new_number(c))].needs_recheck = 1;
  }
  for (int t = 0; t < data_.ntax; ++t) {
    for (int c = 0; c < data_.nchar; ++c) {
      const auto type = static_cast<data_type>(characters_[at(c)].type);
      const std::size_t i = at(t) * at(data_.nchar) + at(c);
      set_cell(t, new_number(c), widened(cells_[i], type, data_.cell_bytes));
      if (gaps_[i]) note_gap(t, new_number(c));
    }
  }
  for (const landmark_configuration& one : data_.landmarks) {
    const int character = new_number(one.character);
    add_landmark_configuration(character, one.dimensions, one.points);
    for (int t = 0; t < data_.ntax; ++t) {
      const auto points =
          std::span(one.coordinates).subspan(at(t) * at(one.points), at(one.points));
      std::ranges::copy(points, changeable_landmarks_of(character, t).begin());
    }
  }
  for (int c = 0; at(c) < data_.char_names.size(); ++c)
    set_character_name(new_number(c), data_.char_names[at(c)]);
}

void data_aside::put_back_settings() const {
  for (int c = 0; c < data_.nchar; ++c) {
    const auto n = at(new_number(c));
    const std::int32_t block = matrix.characters[n].block;
    matrix.kept_characters[n] = kept_characters_[at(c)];
    matrix.kept_characters[n].block = block;
    if (!scales_.empty()) matrix.scales[n] = scales_[at(c)];
    matrix.character_groups[n] = character_groups_[at(c)];
  }
  for (int t = 0; t < data_.ntax; ++t) {
    matrix.taxon_active[at(t)] = taxon_active_[at(t)];
    matrix.taxon_groups[at(t)] = taxon_groups_[at(t)];
  }
  for (const auto& [character, values] : data_.values_as_read)
    matrix.values_as_read[new_number(character)] = values;
  matrix.outgroup = data_.outgroup;
  matrix.step_matrices = data_.step_matrices;
  matrix.defined_taxon_groups = data_.defined_taxon_groups;
  matrix.defined_character_groups = data_.defined_character_groups;
  matrix.taxon_group_names = data_.taxon_group_names;
  matrix.character_group_names = data_.character_group_names;
}

std::vector<int> data_aside::block_starts() const {
  std::vector<int> starts;
  for (int b = 1; b <= data_.nblocks; ++b) starts.push_back(new_number(data_.block_first[at(b)]));
  return starts;
}

}  // namespace zeb
