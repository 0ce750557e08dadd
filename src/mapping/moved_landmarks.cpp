#include "mapping/moved_landmarks.h"

#include <string>
#include <vector>

#include "base/indices.h"
#include "base/message_text.h"
#include "console/output.h"
#include "landmarks/fermat.h"
#include "landmarks/landmark_scores.h"
#include "landmarks/lmark_reports.h"
#include "matrix/landmarks.h"
#include "matrix/matrix.h"
#include "trees/tree_store.h"

namespace zeb {
namespace {

/// Positions that are as near as this part of the point's largest distance are the same.
constexpr double least_move = 1e-6;

}  // namespace

void list_moved_landmarks(int number, int character) {
  const const_tree_span tree = stored_tree(number);
  std::vector<std::uint8_t> one(at(matrix.nchar), 0);
  one[at(character)] = 1;
  const int configuration =
      static_cast<int>(configuration_of(character) - landmark_configurations().data());
  std::vector<std::string> moves(at(node_limit(tree, matrix.ntax)));
  for_each_landmark(tree, one,
                    [&](const point_record& point, std::span<const landmark_point> positions) {
                      for (std::size_t v = 0; v < moves.size(); ++v) {
                        if (v == at(matrix.ntax) || is_missing(positions[v])) continue;
                        const landmark_point& above = positions[at(tree[v])];
                        if (is_missing(above)) continue;
                        const double moved = distance(positions[v], above);
                        if (moved <= least_move * point.span) continue;
                        moves[v] += "      " + landmark_label(configuration, point.landmark) +
                                    text_of(": %.*f\n", lmark.settings.decimals, moved);
                      }
                    });
  emit(text_of("Tree %i, ", number), character_name(character), ":\n");
  for (std::size_t v = 0; v < moves.size(); ++v) {
    const int node = static_cast<int>(v);
    if (v == at(matrix.ntax) || (node < matrix.ntax && is_absent(tree, node))) continue;
    emit("   ", node < matrix.ntax ? std::string(taxon_name(node)) : text_of("Node %i", node),
         ":\n", moves[v].empty() ? "      No landmarks move\n" : moves[v]);
  }
}

}  // namespace zeb
