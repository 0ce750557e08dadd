#include "formats/nexus/assumptions_writer.h"

#include <algorithm>
#include <set>
#include <vector>

#include "base/errors.h"
#include "base/indices.h"
#include "formats/foreign_matrix.h"
#include "formats/labelled_trees.h"
#include "formats/written_words.h"
#include "matrix/costs/character_costs.h"
#include "matrix/costs/step_matrices.h"
#include "matrix/symbols.h"

namespace zeb {

namespace {

// Numbers from 1 of the flagged elements, with ranges, in lines that can be read.
std::string number_list(const std::vector<bool>& flags) {
  std::string text;
  std::size_t line = 0;
  for (std::size_t i = 0; i < flags.size(); ++i) {
    if (!flags[i]) continue;
    std::size_t end = i;
    while (end + 1 < flags.size() && flags[end + 1]) ++end;
    text += " " + std::to_string(i + 1);
    if (end > i) text += "-" + std::to_string(end + 1);
    if (text.size() - line > 100) {
      text += "\n";
      line = text.size();
    }
    i = end;
  }
  return text;
}

template <class predicate>
std::vector<bool> flags_where(predicate&& holds) {
  std::vector<bool> flags;
  for (const character_record& record : matrix.characters) flags.push_back(holds(record));
  return flags;
}

bool any(const std::vector<bool>& flags) {
  return std::find(flags.begin(), flags.end(), true) != flags.end();
}

// Costs as characters of one type and with the same states use them: rows are named by symbols of
// the type.
struct matrix_use {
  cost_table costs;
  std::vector<int> states;
  bool is_tree;
  data_type type;
  std::string name;
  std::vector<bool> characters;
};

// Costs that characters have in common.
void add_use(std::vector<matrix_use>& uses, int character, data_type type) {
  const shared_costs set = costs_set_for(character);
  const cost_table costs = set ? *set : costs_all_alike(1);
  const character_costs own = costs_of_character(character);
  auto use = std::find_if(uses.begin(), uses.end(), [&](const matrix_use& u) {
    return u.type == type && u.states == own.states && u.costs.costs == costs.costs;
  });
  if (use == uses.end()) {
    const int number = find_step_matrix(set);
    const std::string name =
        number < 0 ? "costs_" + std::to_string(uses.size()) : matrix.step_matrices[at(number)].name;
    uses.push_back(
        {costs, own.states, !own.edges.empty(), type, name, std::vector<bool>(at(matrix.nchar))});
    use = uses.end() - 1;
  }
  use->characters[at(character)] = true;
}

std::vector<matrix_use> step_matrices_in_use(const writing_style& style) {
  std::vector<matrix_use> uses;
  for (int c = 0; c < matrix.nchar && style.step_matrices; ++c)
    if (matrix.characters[at(c)].is_sankoff) add_use(uses, c, written_type(c, style));
  for (std::size_t i = 0; i < uses.size(); ++i) {
    const auto same = [&](const matrix_use& u) { return u.name == uses[i].name; };
    if (!style.plain) {
      const std::string name = "ustyp" + std::to_string(i);
      if (name != uses[i].name)
        warning("Step-matrix", uses[i].name, "is saved under the name", name);
      uses[i].name = name;
    } else if (std::any_of(uses.begin(), uses.begin() + static_cast<std::ptrdiff_t>(i), same)) {
      uses[i].name += "_" + std::to_string(i + 1);
    }
  }
  return uses;
}

std::string symbol_of(const matrix_use& use, int state) {
  const std::string symbol(1, symbol_of_state(use.type, state));
  return symbol == "-" ? "'-'" : symbol;
}

// "((3)1,2)0", from the state on, which was come to from another one.
std::string state_tree_text(const matrix_use& use, int state, int from) {
  std::string below;
  for (const int next : use.states)
    if (next != from && use.costs.costs[at(state)][at(next)] == 1)
      below += (below.empty() ? "(" : ",") + state_tree_text(use, next, state);
  return (below.empty() ? "" : below + ")") + symbol_of(use, state);
}

void write_step_matrix(output_file& out, const matrix_use& use, bool plain) {
  const std::string name = quoted_label(use.name);
  if (plain && use.is_tree && use.states.size() > 2) {
    out.print("\nusertype %s (cstree) = %s", name.c_str(),
              state_tree_text(use, use.states.front(), -1).c_str());
    return;
  }
  out.print(plain ? "\nusertype %s (stepmatrix) = %i\n" : "\nusertype %s = %i\n", name.c_str(),
            static_cast<int>(use.states.size()));
  for (const int s : use.states) out.print(" %5s", symbol_of(use, s).c_str());
  for (const int from : use.states) {
    out.put("\n");
    for (const int to : use.states) {
      const std::int32_t cost = use.costs.costs[at(from)][at(to)];
      const std::string text = from == to               ? "."
                               : cost == forbidden_cost ? "i"
                                                        : std::to_string(cost);
      out.print(" %5s", text.c_str());
    }
  }
}

// The types that aren't unordered, in one set.
void write_plain_types(output_file& out, const std::vector<bool>& ordered,
                       const std::vector<matrix_use>& uses) {
  for (const matrix_use& use : uses) {
    write_step_matrix(out, use, true);
    out.put("\n;");
  }
  if (!any(ordered) && uses.empty()) return;
  std::string types;
  if (any(ordered)) types = " ord: " + number_list(ordered);
  for (const matrix_use& use : uses) {
    types += (types.empty() ? " " : ",\n ") + quoted_label(use.name) + ": " +
             number_list(use.characters);
  }
  out.print("\ntypeset * zeb =%s ;", types.c_str());
}

// The block ends after the step matrices; the reader takes types of characters outside of one.
void write_user_types(output_file& out, const std::vector<matrix_use>& uses) {
  for (std::size_t i = 0; i < uses.size(); ++i) {
    write_step_matrix(out, uses[i], false);
    out.put(i + 1 < uses.size() ? "\n;" : "\n;end;");
  }
  for (const matrix_use& use : uses) {
    out.print("\nctype %s: %s ;", use.name.c_str(), number_list(use.characters).c_str());
  }
}

void write_weights(output_file& out, const std::set<int>& weights, bool plain) {
  std::string text;
  for (const int weight : weights) {
    text += (text.empty() ? "" : ",\n") + std::to_string(weight) + " : " +
            number_list(flags_where([weight](const auto& r) { return r.weight == weight; }));
  }
  out.print("\n%s %s ;", plain ? "wtset * zeb =" : "weights", text.c_str());
}

void warn_of_lost_settings(const writing_style& style) {
  const std::string steps =
      characters_where([](const character_record& r) { return r.internal_steps != 0; });
  if (!steps.empty()) warning("NEXUS has no place for internal steps, those of characters" + steps);
  const std::string costs =
      characters_where([](const character_record& r) { return r.is_sankoff != 0; });
  if (!costs.empty() && !style.step_matrices)
    warning("Step-matrices are left out (\"export +\" saves them), those of characters" + costs);
  const std::string bound = characters_where([](const character_record& r) {
    return r.is_sankoff && (r.root_states != 0 || r.user_min_steps >= 0);
  });
  if (!bound.empty())
    warning("NEXUS has no place for ancestral states and user minima, those of characters" + bound);
  if (matrix.outgroup != 0)
    warning("NEXUS has no place for the outgroup, taxon", taxon_name(matrix.outgroup));
}

}  // namespace

void write_nexus_assumptions(output_file& out, const writing_style& style) {
  const bool plain = style.plain;
  warn_of_lost_settings(style);
  const std::vector<bool> ordered =
      flags_where([](const auto& r) { return r.additive != 0 && !r.is_continuous; });
  const std::vector<bool> inactive = flags_where([](const auto& r) { return r.active == 0; });
  const std::vector<matrix_use> uses = step_matrices_in_use(style);
  std::vector<bool> deleted;
  for (int t = 0; t < matrix.ntax; ++t) deleted.push_back(!matrix.taxon_active[at(t)]);
  std::set<int> weights;
  for (const character_record& record : matrix.characters) {
    if (record.weight != 1) weights.insert(record.weight);
  }
  if (!any(ordered) && !any(inactive) && !style.gaps_are_states && !any(deleted) &&
      weights.empty() && uses.empty())
    return;
  out.put(plain ? "\nbegin assumptions;" : "\nbegin assumptions ; ");
  if (plain) {
    write_plain_types(out, ordered, uses);
  } else if (any(ordered)) {
    out.print("\nctype ord: %s ;", number_list(ordered).c_str());
  }
  if (any(inactive)) {
    out.print("\n%s %s ;", plain ? "exset * zeb =" : "exclude", number_list(inactive).c_str());
  }
  if (any(deleted)) out.print("\ndelete %s ;", number_list(deleted).c_str());
  if (!weights.empty()) write_weights(out, weights, plain);
  if (style.gaps_are_states) out.put("\npset gapmode=newstate;\n");
  if (!plain) write_user_types(out, uses);
  out.put(plain ? "\nend;\n" : "\nend ; \n");
}

}  // namespace zeb
