// The trees that an exact search keeps: the best so far, and those within the limit above them.
#pragma once

#include <cstdint>
#include <span>

#include "search/search_context.h"

namespace zeb {

class best_trees {
 public:
  /// They go into the slots of the context. With `sample` a full buffer goes on as a random sample
  /// of all trees seen.
  best_trees(search_context& context, bool sample);

  /// Trees that score worse than this, or, without suboptimal ones, as well, may be left out.
  void begin_at(double score) { best_ = score; }
  double score() const { return best_; }
  /// Trees up to this score are wanted. A full buffer that has a tree of the best score has no use
  /// for more of these; what is wanted then is a better one.
  double limit() const;
  /// The tree in work, complete, with its branches marked. A full buffer takes the first one of the
  /// best score only, in the place of the worst.
  void keep(double score, std::span<const std::uint8_t> marks);
  std::int64_t seen() const { return seen_; }
  /// There was no room for some of the trees.
  bool overflowed() const { return overflowed_; }

 private:
  void take_best(double score);
  int worst_slot() const;
  void take_sample(double score, std::span<const std::uint8_t> marks);

  search_context& context_;
  const search_data& data_;
  const bool sample_;
  const double rounding_;  // scores closer than this are one
  double best_ = unknown_score;
  bool has_best_ = false;  // a tree of that score was met, and kept
  bool is_full_ = false;   // some tree that is wanted found no room
  std::int64_t seen_ = 0;
  bool overflowed_ = false;
};

}  // namespace zeb
