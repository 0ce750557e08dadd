// The search of one replicate: the weights in force are those drawn, and what it leaves is trees.
#pragma once

#include <string>

#include "search/combined/search_state.h"
#include "trees/tree_slots.h"
#include "trees/tree_undo.h"

namespace zeb {

/// Searches the data as they weigh now, and puts what it found into slots of its own.
class replicate_search {
 public:
  virtual ~replicate_search() = default;
  /// The trees of the search with this seed, in matrix numbering; good until the next one.
  virtual const tree_slots& search(int seed) = 0;
  /// Trees that it left are to be collapsed for a consensus.
  virtual bool collapses() const = 0;
};

/// Five random addition sequences with TBR, five trees each, over the packed data.
class default_search : public replicate_search {
 public:
  default_search();
  const tree_slots& search(int seed) override;
  bool collapses() const override;

 private:
  private_slots trees_;
};

/// Commands of the user, which fill the tree buffer. With its end the buffer, the tree groups and
/// the seed are what they were.
class command_search : public replicate_search {
 public:
  /// `any_command`: almost all commands may run; else those that search and choose among trees.
  command_search(std::string text, bool any_command);
  ~command_search() override;
  command_search(const command_search&) = delete;
  command_search& operator=(const command_search&) = delete;
  const tree_slots& search(int seed) override;
  bool collapses() const override;

 private:
  std::string text_;
  bool any_command_;
  tree_undo undo_;
  fixed_capacity_scope capacity_;
  int seed_;
  bool cut_short_;
};

}  // namespace zeb
