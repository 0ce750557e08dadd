#include "trees/notation/auto_save.h"

#include <cstdio>
#include <utility>
#include <vector>

#include "base/command.h"
#include "base/errors.h"
#include "base/process.h"
#include "matrix/matrix.h"
#include "trees/notation/compact_format.h"
#include "trees/notation/parenthetical_writer.h"
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

bool write_results(std::FILE* file) {
  bool good = true;
  if (auto_save.parenthetical) {
    good = std::fputs("tread 'auto-saved results'\n", file) >= 0;
    for (int t = 0; t < store.ntrees; ++t) {
      if (t > 0) good = std::fputs("*\n", file) >= 0 && good;
      good = std::fputs(stored_tree_text(tree_to_save(t)).c_str(), file) >= 0 && good;
    }
    return std::fputs(";\nproc-;\n", file) >= 0 && good;
  }
  std::vector<std::uint8_t> bytes = compact_head(matrix.ntax);
  for (int t = 0; t < store.ntrees; ++t) {
    std::vector<tree_node> complete = tree_to_save(t);
    include_absent_taxa(complete, matrix.ntax);
    append_compact_tree(complete, matrix.ntax, bytes);
    good = std::fwrite(bytes.data(), 1, bytes.size(), file) == bytes.size() && good;
    bytes.clear();
  }
  return good;
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
  const std::string beside = target + ".tmp";
  auto_save.last_saved = wall_clock();
  std::FILE* file = std::fopen(beside.c_str(), "wb");
  bool good = file && write_results(file);
  if (file) good = std::fclose(file) == 0 && good;
  if (!good || std::rename(beside.c_str(), target.c_str()) != 0) {
    std::remove(beside.c_str());
    auto_save.seconds = 0;
    warning("Cannot auto-save to file", target, "\nAuto-save is off");
    return;
  }
  auto_save.next = 3 - auto_save.next;
}

}  // namespace zeb
