// What higher rooms lend to the macro language at start-up.
#pragma once

#include <string>
#include <string_view>

namespace zeb {

struct macro_hooks {
  /// Names that variables may not have.
  bool (*is_function_name)(std::string_view name) = nullptr;
  /// Expression functions: true and the value for a function of that name, which reads its own
  /// arguments from the input.
  bool (*function_value)(std::string_view name, double* value) = nullptr;
  /// Number of the taxon or character of that name, for `macro +`.
  bool (*element_number)(std::string_view name, double* value) = nullptr;
  /// "$taxon N", "$dataset" and the like: true and the text for a word that stands for one, which
  /// reads its own arguments.
  bool (*fixed_string)(std::string_view word, std::string* text) = nullptr;
  /// `return` among the instructions of a task: reads its own arguments.
  void (*return_of_task)() = nullptr;
  /// True: loops that would begin now don't run.
  bool (*no_more_loops)() = nullptr;
};
extern struct macro_hooks hooks_of_macro;

}  // namespace zeb
