#include "functions/function_table.h"

#include <algorithm>
#include <map>
#include <string>

#include "base/errors.h"
#include "console/output.h"

namespace zeb {
namespace {

constexpr std::size_t help_indent = 6;
constexpr std::size_t longest_help_line = 79;

using name_index = std::map<std::string_view, const expression_function*>;

const name_index& functions_by_name() {
  static const name_index index = [] {
    name_index all;
    for (const expression_function* row : all_functions()) all.emplace(row->name, row);
    return all;
  }();
  return index;
}

// Null for none.
const expression_function* find_function(std::string_view name) {
  const auto found = functions_by_name().find(name);
  return found == functions_by_name().end() ? nullptr : found->second;
}

bool is_listed(const expression_function& row) { return row.list != function_list::unlisted; }

// The help of a row: name and arguments, and below them the text in lines that fit the screen.
std::string help_text(const expression_function& row) {
  std::string text = std::string(row.name) + std::string(row.arguments) + "\n";
  std::string line(help_indent - 1, ' ');
  std::string_view rest = row.help;
  while (!rest.empty()) {
    const std::string_view word = rest.substr(0, rest.find(' '));
    rest.remove_prefix(std::min(rest.size(), word.size() + 1));
    if (line.size() + 1 + word.size() > longest_help_line) {
      text += line + "\n";
      line.assign(help_indent - 1, ' ');
    }
    (line += ' ') += word;
  }
  return text + line + "\n";
}

}  // namespace

std::vector<const expression_function*> all_functions() {
  std::vector<const expression_function*> all;
  for (const auto rows :
       {data_functions,   block_functions,   tree_functions,       tree_group_functions,
        score_functions,  change_functions,  comparison_functions, landmark_functions,
        search_functions, support_functions, group_functions,      setting_functions,
        number_functions, array_functions,   string_functions,     distance_functions,
        file_functions,   walk_functions,    job_functions,        reserved_functions}) {
    for (const expression_function& row : rows) all.push_back(&row);
  }
  return all;
}

std::vector<const expression_function*> listed_functions() {
  std::vector<const expression_function*> list = all_functions();
  std::erase_if(list, [](const expression_function* row) { return !is_listed(*row); });
  std::sort(list.begin(), list.end(),
            [](const expression_function* a, const expression_function* b) {
              const bool last_a = a->list == function_list::parallel;
              const bool last_b = b->list == function_list::parallel;
              return last_a != last_b ? last_b : a->name < b->name;
            });
  // Rows with a place of their own move there; one that follows such a row moves after it has
  // moved.
  std::vector<const expression_function*> moving;
  std::copy_if(list.begin(), list.end(), std::back_inserter(moving),
               [](const expression_function* row) { return !row->listed_after.empty(); });
  std::erase_if(list, [](const expression_function* row) { return !row->listed_after.empty(); });
  while (!moving.empty()) {
    const auto next = std::find_if(moving.begin(), moving.end(), [&](const auto* row) {
      return std::none_of(moving.begin(), moving.end(),
                          [row](const auto* other) { return other->name == row->listed_after; });
    });
    ALWAYS_CHECK(next != moving.end(), "functions are listed after one another in a circle");
    const auto before = std::find_if(list.begin(), list.end(), [next](const auto* row) {
      return row->name == (*next)->listed_after;
    });
    ALWAYS_CHECK(before != list.end(), "a function is listed after one that isn't listed");
    list.insert(before + 1, *next);
    moving.erase(next);
  }
  return list;
}

bool is_function_name(std::string_view name) {
  const expression_function* row = find_function(name);
  return row && is_listed(*row);
}

bool function_value(std::string_view name, double* value) {
  const expression_function* row = find_function(name);
  if (!row || row->list == function_list::name_only) return false;
  if (!row->value) error_end_f("Expression \"%s\" is not available yet", std::string(name).c_str());
  *value = row->value();
  return true;
}

bool print_function_help(std::string_view word) {
  bool found = false;
  bool parallel = false;
  for (const expression_function* row : listed_functions()) {
    if (!row->name.starts_with(word)) continue;
    if (word.empty() && !parallel && row->list == function_list::parallel) {
      parallel = true;
      emit("\n   Parallel versions only:\n");
    }
    emit(help_text(*row));
    const bool missing = !row->value && row->list != function_list::name_only;
    if (missing || row->to_come) emit("      (not available yet)\n");
    found = true;
  }
  return found;
}

}  // namespace zeb
