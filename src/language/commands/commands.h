// The handlers and option tables of the shell's own commands.
#pragma once

#include <string>

namespace zeb {

struct option_table;
extern const option_table silent_options;

void beep_command();
void bground_command();
void break_command();
void cdir_command();
void echo_command();
void help_command();
void lquote_command();
void mxproc_command();
void mxram_command();
void pause_command();
void procedure_command();
void quote_command();
void rdir_command();
void report_command();
void rseed_command();
void run_command();
void screen_command();
void silent_command();
void system_command();
void thanks_command();
void timeout_command();
void vversion_command();
void warn_command();
void watch_command();

/// What the program is, and its version.
void show_banner();
/// Runs the file that the interpreter found for a word which is no command.
void run_file_command();
/// The text of a quotation up to ";" (consumed): one leading blank goes, ".," stands for ";".
std::string read_quoted_text();

// Output and the console.
void clbuffer_command();
void cls_command();
void log_command();
void svtxt_command();
void txtsize_command();
void view_command();
/// Makes the text buffer and lets every command's end clear the progress line. Before any output.
void start_output();

}  // namespace zeb
