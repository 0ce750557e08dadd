// Settings and the state of the program.
#include <unistd.h>

#include <thread>

#include "base/arena.h"
#include "base/errors.h"
#include "base/process.h"
#include "base/random.h"
#include "console/settings.h"
#include "engine/collapsing/collapsing.h"
#include "engine/fit/weighting_settings.h"
#include "engine/search_data.h"
#include "functions/arguments.h"
#include "functions/subjects.h"
#include "language/input.h"
#include "language/lexer.h"
#include "macro/assignment.h"
#include "macro/macro_state.h"
#include "macro/variables.h"
#include "matrix/matrix.h"
#include "search/search_settings.h"
#include "trees/tree_groups.h"
#include "trees/tree_store.h"

namespace zeb {
namespace {

double absent_included() { return store.include_absent; }
double arguments() { return static_cast<double>(top_frame().arguments.size()); }
double break_setting() { return settings.break_polling; }
double collapse_rule() { return collapsing.rule; }
double processors() { return static_cast<double>(std::thread::hardware_concurrency()); }
double never() { return 0; }
double always() { return 1; }
double exit_status() { return macros.exit_status; }
double all_variables() { return macros.max_variables; }
double free_variables() { return macros.max_variables - next_free_variable(); }
double list_size() { return assignment.list_size; }
double macro_seed() { return macros.seed; }
double tree_group_limit() { return tree_groups.limit; }
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
double implied_weighting() {
  if (!weighting.on || !weighting.extended) return weighting.on;
  if (weighting_set_count() > 0 || has_constant_weights()) return 4;
  return has_own_concavities() ? 3 : 1;
}
double concavity() { return weighting.concavity; }
double sectorial_level() { return capacity_scopes(); }
double task_variable() { error_end("TASKVAR not yet implemented"); }

// clang-format off
constexpr expression_function rows[] = {
    {"absincl", "", "current value of absincl", absent_included, function_list::unlisted},
    {"absicnl", "", "current value of absincl", nullptr, function_list::name_only},
    {"argnumber", "", "number of arguments of the current run file", arguments},
    {"break", "", "setting of break, 1 or 0", break_setting},
    {"collapse", "", "current collapsing rule", collapse_rule},
    {"cpus", "", "processors of this machine", processors},
    {"cygwin", "", "1 if running under Cygwin", never},
    {"windows", "", "1 if running under Windows", never},
    {"linux", "", "1 if running under Linux", always},
    {"exstatus", "", "status given by the last return; 1 after a job all of whose tasks started, else 0", exit_status},
    {"allvars", "", "all user variables, named or not", all_variables},
    {"freevars", "", "user variables left", free_variables},
    {"listsize", "", "last index filled by the last list function", list_size, function_list::general, "lenstring"},
    {"macseed", "", "seed of the macro random numbers", macro_seed},
    {"maxtgroups", "", "number of tree groups that can be defined", tree_group_limit},
    {"maxtgroup", "", "the same as maxtgroups", tree_group_limit, function_list::unlisted},
    {"maxtrees", "", "space for trees in memory", tree_space},
    {"maxvars", "", "last user variable", last_variable},
    {"mypid", "", "number of this process", process_number},
    {"outgroup", "", "outgroup taxon", outgroup_taxon},
    {"protmode", "", "protection level", protection},
    {"regalfa", "", "intercept of the last regression", regression_intercept},
    {"regbeta", "", "slope of the last regression", regression_slope},
    {"regr", "", "correlation of the last regression or scaling", regression_correlation},
    {"report", "", "setting of report, 1 or 0", report_setting},
    {"rseed", "", "current random seed", random_seed},
    {"rsubopt", "", "relative suboptimal value", relative_suboptimal},
    {"subopt", "", "absolute suboptimal value", absolute_suboptimal},
    {"time", "", "seconds since the last resettime", seconds},
    {"usdram", "", "peak of bytes used", peak_memory},
    {"bground", "", "1 in the background", background, function_list::parallel},
    {"piwe", "", "0 off, 1 standard, 2 auto-weighted, 3 extended for missing entries, 4 extended with weighting groups", implied_weighting},
    {"kval", "", "concavity k of implied weighting", concavity, function_list::general, "linux"},
    {"seclevel", "", "level of recursion of sectorial searches", sectorial_level},
    {"taskvar", "", "a variable of the task", task_variable, function_list::unlisted, {}, true},
};
// clang-format on

}  // namespace

const std::span<const expression_function> setting_functions = rows;

}  // namespace zeb
