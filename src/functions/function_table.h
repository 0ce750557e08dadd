// The expression functions: names that stand in place of a number while the macro language is on.
#pragma once

#include <span>
#include <string_view>
#include <vector>

namespace zeb {

struct function_help {
  std::string_view name;
  std::string_view help;  // argument pattern, newline, explanation
};
/// The table that reserves the names and that `help +` prints. The first name is spelled as it
/// always was: the working name is `absincl`, which is therefore free for variables.
std::span<const function_help> function_table();

/// One function that works: its name and what answers it, reading its own arguments from the input.
struct function_row {
  std::string_view name;
  double (*value)();
};
/// The functions of each subject.
std::span<const function_row> data_functions();
std::span<const function_row> block_functions();
std::span<const function_row> tree_functions();
std::span<const function_row> tree_group_functions();
std::span<const function_row> score_functions();
std::span<const function_row> search_functions();
std::span<const function_row> change_functions();
std::span<const function_row> group_functions();
std::span<const function_row> setting_functions();
std::span<const function_row> number_functions();
std::span<const function_row> array_functions();
std::span<const function_row> string_functions();
std::span<const function_row> file_functions();
/// All of them, subject by subject.
std::vector<std::span<const function_row>> all_functions();

/// Lets tree tags, drawings and tables reach the user's arrays.
void connect_user_arrays();
void maketable_command();

/// Hands the macro language its functions, fixed strings and names. Called once, at start-up.
void register_functions();

}  // namespace zeb
