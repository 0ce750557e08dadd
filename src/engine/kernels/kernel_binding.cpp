#include "engine/kernels/kernel_binding.h"

#include <algorithm>
#include <bit>

#include "base/errors.h"
#include "base/indices.h"
#include "engine/fit/implied_weighting.h"
#include "engine/kernels/kernel_choice.h"

namespace zeb {
namespace {

/// The flag bit of field `f` of a word of this group: where the kernels mark a failed field.
word flag_bit(int group, int f) {
  const int width = field_bits[at(group)];
  return word{1} << (group == 0 ? f * width : f * width + width - 1);
}

/// Field weights in the order of the kernels; returns their sum.
std::int64_t gather_weights(search_data& data) {
  std::int64_t sum = 0;
  std::size_t next = 0;
  for (const std::span<const field_record> fields : data.fields)
    for (const field_record& f : fields) {
      data.field_weight[next++] = f.weight;
      sum += f.weight;
    }
  return sum;
}

/// First word of the block whose fields differ most between trees.
int most_variable_block(const search_data& data) {
  int best = 0;
  std::int64_t best_spread = -1;
  for (int g = 0; g < packing_groups; ++g) {
    const std::span<const field_record> fields = data.fields[at(g)];
    const std::size_t block_fields = at(fields_per_word[at(g)]) * words_per_block;
    for (std::size_t first = 0; first < fields.size(); first += block_fields) {
      std::int64_t spread = 0;
      for (const field_record& f : fields.subspan(first, block_fields))
        spread += std::int64_t{f.weight} * (f.max_steps - f.min_steps);
      if (spread <= best_spread) continue;
      best_spread = spread;
      best = data.group_start[at(g)] + static_cast<int>(first / at(fields_per_word[at(g)]));
    }
  }
  return best;
}

/// Writes the weights digit by digit; returns the number of digits.
int make_planes(search_data& data) {
  std::int32_t largest = 0;
  for (const std::int32_t w : data.field_weight) largest = std::max(largest, w);
  const int digits = 32 - std::countl_zero(static_cast<std::uint32_t>(largest));
  const int end = data.layout.end3;
  std::fill_n(data.weight_planes.begin(), at(digits) * at(end), word{0});
  for (int g = 0; g < packing_groups; ++g) {
    const int in_word = fields_per_word[at(g)];
    const int start = data.group_start[at(g)];
    const std::span<const field_record> fields = data.fields[at(g)];
    for (std::size_t i = 0; i < fields.size(); ++i) {
      const std::size_t w = at(start) + i / at(in_word);
      const word flag = flag_bit(g, static_cast<int>(i % at(in_word)));
      for (auto rest = static_cast<std::uint32_t>(fields[i].weight); rest; rest &= rest - 1)
        data.weight_planes[at(std::countr_zero(rest)) * at(end) + w] |= flag;
    }
  }
  return digits;
}

}  // namespace

scoring_mode mode_of(const search_data& data) {
  if (data.implied_on) return scoring_mode::implied;
  if (data.uniform_mode) return scoring_mode::uniform;
  return data.per_char_mode ? scoring_mode::per_character : scoring_mode::word_weights;
}

void bind_kernels(search_data& data) {
  bind_kernels(data, data.long_words ? widest_kernels() : 32);
}

void bind_kernels(search_data& data, int width) {
  const scoring_mode mode = mode_of(data);
  if (gather_weights(data) > largest_weight_sum)
    error_end("The weights of all characters together may not be above 1,000,000,000");
  data.layout.field_weight = data.field_weight.data();
  data.layout.word_weight = data.word_weight.data();
  data.layout.weight_planes = data.weight_planes.data();
  data.layout.head = most_variable_block(data);
  data.layout.plane_count = mode == scoring_mode::uniform ? 0 : make_planes(data);
  data.kernels = kernels_of_width(width, mode);
  if (data.implied_on) weigh_counters(data);
  data.undo.piece_words = width / 32;
  data.undo.capacity = static_cast<std::int32_t>(
      std::min(data.undo.where_size, data.undo.words_size / at(data.undo.piece_words)));
  data.undo.count = 0;
}

void weights_changed(search_data& data) {
  data.uniform_mode = true;
  for (const std::span<const field_record> fields : data.fields)
    for (const field_record& f : fields)
      if (f.character >= 0 && f.weight != 1) data.uniform_mode = false;
  if (data.implied_on) data.uniform_mode = false;
  data.per_char_mode = !data.uniform_mode;
  bind_kernels(data, data.kernels.width_bits);
}

}  // namespace zeb
