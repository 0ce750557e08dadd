// shpcomp: how balanced trees are, beside trees of random models, and which have the same shape.
#include <algorithm>
#include <cctype>
#include <cmath>
#include <map>
#include <string>
#include <vector>

#include "base/errors.h"
#include "base/indices.h"
#include "base/interrupts.h"
#include "base/message_text.h"
#include "console/output.h"
#include "language/interpreter.h"
#include "language/lexer.h"
#include "language/list_text.h"
#include "language/lists.h"
#include "language/options.h"
#include "matrix/matrix.h"
#include "shapes/commands.h"
#include "shapes/random_shapes.h"
#include "shapes/shape_indices.h"
#include "trees/drawing/tables.h"
#include "trees/tree_store.h"

namespace zeb {
namespace {

struct shpcomp_settings {
  int index = -1;  // only this one, as a list by tree
  int models = 0;  // random trees of each model; 0: none
  bool classes = false;
};

constexpr option_range any_sample = {10, 1'000'000};
constexpr command_options rows = {
    choice<&shpcomp_settings::classes>("=", 1).help("list the trees of each shape"),
    number<&shpcomp_settings::models>("models", any_sample,
                                      "Number of random trees must be 10 - 1000000")
        .help("beside N random trees of each of two models"),
    choice<&shpcomp_settings::index>("colless", 0)
        .help("this index as a list by tree: the sum over the nodes of the difference in terminals "
              "of "
              "their two sides; of binary trees"),
    choice<&shpcomp_settings::index>("sackin", 1).help("the sum of the depths of the terminals"),
    choice<&shpcomp_settings::index>("cophenetic", 2)
        .help("the sum over the pairs of terminals of the depth of their last common node, that "
              "of the root being 0"),
    choice<&shpcomp_settings::index>("height", 3)
        .help("B1, the sum over the internal nodes but the root of 1 by the nodes to their "
              "furthest terminal"),
    choice<&shpcomp_settings::index>("cherries", 4)
        .help("nodes with two terminals and nothing else"),
    choice<&shpcomp_settings::index>("depth", 5).help("the depth of the deepest terminal"),
    choice<&shpcomp_settings::index>("variance", 6).help("of the depths of the terminals"),
};

/// A tree of the list, without the taxa left out.
struct shaped_tree {
  int number = 0;
  std::vector<tree_node> tree;
  int terminals = 0;
  shape_values values;
};

std::vector<shaped_tree> read_trees() {
  std::vector<std::uint8_t> chosen(at(store.ntrees), 0);
  constexpr unsigned flags = list_slash_ends | list_in_tree_buffer;
  if (!read_list(flags, 0, store.ntrees, "tree", chosen))
    std::ranges::fill(chosen, std::uint8_t{1});
  std::vector<std::uint8_t> left_out(at(matrix.ntax), 0);
  if (accept_char('/')) read_list(list_plain, 0, matrix.ntax, "taxon", left_out);
  check_end();
  std::vector<shaped_tree> out;
  for (int t = 0; t < store.ntrees; ++t) {
    if (!chosen[at(t)]) continue;
    check_interrupt();
    const const_tree_span stored = stored_tree(t);
    shaped_tree one{t, {stored.begin(), stored.end()}, 0, {}};
    int left = 0;
    for (int k = 0; k < matrix.ntax; ++k) left += !is_absent(stored, k) && !left_out[at(k)];
    if (left < 2) error_end("Trees must have two terminals or more");
    delete_taxa(one.tree, matrix.ntax, left_out);
    one.terminals = left;
    one.values = indices_of(one.tree, matrix.ntax);
    out.push_back(std::move(one));
  }
  return out;
}

bool is_whole(std::size_t index) {
  return index != static_cast<std::size_t>(shape_index::b1) &&
         index != static_cast<std::size_t>(shape_index::variance);
}

std::string index_text(std::size_t index, std::optional<double> value) {
  if (!value) return {};
  return is_whole(index) ? text_of("%.0f", *value) : fraction_text(*value);
}

void show_table(const std::vector<shaped_tree>& trees) {
  std::vector<std::string> labels;
  std::vector<std::string> columns = {"Taxa"};
  columns.insert(columns.end(), shape_index_names.begin(), shape_index_names.end());
  matrix_table table;
  for (const shaped_tree& one : trees) {
    labels.push_back("Tree " + std::to_string(one.number));
    table.cells.push_back(std::to_string(one.terminals));
    for (std::size_t k = 0; k < shape_index_count; ++k)
      table.cells.push_back(index_text(k, one.values[k]));
  }
  table.title = "Indices of tree shape";
  table.row_labels = labels;
  table.column_labels = columns;
  print_table(table);
}

void show_list(const std::vector<shaped_tree>& trees, std::size_t index) {
  std::vector<double> values(at(store.ntrees), no_fraction);
  for (const shaped_tree& one : trees)
    if (one.values[index]) values[at(one.number)] = *one.values[index];
  const std::string title = std::string(shape_index_names[index]) + " by tree";
  print_table(title, values, is_whole(index) ? 0 : table_decimals());
}

/// By number of terminals, so that trees of as many share a sample.
class model_samples {
 public:
  explicit model_samples(int size) : size_(size) { seed_generator(generator_); }
  const shape_sample& of(shape_model model, int terminals) {
    const auto key = std::make_pair(model, terminals);
    const auto found = samples_.find(key);
    if (found != samples_.end()) return found->second;
    return samples_.emplace(key, sample_shapes(model, terminals, size_, generator_)).first->second;
  }

 private:
  int size_;
  random_generator generator_;
  std::map<std::pair<shape_model, int>, shape_sample> samples_;
};

void show_beside_models(const std::vector<shaped_tree>& trees, int size) {
  model_samples samples(size);
  emit(
      text_of("Shapes beside %i random trees of Yule's model and %i of equal chances: means and\n"
              "standard deviations of these, and shares of them that are as low, as high\n",
              size, size));
  emit("(by simulation: exact to about ", text_of("%.1g", 1 / std::sqrt(size)),
       "; trees with polytomies have no place)\n");
  for (const shaped_tree& one : trees) {
    emit(text_of("Tree %i, %i terminals\n", one.number, one.terminals));
    if (!one.values[0]) {
      emit("  has polytomies\n");
      continue;
    }
    emit("                     |    Yule   s.d.   low  high |   Equal   s.d.   low  high\n");
    for (std::size_t k = 0; k < shape_index_count; ++k) {
      std::string line = text_of("%-11s %8s", std::string(shape_index_names[k]).c_str(),
                                 text_of(is_whole(k) ? "%.0f" : "%.3f", *one.values[k]).c_str());
      for (const shape_model model : {shape_model::yule, shape_model::proportional}) {
        const shape_sample& sample = samples.of(model, one.terminals);
        line +=
            text_of(" |%8.2f %6.2f %5.3f %5.3f", sample.mean(k), sample.deviation(k),
                    sample.share_below(k, *one.values[k]), sample.share_above(k, *one.values[k]));
      }
      emit(line, "\n");
    }
  }
}

void show_classes(const std::vector<shaped_tree>& trees) {
  shape_classes classes;
  std::vector<std::vector<const shaped_tree*>> members;
  for (const shaped_tree& one : trees) {
    const std::size_t number = at(classes.class_of(one.tree, matrix.ntax));
    if (number == members.size()) members.emplace_back();
    members[number].push_back(&one);
  }
  emit(counted(static_cast<long long>(members.size()), "shape", "shapes"), " among ",
       counted(static_cast<long long>(trees.size()), "tree", "trees"), "\n");
  std::ranges::stable_sort(members, std::ranges::greater(), [](const auto& m) { return m.size(); });
  for (const std::vector<const shaped_tree*>& own : members) {
    std::vector<std::uint8_t> is_in(at(store.ntrees), 0);
    for (const shaped_tree* one : own) is_in[at(one->number)] = 1;
    const std::string head = counted(static_cast<long long>(own.size()), "tree:", "trees:");
    emit(head,
         wrapped_words(list_items(store.ntrees, [&](int t) { return is_in[at(t)] != 0; }),
                       head.size()),
         "\n   ", shape_text(own.front()->tree, matrix.ntax), "\n");
  }
}

}  // namespace

constexpr option_table shpcomp_options =
    rows.table("shpcomp", {.unknown = "Unrecognized option for \"shpcomp\": %s"});

void shpcomp_command() {
  require_data("comparing tree shapes");
  require_trees();
  shpcomp_settings how;
  for (int c = skip_blanks_peek(); std::isalpha(c) || c == '='; c = skip_blanks_peek())
    if (!read_sign(how, shpcomp_options)) read_option(how, shpcomp_options);
  const std::vector<shaped_tree> trees = read_trees();
  if (how.classes) show_classes(trees);
  if (how.models > 0) show_beside_models(trees, how.models);
  if (how.index >= 0) show_list(trees, at(how.index));
  if (!how.classes && how.models == 0 && how.index < 0) show_table(trees);
}

}  // namespace zeb
