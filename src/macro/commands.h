// Handlers and option tables of the macro language's own commands.
#pragma once

namespace zeb {

struct option_table;
extern const option_table hifile_options;

void macro_command();
void macfloat_command();
void safe_command();
void private_command();
void macreport_command();
void macseed_command();
void resettime_command();
void var_command();
void set_command();
void setarray_command();
void loop_command();
void endloop_command();
void continue_command();
void setloop_command();
void if_command();
void else_command();
void end_command();
void xend_command();
void goto_command();
void label_command();
void return_command();
void recurse_command();
void errmsg_command();
void chkbreak_command();
void progress_command();
void hifile_command();

}  // namespace zeb
