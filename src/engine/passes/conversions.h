// Between trees of the buffer (matrix numbering, polytomies, absent taxa) and trees in work.
#pragma once

#include <cstdint>
#include <span>

#include "engine/search_data.h"

namespace zeb {

/// Conversions between matrix numbering (tree buffer: ntax taxa, polytomies, absent taxa) and the
/// internal one. `to_internal` prunes inactive taxa, re-roots on the outgroup; it returns false if
/// an active taxon is absent; polytomies are resolved arbitrarily (`resolve`) or refused.
bool to_internal(const search_data& data, std::span<const std::int32_t> buffer_tree,
                 std::span<std::int32_t> anc, bool resolve);
void to_buffer(const search_data& data, std::span<const std::int32_t> anc,
               std::span<std::int32_t> buffer_tree);

}  // namespace zeb
