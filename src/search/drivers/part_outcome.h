// What comes of one part of a search that keeps its trees in slots of its own.
#pragma once

#include <cstdint>
#include <vector>

#include "base/packet.h"
#include "search/landmarks/estimate_errors.h"
#include "search/search_context.h"
#include "search/search_report.h"

namespace zeb {

/// Work done since the part began.
struct work_done {
  std::uint64_t rearrangements = 0;
  std::int64_t moves = 0;
  estimate_errors landmark_errors;
};

/// Where it stands, or ended.
struct part_state {
  int stage = 0;                 // search_stage
  double score = unknown_score;  // unknown_score: stopped before there was a tree
  work_done done;
};

/// A tree in normal form.
struct found_tree {
  std::vector<std::int32_t> form;
  double score = unknown_score;
};

/// A part begins anew within its outer search, which stays as it is until the part has ended. What
/// the report shows goes on from there.
void begin_part(search_context& part);
work_done work_of_part(const search_context& part);
/// All trees in the slots.
std::vector<found_tree> found_trees(search_context& context);
/// A part is over: its work counts as that of the search.
void add_work(search_context& context, const work_done& done);

void put(const part_state& state, packet_writer& to);
void put(const std::vector<found_tree>& trees, packet_writer& to);
part_state state_from(packet_reader& from);
std::vector<found_tree> trees_from(packet_reader& from);
void put(const std::vector<status_mark>& lines, packet_writer& to);
std::vector<status_mark> marks_from(packet_reader& from);

}  // namespace zeb
