// Who judges the reconnections of a clip where kernels can't: all those within the bound by what
// kernels know are collected, and judged together when the clip's branches are through.
#pragma once

#include <memory>

namespace zeb {

struct swap_run;

class candidate_judge {
 public:
  virtual ~candidate_judge() = default;
  /// The clip is off: returns what its home costs by what is judged here, and forgets former
  /// candidates.
  virtual double begin_clip() = 0;
  /// A reconnection that costs so much in all other characters.
  virtual void collect(int u, int v, double cost) = 0;
  /// Judges what was collected, and gives the run what is within its bound.
  virtual void judge() = 0;
  /// A move was applied.
  virtual void tree_changed() = 0;
  /// What is judged here of the tree in work; part of its score.
  virtual double score() const = 0;
  /// All clips are through: do they begin anew?
  virtual bool begins_anew() = 0;
};

}  // namespace zeb
