// Characters whose cost no sets of nodes can tell: the whole tree in work is asked.
#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <vector>

namespace zeb {

struct search_data;
struct packing_request;
struct tree_sector;

/// The characters of a data set that are scored by whole trees. Made by who knows them; see
/// `engine_hooks`. Passes leave them alone; `tree_length` adds their score.
class whole_tree_characters {
 public:
  virtual ~whole_tree_characters() = default;
  /// What they add to the score of the tree in `data.tree`, whose links must be there.
  virtual double score(const search_data& data) = 0;
  /// Marks branches of that tree that they keep under a collapsing rule; the other marks stay.
  virtual void mark_staying(const search_data& data, int rule, std::span<std::uint8_t> marks) = 0;
  /// Those of a sector of the tree in work, whose ends stay where they are; `inner` has its taxa
  /// numbered.
  virtual std::shared_ptr<whole_tree_characters> of_sector(const search_data& outer,
                                                           const tree_sector& sector,
                                                           const search_data& inner) = 0;
  /// Adds their numbers in the matrix.
  virtual void list_characters(std::vector<std::int32_t>& list) const = 0;
  /// For a while each character counts as often as said (by number in the matrix; empty: once).
  virtual void reweight(std::span<const std::uint8_t> factors) = 0;
};

}  // namespace zeb
