#include "trees/notation/compact_format.h"
#include "base/indices.h"
#include "trees/tree_walks.h"

#include <algorithm>
#include <functional>
#include <queue>

namespace zeb {

namespace {

constexpr int wide_layout = 16384;  // taxa from which words and counts have 32 bits

std::size_t word_bytes(int ntax) { return ntax < wide_layout ? 2 : 4; }

void append_number(std::uint64_t value, std::size_t bytes, std::vector<std::uint8_t>& out) {
  for (std::size_t b = 0; b < bytes; ++b) out.push_back(static_cast<std::uint8_t>(value >> 8 * b));
}

std::uint64_t number_at(std::span<const std::uint8_t> bytes, std::size_t count) {
  std::uint64_t value = 0;
  for (std::size_t b = 0; b < count; ++b) value |= std::uint64_t{bytes[b]} << 8 * b;
  return value;
}

/// Bits of an index into a list of `size` nodes: at least 2, and enough for the highest index.
class index_width {
 public:
  int for_size(std::size_t size) {
    while ((std::size_t{1} << width_) < size) ++width_;
    return width_;
  }

 private:
  int width_ = 2;
};

class bit_writer {
 public:
  explicit bit_writer(std::vector<std::uint8_t>& out) : out_(out) {}
  void put(std::uint64_t value, int bits) {
    pending_ |= value << held_;
    held_ += bits;
    for (; held_ >= 8; held_ -= 8) {
      out_.push_back(static_cast<std::uint8_t>(pending_));
      pending_ >>= 8;
    }
  }
  void finish() {
    if (held_ > 0) out_.push_back(static_cast<std::uint8_t>(pending_));
  }

 private:
  std::vector<std::uint8_t>& out_;
  std::uint64_t pending_ = 0;
  int held_ = 0;
};

class bit_reader {
 public:
  explicit bit_reader(std::span<const std::uint8_t> bytes) : bytes_(bytes) {}
  /// False when the bits have run out.
  bool get(int bits, std::uint64_t* value) {
    while (held_ < bits) {
      if (next_ == bytes_.size()) return false;
      pending_ |= std::uint64_t{bytes_[next_++]} << held_;
      held_ += 8;
    }
    *value = pending_ & ((std::uint64_t{1} << bits) - 1);
    pending_ >>= bits;
    held_ -= bits;
    return true;
  }

 private:
  std::span<const std::uint8_t> bytes_;
  std::size_t next_ = 0;
  std::uint64_t pending_ = 0;
  int held_ = 0;
};

/// The insertions that build a tree, found by taking the terminals away from the last to the third:
/// each one's ancestor either keeps several descendants (a polytomy) or goes, its other descendant
/// taking its place.
class insertion_order {
 public:
  insertion_order(const_tree_span tree, int ntax) : ntax_(ntax) {
    const std::size_t limit = at(node_limit(tree, ntax));
    up_.assign(tree.begin(), tree.begin() + static_cast<std::ptrdiff_t>(limit));
    up_[at(ntax)] = -1;
    const descendant_lists lists = descendants_of(tree, ntax);
    first_ = lists.first;
    next_ = lists.sibling;
    count_ = lists.count;
    many_ = lists.count;
    previous_.assign(limit, -1);
    for (std::size_t v = 0; v < limit; ++v) {
      if (next_[v] >= 0) previous_[at(next_[v])] = static_cast<int>(v);
    }
    sister_.assign(at(ntax), -1);
    for (int t = ntax - 1; t > 1; --t) take_away(t);
  }

  void write(bit_writer& out) {
    index_.assign(up_.size(), -1);
    const int root = up_[0];
    low_siblings_.resize(up_.size());
    append(0);
    append(1);
    append(root);
    add_sibling(root, 0);
    add_sibling(root, 1);
    index_width width;
    for (int t = 2; t < ntax_; ++t) {
      const int bits = width.for_size(at(placed_));
      const int joint = up_[at(t)];
      const int sister = sister_[at(t)];
      const bool polytomy = sister < 0;
      const int x = polytomy ? lowest_sibling(joint) : sister;
      out.put((static_cast<std::uint64_t>(index_[at(x)]) << 1) | (polytomy ? 1 : 0), bits + 1);
      append(t);
      if (!polytomy) {
        append(joint);
        up_[at(joint)] = up_[at(sister)];
        up_[at(sister)] = joint;
        if (up_[at(joint)] >= 0) add_sibling(up_[at(joint)], joint);
        add_sibling(joint, sister);
      }
      add_sibling(joint, t);
    }
  }

 private:
  void take_away(int t) {
    const int joint = up_[at(t)];
    unlink(t);
    if (--count_[at(joint)] > 1) return;
    const int sister = first_[at(joint)];
    sister_[at(t)] = sister;
    // The sister takes the place of the joint.
    const int below = up_[at(joint)];
    up_[at(sister)] = below;
    previous_[at(sister)] = previous_[at(joint)];
    next_[at(sister)] = next_[at(joint)];
    if (below < 0) return;
    if (previous_[at(sister)] >= 0) {
      next_[at(previous_[at(sister)])] = sister;
    } else {
      first_[at(below)] = sister;
    }
    if (next_[at(sister)] >= 0) previous_[at(next_[at(sister)])] = sister;
  }

  void unlink(int v) {
    const int before = previous_[at(v)];
    const int after = next_[at(v)];
    if (before >= 0) {
      next_[at(before)] = after;
    } else {
      first_[at(up_[at(v)])] = after;
    }
    if (after >= 0) previous_[at(after)] = before;
  }

  void append(int node) { index_[at(node)] = placed_++; }

  /// Only nodes that are polytomies in the end are ever asked for their lowest descendant.
  void add_sibling(int ancestor, int node) {
    if (many_[at(ancestor)] > 2) low_siblings_[at(ancestor)].emplace(index_[at(node)], node);
  }

  /// The descendant of `ancestor` with the smallest index. Nodes that have left are dropped here.
  int lowest_sibling(int ancestor) {
    auto& heap = low_siblings_[at(ancestor)];
    while (up_[at(heap.top().second)] != ancestor) heap.pop();
    return heap.top().second;
  }

  using low_first =
      std::priority_queue<std::pair<int, int>, std::vector<std::pair<int, int>>, std::greater<>>;

  int ntax_;
  std::vector<int> up_, first_, next_, previous_, count_, many_;
  std::vector<int> sister_;  // by terminal: what it joins; -1 at a polytomy
  std::vector<int> index_;   // by node: place in the list L
  int placed_ = 0;
  std::vector<low_first> low_siblings_;
};

}  // namespace

std::vector<std::uint8_t> compact_head(int ntax) {
  std::vector<std::uint8_t> head;
  if (ntax >= wide_layout) append_number(0, 2, head);
  append_number(static_cast<std::uint64_t>(ntax), word_bytes(ntax), head);
  return head;
}

compact_head_fields read_compact_head(std::span<const std::uint8_t> file) {
  if (file.size() < 2) return {};
  const auto narrow = static_cast<std::int64_t>(number_at(file, 2));
  if (narrow != 0)
    return narrow < wide_layout ? compact_head_fields{narrow, 2} : compact_head_fields{};
  if (file.size() < 6) return {};
  const auto wide = static_cast<std::int64_t>(number_at(file.subspan(2), 4));
  return wide >= wide_layout ? compact_head_fields{wide, 6} : compact_head_fields{};
}

void append_compact_tree(const_tree_span tree, int ntax, std::vector<std::uint8_t>& bytes) {
  const std::size_t word = word_bytes(ntax);
  const std::size_t start = bytes.size();
  bytes.resize(start + word);
  bit_writer out(bytes);
  insertion_order(tree, ntax).write(out);
  out.finish();
  while ((bytes.size() - start) % word != 0) bytes.push_back(0);
  const std::size_t words = (bytes.size() - start) / word - 1;
  for (std::size_t b = 0; b < word; ++b) {
    bytes[start + b] = static_cast<std::uint8_t>(words >> 8 * b);
  }
}

std::size_t compact_tree_bytes(std::span<const std::uint8_t> bytes, int ntax) {
  const std::size_t word = word_bytes(ntax);
  if (bytes.size() < word) return 0;
  const std::size_t all = word + number_at(bytes, word) * word;
  return all <= bytes.size() ? all : 0;
}

compact_reader::compact_reader(int ntax) : ntax_(ntax) {
  placed_.reserve(2 * at(ntax));
  up_.reserve(2 * at(ntax));
}

bool compact_reader::read(std::span<const std::uint8_t> bytes, tree_span tree) {
  bit_reader in(bytes.subspan(word_bytes(ntax_)));
  index_width width;
  up_.assign(at(ntax_) + 1, -1);
  up_[0] = up_[1] = ntax_;
  placed_.assign({0, 1, ntax_});
  for (int t = 2; t < ntax_; ++t) {
    std::uint64_t field = 0;
    if (!in.get(width.for_size(placed_.size()) + 1, &field)) return false;
    if (field >> 1 >= placed_.size()) return false;
    const int x = placed_[field >> 1];
    placed_.push_back(t);
    if ((field & 1) != 0) {
      if (up_[at(x)] < 0) return false;  // the root has no ancestor to join
      up_[at(t)] = up_[at(x)];
    } else {
      const int y = static_cast<int>(up_.size());
      up_.push_back(up_[at(x)]);
      up_[at(x)] = up_[at(t)] = y;
      placed_.push_back(y);
    }
  }
  normalise_ancestors(up_, tree, ntax_);
  return true;
}

}  // namespace zeb
