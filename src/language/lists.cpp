#include "language/lists.h"

#include <algorithm>

#include "base/errors.h"
#include "language/list_kinds.h"
#include "language/list_reader.h"

namespace zeb {

bool read_list(unsigned flags, int first, int end, std::string_view kind,
               std::span<std::uint8_t> marks, int block) {
  end = std::max(first, end);
  ALWAYS_CHECK(first >= 0 && static_cast<std::size_t>(end) <= marks.size(), "list range");
  std::fill(marks.begin() + first, marks.begin() + end, std::uint8_t{0});
  if ((flags & list_has_fixed) && lists.fixed_list && lists.fixed_list(kind, first, end, marks)) {
    return true;
  }
  list_reader reader(flags, first, end, find_list_kind(kind), marks);
  reader.enter_block(block);
  return reader.read();
}

}  // namespace zeb
