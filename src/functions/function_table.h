// The table of all expression functions.
#pragma once

#include <string_view>
#include <vector>

#include "functions/subjects.h"

namespace zeb {

/// Every row, subject by subject.
std::vector<const expression_function*> all_functions();
/// The rows that help lists, in the order of the list.
std::vector<const expression_function*> listed_functions();

/// Is the name kept from variables?
bool is_function_name(std::string_view name);
/// Value of the function `name`, which reads its own arguments. False where there is none of that
/// name; a function that isn't built yet is an error that names it.
bool function_value(std::string_view name, double* value);

/// Prints the rows of all functions whose name begins with `word`; false if there are none.
bool print_function_help(std::string_view word);

}  // namespace zeb
