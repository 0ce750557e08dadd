// The trees that a search has taken, for workers, which can't look into its store.
#pragma once

#include <atomic>
#include <cstdint>

#include "search/workers/shared_memory.h"

namespace zeb {

/// Prints of trees (`tree_print`), added by the process and looked up by its workers. What it says
/// is no more than a hint: some trees may not be there, others have gone from the store.
class known_prints {
 public:
  known_prints();
  void add(std::uint64_t print);
  bool has(std::uint64_t print) const;

 private:
  struct page;
  shared_memory shared_;
  page* page_;
};

}  // namespace zeb
