#include "compare/compared_trees.h"

#include <algorithm>
#include <numeric>
#include <sstream>

#include "base/errors.h"
#include "base/input_file.h"
#include "base/message_text.h"
#include "compare/combined_scales.h"

namespace zeb {
namespace {

void check_trees_of(const data_set& data) {
  const auto refuse_root = [] {
    error_end("Sorry, trees in files must be rooted on the first taxon");
  };
  if (data.outgroup != 0) refuse_root();
  for (std::size_t i = 0; i < data.trees.size(); ++i) {
    const std::vector<tree_node>& tree = data.trees[i];
    for (int t = 0; t < data.ntax(); ++t) {
      if (!is_absent(tree, t)) continue;
      error_end(
          text_of("sorry, trees in files must be complete\n"
                  "tree %i in file %s does not include %s (%i)\n",
                  static_cast<int>(i), data.file.c_str(), data.taxa[at(t)].c_str(), t));
    }
    if (tree[0] != data.ntax()) refuse_root();
  }
}

character_change change_to(const character_record& record) {
  return {.additive = record.additive != 0,
          .active = record.active != 0,
          .sankoff = {},
          .weight = record.weight,
          .internal_steps = record.internal_steps};
}

void add_settings(const comparison_task& task, const comparison& found,
                  const combined_numbers& numbers, compared_results& results) {
  int former = -1;  // a character may differ in several settings
  for (const setting_difference& d : found.settings) {
    if (d.character == former) continue;
    former = d.character;
    const int other = found.characters.in_second[at(d.character)];
    results.settings.push_back({numbers.characters_of_first[at(d.character)],
                                change_to(task.first.characters[at(d.character)].settings),
                                change_to(task.second.characters[at(other)].settings)});
  }
}

void add_scales(const comparison& found, const combination& combined, compared_results& results) {
  const combined_numbers& n = combined.numbers;
  for (const scale_match& scale : found.scales) {
    const int c = n.characters_of_first[at(scale.character)];
    const continuous_scale& stored = combined.data.characters[at(c)].scale;
    for (const scale_match::entry& e : scale.differences) {
      results.cells.push_back(
          {n.taxa_of_first[at(e.taxon)], c,
           e.first_is_missing ? missing_continuous : stored_range(e.first, stored),
           e.second_is_missing ? missing_continuous : stored_range(e.second, stored)});
    }
  }
}

}  // namespace

bool have_trees(const comparison_task& task) {
  return !task.first.trees.empty() && !task.second.trees.empty();
}

void check_trees(const comparison_task& task, const comparison& found) {
  if (found.taxa.in_second[0] != 0)
    error_end("Cannot compare matrices: first taxon must be the same in both matrices");
  check_trees_of(task.first);
  check_trees_of(task.second);
}

std::vector<std::uint8_t> taxa_in_file(const std::string& file, const data_set& combined) {
  std::vector<std::uint8_t> flags(combined.taxa.size(), 0);
  if (file.empty()) return flags;
  input_file input;
  if (!input.open(file)) error_end(text_of("Can't open file %s", file.c_str()) + input.cause());
  std::istringstream text(input.rest());
  for (std::string name; text >> name && name != ";";) {
    const auto taxon = std::ranges::find(combined.taxa, name);
    if (taxon == combined.taxa.end()) error_end("No taxon named", name, "(in", file + ")");
    flags[static_cast<std::size_t>(taxon - combined.taxa.begin())] = 1;
  }
  return flags;
}

compared_results results_to_compare(const comparison_task& task, const comparison& found,
                                    const combination& combined,
                                    std::vector<std::uint8_t> left_out) {
  const combined_numbers& n = combined.numbers;
  compared_results results;
  results.names = {task.first.word, task.second.word};
  results.trees[0].resize(task.first.trees.size());
  results.trees[1].resize(task.second.trees.size());
  std::iota(results.trees[0].begin(), results.trees[0].end(), 0);
  std::iota(results.trees[1].begin(), results.trees[1].end(),
            static_cast<int>(results.trees[0].size()));
  results.left_out = std::move(left_out);
  results.shared.assign(at(n.nchar), 0);
  for (std::size_t c = 0; c < found.characters.in_second.size(); ++c) {
    if (found.characters.in_second[c] >= 0) results.shared[at(n.characters_of_first[c])] = 1;
  }
  for (const cell_difference& d : found.cells) {
    results.cells.push_back(
        {n.taxa_of_first[at(d.taxon)], n.characters_of_first[at(d.character)], d.first, d.second});
  }
  add_scales(found, combined, results);
  const auto by_character = [](const auto& a, const auto& b) { return a.character < b.character; };
  std::ranges::stable_sort(results.cells, by_character);
  add_settings(task, found, n, results);
  std::ranges::stable_sort(results.settings, by_character);
  return results;
}

}  // namespace zeb
