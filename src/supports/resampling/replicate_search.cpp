#include "supports/resampling/replicate_search.h"

#include <algorithm>
#include <array>
#include <string_view>
#include <utility>
#include <vector>

#include "base/errors.h"
#include "base/indices.h"
#include "base/random.h"
#include "console/settings.h"
#include "engine/collapsing/collapsing.h"
#include "language/command_strings.h"
#include "language/interpreter.h"
#include "search/search_session.h"
#include "search/searching_commands.h"
#include "search/store/filter.h"
#include "search/workers/worker_process.h"

namespace zeb {
namespace {

constexpr int addition_sequences = 5;
constexpr int trees_each = 5;

bool is_among(std::string_view name, std::span<const std::string_view> names) {
  return std::find(names.begin(), names.end(), name) != names.end();
}

[[noreturn]] void refuse(const command_row& row) {
  error_end_f("Cannot run command \"%s\" when resampling or estimating consensus", row.name);
}

bool check_searching(const command_row& row) {
  if (!only_searches(row)) refuse(row);
  return true;
}

/// All but those that resample themselves, and those that change what the replicates stand on.
bool check_allowed(const command_row& row) {
  constexpr std::array<std::string_view, 18> fatal = {
      "bsupport", "ckeep",    "edit",      "hold",    "mxproc", "mxram",
      "nstates",  "outgroup", "procedure", "qnelsen", "quit",   "resample",
      "taxcode",  "tvault",   "xperm",     "xread",   "xwipe",  "zzz"};
  if (is_among(row.name, fatal)) refuse(row);
  if (!only_searches(row)) leave_part_to_process();  // it may leave something for the next one
  return true;
}

}  // namespace

default_search::default_search() : trees_(addition_sequences * trees_each, store.nnodes) {}

const tree_slots& default_search::search(int seed) {
  mult_settings how = mult;
  how.replications = addition_sequences;
  how.hold = trees_each;
  how.swapper = mult_settings::tbr;
  how.keepall = how.ratchet = false;
  set_tree_count(trees_, 0);
  search_session session(trees_, silence::on);
  search_context& context = session.context();
  context.random.seed(static_cast<unsigned>(seed));
  const mult_result found = mult_search(context, how, {ratchet, drift, fusing});
  if (found.best < unknown_score) filter_by_score(context, found.best);
  drop_equal_by_full_rule(context);
  return trees_;
}

bool default_search::collapses() const {
  return collapsing.rule != 0 && (collapsing.temporary || collapsing.automatic);
}

command_search::command_search(std::string text, bool any_command)
    : text_(std::move(text)),
      any_command_(any_command),
      undo_(std::vector<std::uint8_t>(at(store.ntrees), 1)),
      seed_(randomness.random_seed),
      cut_short_(store.cut_short) {}

command_search::~command_search() {
  set_seed(seed_);
  note_full_buffer(cut_short_);
}

const tree_slots& command_search::search(int seed) {
  set_tree_count(store, 0);
  set_seed(seed);
  reseed();
  const quiet_scope quiet;
  run_search_string(text_, any_command_ ? check_allowed : check_searching);
  return store;
}

bool command_search::collapses() const { return collapsing.rule != 0 && collapsing.temporary; }

}  // namespace zeb
