// prunnelsen, prunmajor and pruncom: taxa without which a consensus has more groups.
#include <algorithm>
#include <string>
#include <vector>

#include "base/errors.h"
#include "base/indices.h"
#include "base/interrupts.h"
#include "base/message_text.h"
#include "base/time_limit.h"
#include "consensus/commands.h"
#include "consensus/conflict_consensus.h"
#include "consensus/majority_consensus.h"
#include "consensus/pruned_consensus.h"
#include "consensus/strict_consensus.h"
#include "console/output.h"
#include "language/lexer.h"
#include "language/list_text.h"
#include "language/lists.h"
#include "matrix/matrix.h"
#include "trees/tree_store.h"

namespace zeb {
namespace {

constexpr int largest_set = 10;                 // taxa left out at a time
constexpr std::int64_t most_sets = 10'000'000;  // tried by one command
constexpr int fewest_left = 3;                  // taxa: with fewer there is no group to gain

struct prune_request {
  int largest = 1;  // taxa of a set
  tree_selection selection;
  std::vector<int> candidates;
};

int read_set_size() {
  if (!accept_char('=')) return 1;
  const int size = read_int();
  if (size < 1 || size > largest_set) {
    error_end("Number of taxa to prune must be 1 -", largest_set);
  }
  return size;
}

/// The taxa after "/", or all but the outgroup, as far as they are in the trees.
std::vector<int> read_candidates(const tree_selection& selection) {
  std::vector<std::uint8_t> wanted(at(matrix.ntax), 1);
  wanted[at(matrix.outgroup)] = 0;
  if (accept_char('/')) {
    std::fill(wanted.begin(), wanted.end(), std::uint8_t{0});
    if (!read_list(list_plain, 0, matrix.ntax, "taxon", wanted)) error_end("No taxa to prune");
  }
  const std::vector<std::uint8_t> absent = taxa_left_out(selection);
  std::vector<int> candidates;
  for (int t = 0; t < matrix.ntax; ++t) {
    if (wanted[at(t)] && !absent[at(t)]) candidates.push_back(t);
  }
  return candidates;
}

prune_request read_request() {
  prune_request request;
  if (store.ntrees == 0) error_end("No trees specified");
  request.largest = read_set_size();
  std::vector<std::uint8_t> trees(at(store.ntrees), 0);
  constexpr unsigned flags = list_slash_ends | list_in_tree_buffer;
  if (!read_list(flags, 0, store.ntrees, "tree", trees)) {
    std::fill(trees.begin(), trees.end(), std::uint8_t{1});
  }
  if (std::count(trees.begin(), trees.end(), 1) == 0) error_end("No trees specified");
  request.selection = select_stored_trees(trees);
  request.candidates = read_candidates(request.selection);
  check_end();
  const std::vector<std::uint8_t> absent = taxa_left_out(request.selection);
  const auto in_play = static_cast<int>(std::count(absent.begin(), absent.end(), 0));
  request.largest = std::min(request.largest, in_play - fewest_left);
  const auto candidates = static_cast<int>(request.candidates.size());
  if (number_of_sets(candidates, request.largest, most_sets) == most_sets) {
    error_end("Too many sets of", request.largest, "of", candidates,
              "taxa: give fewer taxa after \"/\"");
  }
  return request;
}

void show(const prune_request& request, const std::vector<pruned_set>& found, int groups,
          const char* method) {
  emitf("%s of %i trees: %i groups", method, static_cast<int>(request.selection.trees.size()),
        groups);
  if (found.empty()) return report_line("Pruning of taxa adds no groups");
  emit("Groups added  Taxa pruned\n");
  for (const pruned_set& set : found) {
    std::vector<std::string> labels;
    for (const int t : set.taxa) labels.push_back(taxon_label(t));
    const std::string head = text_of("%12i ", set.gain);
    emit(head, wrapped_words(labels, head.size()), "\n");
  }
}

void prune(consensus_method consensus_of, const char* name) {
  const prune_request request = read_request();
  const search_running running;
  const int groups = groups_of(consensus_of(request.selection), matrix.ntax);
  const std::vector<pruned_set> found =
      sets_worth_pruning(request.selection, consensus_of, request.candidates, request.largest);
  if (interrupts.reason == stop_reason::time) emit(end_of_time_text());
  if (interrupted()) emit("Not all sets of taxa were tried\n");
  show(request, found, groups, name);
}

}  // namespace

void prunnelsen_command() { prune(strict_consensus, "Strict consensus"); }

void prunmajor_command() {
  prune([](const tree_selection& s) { return majority_consensus(s, consensus.majority_cut); },
        "Majority rule tree");
}

void pruncom_command() { prune(component_consensus, "Combinable component consensus"); }

}  // namespace zeb
