// Settings and the state of the program.
#include <unistd.h>

#include <thread>

#include "base/arena.h"
#include "base/errors.h"
#include "base/process.h"
#include "base/random.h"
#include "engine/collapsing/collapsing.h"
#include "engine/search_data.h"
#include "functions/arguments.h"
#include "functions/function_table.h"
#include "language/input.h"
#include "language/lexer.h"
#include "macro/macro_state.h"
#include "matrix/matrix.h"
#include "search/search_settings.h"
#include "trees/tree_store.h"

namespace zeb {
namespace {

double absent_included() { return store.include_absent; }
double arguments() { return static_cast<double>(top_frame().arguments.size()); }
double break_setting() { return settings.break_polling != 0; }
double collapse_rule() { return collapsing.rule; }
double processors() { return static_cast<double>(std::thread::hardware_concurrency()); }
double never() { return 0; }
double always() { return 1; }
double exit_status() { return macros.exit_status; }
double all_variables() { return macros.max_variables; }
double free_variables() { return macros.max_variables - next_free_variable(); }
double list_size() { return macros.list_size; }
double macro_seed() { return macros.seed; }
double tree_group_limit() { return store.tgroup_limit; }
double tree_space() { return store.maxtrees; }
double last_variable() { return macros.max_variables - 1; }
double process_number() { return static_cast<double>(getpid()); }
double outgroup_taxon() { return matrix.outgroup; }
double protection() { return macros.protection; }
double regression_intercept() { return macros.regalfa; }
double regression_slope() { return macros.regbeta; }
double regression_correlation() { return macros.regr; }
double report_setting() { return settings.report; }
double random_seed() { return randomness.random_seed; }
double relative_suboptimal() { return search_settings.relative_suboptimal; }
double absolute_suboptimal() { return search_settings.suboptimal; }
double seconds() { return wall_clock() - macros.clock_start; }
double peak_memory() {
  return static_cast<double>(arena.peak_ram > arena.peak_ram_ever ? arena.peak_ram
                                                                  : arena.peak_ram_ever);
}
double background() { return process.background; }
// Implied weights have one form so far, the standard one.
double implied_weighting() { return engine.implied_on; }
double concavity() { return engine.concavity; }
double sectorial_level() { return capacity_scopes(); }
double slave_number() {
  if (!brackets_follow()) return 0;
  open_brackets();
  const int parent = whole_argument();
  if (!accept_char(']')) error_end("Expected closing bracket for \"slavenum\"");
  error_end("No parent", parent);
}
double all_processors() {
  if (process.slave) error_end("Sorry, cannot access \"totcpus\" in slaves");
  error_end("Expression \"totcpus\" is not available yet");
}
double task_variable() { error_end("TASKVAR not yet implemented"); }

constexpr function_row rows[] = {
    {"absincl", absent_included},
    {"argnumber", arguments},
    {"break", break_setting},
    {"collapse", collapse_rule},
    {"cpus", processors},
    {"cygwin", never},
    {"windows", never},
    {"linux", always},
    {"exstatus", exit_status},
    {"allvars", all_variables},
    {"freevars", free_variables},
    {"listsize", list_size},
    {"macseed", macro_seed},
    {"maxtgroups", tree_group_limit},
    {"maxtgroup", tree_group_limit},
    {"maxtrees", tree_space},
    {"maxvars", last_variable},
    {"mypid", process_number},
    {"outgroup", outgroup_taxon},
    {"protmode", protection},
    {"regalfa", regression_intercept},
    {"regbeta", regression_slope},
    {"regr", regression_correlation},
    {"report", report_setting},
    {"rseed", random_seed},
    {"rsubopt", relative_suboptimal},
    {"subopt", absolute_suboptimal},
    {"time", seconds},
    {"usdram", peak_memory},
    {"bground", background},
    {"piwe", implied_weighting},
    {"kval", concavity},
    {"pmode", never},
    {"plevel", never},
    {"seclevel", sectorial_level},
    {"slavenum", slave_number},
    {"totcpus", all_processors},
    {"numhosts", never},
    {"numjobs", never},
    {"taskvar", task_variable},
};

}  // namespace

std::span<const function_row> setting_functions() { return rows; }

}  // namespace zeb
