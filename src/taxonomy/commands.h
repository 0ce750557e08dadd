// Handler and option table of `taxonomy`.
#pragma once

namespace zeb {

struct option_table;
extern const option_table taxonomy_options;

void taxonomy_command();

}  // namespace zeb
