#include "search/combined/effort.h"

#include <string>

#include "base/message_text.h"
#include "base/process.h"
#include "console/output.h"
#include "search/search_report.h"

namespace zeb {

bool change_effort(const search_context& context, combined_settings& options,
                   combined_stages& stages, const effort_check& check, double start) {
  const double before = options.level;
  const effort_change change = adjust_effort(options, stages.sectors, check.failures, check.period,
                                             check.also_replications, context.data.n);
  if (change == effort_change::same) return false;
  if (!options.verbose || context.shown.silent) return true;
  const std::string level =
      options.level != before ? text_of("(%.2f) ", options.level) : std::string();
  emit(text_of("\n\n   %screasing search level %s   %s\n",
               change == effort_change::more ? "In" : "De", level.c_str(),
               time_text(wall_clock() - start).c_str()));
  return true;
}

}  // namespace zeb
