// Handlers and option tables of the commands that look for what makes trees disagree.
#pragma once

namespace zeb {

struct option_table;
extern const option_table chkmoves_options;
extern const option_table prupdn_options;
extern const option_table resols_options;
extern const option_table pcrprune_options;

void chkmoves_command();
void prupdn_command();
void resols_command();
void pcrprune_command();

}  // namespace zeb
