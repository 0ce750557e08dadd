#include "functions/registration.h"

#include <strings.h>

#include <string>
#include <string_view>

#include "base/errors.h"
#include "base/message_text.h"
#include "base/text_columns.h"
#include "functions/fixed_strings.h"
#include "functions/function_table.h"
#include "functions/user_arrays.h"
#include "language/help.h"
#include "language/hooks.h"
#include "macro/hooks.h"
#include "matrix/matrix.h"
#include "taxonomy/taxonomy.h"
#include "trees/hooks.h"

namespace zeb {
namespace {

bool is_name(std::string_view name, const std::string& word) {
  return strcasecmp(std::string(name).c_str(), word.c_str()) == 0;
}

/// Names without their taxonomy, then groups.
bool number_in_taxonomy(const std::string& word, double* value) {
  for (int t = 0; t < matrix.ntax; ++t) {
    if (is_name(name_proper(taxon_name(t)), word)) {
      *value = t;
      return true;
    }
  }
  const int group = taxonomic_group_named(word);
  if (group >= 0) *value = group;
  return group >= 0;
}

// Taxa come before characters.
bool element_number(std::string_view token, double* value) {
  if (!matrix.present) return false;
  const std::string word = normal_form(token);
  for (int t = 0; t < matrix.ntax; ++t) {
    if (is_name(taxon_name(t), word)) {
      *value = t;
      return true;
    }
  }
  if (taxonomy_in_use() && number_in_taxonomy(word, value)) return true;
  if (!matrix.use_char_names) return false;
  for (std::size_t c = 0; c < matrix.char_names.size(); ++c) {
    if (is_name(matrix.char_names[c].name, word)) {
      *value = static_cast<double>(c);
      return true;
    }
  }
  return false;
}

}  // namespace

void register_functions() {
  hooks_of_macro.is_function_name = is_function_name;
  hooks_of_macro.function_value = function_value;
  hooks_of_macro.element_number = element_number;
  hooks_of_macro.fixed_string = fixed_string;
  hooks_of_language.print_expression_help = print_function_help;
  hooks_of_trees.user_arrays = {read_user_array, user_array_values, store_user_array};
  hooks_of_trees.take_list = store_printed_list;
}

}  // namespace zeb
