// Handlers and option tables of the commands that compare and merge data sets, for the command
// table.
#pragma once

namespace zeb {

struct option_table;
extern const option_table dcomp_options;

void dcomp_command();
void dmerge_command();

}  // namespace zeb
