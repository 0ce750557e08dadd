#include "compare/trees/bremer_differences.h"

#include <algorithm>
#include <cmath>

#include "base/arena.h"
#include "base/indices.h"
#include "base/interrupts.h"
#include "base/message_text.h"
#include "compare/trees/values_of_file.h"
#include "console/output.h"
#include "console/progress.h"
#include "engine/plain/tree_scores.h"
#include "mapping/figure_legend.h"
#include "mapping/node_states.h"
#include "matrix/matrix.h"
#include "matrix/settings/taxon_settings.h"
#include "search/search_settings.h"
#include "supports/bremer_swap.h"
#include "trees/drawing/display.h"
#include "trees/drawing/figure_request.h"
#include "trees/drawing/svg_file.h"
#include "trees/drawing/tables.h"
#include "trees/tree_store.h"

namespace zeb {
namespace {

/// Rearrangements within these limits count, unless the user has limits already.
constexpr double usual_suboptimal = 10;
constexpr double usual_relative_suboptimal = 0.9;

class suboptimal_scope {
 public:
  suboptimal_scope() {
    set_suboptimal(
        former_.suboptimal > 0 ? former_.suboptimal : usual_suboptimal,
        former_.relative_suboptimal > 0 ? former_.relative_suboptimal : usual_relative_suboptimal);
  }
  ~suboptimal_scope() { set_suboptimal(former_.suboptimal, former_.relative_suboptimal); }
  suboptimal_scope(const suboptimal_scope&) = delete;
  suboptimal_scope& operator=(const suboptimal_scope&) = delete;

 private:
  search_settings_state former_ = search_settings;
};

int best_tree(std::span<const int> trees) {
  const arena_scope memory;
  std::vector<double> scores(at(store.ntrees));
  score_stored_trees(scores);
  return *std::min_element(trees.begin(), trees.end(),
                           [&](int a, int b) { return scores[at(a)] < scores[at(b)]; });
}

std::vector<std::uint8_t> active_taxa_of(int tree) {
  std::vector<std::uint8_t> active(at(matrix.ntax));
  for (int t = 0; t < matrix.ntax; ++t)
    active[at(t)] = matrix.taxon_active[at(t)] && !is_absent(stored_tree(tree), t);
  return active;
}

bremer_result supports_of(int tree) {
  bremer_request request;
  request.how.source = bremer_settings::by_swapping;
  request.how.combination = bremer_settings::power;
  request.how.collapse_none = true;
  request.trees.assign(at(store.ntrees), 0);
  request.trees[at(tree)] = 1;
  request.excluded.assign(at(matrix.ntax), 0);
  request.n_trees = 1;
  return supports_by_swapping(request);
}

std::string signed_number(double value) {
  return text_of("%+.0f", std::round(value) + 0.0);  // no "-0"
}

/// "12(-7) 15(+20)": characters with their changes, by node.
std::vector<std::string> changes_by_node(const bremer_differences& found, double least) {
  std::vector<std::string> texts(found.groups.size());
  for (const auto& one : found.characters)
    for (std::size_t v = 0; v < texts.size(); ++v) {
      if (std::isnan(one.changes[v]) || std::abs(one.changes[v]) < least) continue;
      texts[v] += (texts[v].empty() ? "" : " ") + std::to_string(one.character) + "(" +
                  signed_number(one.changes[v]) + ")";
    }
  return texts;
}

}  // namespace

bremer_differences find_bremer_differences(const compared_results& results, int least) {
  bremer_differences found;
  if (results.trees[0].empty()) return found;
  const values_of_file first(0, results.cells, results.settings);
  found.tree = best_tree(results.trees[0]);
  const activity_scope taxa(active_taxa_of(found.tree));
  const suboptimal_scope limits;
  const bremer_result usual = supports_of(found.tree);
  found.groups = usual.tree;
  found.usual = usual.values;
  const std::vector<int> characters = differing_characters(results);
  for (std::size_t i = 0; i < characters.size() && !interrupted(); ++i) {
    show_progress("Bremer differences", static_cast<double>(i),
                  static_cast<double>(characters.size()));
    std::vector<differing_settings> settings;
    for (const differing_settings& differing : results.settings)
      if (differing.character == characters[i]) settings.push_back(differing);
    const values_of_file second(1, cells_of(results.cells, characters[i]), settings);
    const bremer_result changed = supports_of(found.tree);
    bremer_differences::of_character one{characters[i], {}};
    double largest = 0;
    for (std::size_t v = 0; v < usual.values.size(); ++v) {
      one.changes.push_back(changed.values[v] - usual.values[v]);
      if (!std::isnan(one.changes.back()))
        largest = std::max(largest, std::abs(one.changes.back()));
    }
    if (largest >= least && !interrupted()) found.characters.push_back(std::move(one));
  }
  clear_progress();
  return found;
}

void print_bremer_table(const bremer_differences& found) {
  std::vector<std::string> rows;
  std::vector<std::string> columns;
  std::vector<std::size_t> nodes;
  for (std::size_t v = 0; v < found.usual.size(); ++v) {
    if (std::isnan(found.usual[v])) continue;
    nodes.push_back(v);
    columns.push_back(text_of("Node %i", static_cast<int>(v)));
  }
  std::vector<std::string> cells;
  for (const auto& one : found.characters) {
    rows.push_back(text_of("Char. %i", one.character));
    for (const std::size_t v : nodes)
      cells.push_back(std::isnan(one.changes[v]) ? "" : signed_number(one.changes[v]));
  }
  emit("\n");
  print_table({"Table with Changes in Combined Bremer Support", rows, columns, std::move(cells)});
}

void list_bremer_differences(const bremer_differences& found) {
  emit("\nChanges in Combined Bremer Support (per cent; groups of tree ", found.tree, ")\n");
  if (found.characters.empty()) emit("  none\n");
  for (const auto& one : found.characters) {
    emit("  ", character_heading(one.character), ":");
    const char* separator = " ";
    const bool all_round_to_none =
        std::ranges::none_of(one.changes, [](double change) { return std::abs(change) >= 0.5; });
    if (all_round_to_none) emit(" none");
    for (std::size_t v = 0; v < found.usual.size(); ++v) {
      if (std::isnan(one.changes[v]) || std::round(one.changes[v]) == 0) continue;
      emit(separator, text_of("node %i %.0f", static_cast<int>(v), found.usual[v]), " (",
           signed_number(one.changes[v]), ")");
      separator = ", ";
    }
    emit("\n");
  }
}

void draw_bremer_differences(const bremer_differences& found, const std::string& file_name,
                             const std::string& other_file) {
  constexpr double least_shown = 0.5;
  constexpr figure_color changed_group = {213, 94, 0};
  std::vector<std::string> texts = changes_by_node(found, least_shown);
  for (std::size_t v = 0; v < texts.size(); ++v) {
    if (std::isnan(found.usual[v])) continue;
    const figure_color color = texts[v].empty() ? ambiguous_color : changed_group;
    texts[v] = color.as_tag() + text_of("/%.0f", found.usual[v]) +
               (texts[v].empty() ? "" : ": " + texts[v]);
  }
  svg_options options;
  options.colors = true;
  options.position = 'a';
  std::vector<std::string> labels(at(matrix.ntax));
  for (int t = 0; t < matrix.ntax; ++t) labels[at(t)] = taxon_label(t);
  const std::string title = "Combined Bremer supports, with what the scores of " + other_file +
                            " change in them, by character";
  open_svg_file(file_name, title);
  draw_svg_tree(found.groups, matrix.ntax, matrix.outgroup, display.second_largest_first, labels,
                texts, options);
  write_legend(title,
               {{legend_entry::sample::line, changed_group,
                 "support (per cent), then the characters that change it, by how much"},
                {legend_entry::sample::line, ambiguous_color, "support that doesn't change"}},
               options);
  end_figure();
}

}  // namespace zeb
