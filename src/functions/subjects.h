// One row for each expression function: a name that stands in place of a number while the macro
// language is on. The rows of a subject stand at the end of its source, beside what answers them,
// and are named here as handlers are in commands.h.
#pragma once

#include <span>
#include <string_view>

namespace zeb {

/// Where the list of functions (`help +`) shows a row. No variable may have a name that is listed.
enum class function_list {
  general,
  parallel,   // after the general ones
  unlisted,   // nowhere: a further name, which variables may have as well
  name_only,  // in the list, and kept from variables, but the function answers to another spelling
};

struct expression_function {
  std::string_view name;
  std::string_view arguments;  // as they stand after the name; empty where there are none
  std::string_view help;       // what the value is
  double (*value)();           // reads the arguments from the input; null: not built yet
  function_list list = function_list::general;
  // The row before it, where the list isn't in alphabetical order.
  std::string_view listed_after = {};
  bool to_come = false;  // there is a function, but it has nothing to tell yet
};

extern const std::span<const expression_function> array_functions;
extern const std::span<const expression_function> block_functions;
extern const std::span<const expression_function> change_functions;
extern const std::span<const expression_function> comparison_functions;
extern const std::span<const expression_function> data_functions;
extern const std::span<const expression_function> distance_functions;
extern const std::span<const expression_function> file_functions;
extern const std::span<const expression_function> group_functions;
extern const std::span<const expression_function> job_functions;
extern const std::span<const expression_function> landmark_functions;
extern const std::span<const expression_function> number_functions;
extern const std::span<const expression_function> score_functions;
extern const std::span<const expression_function> search_functions;
extern const std::span<const expression_function> setting_functions;
extern const std::span<const expression_function> string_functions;
extern const std::span<const expression_function> support_functions;
extern const std::span<const expression_function> tree_functions;
extern const std::span<const expression_function> tree_group_functions;
extern const std::span<const expression_function> walk_functions;
/// Those whose subject isn't built yet.
extern const std::span<const expression_function> reserved_functions;

}  // namespace zeb
