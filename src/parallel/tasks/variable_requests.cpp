#include "parallel/tasks/variable_requests.h"

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

}  // namespace

void answer_variable_request(packet_reader& from) {
  const std::string name = from.text();
  const std::vector<std::int32_t> subscripts = from.list();
  const int expected = from.whole();
  std::vector<int> cells;
  const int base = macros_on() ? find_variable(name) : -1;
  if (base >= 0) cells = cells_of(base, subscripts, expected);
  packet_writer reply;
  reply.put(static_cast<std::int32_t>(cells.size()));
  for (const int cell : cells) reply.put_real(variable_value(cell));
  task.link->send(parent_task, tag_variable, reply.bytes());
}

}  // namespace zeb
