// Handlers and option tables of the commands on trees, for the command table.
#pragma once

namespace zeb {

struct option_table;
extern const option_table edit_options;

void alltrees_command();
void edit_command();
void hold_command();
void incltax_command();
void keep_command();
void pruntax_command();
void randtrees_command();
void reroot_command();
void save_command();
void shortread_command();
void sort_command();
void tchoose_command();
void tequal_command();
void tnodes_command();
void tread_command();
void tsave_command();
void tshrink_command();
void tsize_command();
void tvault_command();
void unique_command();
void unshared_command();

}  // namespace zeb
