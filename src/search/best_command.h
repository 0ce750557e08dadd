// `best`: trees that aren't among the best go.
#pragma once

namespace zeb {

void best_command();

}  // namespace zeb
