// Searches that are cut short leave valid trees, settings and data; and a search is the same search
// on every width of the kernels.
#include <gtest/gtest.h>

#include <algorithm>
#include <optional>
#include <string>

#include "base/arena.h"
#include "base/hooks.h"
#include "base/interrupts.h"
#include "base/random.h"
#include "base/time_limit.h"
#include "console/settings.h"
#include "engine/collapsing/collapsing.h"
#include "engine/fit/weighting_settings.h"
#include "engine/kernels/kernel_binding.h"
#include "engine/kernels/kernel_choice.h"
#include "engine/plain/tree_scores.h"
#include "engine/settings.h"
#include "matrix/matrix_layout.h"
#include "property/random_matrix.h"
#include "search/combined/combined_settings.h"
#include "search/drivers/bbreak.h"
#include "search/drivers/fusing.h"
#include "search/drivers/mult.h"
#include "search/drivers/rebuild.h"
#include "search/hooks.h"
#include "search/moves/swapper.h"
#include "search/search_report.h"
#include "search/search_results.h"
#include "search/search_session.h"
#include "search/sectors/sectors.h"
#include "search/store/filter.h"
#include "search/store/stored_trees.h"
#include "search/store/tree_identity.h"
#include "support/program.h"
#include "trees/tree_store.h"

namespace zeb {
namespace {

class search_survival : public ::testing::Test {
 protected:
  static void SetUpTestSuite() { zeb_test::run_program("rseed 1;"); }
  void TearDown() override {
    arena.fail_countdown = -1;
    collapsing = {};
    swapping = {};
    mult = {};
    ratchet = {};
    drift = {};
    sectors = {};
    rebuilding = {};
    fusing = {};
    combined = {};
    engine = {};
    weighting = {};
    search_settings = {};
    set_time_limit(0);
    forget_interrupt();
    hooks_of_search.slot_binders.clear();
    settings.report = false;
    settings.status_replications = settings.status_trees = 0;
    wipe_matrix();
  }
};

std::vector<std::vector<std::int32_t>> stored_trees() {
  std::vector<std::vector<std::int32_t>> trees;
  for (int t = 0; t < store.ntrees; ++t) {
    const tree_span tree = stored_tree(t);
    trees.emplace_back(tree.begin(), tree.end());
  }
  return trees;
}

std::vector<std::uint32_t> all_cells() {
  std::vector<std::uint32_t> cells;
  for (int t = 0; t < matrix.ntax; ++t) {
    for (int c = 0; c < matrix.nchar; ++c) cells.push_back(cell(t, c));
  }
  return cells;
}

void expect_all_well(const std::vector<std::uint32_t>& cells, const std::string& when,
                     double suboptimal = 0) {
  EXPECT_EQ(all_cells(), cells) << when;
  EXPECT_EQ(randomness.random_seed, 1) << when;
  EXPECT_FALSE(interrupts.in_search) << when;
  EXPECT_EQ(search_settings.suboptimal, suboptimal) << when;
  for (const auto& tree : stored_trees()) {
    EXPECT_EQ(check_tree_record(tree, matrix.ntax), "") << when;
    for (int t = 0; t < matrix.ntax; ++t) EXPECT_FALSE(is_absent(tree, t)) << when;
  }
}

zeb_test::data_shape noisy_shape() {
  zeb_test::data_shape shape;
  shape.ntax = 9;
  shape.nchar = 12;
  shape.states = 4;
  return shape;
}

TEST_F(search_survival, any_allocation_may_fail) {
  std::mt19937 g(3);
  fill_matrix(noisy_shape(), g);
  search_settings.suboptimal = 1;
  const std::vector<std::uint32_t> cells = all_cells();
  for (const char* search :
       {"mult=replic 3 hold 4;", "mult=replic 2 hold 1 wcluster 4;",
        "mult=replic 2 ias nowcluster;", "mult=replic 2 ras spr; collapse 6; bbreak;",
        "bbreak:limit 2 preproc randclip; bbreak;", "bbreak:nolimit; bbreak;",
        "collapse auto 3; bbreak=nomulpars;", "nelsen*;",
        "ratchet=iterations 4; drift=iterations 4;", "mult=replic 2 tbr ratchet drift;"}) {
    bool failed = true;
    for (int n = 0; failed && n < 1000000; n += 1 + n / 40) {
      drop_packed_data();
      arena.fail_countdown = n;
      const std::string said = zeb_test::run_program(search);
      failed = said.find("out of ram") != std::string::npos;
      arena.fail_countdown = -1;
      expect_all_well(cells, search + std::string(" failing at ") + std::to_string(n), 1);
    }
    EXPECT_FALSE(failed) << search;
  }
}

TEST_F(search_survival, time_and_room_may_run_out) {
  std::mt19937 g(4);
  zeb_test::data_shape shape = noisy_shape();
  shape.ntax = 200;
  shape.nchar = 150;
  fill_matrix(shape, g);
  const std::vector<std::uint32_t> cells = all_cells();
  const std::string full = zeb_test::run_program("hold 7; mult=replic 5 hold 3 keepall;");
  EXPECT_NE(full.find("(tree buffer full)"), std::string::npos) << full;
  expect_all_well(cells, "full buffer");
  set_time_limit(1);
  const std::string late = zeb_test::run_program("hold 1000; mult=replic 100000 hold 1 nokeepall;");
  EXPECT_NE(late.find("time is out"), std::string::npos) << late;
  EXPECT_NE(late.find("Search was interrupted..."), std::string::npos) << late;
  EXPECT_GT(store.ntrees, 0);
  expect_all_well(cells, "time-out");
}

/// Trees of different length may be one as collapsed; of those the best must be the one that stays.
TEST_F(search_survival, the_best_tree_found_is_in_memory_under_every_collapsing_rule) {
  std::mt19937 g(7);
  constexpr const char* searches[] = {"bbreak;",
                                      "bbreak=spr nomulpars;",
                                      "mult=replic 2 hold 3;",
                                      "mult=replic 2 hold 3 keepall;",
                                      "bbreak=tbr mulpars;",
                                      "ratchet=iterations 4;",
                                      "drift=iterations 4;",
                                      "mult=replic 2 hold 2 ratchet drift;"};
  for (int round = 0; round < 400; ++round) {
    fill_matrix(zeb_test::random_shape(g, 8, 12), g);
    collapsing.rule = round % 7;
    search_settings.suboptimal = zeb_test::draw(g, 0, 3);
    const std::string search = searches[round % 8];
    const std::string said = zeb_test::run_program("hold 50; randtrees 4; " + search);
    std::vector<double> scores(static_cast<std::size_t>(store.ntrees));
    score_stored_trees(scores);
    ASSERT_FALSE(scores.empty()) << said;
    EXPECT_EQ(*std::min_element(scores.begin(), scores.end()), last_search.best)
        << "round " << round << ", rule " << collapsing.rule << ", " << search << said;
    mult = {};
    swapping = {};
  }
}

int calls_to_interrupt = 0;

/// A wish to stop can come at any time: here with a certain candidate.
bool stop_at_candidate(const search_data&, int, int, int) {
  if (--calls_to_interrupt == 0) stop_search(stop_reason::user);
  return false;
}

void expect_best_trees(const std::string& said, const std::string& when) {
  std::vector<double> scores(static_cast<std::size_t>(store.ntrees));
  score_stored_trees(scores);
  for (const double score : scores) {
    const std::string told = " " + std::to_string(static_cast<long>(score));
    EXPECT_TRUE(said.find(told + ".") != said.npos || said.find(told + "\n") != said.npos ||
                said.find(told + ",") != said.npos)
        << when << ": a tree of " << score << " steps, but\n"
        << said;
  }
}

TEST_F(search_survival, a_wish_to_stop_may_come_with_any_candidate) {
  std::mt19937 g(6);
  fill_matrix(noisy_shape(), g);
  const std::vector<std::uint32_t> cells = all_cells();
  hooks_of_search.slot_binders.push_back(
      [](const search_data&, move_slots& slots) { slots.forbids = stop_at_candidate; });
  zeb_test::run_program("hold 500;");
  for (const char* search :
       {"mult=replic 3 hold 4 tbr;", "mult=replic 3 hold 1;", "mult=replic 3 spr;",
        "mult=wagner replic 5 cas 3;", "mult=replic 2 tbr ras hold 2 ratchet drift;", "bbreak;",
        "ratchet=iterations 6;", "ratchet=tradrat iterations 6;", "drift=iterations 6;",
        "drift=noequals;", "ratchet=notradrat fusefreq 3 autoconst 2 iterations 8;",
        "bbreak:safe; bbreak;", "bbreak=nomulpars;", "sectsch=minsize 5 maxsize 5;",
        "sectsch=gocomb 4;", "tfuse;", "hybrid=hybridize 4;", "rebuild=cycles 3 nohybrid;",
        "xmult=replications 2 ratchet 2;"}) {
    bool stopped = true;
    for (int n = 1; stopped; n += 1 + n / 7) {
      set_tree_count(store, 0);
      calls_to_interrupt = 0;
      if (!std::string(search).starts_with("mult"))
        zeb_test::run_program("mult=replic 2 tbr ras hold 1 noratchet nodrift;");
      calls_to_interrupt = n;
      const std::string said = zeb_test::run_program(search);
      stopped = calls_to_interrupt <= 0;
      EXPECT_EQ(said.find("interrupted") != std::string::npos, stopped) << said;
      expect_all_well(cells, search + std::string(" stopped at ") + std::to_string(n));
      expect_best_trees(said, search + std::string(" stopped at ") + std::to_string(n));
      forget_interrupt();
    }
  }
}

TEST_F(search_survival, collapsing_for_a_consensus_looks_for_a_stop_at_each_tree) {
  std::mt19937 g(8);
  fill_matrix(noisy_shape(), g);
  zeb_test::run_program("hold 50; randtrees 45;");
  const auto usual = hooks_of_base.check_interrupt;
  hooks_of_base.check_interrupt = [](bool) { ++calls_to_interrupt; };
  calls_to_interrupt = 0;
  zeb_test::run_program("collapse 6; collapse tempcollapse; majority;");
  hooks_of_base.check_interrupt = usual;
  EXPECT_GE(calls_to_interrupt, 45);
}

/// Blanks "hh:mm:ss": the only part of a report that two equal searches may differ in.
void blank_times(std::string& text) {
  for (std::size_t colon = text.find(':'); colon != std::string::npos;
       colon = text.find(':', colon + 1)) {
    if (colon >= 2 && colon + 5 < text.size() && text[colon + 3] == ':')
      text.replace(colon - 2, 8, "--------");
  }
}

struct search_result {
  std::vector<std::vector<std::int32_t>> trees;
  std::string rearrangements;
  std::string printed;  // without times
  bool operator==(const search_result&) const = default;
};

search_result whole_search(std::optional<int> width) {
  set_tree_count(store, 0);
  search_result result;
  {
    search_session session;
    search_context& context = session.context();
    search_data& data = context.data;
    seed_generator(context.random);
    if (width) bind_kernels(data, *width);
    mult_settings options;
    options.replications = 4;
    options.hold = 5;
    result.printed = zeb_test::printed_by([&] {
      const mult_result found = mult_search(context, options);
      emit(found.hits, " hits\n");
      fetch_tree(context, slot_tree(context, 0));
      for (const double score : {ratchet_search(context, context.working_tree, {}, {}).best,
                                 drift_search(context, context.working_tree, {}, {}).best}) {
        emit(score_text(context.data, score), "\n");
      }
      store_tree(context, context.working_tree, context.trees.ntrees);
      filter_by_score(context, found.best);
      swap_stored_trees(context, true);
    });
    blank_times(result.printed);
    result.rearrangements = rearrangements_text(context.rearrangements);
  }
  result.trees = stored_trees();
  return result;
}

TEST_F(search_survival, every_width_makes_the_same_search) {
  std::mt19937 g(5);
  settings.report = true;
  settings.status_replications = 2;
  settings.status_trees = 3;
  for (int round = 0; round < 12; ++round) {
    zeb_test::data_shape shape = zeb_test::random_shape(g, 20, 60);
    fill_matrix(shape, g);
    collapsing.rule = round % 4;
    weighting.on = round % 3 == 0;
    const search_result usual = whole_search({});
    EXPECT_GT(usual.trees.size(), 0U);
    EXPECT_NE(usual.printed.find("Repl. Algor."), std::string::npos) << usual.printed;
    for (const int width : {32, 64, 256, 512}) {
      if (width > widest_kernels()) continue;
      EXPECT_EQ(whole_search(width), usual) << "round " << round << ", " << width << " bits";
    }
    engine.long_words = false;
    drop_packed_data();
    EXPECT_EQ(whole_search({}), usual) << "round " << round << " without wide words";
    engine.long_words = true;
    drop_packed_data();
    for (const int narrow : {1, 2}) {
      swapping.use_inters = narrow;
      EXPECT_EQ(whole_search({}), usual) << "round " << round << ", narrow cluster test " << narrow;
    }
    swapping.use_inters = 0;
  }
}

int width_of_all = 0;

/// All data sets, also those of sectors.
void bind_width(const search_data& data, move_slots&) {
  bind_kernels(const_cast<search_data&>(data), width_of_all);
}

TEST_F(search_survival, every_width_makes_the_same_search_with_all_drivers) {
  std::mt19937 g(8);
  for (int round = 0; round < 3; ++round) {
    zeb_test::data_shape shape = noisy_shape();
    shape.ntax = 20 + 2 * round;
    shape.nchar = 40;
    fill_matrix(shape, g);
    weighting.on = round % 2 == 1;
    std::string usual;
    std::vector<std::vector<std::int32_t>> trees;
    for (const int width : {32, 64, 256, 512}) {
      if (width > widest_kernels()) continue;
      width_of_all = width;
      hooks_of_search.slot_binders = {bind_width};
      set_tree_count(store, 0);
      std::string said = zeb_test::run_program(
          "hold 60; mult=replic 4 hold 1 wagner keepall; mult:tbr nokeepall hold 2;"
          "sectsch=rss nogocomb godrift 75 minsize 8 maxsize 12; sectsch=xss 2+2-1 godrift 6;"
          "sectsch=gocomb 6;"
          "tfuse; ratchet=iterations 6; drift=iterations 6 fusefreq 3; rebuild=cycles 3 hybrid 1 "
          "sample 3; xmult=replications 2 hits 2;");
      blank_times(said);
      EXPECT_EQ(said.find("rror"), said.npos) << said;
      if (usual.empty()) {
        usual = said;
        trees = stored_trees();
      }
      EXPECT_EQ(said, usual) << "round " << round << ", " << width << " bits";
      EXPECT_EQ(stored_trees(), trees) << "round " << round << ", " << width << " bits";
    }
  }
}

}  // namespace
}  // namespace zeb
