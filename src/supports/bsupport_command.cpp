// bsupport: Bremer supports.
#include <algorithm>
#include <cmath>

#include "base/errors.h"
#include "base/indices.h"
#include "base/message_text.h"
#include "console/output.h"
#include "console/settings.h"
#include "language/lexer.h"
#include "matrix/matrix.h"
#include "supports/bremer_approximation.h"
#include "supports/commands.h"
#include "supports/last_supports.h"
#include "supports/requested_supports.h"
#include "trees/branch_labels.h"
#include "trees/drawing/display.h"
#include "trees/drawing/tables.h"
#include "trees/drawing/tags.h"
#include "trees/tree_groups.h"
#include "trees/tree_store.h"
#include "trees/tree_undo.h"

namespace zeb {
namespace {

void show_table(const bremer_result& result) {
  const std::size_t limit = at(node_limit(result.tree, matrix.ntax));
  const std::string title = result.title + ", by node of the tree shown";
  if (result.decimals > 0)
    return print_table(title, std::span(result.values).first(limit), result.decimals);
  std::vector<std::int64_t> cells(limit, no_value);
  for (std::size_t n = 0; n < limit; ++n)
    if (!std::isnan(result.values[n])) cells[n] = std::llround(result.values[n]);
  print_table(title, cells);
}

void show(const bremer_result& result, bool as_table) {
  std::vector<std::string> texts;
  for (std::size_t n = 0; n < result.tree.size(); ++n) texts.push_back(support_text(result, n));
  draw_tree(result.tree, result.title, texts);
  if (as_table) show_table(result);
  for (const std::string& note : result.notes) emit("Note: ", note, ".\n");
}

void save(const bremer_result& result) {
  const bool had_tags = has_any_tag() && tags.source == tag_source::hand;
  tree_undo undo({});
  const tree_span slot = take_slot(true, "No space to store new trees");
  std::ranges::copy(result.tree, slot.begin());
  group_automatically(store.ntrees - 1, store.ntrees, "Bremer_supports");
  std::vector<branch_label> labels(result.tree.size());
  for (std::size_t n = 0; n < labels.size(); ++n) labels[n].label = support_label(result, n);
  label_tree(store.ntrees - 1, labels);
  if (!had_tags) set_tag_tree_to_stored(store.ntrees - 1, tag_source::computed, result.title);
  undo.keep();
  if (settings.report) report_line("Supports stored with tree", store.ntrees - 1);
}

}  // namespace

void bsupport_command() {
  const bremer_request request = read_bremer_request();
  expect_end();
  if (request.approximate >= 0) return show_approximation(request);
  const bremer_result result = requested_supports(request);
  show(result, request.how.table);
  keep_supports(values_by_node(result));
  if (request.how.save) save(result);
}

}  // namespace zeb
