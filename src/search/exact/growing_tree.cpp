#include "search/exact/growing_tree.h"

#include <algorithm>

#include "base/indices.h"
#include "engine/passes/links.h"
#include "engine/passes/passes.h"
#include "engine/passes/undo.h"
#include "engine/passes/waves.h"

namespace zeb {

/// The log of swaps has room for one clip; here the notes of all additions stay in it, up to a
/// million words. What doesn't fit is taken back by waves.
growing_tree::growing_tree(search_data& data) : data_(data), log_of_swaps_(data.undo) {
  constexpr std::size_t most = std::size_t{1} << 20;
  constexpr std::size_t cache_line = 64;
  added_.reserve(at(data.n));
  undo_log& log = data_.undo;
  const std::size_t words = std::min(log.words_size * at(data.n), most);
  if (words <= log.words_size) return;
  log.words_size = words;
  log.where_size = (words + 7) / 8;
  log.old_words = alloc_low<word>(log.words_size, cache_line).data();
  log.where = alloc_low<word*>(log.where_size).data();
  log.capacity =
      static_cast<std::int32_t>(std::min(log.where_size, log.words_size / at(log.piece_words)));
}

growing_tree::~growing_tree() {
  end_undo(data_);
  data_.undo = log_of_swaps_;
}

double growing_tree::begin(int a, int b) {
  tree_arrays& t = data_.tree;
  std::fill(t.anc.begin(), t.anc.end(), 0);
  const int root = data_.n;
  const int top = root + 1;
  const auto hang = [&t](int ancestor, int left, int right) {
    t.first[at(ancestor)] = left;
    t.second[at(ancestor)] = right;
    t.anc[at(left)] = t.anc[at(right)] = ancestor;
    t.sister[at(left)] = right;
    t.sister[at(right)] = left;
  };
  hang(root, 0, top);
  hang(top, a, b);
  t.anc[at(root)] = root + 2;
  added_.clear();
  end_undo(data_);
  const double score = full_pass(data_);
  begin_undo(data_);
  return score;
}

void growing_tree::link(int taxon, int branch) {
  std::int32_t& joint = data_.tree.anc[at(data_.n)];
  attach(data_.tree, taxon, joint, branch);
  ++joint;
}

void growing_tree::unlink(int taxon) {
  detach(data_.tree, taxon);
  data_.tree.anc[at(taxon)] = 0;
  --data_.tree.anc[at(data_.n)];
}

void growing_tree::add(int taxon, int branch) {
  added_.push_back({taxon, data_.undo.count});
  link(taxon, branch);
  repair_after_insert(data_, taxon);
}

void growing_tree::take_back() {
  const auto [taxon, notes] = added_.back();
  added_.pop_back();
  const int sister = data_.tree.sister[at(taxon)];
  unlink(taxon);
  if (!undo_back_to(data_, notes)) repair_after_clip(data_, sister, taxon);
  forget_notes(data_, notes);
}

}  // namespace zeb
