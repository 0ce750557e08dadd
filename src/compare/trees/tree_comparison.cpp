#include "compare/trees/tree_comparison.h"

#include <algorithm>
#include <limits>
#include <memory>

#include "base/indices.h"
#include "base/message_text.h"
#include "compare/trees/bremer_differences.h"
#include "compare/trees/critical_cells.h"
#include "compare/trees/exclusive_groups.h"
#include "compare/trees/values_of_file.h"
#include "console/output.h"
#include "engine/fit/fit_rules.h"
#include "engine/plain/tree_scores.h"
#include "mapping/apo_figure.h"
#include "matrix/matrix.h"
#include "matrix/reading/matrix_writer.h"
#include "matrix/settings/taxon_settings.h"
#include "search/drivers/hybrid_completion.h"
#include "trees/tree_store.h"

namespace zeb {
namespace {

constexpr int fewest_taxa = 4;

/// Trees get the taxa that they lack where these cost least by the characters that both files have.
void add_missing_taxa(const compared_results& results) {
  const weights_scope weights;
  const activity_scope taxa(std::vector<std::uint8_t>(at(matrix.ntax), 1));  // trees have all
  std::vector<std::uint8_t> active(at(matrix.nchar));
  for (int c = 0; c < matrix.nchar; ++c)
    active[at(c)] = matrix.characters[at(c)].active && results.shared[at(c)];
  weights.set_activity(active);
  for (const std::vector<int>& trees : results.trees)
    for (const int t : trees) {
      if (!lacks_taxa(stored_tree(t))) continue;
      check_completion(stored_tree(t), t);
      const completed_tree completed = complete_tree(stored_tree(t));
      if (completed.tree.empty()) return;
      std::ranges::copy(completed.tree, stored_tree(t).begin());
    }
}

class tree_comparison {
 public:
  tree_comparison(const compared_results& results, const tree_comparison_settings& how,
                  std::span<const std::uint8_t> cut_off)
      : results_(results),
        how_(how),
        sets_{std::make_unique<compared_tree_set>(results.trees[0], cut_off),
              std::make_unique<compared_tree_set>(results.trees[1], cut_off)},
        exclusive_{groups_only_in(*sets_[0], *sets_[1]), groups_only_in(*sets_[1], *sets_[0])} {}

  tree_comparison_result run() {
    warn_of_longer_trees();
    tell_groups();
    for (std::size_t file = 0; file < 2; ++file)
      if (how_.figures) draw_synapomorphies(file);
    if (how_.list_characters) list_favouring_characters();
    if (how_.bremer) compare_supports();
    if (how_.critical != critical_method::none) tell_critical_cells();
    tell_similarity();
    return std::move(result_);
  }

 private:
  /// The least score of the trees of a file, with the matrix as it is.
  double best_score(std::size_t file) const {
    const std::vector<std::uint8_t> scored = comparable_characters();
    plain_optimiser optimiser(scored);
    double best = std::numeric_limits<double>::max();
    for (const auto& record : sets_[file]->records) {
      optimiser.optimise(record, polytomy_kind::hard);
      best = std::min(best, tree_score(optimiser, current_fit_rules(), scored));
    }
    return best;
  }

  /// Scored characters but for landmarks.
  static std::vector<std::uint8_t> comparable_characters() {
    std::vector<std::uint8_t> characters = scored_characters();
    for (int c = 0; c < matrix.nchar; ++c)
      if (is_landmark(c)) characters[at(c)] = 0;
    return characters;
  }

  void warn_of_longer_trees() const {
    for (int file = 0; file < 2; ++file) {
      const values_of_file values(file, results_.cells, results_.settings);
      const double own = best_score(at(file));
      const double others = best_score(at(1 - file));
      if (own <= others + 1e-6) continue;
      warning(
          "Under given weights, the trees provided for one of the matrices are\nlonger than the "
          "trees for the other.",
          text_of("(with the scores of %s: %s %.3f, %s %.3f)", results_.names[at(file)].c_str(),
                  results_.names[at(file)].c_str(), own, results_.names[at(1 - file)].c_str(),
                  others));
      return;
    }
  }

  void tell_groups() const {
    emit("\n");
    for (std::size_t file = 0; file < 2; ++file)
      emit(text_of("    %i groups are exclusive of trees in %s (%i contradicted by trees in %s)\n",
                   static_cast<int>(exclusive_[file].nodes.size()), results_.names[file].c_str(),
                   exclusive_[file].contradicted, results_.names[1 - file].c_str()));
  }

  void draw_synapomorphies(std::size_t file) {
    if (exclusive_[file].nodes.empty()) return;
    const std::string& name = results_.names[file];
    const std::string file_name = name + "-not-" + results_.names[1 - file] + ".svg";
    std::vector<int> characters;
    const std::vector<std::uint8_t> scored = comparable_characters();
    for (int c = 0; c < matrix.nchar; ++c)
      if (scored[at(c)]) characters.push_back(c);
    const values_of_file values(static_cast<int>(file), results_.cells, results_.settings);
    figure_request request;
    request.options = apo_figure_defaults();
    draw_apo_figure(request, file_name, sets_[file]->common.tree,
                    synapomorphies_of(*sets_[file], exclusive_[file].nodes, characters),
                    "Synapomorphies of groups exclusive of trees in " + name);
    result_.figures.push_back(
        text_of("    %s-not-%s.svg (synapomorphies for groups exclusive of trees in %s)\n",
                name.c_str(), results_.names[1 - file].c_str(), name.c_str()));
  }

  /// Fewest and most steps on the trees of a file.
  struct span_of_steps {
    std::int64_t least = std::numeric_limits<std::int64_t>::max();
    std::int64_t most = 0;
  };
  std::vector<span_of_steps> steps_on(std::size_t file,
                                      std::span<const std::uint8_t> characters) const {
    std::vector<span_of_steps> all(at(matrix.nchar));
    plain_optimiser optimiser(characters);
    for (const auto& record : sets_[file]->records) {
      optimiser.optimise(record, polytomy_kind::hard);
      for (int c = 0; c < matrix.nchar; ++c) {
        if (!characters[at(c)]) continue;
        all[at(c)].least = std::min(all[at(c)].least, optimiser.steps(c));
        all[at(c)].most = std::max(all[at(c)].most, optimiser.steps(c));
      }
    }
    return all;
  }

  /// A character favours trees all of which give it fewer steps than all of the others do.
  void list_favouring_characters() const {
    const std::vector<std::uint8_t> characters = comparable_characters();
    const std::array<std::vector<span_of_steps>, 2> steps = {steps_on(0, characters),
                                                             steps_on(1, characters)};
    for (std::size_t file = 0; file < 2; ++file) {
      emit("\nCharacters favoring tree(s) in ", results_.names[file], "\n\n");
      emit("  Step Diff  Character\n");
      bool any = false;
      for (int c = 0; c < matrix.nchar; ++c) {
        if (!characters[at(c)]) continue;
        const std::int64_t less = steps[1 - file][at(c)].least - steps[file][at(c)].most;
        if (less <= 0) continue;
        any = true;
        const bool continuous = matrix.characters[at(c)].is_continuous != 0;
        const std::string difference =
            continuous ? text_of("%.3f", static_cast<double>(less) / 1000) : std::to_string(less);
        emit(text_of("  %9s  ", difference.c_str()), character_heading(c), "\n");
      }
      if (!any) emit("       none\n");
    }
  }

  void compare_supports() {
    const bremer_differences found = find_bremer_differences(results_, how_.least_bremer);
    if (how_.bremer_table)
      print_bremer_table(found);
    else
      list_bremer_differences(found);
    if (!how_.figures || found.tree < 0) return;
    draw_bremer_differences(found, "bremer_differences.svg", results_.names[1]);
    result_.figures.emplace_back("    bremer_differences.svg\n");
  }

  void tell_critical_cells() {
    const critical_cells found =
        find_critical_cells(results_, {sets_[0].get(), sets_[1].get()}, exclusive_, how_.critical);
    result_.critical_cells = static_cast<int>(found.cells.size());
    emit("\n",
         text_of("        %i differences critical for tree differences\n", result_.critical_cells));
    if (how_.critical != critical_method::synapomorphies)
      emit("        (evaluated by trying ",
           text_of("%li combinations of 1-%i cells)\n", found.combinations, found.most_cells));
    for (const differing_cell& one : found.cells)
      emit("          ", character_heading(one.character), ", ", taxon_name(one.taxon), ": ",
           written_cell(one.character, one.first), " in ", results_.names[0], ", ",
           written_cell(one.character, one.second), " in ", results_.names[1], "\n");
  }

  /// CSI: groups that both consensus trees have, of all groups in either. CSSI: the same with each
  /// group counting as many times as it has synapomorphies.
  void tell_similarity() const {
    std::array<double, 2> evidence_shared{}, evidence{};
    const std::vector<std::uint8_t> scored = comparable_characters();
    std::vector<int> characters;
    for (int c = 0; c < matrix.nchar; ++c)
      if (scored[at(c)]) characters.push_back(c);
    for (std::size_t file = 0; file < 2; ++file) {
      std::vector<int> all;
      for (int v = matrix.ntax + 1; v < node_limit(sets_[file]->common.tree, matrix.ntax); ++v)
        all.push_back(v);
      for (const apomorphy& change : synapomorphies_of(*sets_[file], all, characters)) {
        ++evidence[file];
        evidence_shared[file] += !std::ranges::binary_search(exclusive_[file].nodes, change.node);
      }
    }
    const double shared = exclusive_[0].shared;
    const double groups =
        shared + static_cast<double>(exclusive_[0].nodes.size() + exclusive_[1].nodes.size());
    const double all_evidence = evidence[0] + evidence[1];
    emit("\nStats. (", results_.names[0], " and ", results_.names[1], ": ");
    emit(text_of("CSI=%.3f, ", groups > 0 ? shared / groups : 1.0));
    emit(text_of("CSSI=%.3f)\n", all_evidence > 0
                                     ? (evidence_shared[0] + evidence_shared[1]) / all_evidence
                                     : 1.0));
  }

  const compared_results& results_;
  const tree_comparison_settings& how_;
  std::array<std::unique_ptr<compared_tree_set>, 2> sets_;
  std::array<exclusive_groups, 2> exclusive_;
  tree_comparison_result result_;
};

}  // namespace

tree_comparison_result compare_trees_of_files(const compared_results& results,
                                              const tree_comparison_settings& how) {
  std::vector<int> all = results.trees[0];
  all.insert(all.end(), results.trees[1].begin(), results.trees[1].end());
  std::vector<std::uint8_t> cut_off = taxa_not_compared(all, results.left_out);
  if (how.addition != missing_taxa::stay_away) add_missing_taxa(results);
  if (how.addition == missing_taxa::added_for_consensus)
    cut_off = taxa_not_compared(all, results.left_out);
  if (std::ranges::count(cut_off, 0) < fewest_taxa) {
    warning("Trees of the files share fewer than", fewest_taxa, "taxa and can't be compared");
    return {};
  }
  const taxon_names_scope names_in_figures;
  return tree_comparison(results, how, cut_off).run();
}

}  // namespace zeb
