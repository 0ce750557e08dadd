// The handlers of the shell's own commands.
#pragma once

namespace zeb {

void quote_command();
void procedure_command();
/// Runs the file that the interpreter found for a word which is no command.
void run_file_command();


// Output and the console.
void clbuffer_command();
void cls_command();
void log_command();
void svtxt_command();
void txtsize_command();
void view_command();
/// Makes the text buffer and lets every command's end clear the progress line. Before any output.
void start_output();

void register_shell();

}  // namespace zeb
