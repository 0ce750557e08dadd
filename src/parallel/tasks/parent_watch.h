// The parent of a task, as a process: no task outlives it.
#pragma once

#include <string>

namespace zeb {

/// Of a task whose parent is gone.
constexpr int status_of_orphan = 255;

/// What a parent tells its tasks of itself when it starts them.
std::string address_of_this_process();
/// The process number in such an address; 0 on another machine.
int process_on_this_machine(const std::string& address);

/// From here on this process ends soon after that one, whatever it does: commands that look at no
/// messages may take long, and libraries wait for the dead.
void end_after(int process);

}  // namespace zeb
