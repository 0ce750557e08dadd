// Full passes, waves and their undoing over the tree in work.
#include <cstring>

#include "base/errors.h"
#include "base/indices.h"
#include "engine/fit/implied_weighting.h"
#include "engine/search_data.h"

namespace zeb {

engine_settings engine;

namespace {

pass_context context_of(search_data& data) {
  pass_context t;
  t.anc = data.tree.anc.data();
  t.sister = data.tree.sister.data();
  t.first = data.tree.first.data();
  t.second = data.tree.second.data();
  t.down = data.down_base;
  t.final = data.final_base;
  t.unions = data.unions_base;
  t.branch = data.branch_base;
  t.stride = data.set_stride;
  t.n = data.n;
  t.list = data.node_list.data();
  t.stack = data.node_stack.data();
  t.undo = data.undo.recording ? &data.undo : nullptr;
  if (data.in_swap && data.cluster_count > 0) {
    t.cluster_of = data.cluster_of.data();
    t.clusters = data.clusters.data();
  }
  return t;
}

/// Internal nodes of the subtree of `top`, each before its descendants. A node's neighbours in the
/// list are its relatives, whose sets are still in the nearest cache when a pass gets there.
int list_internals(search_data& data, int top) {
  std::int32_t* const list = data.node_list.data();
  std::int32_t* const stack = data.node_stack.data();
  int count = 0;
  int depth = 0;
  if (top >= data.n) stack[depth++] = top;
  while (depth > 0) {
    const int v = stack[--depth];
    list[count++] = v;
    const int a = data.tree.first[at(v)];
    const int b = data.tree.second[at(v)];
    if (b >= data.n) stack[depth++] = b;
    if (a >= data.n) stack[depth++] = a;
  }
  return count;
}

void widen_clusters(search_data& data) {
  for (int v = 0; v < data.nodes; ++v) {
    if (v == data.n) continue;
    word* const wide = data.clusters[at(data.cluster_of[at(v)])].union_now;
    const word* const branch = data.sets[at(v)].branch;
    for (int w = 0; w < data.nwords; ++w) wide[w] |= branch[w];
  }
}

std::int64_t pass_from(search_data& data, int top) {
  const int count = list_internals(data, top);
  if (count == 0 || data.nwords == 0) return 0;
  const pass_context t = context_of(data);
  const std::int64_t steps = data.kernels.down_pass(t, data.node_list.data(), count, data.layout);
  data.kernels.final_pass(t, data.node_list.data(), count, data.layout);
  return steps;
}

/// Notes `nwords` words at `p`, a piece at a time.
void note_words(search_data& data, word* p) {
  undo_log& log = data.undo;
  if (!log.recording) return;
  for (int w = 0; w < data.nwords; w += log.piece_words) {
    if (log.count >= log.capacity) {
      log.count = log.capacity + 1;
      return;
    }
    log.where[log.count] = p + w;
    std::memcpy(log.old_words + at(log.count) * at(log.piece_words), p + w,
                at(log.piece_words) * sizeof(word));
    ++log.count;
  }
}

template <int words>
void put_back(const undo_log& log) {
  for (int i = log.count - 1; i >= 0; --i)
    std::memcpy(log.where[i], log.old_words + at(i) * words, words * sizeof(word));
}

/// Preliminary sets of a node of a turned path; its final sets are set to nothing, which no final
/// pass ever gives, so that the next wave takes them as changed.
void remake_turned(search_data& data, int v) {
  const node_sets& s = data.sets[at(v)];
  note_words(data, s.down);
  note_words(data, s.unions);
  note_words(data, s.final);
  data.kernels.remake_down(data.sets[at(data.tree.first[at(v)])].down,
                           data.sets[at(data.tree.second[at(v)])].down, s.down, s.unions,
                           data.layout);
  std::memset(s.final, 0, at(data.nwords) * sizeof(word));
}

}  // namespace

double full_pass(search_data& data) {
  if (data.implied_on) reset_counters(data);
  const std::int64_t steps = pass_from(data, data.n);
  if (data.in_swap && data.cluster_count > 0) widen_clusters(data);
  if (!data.implied_on) return static_cast<double>(data.base_steps + steps);
  refresh_step_costs(data);
  return total_fit(data);
}

double tree_length(search_data& data, std::span<const std::int32_t> anc) {
  if (anc.data() != data.tree.anc.data())
    std::memcpy(data.tree.anc.data(), anc.data(), at(data.nodes) * sizeof(anc[0]));
  rebuild_links(data);
  return full_pass(data);
}

std::int64_t subtree_pass(search_data& data, int node) {
  const std::int64_t steps = pass_from(data, node);
  if (data.implied_on) refresh_step_costs(data);
  return steps;
}

void repair_after_clip(search_data& data, int start, int clip) {
  if (clip < 0) {
    repair_after_insert(data, data.tree.sister[at(start)]);
    return;
  }
  data.kernels.clip_wave(context_of(data), start, clip, data.layout);
}

void repair_after_insert(search_data& data, int node) {
  data.kernels.insert_wave(context_of(data), node, data.layout);
}

void begin_undo(search_data& data) {
  data.undo.count = 0;
  data.undo.recording = data.undo.capacity > 0;
}

bool undo_sets(search_data& data) {
  undo_log& log = data.undo;
  const bool whole = log.recording && log.count <= log.capacity;
  if (whole) {
    switch (log.piece_words) {
      case 1:
        put_back<1>(log);
        break;
      case 2:
        put_back<2>(log);
        break;
      case 8:
        put_back<8>(log);
        break;
      default:
        ALWAYS_CHECK(log.piece_words == 16, "width of the undo log");
        put_back<16>(log);
    }
  }
  log.count = 0;
  return whole;
}

void end_undo(search_data& data) {
  data.undo.count = 0;
  data.undo.recording = false;
}

void reroot_subtree(search_data& data, int node, int clip) {
  int length = 0;
  for (int v = data.tree.anc[at(node)]; v != clip; v = data.tree.anc[at(v)])
    data.node_list[at(length++)] = v;
  if (length == 0) return;
  reroot_links(data.tree, node, clip);
  while (length-- > 0) remake_turned(data, data.node_list[at(length)]);
  remake_turned(data, clip);
}

bool same_score(const search_data& data, double a, double b) {
  if (data.implied_on || data.has_continuous) return a - b < 1e-08 && b - a < 1e-08;
  return a == b;
}

}  // namespace zeb
