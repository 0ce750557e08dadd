#include "trees/notation/rescued_trees.h"

#include <unistd.h>

#include <cstdint>
#include <string>
#include <vector>

#include "base/errors.h"
#include "base/message_text.h"
#include "base/process.h"
#include "console/output.h"
#include "trees/notation/tree_file.h"
#include "trees/tree_store.h"

namespace zeb {
namespace {

struct saved_trees {
  std::uint64_t check_word = 0;  // of the trees that were saved last; 0: none
};
saved_trees saved;

// FNV-1a over all trees.
std::uint64_t check_word_of_trees() {
  std::uint64_t word = 14695981039346656037U;
  const auto add = [&word](std::uint64_t value) { word = (word ^ value) * 1099511628211U; };
  for (int t = 0; t < store.ntrees; ++t) {
    for (const tree_node node : stored_tree(t)) add(static_cast<std::uint64_t>(node));
    add(~std::uint64_t{0});
  }
  return word;
}

void save_all() {
  const bool own_file = !tree_file.file.is_open();
  if (own_file) {
    open_tree_file(text_of("zeb_trees_%i.tre", static_cast<int>(getpid())), true);
  }
  save_trees(std::vector<std::uint8_t>(at(store.ntrees), 1), {});
  if (own_file) close_tree_file();
  emit(counted(store.ntrees, "tree", "trees"), " in memory saved to ", tree_file.name, "\n");
}

}  // namespace

void note_trees_saved() { saved.check_word = check_word_of_trees(); }

void rescue_trees() {
  if (process.ended_by == 0 || store.ntrees == 0) return;
  if (saved.check_word == check_word_of_trees()) return;
  run_in_jump_context(save_all);
}

}  // namespace zeb
