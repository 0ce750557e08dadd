#include "trees/notation/rescued_trees.h"

#include <sys/stat.h>
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

// What an earlier process of the same number saved stays, and nobody's link is followed.
std::string free_name() {
  const std::string begin = text_of("zeb_trees_%i", static_cast<int>(getpid()));
  std::string name = begin + ".tre";
  struct stat status;
  for (int n = 2; lstat(name.c_str(), &status) == 0; ++n)
    name = text_of("%s-%i.tre", begin.c_str(), n);
  return name;
}

void save_all() {
  const bool own_file = !tree_file.file.is_open();
  if (own_file) open_tree_file(free_name(), true);
  save_trees(std::vector<std::uint8_t>(at(store.ntrees), 1), {});
  if (own_file) close_tree_file();
  emit(counted(store.ntrees, "tree", "trees"), " in memory saved to ", tree_file.name, "\n");
}

}  // namespace

void note_trees_saved() { saved.check_word = check_word_of_trees(); }

void rescue_trees() {
  const bool unexpected = process.ended_by != 0 || process.gave_up;
  if (!unexpected || store.ntrees == 0) return;
  if (saved.check_word == check_word_of_trees()) return;
  run_in_jump_context(save_all);
}

}  // namespace zeb
