#include "engine/kernels/reweighting.h"

#include <algorithm>

#include "base/indices.h"
#include "engine/kernels/kernel_binding.h"
#include "matrix/settings/character_settings.h"

namespace zeb {
namespace {

/// Calls `visit(character, weight)` for each field that isn't padding, and each wide character.
template <class function>
void each_weight(search_data& data, function visit) {
  for (const std::span<field_record> fields : data.fields)
    for (field_record& f : fields)
      if (f.character >= 0) visit(f.character, f.weight);
  for (const wide_part& part : data.wide.parts)
    for (wide_character& c : part.characters) visit(c.character, c.weight);
}

}  // namespace

reweighting::reweighting(search_data& data)
    : data_(data), uniform_(data.uniform_mode), per_char_(data.per_char_mode) {
  each_weight(data, [this](std::int32_t, std::int32_t weight) { weights_.push_back(weight); });
}

reweighting::~reweighting() { put_back(); }

void reweighting::multiply(std::span<const std::uint8_t> factor) {
  std::int64_t room = largest_weight_sum;
  for (const std::int32_t weight : weights_) room -= weight;
  std::size_t i = 0;
  each_weight(data_, [&](std::int32_t character, std::int32_t& weight) {
    const std::int32_t packed = weights_[i++];
    const std::int64_t wanted = std::int64_t{packed} * factor[at(character)];
    const std::int64_t most =
        packed + std::min(room, std::max<std::int64_t>(0, largest_weight - packed));
    weight = static_cast<std::int32_t>(std::min(wanted, most));
    room -= std::max(0, weight - packed);
  });
  changed_ = true;
  if (data_.whole) data_.whole->reweight(factor);
  weights_changed(data_);
}

void reweighting::put_back() {
  if (!changed_) return;
  std::size_t i = 0;
  each_weight(data_, [&](std::int32_t, std::int32_t& weight) { weight = weights_[i++]; });
  if (data_.whole) data_.whole->reweight({});
  data_.uniform_mode = uniform_;
  data_.per_char_mode = per_char_;
  bind_kernels(data_, data_.kernels.width_bits);
  changed_ = false;
}

std::vector<std::int32_t> searched_characters(const search_data& data) {
  std::vector<std::int32_t> list;
  for (const pack_entry& e : data.entries) list.push_back(e.character);
  for (const wide_part& part : data.wide.parts)
    for (const wide_character& c : part.characters) list.push_back(c.character);
  if (data.whole) data.whole->list_characters(list);
  std::sort(list.begin(), list.end());
  list.erase(std::unique(list.begin(), list.end()), list.end());
  return list;
}

}  // namespace zeb
