// Handler and option table of `shpcomp`.
#pragma once

namespace zeb {

struct option_table;
extern const option_table shpcomp_options;

void shpcomp_command();

}  // namespace zeb
