// Handlers of the commands on settings of characters, taxa and blocks, for the command table.
#pragma once

namespace zeb {

void agroup_command();
void blocks_command();
void ccode_command();
void ckeep_command();
void cnames_command();
void outgroup_command();
void taxcode_command();
void taxlabels_command();
void taxname_command();
void xgroup_command();
void xinact_command();

}  // namespace zeb
