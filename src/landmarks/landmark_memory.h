// Memory that distances between candidates take.
#pragma once

namespace zeb {

/// Where they would take too much of what is free, they are made anew for each point from now on,
/// with a warning.
void check_landmark_memory();

}  // namespace zeb
