// Commands that search a part of a problem: within a sector of a tree the user's instructions run
// as commands, for which the sector is all the data that there are.
#pragma once

#include <vector>

#include "language/settings_scope.h"

namespace zeb {

struct search_context;

/// The nodes of the tree that a sector was cut from, as the user numbers them, and of the sector's.
struct tracked_nodes {
  std::vector<int> in_sector;  // by node of the big tree: the sector's; -1 outside
  int taxa = 0;                // of the big tree
};

struct part_search_state {
  search_context* sector = nullptr;        // whose data commands search; null: those of the user
  int level = 0;                           // sectors within sectors
  const tracked_nodes* tracked = nullptr;  // of the sector of the first level; null: not tracked
};
extern part_search_state part_search;  // written by the scope, and the function
/// All data of this process are a sector of that tree.
void track_sector_of_process(const tracked_nodes& nodes);

/// Commands search this sector as long as one lives; what they set ends with it.
class part_search_scope {
 public:
  part_search_scope(search_context& sector, const tracked_nodes* tracked);
  ~part_search_scope();
  part_search_scope(const part_search_scope&) = delete;
  part_search_scope& operator=(const part_search_scope&) = delete;

 private:
  part_search_state outer_ = part_search;
  settings_scope settings_;
};

}  // namespace zeb
