#include "engine/fit/weighting_set_report.h"

#include <cstdint>
#include <string_view>
#include <vector>

#include "base/errors.h"
#include "base/indices.h"
#include "console/output.h"
#include "engine/fit/fit_rules.h"
#include "engine/fit/fits.h"
#include "engine/plain/plain_optimisation.h"
#include "language/lexer.h"
#include "language/lists.h"
#include "language/options.h"
#include "matrix/matrix.h"
#include "trees/drawing/tables.h"
#include "trees/tree_store.h"

namespace zeb {
namespace {

/// Weighted sums over the characters of a set that scores count.
struct set_sums {
  double steps = 0;
  double homoplasy = 0;
};

struct measure {
  std::string_view word;
  const char* title;
  double (*value)(const fit_rules& rules, int set, const set_sums& sums);
  bool needs_trees = true;
  bool is_count = false;
};

// clang-format off
constexpr measure measures[] = {
    {"size", "Sizes of weighting sets",
     [](const fit_rules& rules, int set, const set_sums&) { return rules.sets[at(set)].characters; },
     false, true},
    {"kvalue", "Concavities of weighting sets",
     [](const fit_rules& rules, int set, const set_sums&) {
       return rules.concavity_of(rules.sets[at(set)].function);
     },
     false},
    {"steps", "Sums of steps for weighting sets",
     [](const fit_rules&, int, const set_sums& sums) { return sums.steps; }},
    {"score", "Sums of scores for weighting sets",
     [](const fit_rules& rules, int set, const set_sums& sums) {
       return rules.set_fit(set, sums.homoplasy);
     }},
    {"homoplasy", "Average homoplasy for weighting sets",
     [](const fit_rules& rules, int set, const set_sums& sums) {
       return sums.homoplasy / rules.sets[at(set)].characters;
     }},
    {"cost", "Cost of adding a step to an average character in the set",
     [](const fit_rules& rules, int set, const set_sums& sums) {
       return rules.set_fit(set, sums.homoplasy + 1) - rules.set_fit(set, sums.homoplasy);
     }},
};
// clang-format on

const measure& read_measure() {
  if (read_word() == 0) return measures[0];
  std::vector<std::string_view> words;
  for (const measure& m : measures) words.push_back(m.word);
  const int found = find_keyword(token(), words);
  if (found < 0) error_end("Unrecognized report on weighting sets:", token());
  return measures[found];
}

void show(const measure& what, const fit_rules& rules, const std::vector<set_sums>& sums) {
  std::vector<double> values;
  for (std::size_t s = 0; s < rules.sets.size(); ++s)
    values.push_back(what.value(rules, static_cast<int>(s), sums[s]));
  print_table(what.title, values, what.is_count ? 0 : table_decimals());
}

std::vector<set_sums> sums_on_tree(const plain_optimiser& optimiser, const fit_rules& rules,
                                   const std::vector<std::uint8_t>& characters) {
  std::vector<set_sums> sums(rules.sets.size());
  for (int c = 0; c < matrix.nchar; ++c) {
    const int set = rules.set_of_character(c);
    if (set < 0 || !characters[at(c)]) continue;
    const character_record& record = matrix.characters[at(c)];
    sums[at(set)].steps += record.weight * optimiser.length(c);
    sums[at(set)].homoplasy += record.weight * character_homoplasy(optimiser, c);
  }
  return sums;
}

}  // namespace

void report_weighting_sets() {
  const measure& what = read_measure();
  if (what.needs_trees) require_trees();
  std::vector<std::uint8_t> trees(at(store.ntrees), 0);
  if (!read_list(list_in_tree_buffer | list_one_tree, 0, store.ntrees, "tree", trees))
    trees.assign(at(store.ntrees), 1);
  check_end();
  const fit_rules rules = current_fit_rules();
  if (rules.sets.empty()) return report_line("No weighting sets defined...");
  if (!what.needs_trees) return show(what, rules, std::vector<set_sums>(rules.sets.size()));
  const std::vector<std::uint8_t> characters = scored_characters();
  plain_optimiser optimiser(characters);
  for (int t = 0; t < store.ntrees; ++t) {
    if (!trees[at(t)]) continue;
    optimiser.optimise(stored_tree(t), polytomy_kind::hard);
    emitf("For tree %i", t);
    show(what, rules, sums_on_tree(optimiser, rules, characters));
  }
}

}  // namespace zeb
