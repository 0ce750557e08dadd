// Between trees of the buffer (matrix numbering, polytomies, absent taxa) and trees in work.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "engine/search_data.h"

namespace zeb {

/// Conversions between matrix numbering (tree buffer: ntax taxa, polytomies, absent taxa) and the
/// internal one. `to_internal` prunes inactive taxa, re-roots on the outgroup; it returns false if
/// an active taxon is absent; polytomies are resolved arbitrarily (`resolve`) or refused.
bool to_internal(const search_data& data, std::span<const std::int32_t> buffer_tree,
                 std::span<std::int32_t> anc, bool resolve);
void to_buffer(const search_data& data, std::span<const std::int32_t> anc,
               std::span<std::int32_t> buffer_tree);

/// Memory that `to_buffer` needs, for those who can't fail for want of it. `anc` and `buffer_tree`
/// may be the same.
struct conversion_room {
  explicit conversion_room(const search_data& data);
  std::vector<int> ancestors;
  std::vector<int> numbers;
};
void to_buffer(const search_data& data, std::span<const std::int32_t> anc,
               std::span<std::int32_t> buffer_tree, conversion_room& room);

}  // namespace zeb
