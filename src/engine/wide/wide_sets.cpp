#include "engine/wide/wide_sets.h"

#include <algorithm>
#include <cstring>

#include "base/arena.h"
#include "base/indices.h"
#include "engine/passes/undo.h"

namespace zeb {
namespace {

word* down_of(const wide_data& wide, int v) { return wide.down + at(v) * wide.down_words; }
word* final_of(const wide_data& wide, int v) { return wide.final + at(v) * wide.final_words; }
word* branch_of(const wide_data& wide, int v) { return wide.branch + at(v) * wide.branch_words; }
word* cluster_of(const wide_data& wide, int c) { return wide.cluster + at(c) * wide.branch_words; }

/// Room after the last set for what note_words may read past it.
std::span<word> take_sets(std::size_t count, std::size_t words) {
  return calloc_low<word>(checked_product(count, words) + words_per_block);
}

/// Some characters of one kind: where their words lie in the sets of a node.
struct wide_piece {
  const wide_kind& kind;
  wide_characters all;
  std::size_t down_at, down_words;
  std::size_t final_at, final_words;
  std::size_t branch_at, branch_words;
};

/// Calls `visit` with the characters of all parts, as many at a time as their kind wants.
template <class function>
void for_each_piece(const wide_data& wide, function visit) {
  for (const wide_part& part : wide.parts) {
    for (std::size_t i = 0; i < part.characters.size(); i += at(part.kind->together)) {
      const std::size_t count = std::min(at(part.kind->together), part.characters.size() - i);
      const wide_character& first = part.characters[i];
      const wide_character& last = part.characters[i + count - 1];
      const wide_room room = last.room;
      visit(wide_piece{*part.kind, part.characters.subspan(i, count), at(first.down_at),
                       at(last.down_at + room.down - first.down_at), at(first.final_at),
                       at(last.final_at + room.final - first.final_at), at(first.branch_at),
                       at(last.branch_at + room.branch - first.branch_at)});
    }
  }
}

// ---- waves ----

/// A wave of some characters over the tree in work. It goes as the waves of words do.
class wide_wave {
 public:
  wide_wave(search_data& data, const wide_piece& piece)
      : data_(data), wide_(data.wide), tree_(data.tree), piece_(piece) {}

  void after_clip(int start, int clip) {
    if (start != 0) {
      int depth = walk_path(anc(start), start);
      put(depth, start);
      run_stack(depth);
    }
    if (clip < data_.n || !(remake_top(clip, false) || is_stale(clip))) return;
    int depth = 0;
    put(depth, tree_.first[at(clip)]);
    put(depth, tree_.second[at(clip)]);
    run_stack(depth);
  }

  void after_insert(int node) {
    const int joint = anc(node);
    int depth = 0;
    remake_down(joint);
    if (joint == data_.n) {
      remake_top(joint, true);
    } else {
      depth = walk_path(anc(joint), joint);
      refresh(joint);
    }
    put(depth, node);
    put(depth, tree_.sister[at(node)]);
    run_stack(depth);
  }

  bool remake_down(int v) {
    word* const fresh = wide_.scratch.data();
    std::fill(wide_.steps.begin(), wide_.steps.end(), 0);
    piece_.kind.down(piece_.all, down_of(wide_, tree_.first[at(v)]),
                     down_of(wide_, tree_.second[at(v)]), fresh, wide_.steps.data());
    return replace(down_of(wide_, v), fresh, piece_.down_at, piece_.down_words);
  }

 private:
  int anc(int v) const { return tree_.anc[at(v)]; }
  bool is_stale(int v) const { return wide_.is_stale[at(v)] != 0; }
  void put(int& depth, int v) { data_.node_stack[at(depth++)] = v; }

  /// Stores what differs; returns whether anything did.
  bool replace(word* sets, const word* fresh, std::size_t from, std::size_t words) {
    if (std::memcmp(sets + from, fresh + from, words * sizeof(word)) == 0) return false;
    note_words(data_, sets + from, static_cast<int>(words));
    std::memcpy(sets + from, fresh + from, words * sizeof(word));
    return true;
  }

  bool remake_top(int v, bool whole) {
    word* const fresh = wide_.scratch.data();
    piece_.kind.top(piece_.all, down_of(wide_, v), fresh, whole, wide_.steps.data());
    return replace(final_of(wide_, v), fresh, piece_.final_at, piece_.final_words);
  }

  /// Remakes `final` and `branch` from the ancestor; returns whether `final` changed.
  bool refresh(int v) {
    const bool is_terminal = v < data_.n;
    const word* const above = final_of(wide_, anc(v));
    word* const fresh = wide_.scratch.data();
    bool changed = false;
    if (!is_terminal) {
      piece_.kind.final(piece_.all, above, down_of(wide_, v), fresh);
      changed =
          replace(final_of(wide_, v), fresh, piece_.final_at, piece_.final_words) || is_stale(v);
    }
    piece_.kind.branch(piece_.all, above, is_terminal ? nullptr : final_of(wide_, v),
                       down_of(wide_, v), fresh);
    if (replace(branch_of(wide_, v), fresh, piece_.branch_at, piece_.branch_words) &&
        data_.in_swap && data_.cluster_count > 0)
      widen(data_.cluster_of[at(v)], v);
    return changed;
  }

  void widen(int cluster, int v) {
    word* const sets = cluster_of(wide_, cluster);
    word* const fresh = wide_.scratch.data();
    std::memcpy(fresh + piece_.branch_at, sets + piece_.branch_at,
                piece_.branch_words * sizeof(word));
    piece_.kind.widen(piece_.all, branch_of(wide_, v), fresh);
    replace(sets, fresh, piece_.branch_at, piece_.branch_words);
  }

  void run_stack(int depth) {
    while (depth > 0) {
      const int v = data_.node_stack[at(--depth)];
      if (!refresh(v)) continue;
      put(depth, tree_.first[at(v)]);
      put(depth, tree_.second[at(v)]);
    }
  }

  /// Rootward from `a`, whose descendant `below` changed, then down the same path; leaves in the
  /// stack what is still to be refreshed.
  int walk_path(int a, int below) {
    int length = 0;
    while (remake_down(a)) {
      data_.node_list[at(length++)] = a;
      if (a == data_.n) break;
      a = anc(a);
    }
    int depth = 0;
    while (length-- > 0) {
      const int v = data_.node_list[at(length)];
      if (v == data_.n ? remake_top(v, true) : refresh(v))
        put(depth, tree_.sister[at(length > 0 ? data_.node_list[at(length - 1)] : below)]);
    }
    return depth;
  }

  search_data& data_;
  wide_data& wide_;
  const tree_arrays& tree_;
  const wide_piece& piece_;
};

/// Finds the best root of a clip for each rooted character.
void note_rootings(search_data& data, int clip) {
  wide_data& wide = data.wide;
  for (wide_part& part : wide.parts)
    for (wide_character& c : part.characters) c.least_rooting = 0;
  if (clip < data.n) return;
  int depth = 0;
  data.node_stack[at(depth++)] = clip;
  while (depth > 0) {
    const int v = data.node_stack[at(--depth)];
    if (v >= data.n) {
      data.node_stack[at(depth++)] = data.tree.first[at(v)];
      data.node_stack[at(depth++)] = data.tree.second[at(v)];
    }
    if (v == clip) continue;
    for (wide_part& part : wide.parts)
      for (wide_character& c : part.characters)
        if (part.kind->is_rooted(c))
          c.least_rooting = std::min(c.least_rooting, part.kind->rooting(c, branch_of(wide, v)));
  }
}

void all_are_fresh(wide_data& wide) { std::fill(wide.is_stale.begin(), wide.is_stale.end(), 0); }

}  // namespace

// ---- memory and terminals ----

void allocate_wide_sets(search_data& data) {
  wide_data& wide = data.wide;
  wide.down_words = wide.final_words = wide.branch_words = 0;
  std::size_t count = 0;
  for (wide_part& part : wide.parts) {
    if (part.kind->unit != 1) data.has_continuous = true;
    for (wide_character& c : part.characters) {
      if (!c.model && part.kind->model) c.model = part.kind->model(c.character);
      if (part.kind->is_rooted(c)) data.has_asymmetric = true;
      const wide_room room = c.room = part.kind->room(c);
      c.down_at = static_cast<std::int32_t>(wide.down_words);
      c.final_at = static_cast<std::int32_t>(wide.final_words);
      c.branch_at = static_cast<std::int32_t>(wide.branch_words);
      wide.down_words += at(room.down);
      wide.final_words += at(room.final);
      wide.branch_words += at(room.branch);
    }
    count = std::max(count, part.characters.size());
  }
  data.has_wide = count > 0;
  if (!data.has_wide) return;
  const std::size_t nodes = at(data.nodes);
  wide.down = take_sets(nodes, wide.down_words).data();
  wide.final = take_sets(nodes, wide.final_words).data();
  wide.branch = take_sets(nodes, wide.branch_words).data();
  wide.scratch = take_sets(1, std::max({wide.down_words, wide.final_words, wide.branch_words}));
  wide.steps = calloc_low<std::int64_t>(count);
  wide.is_stale = calloc_low<std::uint8_t>(nodes);
}

void encode_wide_cells(search_data& data) {
  for (wide_part& part : data.wide.parts)
    for (wide_character& c : part.characters)
      for (int v = 0; v < data.n; ++v) {
        const int steps = part.kind->encode(c, data.pack_to_taxon[at(v)], down_of(data.wide, v));
        c.min_steps -= steps;
        data.wide.base_cost +=
            static_cast<double>(std::int64_t{steps} * c.weight) * part.kind->unit;
      }
}

void exchange_wide_terminals(search_data& data, int a, int b) {
  std::swap_ranges(down_of(data.wide, a), down_of(data.wide, a) + data.wide.down_words,
                   down_of(data.wide, b));
}

// ---- full passes ----

double wide_down_pass(search_data& data, int count) {
  wide_data& wide = data.wide;
  const int top = data.node_list[0];
  double cost = 0;
  for (wide_part& part : wide.parts) {
    std::fill(wide.steps.begin(), wide.steps.end(), 0);
    for (int i = count - 1; i >= 0; --i) {
      const int v = data.node_list[at(i)];
      part.kind->down(part.characters, down_of(wide, data.tree.first[at(v)]),
                      down_of(wide, data.tree.second[at(v)]), down_of(wide, v), wide.steps.data());
    }
    part.kind->top(part.characters, down_of(wide, top), final_of(wide, top), top == data.n,
                   wide.steps.data());
    for (std::size_t i = 0; i < part.characters.size(); ++i) {
      wide_character& c = part.characters[i];
      if (data.implied_on) c.steps += wide.steps[i];
      cost += static_cast<double>(c.weight * wide.steps[i]) * part.kind->unit;
    }
  }
  return cost;
}

void wide_final_pass(search_data& data, int count) {
  const wide_data& wide = data.wide;
  for (const wide_part& part : wide.parts)
    for (int i = 0; i < count; ++i) {
      const int a = data.node_list[at(i)];
      const word* const above = final_of(wide, a);
      for (const int v : {data.tree.first[at(a)], data.tree.second[at(a)]}) {
        word* const final = v < data.n ? nullptr : final_of(wide, v);
        if (final) part.kind->final(part.characters, above, down_of(wide, v), final);
        part.kind->branch(part.characters, above, final, down_of(wide, v), branch_of(wide, v));
      }
    }
  all_are_fresh(data.wide);
  if (!data.has_asymmetric || count == 0 || data.node_list[0] == data.n) return;
  note_rootings(data, data.node_list[0]);
  // Steps are those of the best root, from which those of joining count.
  if (!data.implied_on) return;
  for (wide_part& part : data.wide.parts)
    for (wide_character& c : part.characters) c.steps += c.least_rooting;
}

// ---- waves ----

void wide_clip_wave(search_data& data, int start, int clip) {
  for_each_piece(data.wide,
                 [&](const wide_piece& piece) { wide_wave(data, piece).after_clip(start, clip); });
  all_are_fresh(data.wide);
  if (data.has_asymmetric) note_rootings(data, clip);
}

void wide_insert_wave(search_data& data, int node) {
  for_each_piece(data.wide,
                 [&](const wide_piece& piece) { wide_wave(data, piece).after_insert(node); });
  all_are_fresh(data.wide);
}

void remake_turned_wide(search_data& data, int node) {
  for_each_piece(data.wide,
                 [&](const wide_piece& piece) { wide_wave(data, piece).remake_down(node); });
  data.wide.is_stale[at(node)] = 1;
}

// ---- clusters ----

void allocate_wide_clusters(search_data& data, int most) {
  data.wide.cluster = take_sets(at(most), data.wide.branch_words).data();
}

void empty_wide_cluster(search_data& data, int cluster) {
  for (const wide_part& part : data.wide.parts)
    part.kind->empty(part.characters, cluster_of(data.wide, cluster));
}

void widen_wide_cluster(search_data& data, int cluster, int node) {
  word* const sets = cluster_of(data.wide, cluster);
  for (const wide_part& part : data.wide.parts)
    part.kind->widen(part.characters, branch_of(data.wide, node), sets);
}

bool wide_branch_stays(const search_data& data, int node, int rule) {
  const wide_data& wide = data.wide;
  const word* const above = final_of(wide, data.tree.anc[at(node)]);
  return std::any_of(wide.parts.begin(), wide.parts.end(), [&](const wide_part& part) {
    return part.kind->stays(part.characters, rule, above, down_of(wide, node),
                            final_of(wide, node));
  });
}

}  // namespace zeb
