// The progress line's place on the screen; see `show_progress` in output.h.
#pragma once

namespace zeb {

/// Wipes the progress line, so that other text can take its place; it returns with the next report.
void hide_progress();

}  // namespace zeb
