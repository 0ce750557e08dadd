#include "compare/trees/values_of_file.h"

#include <algorithm>

#include "base/indices.h"
#include "matrix/character_steps.h"
#include "matrix/matrix.h"

namespace zeb {
namespace {

character_change settings_in_force(int character) {
  const character_record& record = matrix.characters[at(character)];
  return {record.additive != 0, record.active != 0, record.is_sankoff != 0, record.weight,
          record.internal_steps};
}

void change_cell(int taxon, int character, std::uint32_t states) {
  set_cell(taxon, character, states);
  forget_steps(character);
}

}  // namespace

values_of_file::values_of_file(int file, std::span<const differing_cell> cells,
                               std::span<const differing_settings> settings)
    : cells_(cells) {
  if (!cells.empty()) drop_packed_data();
  for (const differing_cell& differing : cells) {
    former_cells_.push_back(cell(differing.taxon, differing.character));
    change_cell(differing.taxon, differing.character,
                file == 0 ? differing.first : differing.second);
  }
  for (const differing_settings& differing : settings) {
    former_settings_.push_back({differing.character, settings_in_force(differing.character), {}});
    change_character(differing.character, file == 0 ? differing.first : differing.second);
  }
}

values_of_file::~values_of_file() {
  if (!cells_.empty()) drop_packed_data();
  for (std::size_t i = 0; i < cells_.size(); ++i)
    change_cell(cells_[i].taxon, cells_[i].character, former_cells_[i]);
  for (const differing_settings& former : former_settings_)
    change_character(former.character, former.first);
}

std::span<const differing_cell> cells_of(std::span<const differing_cell> all, int character) {
  return {std::ranges::lower_bound(all, character, {}, &differing_cell::character),
          std::ranges::upper_bound(all, character, {}, &differing_cell::character)};
}

std::vector<int> differing_characters(const compared_results& results) {
  std::vector<int> characters;
  for (const differing_cell& differing : results.cells) characters.push_back(differing.character);
  for (const differing_settings& differing : results.settings)
    characters.push_back(differing.character);
  std::ranges::sort(characters);
  characters.erase(std::unique(characters.begin(), characters.end()), characters.end());
  return characters;
}

}  // namespace zeb
