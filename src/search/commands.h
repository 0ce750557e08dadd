// The handlers and option tables of the search commands, for the command table.
#pragma once

namespace zeb {

struct option_table;
extern const option_table bbreak_options;
extern const option_table drift_options;
extern const option_table hybrid_options;
extern const option_table ienum_options;
extern const option_table mult_options;
extern const option_table ratchet_options;
extern const option_table rebuild_options;
extern const option_table sectsch_options;
extern const option_table tfuse_options;
extern const option_table xmult_options;

void bbreak_command();
void best_command();
void cores_command();
void drift_command();
void hybrid_command();
void ienum_command();
void mult_command();
void ratchet_command();
void rebuild_command();
void sectsch_command();
void subopt_command();
void tfuse_command();
void xmult_command();

}  // namespace zeb
