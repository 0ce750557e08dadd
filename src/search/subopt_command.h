#pragma once

namespace zeb {

void subopt_command();

}  // namespace zeb
