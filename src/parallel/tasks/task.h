// The life of a process that works for a parent.
#pragma once

namespace zeb {

/// From the words of its call to its end.
int run_task(int argc, char** argv);

}  // namespace zeb
