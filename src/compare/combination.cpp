#include "compare/combination.h"

#include <algorithm>
#include <utility>

#include "compare/block_names.h"
#include "compare/combined_scales.h"

namespace zeb {
namespace {

class combiner {
 public:
  combiner(const comparison_task& task, const comparison& found)
      : task_(task), found_(found), first_(task.first), second_(task.second) {}
  combination combine();

 private:
  void number_taxa();
  void number_characters();
  void add_characters(bool continuous);
  void name_taxa();
  void set_characters();
  void name_blocks();
  void copy_cells(const data_set& from, const std::vector<int>& taxa,
                  const std::vector<int>& characters, bool second);
  void store_decisions();
  void store_landmarks();
  void copy_configuration(const data_set& from, const std::vector<int>& taxa,
                          const landmark_configuration& source, landmark_configuration& target);
  void copy_trees(const data_set& from, const std::vector<int>& taxa);

  const comparison_task& task_;
  const comparison& found_;
  const data_set& first_;
  const data_set& second_;
  combination result_;
};

void combiner::number_taxa() {
  combined_numbers& n = result_.numbers;
  for (int t = 0; t < first_.ntax(); ++t) n.taxa_of_first.push_back(n.ntax++);
  for (const int t : found_.taxa.in_first)
    n.taxa_of_second.push_back(t >= 0 ? n.taxa_of_first[at(t)] : n.ntax++);
}

void combiner::add_characters(bool continuous) {
  combined_numbers& n = result_.numbers;
  for (int c = 0; c < first_.nchar(); ++c) {
    if (first_.characters[at(c)].is_continuous() == continuous)
      n.characters_of_first[at(c)] = n.nchar++;
  }
  for (int c = 0; c < second_.nchar(); ++c) {
    if (found_.characters.in_first[at(c)] < 0 &&
        second_.characters[at(c)].is_continuous() == continuous)
      n.characters_of_second[at(c)] = n.nchar++;
  }
}

void combiner::number_characters() {
  combined_numbers& n = result_.numbers;
  n.characters_of_first.assign(first_.characters.size(), -1);
  n.characters_of_second.assign(second_.characters.size(), -1);
  add_characters(true);
  add_characters(false);
  for (int c = 0; c < second_.nchar(); ++c) {
    const int same = found_.characters.in_first[at(c)];
    if (same >= 0) n.characters_of_second[at(c)] = n.characters_of_first[at(same)];
  }
}

// Taxa of one name that aren't the same get the letter of their set.
void combiner::name_taxa() {
  const combined_numbers& n = result_.numbers;
  data_set& data = result_.data;
  for (int t = 0; t < second_.ntax(); ++t) {
    const auto c = at(n.taxa_of_second[at(t)]);
    data.taxa[c] = second_.taxa[at(t)];
    data.taxon_active[c] = second_.taxon_active[at(t)];
  }
  for (int t = 0; t < first_.ntax(); ++t) {
    const auto c = at(n.taxa_of_first[at(t)]);
    data.taxa[c] = first_.taxa[at(t)];
    data.taxon_active[c] = first_.taxon_active[at(t)];
  }
  const auto part = [&](int of_first, int of_second) {
    std::string& here = data.taxa[at(n.taxa_of_first[at(of_first)])];
    std::string& there = data.taxa[at(n.taxa_of_second[at(of_second)])];
    if (!here.ends_with("_A")) here += "_A";
    if (!there.ends_with("_B")) there += "_B";
  };
  for (const forced_pair& pair : task_.forced_taxa)
    if (!pair.same) part(pair.first, pair.second);
  // A name may be that of one taxon here and, by a forced match, of another one there.
  for (int t = 0; t < second_.ntax(); ++t) {
    if (found_.taxa.in_first[at(t)] >= 0) continue;
    const auto same = std::find(first_.taxa.begin(), first_.taxa.end(), second_.taxa[at(t)]);
    if (same == first_.taxa.end()) continue;
    part(static_cast<int>(same - first_.taxa.begin()), t);
  }
  data.outgroup = n.taxa_of_first[at(first_.outgroup)];
}

void combiner::set_characters() {
  const combined_numbers& n = result_.numbers;
  for (int c = 0; c < second_.nchar(); ++c)
    result_.data.characters[at(n.characters_of_second[at(c)])] = second_.characters[at(c)];
  for (int c = 0; c < first_.nchar(); ++c) {
    data_character& target = result_.data.characters[at(n.characters_of_first[at(c)])];
    target = first_.characters[at(c)];
    target.settings = found_.chosen_settings[at(c)];
    if (found_.characters.in_second[at(c)] >= 0 && target.has_numbered_states())
      target.states = found_.states[at(c)].names;
  }
  for (data_character& c : result_.data.characters) drop_costs(c);
}

// Each block keeps its characters; those of the second set alone make blocks of their own.
void combiner::name_blocks() {
  const combined_numbers& n = result_.numbers;
  std::vector<block_origin> origins(at(n.nchar));
  for (int c = 0; c < second_.nchar(); ++c)
    origins[at(n.characters_of_second[at(c)])] = origin_of(second_, c);
  for (int c = 0; c < first_.nchar(); ++c)
    origins[at(n.characters_of_first[at(c)])] = origin_of(first_, c);
  make_blocks(result_.data, origins, first_);
}

void combiner::copy_cells(const data_set& from, const std::vector<int>& taxa,
                          const std::vector<int>& characters, bool second) {
  const std::vector<int>& matches =
      second ? found_.characters.in_first : found_.characters.in_second;
  for (int c = 0; c < from.nchar(); ++c) {
    if (!from.characters[at(c)].is_discrete()) continue;
    const int same = matches[at(c)];
    const std::vector<int>* numbers = nullptr;
    if (same >= 0) {
      const state_numbers& of_states = found_.states[at(second ? same : c)];
      numbers = second ? &of_states.of_second : &of_states.of_first;
    }
    for (int t = 0; t < from.ntax(); ++t) {
      const std::size_t source = from.place(t, c);
      const std::size_t target = result_.data.place(taxa[at(t)], characters[at(c)]);
      std::uint32_t states = from.cells[source];
      if (numbers && !from.is_silent(t, c)) states = renumbered(states, *numbers);
      result_.data.cells[target] = states;
      result_.data.notes[target] = from.notes[source];
    }
  }
}

void combiner::store_decisions() {
  const combined_numbers& n = result_.numbers;
  for (const cell_difference& d : found_.cells) {
    const std::size_t place =
        result_.data.place(n.taxa_of_first[at(d.taxon)], n.characters_of_first[at(d.character)]);
    if (result_.data.cells[place] == d.result) continue;
    result_.data.cells[place] = d.result;
    result_.data.notes[place] = 0;
  }
}

void combiner::copy_configuration(const data_set& from, const std::vector<int>& taxa,
                                  const landmark_configuration& source,
                                  landmark_configuration& target) {
  for (int t = 0; t < from.ntax(); ++t) {
    const auto first = source.coordinates.begin() + t * source.points;
    const bool scored = std::any_of(first, first + source.points,
                                    [](const landmark_point& p) { return !is_missing(p); });
    if (scored)
      std::copy_n(first, source.points, target.coordinates.begin() + taxa[at(t)] * source.points);
  }
}

void combiner::store_landmarks() {
  const combined_numbers& n = result_.numbers;
  for (int c = 0; c < n.nchar; ++c) {
    if (!result_.data.characters[at(c)].is_landmark()) continue;
    landmark_configuration target;
    target.character = c;
    const auto add = [&](const data_set& from, const std::vector<int>& characters,
                         const std::vector<int>& taxa) {
      for (const landmark_configuration& source : from.landmarks) {
        if (characters[at(source.character)] != c) continue;
        if (target.points == 0) {
          target.dimensions = source.dimensions;
          target.points = source.points;
          target.coordinates.assign(at(n.ntax) * at(source.points), missing_point);
        }
        if (target.points == source.points) copy_configuration(from, taxa, source, target);
      }
    };
    add(second_, n.characters_of_second, n.taxa_of_second);
    add(first_, n.characters_of_first, n.taxa_of_first);
    result_.data.landmarks.push_back(std::move(target));
  }
  for (const landmark_difference& d : found_.landmarks) {
    const int c = n.characters_of_first[at(d.character)];
    const auto target =
        std::ranges::find(result_.data.landmarks, c, &landmark_configuration::character);
    if (target == result_.data.landmarks.end() || d.second_is_missing) continue;
    if (!d.replaced && !d.first_is_missing) continue;
    std::ranges::copy(d.result,
                      target->coordinates.begin() + n.taxa_of_first[at(d.taxon)] * target->points);
  }
}

void combiner::copy_trees(const data_set& from, const std::vector<int>& taxa) {
  for (const std::vector<tree_node>& tree : from.trees)
    result_.data.trees.push_back(renumbered_tree(tree, taxa, result_.numbers.ntax));
}

combination combiner::combine() {
  number_taxa();
  number_characters();
  data_set& data = result_.data;
  data.resize(result_.numbers.ntax, result_.numbers.nchar);
  data.file = first_.file + " and " + second_.file;
  data.title = "Data from " + data.file;
  name_taxa();
  set_characters();
  name_blocks();
  copy_cells(second_, result_.numbers.taxa_of_second, result_.numbers.characters_of_second, true);
  copy_cells(first_, result_.numbers.taxa_of_first, result_.numbers.characters_of_first, false);
  store_decisions();
  store_continuous(task_, found_, result_);
  store_landmarks();
  copy_trees(first_, result_.numbers.taxa_of_first);
  copy_trees(second_, result_.numbers.taxa_of_second);
  return std::move(result_);
}

}  // namespace

combination combine(const comparison_task& task, const comparison& found) {
  return combiner(task, found).combine();
}

}  // namespace zeb
