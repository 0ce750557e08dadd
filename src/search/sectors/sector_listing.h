// The settings of sectorial searches in words.
#pragma once

namespace zeb {

/// Prints the settings in force.
void list_sector_settings();

}  // namespace zeb
