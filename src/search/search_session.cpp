#include "search/search_session.h"

#include <algorithm>

#include <vector>

#include "base/errors.h"
#include "base/random.h"
#include "console/output.h"
#include "engine/packing/packed_matrix.h"
#include "engine/passes/conversions.h"
#include "search/moves/swapper.h"
#include "search/search_report.h"
#include "search/store/stored_trees.h"
#include "search/store/tree_identity.h"
#include "trees/notation/tree_file.h"
#include "trees/tree_store.h"

namespace zeb {

search_state searching;

namespace {

void prepare_packed_data() {
  packed_matrix(false);
  ALWAYS_CHECK(current_search_data != nullptr, "no packed data");
}

}  // namespace

void matrix_form(int number, tree_span tree) {
  const search_data& data = *current_search_data;
  const std::span<std::int32_t> slot = slot_tree(number);
  std::vector<std::int32_t> plain(static_cast<std::size_t>(data.nodes));
  for (std::size_t v = 0; v < plain.size(); ++v) plain[v] = plain_ancestor(slot[v]);
  to_buffer(data, plain, tree);
}

search_session::search_session() {
  prepare_packed_data();
  if (swapping.use_inters > 0 &&
      (current_search_data->has_wide_fields || current_search_data->has_continuous)) {
    error_end("Sorry, \"bbreak:inters\" is invalid for Sankoff/continuous characters");
  }
  saved_.random_seed = randomness.random_seed;
  const auto nodes = static_cast<std::size_t>(current_search_data->nodes);
  searching.anx = calloc_low<std::int32_t>(nodes);
  searching.identity_scratch = calloc_low<std::int32_t>(2 * nodes);
  searching.tree_records = alloc_low<tree_record>(static_cast<std::size_t>(store.maxtrees));
  for (tree_record& record : searching.tree_records) record = {};
  for (tree_record& head : searching.hash_buckets) head = {};
  searching.search_limit = store.maxtrees;
  searching.swapping_index = -1;
  searching.best_score = no_score;
  searching.pending_score = no_score;
  searching.score_limit = no_bound;
  searching.replication = -1;
  searching.current_tree = 0;
  searching.wagner_percent = -1;
  searching.rearrangement_count = {};
  searching.moves_done = 0;
  searching.slots = {};
  for (const slot_binder bind : searching.slot_binders) bind(*current_search_data, searching.slots);
  process.in_search = true;
  try {
    take_trees_in();
  } catch (...) {
    leave();
    throw;
  }
}

search_session::~search_session() { leave(); }

void search_session::take_trees_in() {
  const search_data& data = *current_search_data;
  const int count = store.ntrees;
  for (; taken_in_ < count; ++taken_in_) {
    const bool complete = to_internal(data, stored_tree(taken_in_), searching.anx, true);
    if (!complete) {
      error_end("Tree", taken_in_, "lacks some active taxa: searches need trees with all of them");
    }
    std::copy(searching.anx.begin(), searching.anx.end(), slot_tree(taken_in_).begin());
  }
  all_taken_in_ = true;
  auto_save.search_view = matrix_form;
  for (int t = 0; t < count; ++t) adopt_tree(t);
}

void search_session::leave() {
  auto_save.search_view = nullptr;
  process.in_search = false;
  searching.slots = {};
  search_settings.suboptimal = saved_.suboptimal;
  search_settings.relative_suboptimal = saved_.relative_suboptimal;
  randomness.random_seed = saved_.random_seed;
  clear_progress();
  if (!current_search_data) return;
  const int count = all_taken_in_ ? store.ntrees : taken_in_;
  for (int t = 0; t < count; ++t) matrix_form(t, stored_tree(t));
  searching.anx = {};
  searching.tree_records = {};
  searching.identity_scratch = {};
  searching.search_limit = store.maxtrees;
  searching.swapping_index = -1;
}

}  // namespace zeb
