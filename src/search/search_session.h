// The frame of every search command.
#pragma once

#include "base/arena.h"
#include "base/time_limit.h"
#include "search/search_state.h"
#include "trees/tree_store.h"

namespace zeb {

/// Packs the data, turns the trees of the buffer into the internal numbering, scores and hashes
/// them; with the end, on whatever path, the buffer holds trees in matrix numbering again and the
/// settings that searches change for their run have their old values.
class search_session {
 public:
  /// Errors: what packing refuses; a tree of the buffer that lacks active taxa. Polytomies of the
  /// buffer's trees are resolved.
  search_session();
  ~search_session();
  search_session(const search_session&) = delete;
  search_session& operator=(const search_session&) = delete;

 private:
  timeout_scope time_limit_;
  void take_trees_in();
  void leave();

  struct saved_settings {
    double suboptimal = search_settings.suboptimal;
    double relative_suboptimal = search_settings.relative_suboptimal;
    int random_seed = 1;
  } saved_;
  int taken_in_ = 0;  // trees of the buffer that are in internal numbering, until all are
  bool all_taken_in_ = false;
};

/// A tree of a running search as the buffer has it outside searches: matrix numbering, no marks of
/// collapsed branches.
void matrix_form(int number, tree_span tree);

}  // namespace zeb
