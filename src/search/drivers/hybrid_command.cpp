// `hybrid`: trees in memory are hybridised, two trees are crossed, trees that lack taxa completed.
#include <algorithm>
#include <cctype>
#include <string>
#include <utility>
#include <vector>

#include "base/errors.h"
#include "base/indices.h"
#include "base/interrupts.h"
#include "base/message_text.h"
#include "base/time_limit.h"
#include "console/output.h"
#include "engine/packing/packed_matrix.h"
#include "engine/passes/passes.h"
#include "engine/plain/tree_scores.h"
#include "language/interpreter.h"
#include "language/lexer.h"
#include "language/options.h"
#include "search/breaking_trees.h"
#include "search/commands.h"
#include "search/distinct_trees.h"
#include "search/drivers/cycle_options.h"
#include "search/drivers/fusing.h"
#include "search/drivers/hybrid_completion.h"
#include "search/drivers/pool_commands.h"
#include "search/moves/swapper.h"
#include "search/search_report.h"
#include "search/search_results.h"
#include "search/search_session.h"
#include "search/store/filter.h"
#include "search/store/stored_trees.h"
#include "search/store/tree_identity.h"
#include "trees/tree_groups.h"
#include "trees/tree_lists.h"

namespace zeb {
namespace {

constexpr command_options rows = {
    form<read_hybrid_numbers>("hybridize")
        .argument(hybrid_numbers_argument)
        .help("N pairs of trees (1000) in each of R rounds (1), from which the best S trees (50) "
              "go to the next; with S 0 as many as at the start"),
    autostop_option(),
    replace_option(),
    clog_option(),
};

void list_settings() {
  std::vector<std::string> lines;
  add_lines_of_hybrids(fusing.hybrid, lines);
  list_lines("Hybridization settings:", lines);
}

void hybridize_pool(std::vector<int> pool) {
  if (pool.size() < 2) error_end("You must specify TWO trees for hybridization");
  check_room_for_hybrids(fusing.hybrid, pool);
  {
    search_session session;
    search_context& context = session.context();
    handicap_breaking_trees(context);
    begin_reports(context);
    const hybrid_result result =
        hybridize_trees(context, fusing.hybrid, {.slots = std::move(pool)});
    close_pool_search(context, "hybrid",
                      text_of("%i rounds of hybridization completed.", result.rounds),
                      hybrid_options);
  }
  condense_if_automatic();
  tell_distinct_trees();
}

/// Swaps a hybrid and puts it after the trees in memory, unless it is one of them or breaks
/// constraints. Returns its score.
double keep_hybrid(search_context& context, std::span<std::int32_t> hybrid) {
  const double score = tbr_swap(context, hybrid, {});
  const auto& constraints = context.constraints_in_force;
  if (!constraints || constraints->obeyed(context.data))
    store_tree(context, hybrid, context.trees.ntrees, score);
  return score;
}

void cross_two(const std::vector<int>& two) {
  constexpr int hybrids = 2;
  if (store.ntrees + hybrids > store.maxtrees) {
    error_end(
        text_of("Can't run hybridization on %i trees with max.trees=%i.\n"
                "Increase max. trees and retry...",
                store.ntrees, store.maxtrees));
  }
  search_session session;
  search_context& context = session.context();
  seed_generator(context.random);
  context.shown.stage = stage_hybrid;
  begin_reports(context);
  std::vector<std::vector<std::int32_t>> trees;
  for (const int t : two) {
    const auto stored = slot_tree(context, t);
    trees.emplace_back(stored.begin(), stored.end());
    forget_collapsed(trees.back());
  }
  const int before = context.trees.ntrees;
  crossing made;
  if (cross_trees(context, trees[0], trees[1], 5 * context.data.n, &made)) {
    const shared_piece& piece = made.piece;
    emit(text_of("Exchanged piece of %i shared taxa (%i-%i unshared), trees %i-%i\n", piece.shared,
                 piece.unshared_target, piece.unshared_source, two[0], two[1]));
    for (std::vector<std::int32_t>& hybrid : made.hybrids) {
      if (interrupted()) break;
      const double score = keep_hybrid(context, hybrid);
      emit("Completed tree (score ", score_text(context.data, score), ")\n");
    }
  } else {
    emit(text_of("Trees %i and %i have no piece to exchange\n", two[0], two[1]));
  }
  disarm_time_limit();
  group_automatically(before, context.trees.ntrees, "hybrid");
  if (interrupted()) emit("Search was interrupted...\n");
  const double best = best_stored(context, 0);
  emit(text_of("%i trees retained, best score %s.\n", context.trees.ntrees,
               score_text(context.data, best).c_str()));
  keep_best_score(best);
}

void complete_trees(const std::vector<int>& numbers) {
  for (const int t : numbers) check_completion(stored_tree(t), t);
  std::vector<double> scores(at(store.ntrees));
  score_stored_trees(scores);
  std::vector<std::pair<int, completed_tree>> done;
  reseed();
  for (const int t : numbers) {
    if (!lacks_taxa(stored_tree(t))) {
      emit(text_of("Tree %i already complete (score %s)\n", t,
                   score_text(packed_matrix(false), scores[at(t)]).c_str()));
      continue;
    }
    emit(text_of("Completing tree %i\n", t));
    completed_tree made = complete_tree(stored_tree(t));
    if (made.tree.empty()) {
      emit("Search was interrupted...\n");
      break;
    }
    emit("Completed tree (score ", score_text(packed_matrix(false), made.score), ")\n");
    done.emplace_back(t, std::move(made));
  }
  for (const auto& [t, made] : done) std::ranges::copy(made.tree, stored_tree(t).begin());
}

void require_trees_to_hybridize() {
  require_data("hybridizing trees");
  if (store.ntrees == 0) error_end("No trees to hybridize");
}

std::vector<int> read_numbers() {
  const std::vector<std::uint8_t> chosen = read_tree_list();
  std::vector<int> numbers;
  for (int t = 0; t < store.ntrees; ++t)
    if (chosen[at(t)]) numbers.push_back(t);
  check_end();
  return numbers;
}

void read_two_and_cross() {
  require_trees_to_hybridize();
  const std::vector<int> numbers = read_numbers();
  if (numbers.size() < 2) error_end("You must specify TWO trees for hybridization");
  if (numbers.size() > 2) error_end("You can specify only TWO trees");
  expect_end();
  cross_two(numbers);
}

void read_list_and_complete() {
  read_word();
  if (!is_prefix(token(), "complete"))
    error_end_f(hybrid_options.errors.unknown, std::string(token()).c_str());
  require_trees_to_hybridize();
  const std::vector<int> numbers = read_numbers();
  expect_end();
  complete_trees(numbers);
}

}  // namespace

constexpr option_table hybrid_options =
    rows.table("hybrid", {.unknown = "Unidentified string in hybrid options: %s",
                          .wrong_sign = "Wrong argument for hybrid: %c"})
        .with_changes([] {
          const hybrid_settings standard;
          const hybrid_settings& now = fusing.hybrid;
          std::string text = changed_options(now, hybrid_options);
          if (hybrid_numbers(now) != hybrid_numbers(standard))
            text += (text.empty() ? "hybridize " : " hybridize ") + hybrid_numbers(now);
          return text;
        });

void hybrid_command() {
  const int next = skip_blanks_peek();
  if (std::isalpha(next) != 0) return read_list_and_complete();
  if (names_trees(next)) return read_two_and_cross();
  const option_outcome outcome = read_search_options(fusing.hybrid, hybrid_options);
  if (outcome == option_outcome::list) list_settings();
  if (outcome != option_outcome::run) return;
  require_trees_to_hybridize();
  std::vector<int> all(at(store.ntrees));
  for (int t = 0; t < store.ntrees; ++t) all[at(t)] = t;
  hybridize_pool(std::move(all));
}

}  // namespace zeb
