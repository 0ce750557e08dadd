// The frame of every search command.
#pragma once

#include <vector>

#include "base/interrupts.h"
#include "base/time_limit.h"
#include "engine/passes/conversions.h"
#include "search/search_context.h"
#include "trees/tree_store.h"

namespace zeb {

enum class silence : bool { off, on };

/// A context over the user's data, by the user's settings. Its generator is the process's as it
/// stands, which goes on where the search leaves it. The trees in the slots are turned into the
/// internal numbering, scored and hashed; with the end, on whatever path, the slots hold trees in
/// matrix numbering again, and what outlives a search is in `last_search`.
class search_session {
 public:
  /// `slots` are the tree buffer or as wide as that. A silent search says nothing of its own.
  /// Errors: what packing refuses; a tree that lacks active taxa. Polytomies are resolved.
  explicit search_session(tree_slots& slots = store, silence silent = silence::off);
  ~search_session();
  search_session(const search_session&) = delete;
  search_session& operator=(const search_session&) = delete;

  search_context& context() { return scope_.context(); }

 private:
  struct former_tree {
    int number;
    std::vector<tree_node> tree;
  };
  void keep_former(int number);
  void take_trees_in();
  void leave();

  timeout_scope time_limit_;
  context_scope scope_;
  search_running running_;
  conversion_room room_;             // taken in time, since the end can't fail
  std::vector<former_tree> former_;  // that come back where the beginning fails
  int taken_in_ = 0;                 // trees that are in internal numbering, until all are
  bool all_taken_in_ = false;
};

/// The search over the trees in memory that runs, for who wants to tell how far it is; null: none.
const search_context* running_search();

/// A tree of a running search in matrix numbering, without marks of collapsed branches.
void matrix_form(const search_context& context, int number, tree_span tree);

}  // namespace zeb
