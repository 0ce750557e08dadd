#include "parallel/tasks/variable_requests.h"

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <string>
#include <vector>

#include "base/message_text.h"
#include "console/output.h"
#include "language/hooks.h"
#include "macro/macro_state.h"
#include "macro/variables.h"
#include "parallel/messages/tags.h"
#include "parallel/tasks/task_state.h"

namespace zeb {
namespace {

/// Cells of the part of an array that the subscripts lead to; empty: they lead nowhere.
std::vector<int> cells_of(int base, std::span<const std::int32_t> subscripts, int expected) {
  const std::span<const int> sizes = variable_dimensions(base);
  const int left = static_cast<int>(sizes.size()) - static_cast<int>(subscripts.size());
  if (left < 0 || (expected >= 0 && left != expected)) {
    emit("P-ZEB: parent expects ", expected, " dimensions back, var. ", variable_name(base),
         " has ", left, " dimensions left\n");
    return {};
  }
  if (sizes.empty()) return {base};
  std::int64_t first = 0;
  std::int64_t count = data_cell_count(sizes);
  for (std::size_t d = 0; d < subscripts.size(); ++d) {
    if (subscripts[d] < 0 || subscripts[d] >= sizes[d]) return {};
    count /= sizes[d];
    first += subscripts[d] * count;
  }
  std::vector<int> cells;
  for (std::int64_t i = 0; i < count; ++i)
    cells.push_back(static_cast<int>(first_data_cell(base) + first + i));
  return cells;
}

/// By name or by number; -1: there is none.
int variable_named(const std::string& name) {
  if (name.empty() || !std::ranges::all_of(name, [](unsigned char c) { return std::isdigit(c); }))
    return find_variable(name);
  const double number = std::strtod(name.c_str(), nullptr);
  return number < macros.max_variables ? static_cast<int>(number) : -1;
}

/// The value of a variable of this task; -1, which leads nowhere: it can't be a subscript.
std::int32_t own_subscript(const std::string& name) {
  constexpr double most = 1e9;
  const int number = macros_on() ? variable_named(name) : -1;
  const double value =
      number >= 0 && variable_dimensions(number).empty() ? variable_value(number) : -1;
  return value >= 0 && value <= most ? static_cast<std::int32_t>(value) : -1;
}

}  // namespace

void answer_variable_request(packet_reader& from) {
  const std::string name = from.text();
  std::vector<std::int32_t> subscripts = from.list();
  for (std::int32_t& subscript : subscripts)
    if (subscript < 0) subscript = own_subscript(from.text());
  const int expected = from.whole();
  std::vector<int> cells;
  const int base = macros_on() ? variable_named(name) : -1;
  if (base >= 0) cells = cells_of(base, subscripts, expected);
  packet_writer reply;
  reply.put(static_cast<std::int32_t>(cells.size()));
  for (const int cell : cells) reply.put_real(variable_value(cell));
  task.link->send(parent_task, tag_variable, reply.bytes());
}

}  // namespace zeb
