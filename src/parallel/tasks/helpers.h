// Processes that do one small thing for their parent and end.
#pragma once

namespace zeb {

/// Writes the data that the parent sends to a file of this machine, and tells whether that worked.
int write_disk_data();
/// Tells how many processors this machine has.
int tell_processors();

}  // namespace zeb
