// Steering files of background runs.
#pragma once

namespace zeb {

/// Looks at the stop and pause files, at most once in ten seconds unless `now`. Waits while the
/// pause file exists. True if the run is to stop; the stop file is gone then.
bool stop_asked_by_file(bool now);

}  // namespace zeb
