// The handlers of the shell's own commands.
#pragma once

namespace zeb {

void quote_command();
void procedure_command();
/// Runs the file that the interpreter found for a word which is no command.
void run_file_command();

void register_shell();

}  // namespace zeb
