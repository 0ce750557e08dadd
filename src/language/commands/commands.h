// The handlers and option tables of the commands that belong to no data: the language's own, and
// those of the console.
#pragma once

namespace zeb {

struct option_table;
extern const option_table silent_options;

void beep_command();
void bground_command();
void break_command();
void cdir_command();
void clbuffer_command();
void cls_command();
void echo_command();
void help_command();
void log_command();
void lquote_command();
void mxproc_command();
void mxram_command();
void pause_command();
void procedure_command();
void quit_command();
void quote_command();
void rdir_command();
void report_command();
void rseed_command();
void run_command();
/// Runs the file that the interpreter found for a word which is no command.
void run_file_command();
void screen_command();
void silent_command();
void svtxt_command();
void system_command();
void thanks_command();
void timeout_command();
void txtsize_command();
void view_command();
void vversion_command();
void warn_command();
void watch_command();

}  // namespace zeb
