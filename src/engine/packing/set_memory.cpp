#include "engine/packing/set_memory.h"

#include <algorithm>

#include "base/arena.h"
#include "base/indices.h"

namespace zeb {
namespace {

constexpr std::size_t weight_digits = 31;

std::span<word> alloc_sets(const search_data& data) {
  constexpr std::size_t cache_line = 64;
  const std::size_t count =
      checked_product(at(data.nodes), std::max<std::size_t>(data.set_stride, words_per_block));
  return alloc_low<word>(count, cache_line);
}

}  // namespace

void lay_out_groups(search_data& data, const std::array<int, packing_groups>& fields) {
  int start = 0;
  for (std::size_t g = 0; g < packing_groups; ++g) {
    const int block_fields = fields_per_word[g] * words_per_block;
    const int blocks = (fields[g] + block_fields - 1) / block_fields;
    data.field_count[g] = blocks * block_fields;
    data.group_words[g] = blocks * words_per_block;
    data.group_start[g] = start;
    start += data.group_words[g];
  }
  data.group_start[packing_groups] = data.nwords = start;
}

void empty_field_records(search_data& data) {
  for (const std::span<field_record> group : data.fields)
    for (field_record& f : group) {
      f = {};
      f.character = -1;
    }
}

void allocate_search_data(search_data& data) {
  constexpr std::size_t cache_line = 64;
  data.layout.end0 = data.group_start[1];
  data.layout.end1 = data.group_start[2];
  data.layout.end2 = data.group_start[3];
  data.layout.end3 = data.group_start[4];
  data.set_stride = at(data.nwords);
  std::size_t kernel_fields = 0;
  for (int g = 0; g < packing_groups; ++g) {
    data.fields[at(g)] = alloc_low<field_record>(at(data.field_count[at(g)]));
    kernel_fields += at(data.field_count[at(g)]);
  }
  data.field_weight = calloc_low<std::int32_t>(kernel_fields);
  data.word_weight = calloc_low<std::int32_t>(at(data.layout.end3));
  data.weight_planes = alloc_low<word>(weight_digits * at(data.layout.end3), cache_line);
  const std::size_t nodes = at(data.nodes);
  data.tree = {alloc_low<std::int32_t>(nodes), alloc_low<std::int32_t>(nodes),
               alloc_low<std::int32_t>(nodes), alloc_low<std::int32_t>(nodes)};
  std::fill(data.tree.first.begin(), data.tree.first.end(), -1);
  std::fill(data.tree.second.begin(), data.tree.second.end(), -1);
  data.node_list = alloc_low<std::int32_t>(nodes + 1);
  data.node_stack = alloc_low<std::int32_t>(2 * nodes + 2);
  data.down_base = alloc_sets(data).data();
  data.final_base = alloc_sets(data).data();
  data.unions_base = alloc_sets(data).data();
  data.branch_base = alloc_sets(data).data();
  data.sets = alloc_low<node_sets>(nodes);
  for (std::size_t v = 0; v < nodes; ++v) {
    const std::size_t offset = v * data.set_stride;
    data.sets[v] = {data.down_base + offset, data.final_base + offset, data.unions_base + offset,
                    data.branch_base + offset};
  }
}

void allocate_undo(search_data& data) {
  // Enough for every word of all sets, or a million words: a wave that changes more is better
  // remade than put back.
  constexpr std::size_t most = std::size_t{1} << 20;
  const std::size_t of_node =
      4 * at(data.nwords) + data.wide.down_words + data.wide.final_words + data.wide.branch_words;
  const std::size_t words = std::clamp(at(data.nodes) * of_node, at(words_per_block), most);
  const std::size_t pieces = (words + 7) / 8;
  data.undo.old_words = alloc_low<word>(words, 64).data();
  data.undo.where = alloc_low<word*>(pieces).data();
  data.undo.where_size = pieces;
  data.undo.words_size = words;
}

}  // namespace zeb
