#include "trees/notation/auto_save.h"

#include <utility>
#include <vector>

#include "base/command.h"
#include "base/errors.h"
#include "base/output_file.h"
#include "base/process.h"
#include "matrix/matrix.h"
#include "trees/notation/compact_format.h"
#include "trees/notation/parenthetical_writer.h"
#include "trees/notation/rescued_trees.h"
#include "trees/tree_store.h"

namespace zeb {

auto_save_state auto_save;

namespace {

std::vector<tree_node> tree_to_save(int number) {
  const const_tree_span stored = stored_tree(number);
  std::vector<tree_node> tree(stored.begin(), stored.end());
  if (auto_save.view) auto_save.view(number, tree);
  return tree;
}

void write_results(output_file& file) {
  if (auto_save.parenthetical) {
    file.put("tread 'auto-saved results'\n");
    for (int t = 0; t < store.ntrees; ++t) {
      if (t > 0) file.put("*\n");
      file.put(stored_tree_text(tree_to_save(t)));
    }
    return file.put(";\nproc-;\n");
  }
  std::vector<std::uint8_t> bytes = compact_head(matrix.ntax);
  for (int t = 0; t < store.ntrees; ++t) {
    std::vector<tree_node> complete = tree_to_save(t);
    include_absent_taxa(complete, matrix.ntax);
    append_compact_tree(complete, matrix.ntax, bytes);
    file.put({reinterpret_cast<const char*>(bytes.data()), bytes.size()});
    bytes.clear();
  }
}

}  // namespace

void set_auto_save(int seconds, const std::string& name, bool parenthetical) {
  auto_save = {seconds, name, parenthetical, 1, wall_clock(), auto_save.view};
}

void set_auto_save_view(tree_view view) { auto_save.view = std::move(view); }

void auto_save_if_due() {
  if (auto_save.seconds <= 0) return;
  if (wall_clock() - auto_save.last_saved >= auto_save.seconds) auto_save_now();
}

void auto_save_now() {
  if (auto_save.seconds <= 0 || store.ntrees == 0) return;
  const std::string target = auto_save.name + (auto_save.next == 1 ? "-1" : "-2");
  auto_save.last_saved = wall_clock();
  output_file file;
  if (file.create(target)) write_results(file);
  if (!file.is_open() || !file.close()) {
    auto_save.seconds = 0;
    warning("Cannot auto-save to file", target + file.cause(), "\nAuto-save is off");
    return;
  }
  auto_save.next = 3 - auto_save.next;
  note_trees_saved();
}

}  // namespace zeb
