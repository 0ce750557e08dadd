// The figure of where two data sets differ.
#pragma once

#include <string>

#include "compare/combined_data.h"
#include "compare/comparison.h"

namespace zeb {

/// Taxa by characters of the combination, as coloured cells. Error: it can't be written.
void draw_differences(const comparison_task& task, const comparison& found,
                      const combination& combined, const std::string& file_name);

}  // namespace zeb
