// Handler and option table of `kleex`.
#pragma once

namespace zeb {

struct option_table;
extern const option_table kleex_options;

void kleex_command();

}  // namespace zeb
