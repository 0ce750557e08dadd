#include "search/search_context.h"

#include "base/indices.h"
#include "engine/packing/packing.h"
#include "search/hooks.h"

namespace zeb {

search_hooks hooks_of_search;

search_rules rules_in_force() {
  search_rules rules;
  rules.swap = swapping;
  rules.clips_between_reports = search_settings.clips_between_reports;
  rules.suboptimal = search_settings.suboptimal;
  rules.relative_suboptimal = search_settings.relative_suboptimal;
  rules.collapse = collapsing;
  rules.seed_step = randomness.seed_step;
  rules.random_insertion = randomness.random_insertion;
  rules.random_outgroup = randomness.random_outgroup;
  return rules;
}

search_context::search_context(search_data& packed, tree_slots& slots_for_trees,
                               const search_rules& how)
    : data(packed), trees(slots_for_trees), rules(how), tree_limit(slots_for_trees.maxtrees) {
  working_tree = calloc_low<std::int32_t>(at(data.nodes));
  records.scratch = calloc_low<std::int32_t>(2 * at(data.nodes));
  records.of_slot = alloc_low<tree_record>(at(trees.maxtrees));
  for (tree_record& record : records.of_slot) record = {};
  for (const slot_binder bind : hooks_of_search.slot_binders) bind(data, slots);
}

namespace {

search_data packed(const packing_request& request) {
  search_data data;
  prepare_search_data(data, request);
  return data;
}

search_data reduced(const search_data& outer, const tree_sector& sector, double score) {
  search_data data;
  prepare_reduced_data(data, outer, sector, score);
  return data;
}

tree_slots slots_in_arena(int capacity, int cells) {
  tree_slots slots;
  slots.trees = alloc_table_low<tree_node>(at(capacity), at(cells));
  slots.maxtrees = capacity;
  slots.nnodes = cells;
  return slots;
}

}  // namespace

context_scope::context_scope(const packing_request& request, int capacity,
                             const search_rules& rules, unsigned seed, search_context* outer)
    : own_data_(packed(request)),
      own_slots_(slots_in_arena(capacity, own_data_.nodes)),
      context_(own_data_, own_slots_, rules) {
  context_.own_data = true;
  context_.constraints_in_force = search_constraints::in_force(own_data_);
  context_.random.seed(seed);
  if (outer) begin_within(*outer);
}

context_scope::context_scope(search_context& outer, const tree_sector& sector, double score,
                             int capacity, const search_rules& rules)
    : own_data_(reduced(outer.data, sector, score)),
      own_slots_(slots_in_arena(capacity, own_data_.nodes)),
      context_(own_data_, own_slots_, rules) {
  context_.own_data = true;
  if (outer.constraints_in_force)
    context_.constraints_in_force = outer.constraints_in_force->of_sector(outer.data, sector);
  begin_within(outer);
}

context_scope::context_scope(search_context& outer, tree_slots& trees)
    : context_(outer.data, trees, outer.rules) {
  if (outer.constraints_in_force)
    context_.constraints_in_force =
        search_constraints::of_rows(outer.data, outer.constraints_in_force->rows());
  begin_within(outer);
}

context_scope::~context_scope() {
  if (context_.outer && context_.outer->part == &context_) context_.outer->part = nullptr;
}

void context_scope::begin_within(search_context& outer) {
  context_.outer = &outer;
  context_.shown = outer.shown;
  context_.clock = outer.clock;
}

context_scope::context_scope(search_data& data, tree_slots& trees, const search_rules& rules,
                             const random_generator& random)
    : context_(data, trees, rules) {
  context_.constraints_in_force = search_constraints::in_force(data);
  context_.random = random;
}

}  // namespace zeb
