#include "trees/notation/compact_file.h"

#include <algorithm>
#include <cstdint>
#include <span>
#include <vector>

#include "base/errors.h"
#include "base/indices.h"
#include "base/interrupts.h"
#include "base/message_text.h"
#include "base/process.h"
#include "console/output.h"
#include "console/progress.h"
#include "console/settings.h"
#include "matrix/matrix.h"
#include "trees/notation/compact_format.h"
#include "trees/tree_store.h"

namespace zeb {

namespace {

using byte_span = std::span<const std::uint8_t>;

byte_span as_bytes(std::string_view text) {
  return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()};
}

/// Where each tree of a compact file starts and ends; `cut_off`: something follows that is none.
std::vector<byte_span> find_trees(byte_span file, const std::string& name, bool& cut_off) {
  const compact_head_fields head = read_compact_head(file);
  if (head.ntax < 0 && file.size() < 6) error_end("Unexpected end of file");
  if (head.ntax != matrix.ntax) {
    error_end("Tree file", name, "is not for", matrix.ntax, "taxa");
  }
  std::vector<byte_span> trees;
  for (file = file.subspan(head.bytes); !file.empty();) {
    const std::size_t bytes = compact_tree_bytes(file, matrix.ntax);
    if (bytes == 0) break;
    trees.push_back(file.first(bytes));
    file = file.subspan(bytes);
  }
  cut_off = !file.empty();
  if (cut_off && trees.empty()) error_end("Unexpected end of file");
  return trees;
}

/// Reads them into the slots after the trees in memory, where they don't count yet.
void read_into_free_slots(std::span<const byte_span> trees, const std::string& name) {
  make_room_for_trees(trees.size());
  compact_reader reader(matrix.ntax);
  double last_poll = wall_clock();
  for (std::size_t i = 0; i < trees.size(); ++i) {
    if (!reader.read(trees[i], stored_tree(store.ntrees + static_cast<int>(i)))) {
      error_end("Tree file", name, "is damaged: tree", i, "can't be read");
    }
    if (wall_clock() - last_poll > 1.0) {
      check_interrupt();
      show_progress("Reading trees", static_cast<double>(i), static_cast<double>(trees.size()));
      last_poll = wall_clock();
    }
  }
  clear_progress();
}

}  // namespace

void read_compact_file(input_file& file, const target_group& group) {
  const std::string text = file.rest();
  if (!file.fault().empty()) error_end("Can't read", file.name() + file.cause());
  bool cut_off = false;
  const std::vector<byte_span> trees = find_trees(as_bytes(text), file.name(), cut_off);
  const int first = store.ntrees;
  read_into_free_slots(trees, file.name());
  if (cut_off) {
    warning("Unexpected end of file:", file.name(), "is cut off after",
            counted(static_cast<long long>(trees.size()), "whole tree", "whole trees"));
  }
  group.start();
  for (std::size_t i = 0; i < trees.size(); ++i) {
    take_slot();
    group.add(store.ntrees - 1);
  }
  if (!settings.report) return;
  emit(trees.size(), " trees read");
  if (!trees.empty()) emit(" (trees ", first, "-", store.ntrees - 1, ")");
  emit("\n");
}

bool starts_as_compact_file(std::string_view start) {
  const bool binary = std::any_of(start.begin(), start.end(), [](char c) {
    return static_cast<unsigned char>(c) < ' ' && (c < '\t' || c > '\r');
  });
  return binary && read_compact_head(as_bytes(start)).ntax >= 3;
}

}  // namespace zeb
