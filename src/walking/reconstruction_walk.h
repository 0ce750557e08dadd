// Reconstructions of a character as a walk goes through them: all, a sample of them, or some that
// come of settling ambiguous nodes one by one.
#pragma once

#include <cstdint>
#include <vector>

#include "mapping/reconstructions.h"
#include "mapping/tree_shape.h"

namespace zeb {

enum class reconstruction_choice {
  all,
  sample,   // each with the same chance
  settled,  // by chance, with other chances
};

struct reconstruction_request {
  std::vector<tree_node> tree;
  int character = 0;
  reconstruction_choice choice = reconstruction_choice::all;
  int wanted = 0;                      // unless all
  std::vector<std::uint32_t> allowed;  // see `reconstruction_rules`
  int increment = 0;
};

class reconstruction_walk {
 public:
  explicit reconstruction_walk(reconstruction_request request);

  /// Of all there are, or of those that obey what is demanded.
  double count() const { return list_.count(); }
  /// To the next one; false after the last.
  bool next();
  /// By node: states of the matrix, or thousandths; -1 for nodes that aren't there.
  const std::vector<int>& values() const { return values_; }
  /// Unweighted; thousandths for continuous characters.
  std::int64_t steps() const { return list_.steps(); }
  int ancestor(int node) const { return shape_.ancestor(node); }

 private:
  reconstruction_list listed(const std::vector<std::uint32_t>& allowed) const;
  void take(const reconstruction_list& list);
  void draw_sample();
  void settle();

  const reconstruction_request request_;
  const tree_shape shape_;
  reconstruction_list list_;
  std::vector<std::vector<int>> sample_;
  int done_ = 0;
  std::vector<int> values_;
};

}  // namespace zeb
