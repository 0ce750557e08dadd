#pragma once

namespace zeb {

void register_parallel();

}  // namespace zeb
