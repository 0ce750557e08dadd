#include "engine/wide/wide_kinds.h"

namespace zeb {
namespace {

struct kind_table {
  std::vector<const wide_kind*> rows;
};
kind_table table;

}  // namespace

void add_wide_kind(const wide_kind& kind) { table.rows.push_back(&kind); }
void remove_wide_kind(const wide_kind& kind) { std::erase(table.rows, &kind); }
const std::vector<const wide_kind*>& wide_kinds() { return table.rows; }

}  // namespace zeb
