// Handlers of the commands that run a piece of script for each tree, node, reconstruction,
// combination or file.
#pragma once

namespace zeb {

void bandb_command();
void combine_command();
void copytree_command();
void cutbranch_command();
void endbranch_command();
void endcomb_command();
void endrecs_command();
void endswap_command();
void endtrav_command();
void forfiles_command();
void iterrecs_command();
void killfiles_command();
void killrecs_command();
void killtrav_command();
void resetswap_command();
void skipdes_command();
void sprit_command();
void tbrit_command();
void travtree_command();

}  // namespace zeb
