#include "search/drivers/part_outcome.h"

#include <span>
#include <utility>

#include "base/indices.h"
#include "search/store/stored_trees.h"

namespace zeb {

void begin_part(search_context& part) {
  search_context& outer = *part.outer;
  outer.part = &part;
  forget_trees(part);
  part.rules = outer.rules;
  part.shown = outer.shown;
  part.best_score = outer.best_score;
  part.lowest_score = outer.lowest_score;
  part.rearrangements = outer.rearrangements;
  part.moves_done = outer.moves_done;
  part.landmark_errors = {};
  part.tree_limit = part.trees.maxtrees;
  part.score_limit = no_bound;
  part.shown.current_tree = 0;
}

work_done work_of_part(const search_context& part) {
  return {part.rearrangements.since(part.outer->rearrangements),
          part.moves_done - part.outer->moves_done, part.landmark_errors};
}

std::vector<found_tree> found_trees(search_context& context) {
  std::vector<found_tree> trees;
  for (int t = 0; t < context.trees.ntrees; ++t) {
    const std::span<const std::int32_t> form = slot_tree(context, t);
    trees.push_back({{form.begin(), form.end()}, record_of(context, t).score});
  }
  return trees;
}

void add_work(search_context& context, const work_done& done) {
  context.part = nullptr;
  context.rearrangements.add(done.rearrangements);
  context.moves_done += done.moves;
  context.landmark_errors.add(done.landmark_errors);
}

namespace {

void put(const work_done& done, packet_writer& to) {
  to.put_long(done.rearrangements);
  to.put_long(static_cast<std::uint64_t>(done.moves));
  to.put_long(static_cast<std::uint64_t>(done.landmark_errors.cases));
  to.put_real(done.landmark_errors.sum);
  to.put_real(done.landmark_errors.sum_of_squares);
  to.put_real(done.landmark_errors.least);
  to.put_real(done.landmark_errors.most);
}

work_done work_from(packet_reader& from) {
  work_done done;
  done.rearrangements = from.long_whole();
  done.moves = static_cast<std::int64_t>(from.long_whole());
  done.landmark_errors.cases = static_cast<std::int64_t>(from.long_whole());
  done.landmark_errors.sum = from.real();
  done.landmark_errors.sum_of_squares = from.real();
  done.landmark_errors.least = from.real();
  done.landmark_errors.most = from.real();
  return done;
}

}  // namespace

void put(const part_state& state, packet_writer& to) {
  to.put(state.stage);
  to.put_real(state.score);
  put(state.done, to);
}

void put(const std::vector<found_tree>& trees, packet_writer& to) {
  to.put(static_cast<std::int32_t>(trees.size()));
  for (const found_tree& tree : trees) {
    to.put_list(tree.form);
    to.put_real(tree.score);
  }
}

part_state state_from(packet_reader& from) {
  part_state state;
  state.stage = from.whole();
  state.score = from.real();
  state.done = work_from(from);
  return state;
}

std::vector<found_tree> trees_from(packet_reader& from) {
  std::vector<found_tree> trees;
  for (int count = from.whole(); count > 0; --count) {
    std::vector<std::int32_t> form = from.list();
    trees.push_back({std::move(form), from.real()});
  }
  return trees;
}

void put(const std::vector<status_mark>& lines, packet_writer& to) {
  to.put(static_cast<std::int32_t>(lines.size()));
  for (const status_mark& line : lines) {
    for (const int number : {line.stage, line.replication, line.current_tree, line.trees})
      to.put(number);
    to.put_real(line.score);
    to.put_real(line.best);
    to.put_long(line.rearrangements);
  }
}

std::vector<status_mark> marks_from(packet_reader& from) {
  std::vector<status_mark> lines(at(from.whole()));
  for (status_mark& line : lines) {
    for (int* number : {&line.stage, &line.replication, &line.current_tree, &line.trees})
      *number = from.whole();
    line.score = from.real();
    line.best = from.real();
    line.rearrangements = from.long_whole();
  }
  return lines;
}

}  // namespace zeb
