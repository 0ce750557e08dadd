#include "landmarks/point_blocks.h"

#include <algorithm>

#include "landmarks/point_records.h"

namespace zeb {

void add_block(point_blocks& blocks, std::span<const point_record* const> points, int dimensions,
               std::span<const std::int32_t> terminals) {
  point_block block;
  block.dimensions = dimensions;
  block.begin = blocks.values_per_node;
  block.span.fill(1);
  for (std::size_t l = 0; l < points.size(); ++l)
    if (points[l]->span > 0) block.span[l] = points[l]->span;
  const std::size_t values = at(dimensions) * block_lanes;
  blocks.values_per_node += values;
  blocks.coordinates.resize(blocks.values_per_node * terminals.size(), 0.0);
  double* to = blocks.coordinates.data() + block.begin * terminals.size();
  for (const std::int32_t t : terminals) {
    unsigned present = 0;
    for (std::size_t l = 0; l < points.size(); ++l) {
      const landmark_point& point = points[l]->terminals[at(t)];
      if (is_missing(point)) continue;
      present |= 1U << l;
      to[l] = point.x;
      to[block_lanes + l] = point.y;
      if (dimensions == 3) to[2 * block_lanes + l] = point.z;
    }
    block.has_missing = block.has_missing || present != (1U << points.size()) - 1;
    blocks.is_present.push_back(static_cast<std::uint8_t>(present));
    to += values;
  }
  blocks.blocks.push_back(block);
}

node_positions::node_positions(const point_blocks& points, int nodes)
    : nodes_(nodes), values_(points.values_per_node * at(nodes), 0.0) {
  for (const point_block& block : points.blocks) {
    const std::size_t values = at(block.dimensions) * block_lanes;
    const auto from = points.coordinates.begin() +
                      static_cast<std::ptrdiff_t>(block.begin * at(points.terminals));
    std::copy_n(from, values * at(points.terminals), of(block, 0));
  }
}

}  // namespace zeb
