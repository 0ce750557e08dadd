// The search of one sector: a part of a tree, with all that leaves it as terminals of a reduced
// data set. What is found better there is better in the whole tree, and by as much.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "engine/packing/reduced_data.h"
#include "search/search_context.h"

namespace zeb {

/// How a sector is searched, by its number of terminals.
struct sector_search_settings {
  int starts = 3;       // of small ones: replications of building and swapping; then as many again
                        // where their scores differ
  int fuse = 0;         // rounds in which those are fused; 0 none
  int godrift = 75;     // from this size on the sector's tree is drifted instead
  int drift = 6;        // cycles of that
  int gocomb = 0;       // from this size on both: starts that are drifted and fused; 0 never
  int combstarts = 4;   // of these
  bool equals = false;  // a tree that is as good as the sector's takes its place, too

  // -- commands of the user, in place of all that --
  std::vector<std::string> instructions;  // by level of recursion; empty: none at that level
  int recurse = 3;                        // levels that there may be
  bool track = false;                     // commands may ask for nodes of the whole tree
  bool safesank = true;                   // sectors keep all characters with costs either way

  // -- memory --
  int slack = 0;        // per cent of memory that a sector is given beyond what it needs
  bool xbuffer = true;  // off: all sets of the whole tree are made anew after every sector
};

/// Terminals that sectors of these data may have, by the memory that is free.
int largest_sector(const search_data& data, const sector_search_settings& how);

/// Searches a sector of `tree` (internal numbering), which is the tree in work of `outer` with all
/// its sets, and whose score is `*score`. True if another arrangement took the sector's place: then
/// `tree` and `*score` are changed, and the sets of `outer` made for the new tree. The seeds are
/// drawn from the generator of `outer`. A search that is stopped has found what it has found.
/// Sectors that are too large for the memory are left as they are.
bool search_sector(search_context& outer, std::span<std::int32_t> tree, const tree_sector& sector,
                   const sector_search_settings& how, double* score);

}  // namespace zeb
