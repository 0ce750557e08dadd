#include "macro/registration.h"

#include <string>

#include "base/process.h"
#include "language/settings_scope.h"
#include "macro/hooks.h"
#include "macro/macro_state.h"

namespace zeb {

struct macro_hooks hooks_of_macro;

namespace {

/// What can be set while the language is on.
struct macro_choices {
  int protection = macros.protection;
  std::string number_format = macros.number_format;
  int digits = macros.digits;
  bool names_as_numbers = macros.names_as_numbers;
  bool blank_after_strings = macros.blank_after_strings;
  bool report = macros.report;
  std::string goto_default_file = macros.goto_default_file;
  int table_array = macros.table_array;
};

settings_restorer note_choices() {
  return [former = macro_choices()] {
    macros.protection = former.protection;
    macros.number_format = former.number_format;
    macros.digits = former.digits;
    macros.names_as_numbers = former.names_as_numbers;
    macros.blank_after_strings = former.blank_after_strings;
    macros.report = former.report;
    macros.goto_default_file = former.goto_default_file;
    macros.table_array = former.table_array;
  };
}

}  // namespace

void register_macro() {
  macros.clock_start = wall_clock();
  add_settings(note_choices);
}

}  // namespace zeb
