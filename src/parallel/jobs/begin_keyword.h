// `pzeb begin` and `pzeb again`.
#pragma once

namespace zeb {

/// Each reads its own arguments, up to and over the ";" after `return`.
void begin_keyword();
void again_keyword();

}  // namespace zeb
