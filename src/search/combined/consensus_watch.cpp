#include "search/combined/consensus_watch.h"

#include <algorithm>
#include <utility>

#include "base/indices.h"
#include "base/interrupts.h"
#include "consensus/strict_consensus.h"
#include "engine/collapsing/collapsing.h"
#include "matrix/matrix.h"
#include "search/search_session.h"
#include "search/store/stored_trees.h"

namespace zeb {

consensus_watch::consensus_watch(search_context& context, const combined_settings& options)
    : context_(context), options_(options), hits_to_next_(interval()) {}

int consensus_watch::interval() const {
  if (options_.consense == 0) return 1;
  const auto hits = static_cast<int>(std::int64_t{hits_unchanged()} * options_.confactor / 100);
  const int most = options_.conmax > 0 ? options_.conmax : hits;
  return std::max(options_.conbase, std::min(hits, most));
}

bool consensus_watch::note_hit(double score) {
  if (!is_same_score(score, score_, kind_of_scores(context_.data))) {
    score_ = score;
    tree_.clear();
    seen_ = hits_ = hits_at_change_ = stable_ = 0;
    hits_to_next_ = interval();
  }
  ++hits_;
  if (--hits_to_next_ > 0) return false;
  look();
  hits_to_next_ = interval();
  return true;
}

/// Trees of this score stay where they are, and trees that come are appended.
void consensus_watch::look() {
  constexpr int by_length = 3;
  constexpr int by_swapping = 6;
  const score_kind kind = kind_of_scores(context_.data);
  branch_judge judge(options_.consense > 0 ? by_swapping : by_length);
  const std::vector<tree_node> before = tree_;
  for (; seen_ < context_.trees.ntrees && !interrupted(); ++seen_) {
    if (!is_within_bound(record_of(context_, seen_).score, score_, kind)) continue;
    std::vector<tree_node> next(at(context_.trees.nnodes));
    matrix_form(context_, seen_, next);
    judge.condense(next);
    if (!tree_.empty()) {
      tree_selection both;
      both.ntax = matrix.ntax;
      both.trees = {tree_, next};
      next = strict_consensus(both).tree;
    }
    tree_ = std::move(next);
  }
  if (tree_ == before) {
    ++stable_;
  } else {
    stable_ = 0;
    hits_at_change_ = hits_;
  }
}

int consensus_watch::groups() const {
  return tree_.empty() ? 0 : node_limit(tree_, matrix.ntax) - matrix.ntax - 1;
}

}  // namespace zeb
