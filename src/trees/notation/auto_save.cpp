#include "trees/notation/auto_save.h"

#include <sys/stat.h>

#include <filesystem>
#include <system_error>
#include <utility>
#include <vector>

#include "base/command.h"
#include "base/errors.h"
#include "base/file_calls.h"
#include "base/indices.h"
#include "base/output_file.h"
#include "base/process.h"
#include "console/output.h"
#include "matrix/matrix.h"
#include "trees/notation/compact_format.h"
#include "trees/notation/parenthetical_writer.h"
#include "trees/notation/rescued_trees.h"
#include "trees/tree_store.h"

namespace zeb {

auto_save_state auto_save;

namespace {

void write_results(output_file& file, const tree_list& beyond) {
  const int count = store.ntrees + static_cast<int>(beyond.size());
  const auto tree = [&beyond](int t) {
    return t < store.ntrees ? viewed_tree(t) : beyond[at(t - store.ntrees)];
  };
  if (auto_save.parenthetical) {
    file.put("tread 'auto-saved results'\n");
    for (int t = 0; t < count; ++t) {
      if (t > 0) file.put("*\n");
      file.put(stored_tree_text(tree(t)));
    }
    return file.put(";\nproc-;\n");
  }
  std::vector<std::uint8_t> bytes = compact_head(matrix.ntax);
  for (int t = 0; t < count; ++t) {
    std::vector<tree_node> complete = tree(t);
    include_absent_taxa(complete, matrix.ntax);
    append_compact_tree(complete, matrix.ntax, bytes);
    file.put({reinterpret_cast<const char*>(bytes.data()), bytes.size()});
    bytes.clear();
  }
}

std::string file_path(int number) { return auto_save.path + (number == 1 ? "-1" : "-2"); }

saved_file& written_by_this_run(int number) { return auto_save.written[number == 1 ? 0 : 1]; }

bool is_there(const std::string& path, struct stat& status) {
  return lstat(path.c_str(), &status) == 0;
}

// A file that this run hasn't written holds the results of another one.
void keep_results_of_others(int number) {
  struct stat status;
  const std::string path = file_path(number);
  if (!is_there(path, status) || !S_ISREG(status.st_mode)) return;
  const saved_file& own = written_by_this_run(number);
  if (own.node == status.st_ino && own.device == status.st_dev) return;
  std::string kept = path + ".kept";
  struct stat other;
  for (int n = 2; is_there(kept, other); ++n) kept = path + ".kept" + std::to_string(n);
  if (call_rename(path, kept) == 0) {
    emit("File ", path, " of another run is kept as ", kept, "\n");
  } else {
    warning("File", path, "of another run can't be kept under another name:", last_cause());
    auto_save.seconds = 0;
  }
}

// Returns why it failed; empty: it didn't.
std::string save(const tree_list& beyond) {
  const std::string path = file_path(auto_save.next);
  auto_save.last_saved = wall_clock();
  keep_results_of_others(auto_save.next);
  if (auto_save.seconds <= 0) return {};
  output_file file;
  if (file.create(path)) write_results(file, beyond);
  if (!file.is_open() || !file.close()) return "Cannot auto-save to file " + path + file.cause();
  struct stat status;
  if (is_there(path, status)) written_by_this_run(auto_save.next) = {status.st_dev, status.st_ino};
  auto_save.next = 3 - auto_save.next;
  note_trees_saved();
  return {};
}

}  // namespace

void set_auto_save(int seconds, const std::string& name, bool parenthetical) {
  std::error_code fault;
  const std::string path = name.empty() ? name : std::filesystem::absolute(name, fault).string();
  const bool same_files = path == auto_save.path;
  auto_save.seconds = seconds;
  auto_save.name = name;
  auto_save.parenthetical = parenthetical;
  auto_save.next = 1;
  auto_save.last_saved = wall_clock();
  auto_save.path = path;
  auto_save.failing = false;
  if (!same_files) auto_save.written = {};
  if (seconds <= 0) return;
  for (const int number : {1, 2}) keep_results_of_others(number);
}

std::vector<tree_node> viewed_tree(int number) {
  const const_tree_span stored = stored_tree(number);
  std::vector<tree_node> tree(stored.begin(), stored.end());
  if (auto_save.view.of_buffer) auto_save.view.of_buffer(number, tree);
  return tree;
}

tree_list trees_beyond_buffer() {
  return auto_save.view.beyond ? auto_save.view.beyond() : tree_list();
}

void set_auto_save_view(search_view view) { auto_save.view = std::move(view); }

void auto_save_if_due() {
  if (auto_save.seconds <= 0) return;
  if (wall_clock() - auto_save.last_saved >= auto_save.seconds) auto_save_now();
}

void auto_save_now() {
  const tree_list beyond = trees_beyond_buffer();
  if (auto_save.seconds <= 0 || (store.ntrees == 0 && beyond.empty())) return;
  const std::string failure = save(beyond);
  const bool is_new = !failure.empty() && !auto_save.failing;
  auto_save.failing = !failure.empty();
  if (is_new) warning(failure + "\nAuto-saving will be tried again");
}

void auto_save_at_end() {
  if (auto_save.seconds <= 0 || store.ntrees == 0) return;
  const std::string failure = save({});
  if (!failure.empty()) note_loss(failure);
}

}  // namespace zeb
