// Handlers and option tables of the consensus commands.
#pragma once

namespace zeb {

struct option_table;
extern const option_table qnelsen_options;

void nelsen_command();
void majority_command();
void freqdifs_command();
void comcomp_command();
void prunnelsen_command();
void prunmajor_command();
void pruncom_command();

}  // namespace zeb
