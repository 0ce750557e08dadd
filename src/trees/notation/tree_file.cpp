#include "trees/notation/tree_file.h"

#include <algorithm>
#include <filesystem>
#include <system_error>
#include <utility>
#include <vector>

#include "base/errors.h"
#include "base/indices.h"
#include "base/input_file.h"
#include "base/process.h"
#include "matrix/matrix.h"
#include "trees/drawing/tags.h"
#include "trees/notation/compact_format.h"
#include "trees/notation/parenthetical_writer.h"
#include "trees/tree_store.h"

namespace zeb {

tree_file_state tree_file;

namespace {

[[noreturn]] void not_writable() {
  error_end("Cannot write to tree file", tree_file.name + tree_file.file.cause());
}

// Trees that are being written, one after the other. What can't be written isn't there, and the
// trees of former commands stay; a new file that had none yet is given up.
class trees_on_their_way {
 public:
  trees_on_their_way() = default;
  ~trees_on_their_way() {
    if (!written_) tree_file.file.go_back(start_);
  }
  trees_on_their_way(const trees_on_their_way&) = delete;
  trees_on_their_way& operator=(const trees_on_their_way&) = delete;

  void add(std::string_view tree) {
    // In parentheses, the trees of a file stand between asterisks.
    if (tree_file.parenthetical && tree_file.saved + count_ > 0) tree_file.file.put("*\n");
    tree_file.file.put(tree);
    ++count_;
  }
  void finish(bool closing) {
    written_ = true;
    if (!closing && !tree_file.file.publish()) {
      if (!tree_file.file.goes_on()) tree_file.file.discard();
      not_writable();
    }
    tree_file.saved += count_;
  }

 private:
  off_t start_ = tree_file.file.position();
  int count_ = 0;
  bool written_ = false;
};

[[noreturn]] void cannot_append(const std::string& name, const char* why) {
  error_end("Cannot append tree file.\nTree file", name, why);
}

std::string as_text(std::span<const std::uint8_t> bytes) { return {bytes.begin(), bytes.end()}; }

/// The file's trees must be for as many taxa, and whole.
void check_appendable(const std::string& name, const std::string& text) {
  const std::vector<std::uint8_t> bytes(text.begin(), text.end());
  const compact_head_fields fields = read_compact_head(bytes);
  if (fields.ntax < 0) cannot_append(name, "isn't a compact tree file");
  if (fields.ntax != matrix.ntax) {
    error_end("Cannot append tree file.\n\nTrees in", name, "are for", fields.ntax,
              "taxa; current data set has", matrix.ntax, "taxa");
  }
  for (auto rest = std::span(bytes).subspan(fields.bytes); !rest.empty();) {
    const std::size_t tree = compact_tree_bytes(rest, matrix.ntax);
    if (tree == 0) cannot_append(name, "ends early");
    rest = rest.subspan(tree);
  }
}

/// What a file that trees are to be appended to holds; empty for a new one.
std::string present_text(const std::string& name) {
  std::error_code fault;
  if (!std::filesystem::is_regular_file(name, fault)) return {};
  input_file file;
  if (!file.open(name)) error_end("Cannot open file", name + file.cause());
  std::string text = file.rest();
  if (!file.fault().empty()) error_end("Can't read", name + file.cause());
  return text;
}

output_file open_compact(const std::string& name) {
  output_file file;
  const std::string present = present_text(name);
  if (!present.empty()) check_appendable(name, present);
  if (present.empty() ? !file.create(name) : !file.append(name)) {
    error_end("Cannot open file", name + file.cause());
  }
  if (present.empty()) file.put(as_text(compact_head(matrix.ntax)));
  return file;
}

/// "tread" with its title, whose quote must end where it should.
std::string opening_text() {
  std::string data_file = matrix.file_name;
  std::replace(data_file.begin(), data_file.end(), '\'', '"');
  return "tread 'tree(s) from ZEB, for data in " + data_file + "'\n";
}

output_file open_parenthetical(const std::string& name) {
  output_file file;
  if (!file.create(name)) error_end("Cannot open file", name + file.cause());
  file.put(opening_text());
  return file;
}

/// A tree as text with active taxa only, numbered among themselves.
std::string active_tree_text(const_tree_span tree) {
  std::vector<tree_node> record(tree.begin(), tree.end());
  std::vector<std::uint8_t> inactive(at(matrix.ntax));
  std::vector<int> number(at(matrix.ntax));
  int next = 0;
  for (int t = 0; t < matrix.ntax; ++t) {
    inactive[at(t)] = !matrix.taxon_active[at(t)];
    number[at(t)] = inactive[at(t)] ? -1 : next++;
  }
  delete_taxa(record, matrix.ntax, inactive);
  return parenthetical_text(record, matrix.ntax,
                            [&](int t) { return std::to_string(number[at(t)]); });
}

void save_compact(std::span<const std::uint8_t> chosen, bool closing) {
  bool warned = false;
  trees_on_their_way trees;
  std::vector<std::uint8_t> bytes;
  for (int t = 0; t < store.ntrees; ++t) {
    if (!chosen[at(t)]) continue;
    const tree_span tree = stored_tree(t);
    if (terminals_in(tree, matrix.ntax) == matrix.ntax) {
      append_compact_tree(tree, matrix.ntax, bytes);
    } else {
      if (!warned) {
        warning(
            "Some trees are incomplete\nCan't save incomplete trees as compact\n\nAbsent taxa will "
            "be joined to base and saved");
        warned = true;
      }
      std::vector<tree_node> complete(tree.begin(), tree.end());
      include_absent_taxa(complete, matrix.ntax);
      append_compact_tree(complete, matrix.ntax, bytes);
    }
    trees.add(as_text(bytes));
    bytes.clear();
  }
  trees.finish(closing);
}

}  // namespace

void abandon_tree_file() {
  if (!tree_file.file.is_open()) return;
  if (tree_file.parenthetical) tree_file.file.put(";\nproc/;\n");
  if (!tree_file.file.close())
    note_loss("Cannot write to tree file " + tree_file.name + tree_file.file.cause());
}

void open_tree_file(const std::string& name, bool parenthetical) {
  // The former file stays open if the new one can't be had; the same file must be closed first.
  if (name == tree_file.name) close_tree_file();
  output_file file = parenthetical ? open_parenthetical(name) : open_compact(name);
  close_tree_file();
  tree_file = {std::move(file), name, parenthetical, 0};
}

void close_tree_file(const char* closing) {
  if (!tree_file.file.is_open()) return;
  if (tree_file.parenthetical) tree_file.file.put(closing);
  if (!tree_file.file.close()) not_writable();
}

void save_trees(std::span<const std::uint8_t> chosen, tree_writing how) {
  if (!tree_file.parenthetical) {
    if (how.active_only) error_end("Can't save trees for active taxa in compact mode");
    return save_compact(chosen, how.closing);
  }
  trees_on_their_way trees;
  for (int t = 0; t < store.ntrees; ++t) {
    if (!chosen[at(t)]) continue;
    const const_tree_span tree = stored_tree(t);
    trees.add(how.active_only ? active_tree_text(tree) : stored_tree_text(tree));
  }
  trees.finish(how.closing);
}

void save_tags() {
  if (!tree_file.parenthetical) {
    error_end("Tree-tags can be saved only in parenthetical notation");
  }
  if (!tags.tags_present) error_end("No tags to save");
  trees_on_their_way trees;
  trees.add(tag_tree_text());
  trees.finish(false);
}

}  // namespace zeb
