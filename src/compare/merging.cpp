#include "compare/merging.h"

#include <algorithm>
#include <map>
#include <unordered_map>
#include <utility>

#include "base/errors.h"
#include "base/message_text.h"
#include "compare/block_names.h"
#include "compare/combined_data.h"
#include "compare/combined_scales.h"
#include "compare/state_numbers.h"
#include "matrix/costs/step_matrices.h"

namespace zeb {
namespace {

// Numbers in the merged set, by set and then by number there.
struct merged_numbers {
  std::vector<std::vector<int>> taxa, characters;
  std::vector<std::string> taxon_names;
  int nchar = 0;
};

merged_numbers number_all(std::span<const data_set> sets) {
  merged_numbers n;
  std::unordered_map<std::string, int> by_name;
  for (const data_set& set : sets) {
    std::vector<int> taxa;
    for (const std::string& name : set.taxa) {
      const auto [entry, is_new] = by_name.emplace(name, static_cast<int>(by_name.size()));
      if (is_new) n.taxon_names.push_back(name);
      taxa.push_back(entry->second);
    }
    n.taxa.push_back(std::move(taxa));
    n.characters.emplace_back(set.characters.size());
  }
  for (const bool continuous : {true, false}) {
    for (std::size_t s = 0; s < sets.size(); ++s) {
      for (int c = 0; c < sets[s].nchar(); ++c) {
        if (sets[s].characters[at(c)].is_continuous() == continuous)
          n.characters[s][at(c)] = n.nchar++;
      }
    }
  }
  return n;
}

void copy_landmarks(const data_set& from, const std::vector<int>& taxa,
                    const std::vector<int>& characters, data_set& to) {
  for (const landmark_configuration& source : from.landmarks) {
    landmark_configuration target = source;
    target.character = characters[at(source.character)];
    target.coordinates.assign(to.taxa.size() * at(source.points), missing_point);
    for (int t = 0; t < from.ntax(); ++t) {
      std::copy_n(source.coordinates.begin() + t * source.points, source.points,
                  target.coordinates.begin() + taxa[at(t)] * source.points);
    }
    to.landmarks.push_back(std::move(target));
  }
}

void copy_set(const data_set& from, const std::vector<int>& taxa,
              const std::vector<int>& characters, data_set& to) {
  for (int c = 0; c < from.nchar(); ++c) {
    data_character& target = to.characters[at(characters[at(c)])];
    target = from.characters[at(c)];
    for (int t = 0; t < from.ntax(); ++t) {
      const std::size_t place = to.place(taxa[at(t)], characters[at(c)]);
      to.cells[place] = from.states(t, c);
      to.notes[place] = from.notes[from.place(t, c)];
    }
    if (!target.is_continuous()) continue;
    for (int t = 0; t < to.ntax(); ++t) {
      const std::size_t place = to.place(t, characters[at(c)]);
      if (to.cells[place] == missing_cell) to.cells[place] = missing_continuous;
    }
  }
  copy_landmarks(from, taxa, characters, to);
  for (const std::vector<tree_node>& tree : from.trees)
    to.trees.push_back(renumbered_tree(tree, taxa, to.ntax()));
}

std::string title_of(std::span<const data_set> sets) {
  std::vector<std::string_view> files;
  for (const data_set& set : sets) files.emplace_back(set.file);
  return "Data from " + joined_list(files);
}

// Of two with one name the later one stays without: characters have their costs all the same.
void add_step_matrices(const data_set& from, data_set& to) {
  for (const step_matrix& named : from.step_matrices) {
    if (to.step_matrices.size() == at(most_step_matrices)) return;
    if (named.costs && std::ranges::find(to.step_matrices, named.name, &step_matrix::name) ==
                           to.step_matrices.end())
      to.step_matrices.push_back(named);
  }
}

bool are_changed(const std::vector<int>& numbers) {
  for (std::size_t s = 0; s < numbers.size(); ++s)
    if (numbers[s] != static_cast<int>(s)) return true;
  return false;
}

// Costs that two characters share stay. Others go: which state of the one is which of the other
// doesn't tell what a change costs.
void join_costs(data_character& into, const data_character& from, bool renumbered) {
  const bool any = into.settings.is_sankoff || from.settings.is_sankoff;
  const bool same = into.settings.is_sankoff == from.settings.is_sankoff && into.costs &&
                    from.costs && *into.costs == *from.costs && !renumbered;
  if (!any || same) return;
  warn_of_step_matrices();
  drop_costs(into);
}

// Entries of `from` join those of `into`, whose states they are renumbered to.
void join_discrete(data_set& data, int into, int from) {
  data_character& a = data.characters[at(into)];
  const data_character& b = data.characters[at(from)];
  state_numbers numbers;
  const bool named = a.has_numbered_states() && !a.states.empty() && !b.states.empty();
  if (named) {
    numbers = number_states(a, b, {.by_similarity = false});
    a.states = numbers.names;
  } else if (a.states.empty()) {
    a.states = b.states;
  }
  join_costs(a, b, named && are_changed(numbers.of_second));
  if (numbers.overflow) {
    warning_f(
        "Fusing characters %i and %i results in more than 32 states\n"
        "States beyond 32 will be changed to missing",
        into, from);
  }
  for (int t = 0; t < data.ntax(); ++t) {
    const std::size_t here = data.place(t, into);
    if (data.is_silent(t, from)) continue;
    const std::uint32_t states =
        named ? renumbered(data.states(t, from), numbers.of_second) : data.states(t, from);
    data.cells[here] = data.is_silent(t, into) ? states : data.cells[here] | states;
    data.notes[here] = data.cells[here] == missing_cell ? silent_note : std::uint8_t{0};
  }
}

void join_continuous(data_set& data, int into, int from) {
  continuous_column column;
  for (int t = 0; t < data.ntax(); ++t) {
    entry_range range = data.values(t, into);
    const bool has_other = !data.is_silent(t, from);
    if (has_other) {
      const entry_range other = data.values(t, from);
      const bool alone = data.is_silent(t, into);
      range = {alone ? other.low : std::min(range.low, other.low),
               alone ? other.high : std::max(range.high, other.high)};
    }
    column.values.push_back(range);
    column.is_missing.push_back(data.is_silent(t, into) && !has_other);
  }
  store_column(data, into, column);
}

// Configurations can't be mixed: a taxon without one gets the other.
void join_landmarks(data_set& data, int into, int from) {
  const auto find = [&data](int character) {
    return std::ranges::find(data.landmarks, character, &landmark_configuration::character);
  };
  const auto target = find(into);
  const auto source = find(from);
  if (target == data.landmarks.end() || source == data.landmarks.end() ||
      target->points != source->points)
    return;
  for (int t = 0; t < data.ntax(); ++t) {
    const auto here = target->coordinates.begin() + t * target->points;
    if (std::all_of(here, here + target->points,
                    [](const landmark_point& p) { return is_missing(p); }))
      std::copy_n(source->coordinates.begin() + t * source->points, source->points, here);
  }
}

void drop_characters(data_set& data, const std::vector<int>& new_numbers, int count) {
  data_set kept = data;
  kept.resize(data.ntax(), count);
  kept.landmarks.clear();
  for (group_copy& group : kept.character_groups) group.members.assign(at(count), 0);
  int block = 0;  // the former one of the character before
  if (!kept.block_names.empty()) kept.block_names.resize(1);
  for (int c = 0; c < data.nchar(); ++c) {
    const int number = new_numbers[at(c)];
    if (number < 0) continue;
    kept.characters[at(number)] = data.characters[at(c)];
    const int block_here = data.characters[at(c)].settings.block;
    if (block_here != block && !kept.block_names.empty())
      kept.block_names.push_back(data.block_names[at(block_here)]);
    block = block_here;
    for (std::size_t g = 0; g < kept.character_groups.size(); ++g)
      kept.character_groups[g].members[at(number)] = data.character_groups[g].members[at(c)];
    for (int t = 0; t < data.ntax(); ++t) {
      kept.cells[kept.place(t, number)] = data.states(t, c);
      kept.notes[kept.place(t, number)] = data.notes[data.place(t, c)];
    }
    if (const landmark_configuration* found = data.landmarks_of(c)) {
      kept.landmarks.push_back(*found);
      kept.landmarks.back().character = number;
    }
  }
  data = std::move(kept);
}

}  // namespace

data_set merge_data(std::span<const data_set> sets) {
  const merged_numbers n = number_all(sets);
  data_set merged;
  merged.title = merged.file = title_of(sets);
  merged.resize(static_cast<int>(n.taxon_names.size()), n.nchar);
  merged.taxa = n.taxon_names;
  std::vector<block_origin> origins(at(n.nchar));
  for (std::size_t s = 0; s < sets.size(); ++s) {
    copy_set(sets[s], n.taxa[s], n.characters[s], merged);
    for (int c = 0; c < sets[s].nchar(); ++c)
      origins[at(n.characters[s][at(c)])] = origin_of(sets[s], c);
  }
  for (const data_set& set : sets) add_step_matrices(set, merged);
  std::ranges::sort(merged.landmarks, {}, &landmark_configuration::character);
  make_blocks(merged, origins, sets.front());
  return merged;
}

int merge_characters_of_one_name(data_set& data) {
  std::map<std::pair<std::string, int>, int> by_name;
  std::vector<int> new_numbers(data.characters.size(), -1);
  int count = 0;
  for (int c = 0; c < data.nchar(); ++c) {
    const data_character& character = data.characters[at(c)];
    if (!character.name.empty()) {
      const auto [entry, is_new] =
          by_name.try_emplace({character.name, character.settings.type}, c);
      const int into = entry->second;
      if (!is_new) {
        if (character.is_landmark()) {
          join_landmarks(data, into, c);
        } else if (character.is_continuous()) {
          join_continuous(data, into, c);
        } else {
          join_discrete(data, into, c);
        }
        for (group_copy& group : data.character_groups)
          group.members[at(into)] |= group.members[at(c)];
        continue;
      }
    }
    new_numbers[at(c)] = count++;
  }
  const int gone = data.nchar() - count;
  if (gone > 0) drop_characters(data, new_numbers, count);
  return gone;
}

}  // namespace zeb
