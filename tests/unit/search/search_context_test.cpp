// Search contexts beside and inside each other, without console and commands: what one search does
// leaves no trace in another.
#include "search/search_context.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <string>
#include <vector>

#include "base/arena.h"
#include "base/command.h"
#include "base/errors.h"
#include "engine/packing/packed_matrix.h"
#include "engine/registration.h"
#include "matrix/matrix.h"
#include "property/random_matrix.h"
#include "search/drivers/bbreak.h"
#include "search/drivers/mult.h"
#include "search/hooks.h"
#include "search/store/stored_trees.h"
#include "support/program.h"
#include "trees/tree_slots.h"

namespace zeb {
namespace {

using zeb_test::draw;

std::size_t at(int i) { return static_cast<std::size_t>(i); }

/// What happens in the midst of swaps: called with each candidate of the search that runs.
using event = std::function<void()>;
const event* at_candidate = nullptr;

bool call_and_allow(const search_data&, int, int, int) {
  if (at_candidate) (*at_candidate)();
  return false;
}

class event_scope {
 public:
  explicit event_scope(const event* happening) { at_candidate = happening; }
  ~event_scope() { at_candidate = outer_; }
  event_scope(const event_scope&) = delete;
  event_scope& operator=(const event_scope&) = delete;

 private:
  const event* outer_ = at_candidate;
};

class search_contexts : public ::testing::Test {
 protected:
  static void SetUpTestSuite() {
    create_arena(std::size_t{1} << 26);
    register_engine();
    hooks_of_search.slot_binders = {
        [](const search_data&, move_slots& slots) { slots.forbids = call_and_allow; }};
  }
  static void TearDownTestSuite() {
    hooks_of_search.slot_binders.clear();
    wipe_matrix();
    create_arena(16'000'000);
  }
  void SetUp() override {
    std::mt19937 g(12);
    zeb_test::data_shape shape;
    shape.ntax = 26;
    shape.nchar = 70;
    shape.states = 4;
    fill_matrix(shape, g);
  }
};

/// All that a search ended with.
struct outcome {
  double best = 0;
  std::vector<std::vector<std::int32_t>> trees;
  std::vector<double> scores;
  std::uint64_t rearrangements = 0;
  std::int64_t moves = 0;
  int next_draw = 0;
  bool operator==(const outcome&) const = default;
};

outcome search(search_context& context, int replications) {
  context.shown.silent = true;
  mult_settings settings_of_run;
  settings_of_run.replications = replications;
  settings_of_run.hold = 4;
  outcome result;
  result.best = mult_search(context, settings_of_run).best;
  result.best = std::min(result.best, swap_stored_trees(context, false).best);
  for (int t = 0; t < context.trees.ntrees; ++t) {
    const std::span<const std::int32_t> tree = slot_tree(context, t);
    result.trees.emplace_back(tree.begin(), tree.end());
    result.scores.push_back(record_of(context, t).score);
  }
  result.rearrangements = context.rearrangements.low;
  result.moves = context.moves_done;
  result.next_draw = context.random.draw();
  return result;
}

/// A part of the taxa, with other weights; the same for the same depth.
packing_request reduced_request(int depth) {
  std::mt19937 g(static_cast<unsigned>(depth));
  packing_request request = request_of_settings();
  std::shuffle(request.taxa.begin(), request.taxa.end(), g);
  request.taxa.resize(at(22 - 3 * depth));
  for (std::int32_t& weight : request.weights) weight = draw(g, 0, 3);
  request.rules.on = depth % 2 == 0;
  request.rules.functions.resize(at(matrix.nchar));
  return request;
}

constexpr int room = 30;

outcome search_reduced(int depth, search_context* outer) {
  context_scope scope(reduced_request(depth), room, {}, 100U + static_cast<unsigned>(depth), outer);
  return search(scope.context(), 2);
}

/// Everything in a data set that a swap changes.
std::vector<std::int64_t> state_of(const search_data& data) {
  std::vector<std::int64_t> state = {data.undo.count, data.undo.recording, data.in_swap,
                                     data.cluster_count};
  for (const auto links : {data.tree.anc, data.tree.sister, data.tree.first, data.tree.second})
    state.insert(state.end(), links.begin(), links.end());
  state.insert(state.end(), data.cluster_of.begin(), data.cluster_of.end());
  const std::size_t words = at(data.nodes) * data.set_stride;
  for (const word* base : {data.down_base, data.final_base, data.unions_base, data.branch_base})
    state.insert(state.end(), base, base + words);
  return state;
}

/// A search over the user's data in slots of its own, with something happening at each candidate.
outcome search_all(const search_rules& rules, const std::function<void(search_context&)>& midst) {
  search_data& data = packed_matrix(true);
  private_slots slots(room, data.nodes);
  context_scope scope(data, slots, rules, random_generator(7));
  const event happening = [&] { midst(scope.context()); };
  const event_scope happens(&happening);
  return search(scope.context(), 3);
}

TEST_F(search_contexts, a_search_inside_another_leaves_no_trace) {
  for (const int collapsing_rule : {0, 3}) {
    search_rules rules;
    rules.collapse.rule = collapsing_rule;
    rules.swap.random_clip = collapsing_rule == 3;
    const outcome undisturbed = search_all(rules, [](search_context&) {});
    const outcome alone = search_reduced(1, nullptr);
    int calls = 0;
    int disturbances = 0;
    const outcome disturbed = search_all(rules, [&](search_context& outer) {
      if (++calls % 61 != 0) return;
      const event_scope nothing_happens(nullptr);
      const std::vector<std::int64_t> before = state_of(outer.data);
      const std::byte* const low = arena.low;
      EXPECT_EQ(search_reduced(1, &outer), alone);
      EXPECT_EQ(arena.low, low);
      EXPECT_EQ(state_of(outer.data), before);
      ++disturbances;
    });
    EXPECT_GT(disturbances, 3);
    EXPECT_GT(undisturbed.trees.size(), 0U);
    EXPECT_EQ(disturbed, undisturbed);
  }
}

TEST_F(search_contexts, nest_five_deep) {
  std::vector<outcome> alone;
  for (int depth = 0; depth < 5; ++depth) alone.push_back(search_reduced(depth, nullptr));
  std::vector<outcome> nested(5);
  const std::function<void(int, search_context*)> descend = [&](int depth, search_context* outer) {
    context_scope scope(reduced_request(depth), room, {}, 100U + static_cast<unsigned>(depth),
                        outer);
    int calls = 0;
    const event happening = [&] {
      if (depth < 4 && ++calls == 30) descend(depth + 1, &scope.context());
    };
    const event_scope happens(&happening);
    nested[at(depth)] = search(scope.context(), 2);
  };
  descend(0, nullptr);
  EXPECT_EQ(nested, alone);
}

/// Memory that runs out at any point of an inner search ends that one alone.
TEST_F(search_contexts, an_error_inside_leaves_the_outer_search_sound) {
  const jump_context errors_come_here;
  const outcome undisturbed = search_all({}, [](search_context&) {});
  int calls = 0;
  int failures = 0;
  zeb_test::printed_by([&] {
    const outcome disturbed = search_all({}, [&](search_context& outer) {
      if (++calls % 11 != 0) return;
      const event_scope nothing_happens(nullptr);
      const std::byte* const low = arena.low;
      arena.fail_countdown = calls / 11;
      try {
        search_reduced(calls % 5, &outer);
      } catch (const command_unwinding&) {
        ++failures;
      }
      arena.fail_countdown = -1;
      EXPECT_EQ(arena.low, low);
    });
    EXPECT_EQ(disturbed, undisturbed);
  });
  EXPECT_GT(failures, 20);
}

}  // namespace
}  // namespace zeb
