// `pzeb setdata`.
#pragma once

namespace zeb {

/// Reads its own arguments, up to and over ";".
void setdata_keyword();

}  // namespace zeb
