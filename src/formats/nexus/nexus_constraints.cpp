#include "formats/nexus/nexus_constraints.h"

#include <algorithm>
#include <utility>

#include "base/errors.h"
#include "base/indices.h"
#include "console/output.h"
#include "formats/newick.h"
#include "formats/nexus/tree_taxa.h"
#include "language/fit_text.h"
#include "matrix/matrix.h"
#include "trees/constraints/constraints.h"

namespace zeb {
namespace {

/// "(monophyly)" or "(backbone)", which may be left out. True: a backbone.
bool read_kind(nexus_file& file) {
  if (!file.in.accept('(')) return false;
  const nexus_token kind = file.in.token();
  file.in.expect(')', "after the kind of constraints");
  if (kind.is("backbone")) return true;
  if (!kind.is("monophyly"))
    warning("Constraints can be monophyly or backbone; taken as monophyly:", fit_name(kind.text));
  return false;
}

bool lacks_taxa(const_tree_span tree) {
  return std::any_of(tree.begin(), tree.begin() + matrix.ntax, [](int v) { return v == 0; });
}

}  // namespace

void read_nexus_constraints(nexus_file& file) {
  const nexus_token name = file.in.token();
  if (name.what != nexus_token::kind::word) file.in.fail("constraints have no name");
  const bool backbone = read_kind(file);
  file.in.expect('=', "after the name of constraints");
  if (file.in.peek() != '(') file.in.fail("expected a tree in parentheses after constraints");
  tree_taxa taxa(file);
  labelled_tree_reader reader(taxa.lookup(), refuse_repeated_taxon);
  constraint_definitions definitions;
  definitions.tree.resize(at(matrix.nnodes));
  reader.read_plain_tree(definitions.tree);
  for (int t = 0; t < matrix.ntax && !backbone; ++t) {
    if (definitions.tree[at(t)] == 0) definitions.tree[at(t)] = matrix.ntax;
  }
  normalise_tree(definitions.tree, matrix.ntax);
  if (constraints.defined()) warning("Constraints are replaced by those of", fit_name(name.text));
  define_constraints(std::move(definitions), constraints.active);
  report_line("Constraint tree", fit_name(name.text),
              constraints.active ? "read" : "read (not enforced until \"constrain =\")");
}

void write_nexus_constraints(output_file& out, bool plain, word_writer& words) {
  if (!constraints.positive.empty() || !constraints.negative.empty())
    warning("NEXUS has no place for constraint groups (\"force\" shows them as a command)");
  if (constraints.tree.empty()) return;
  const std::string tree = newick_text(constraints.tree, {}, words);
  const char* const kind = lacks_taxa(constraints.tree) ? "(BACKBONE)"
                           : plain                      ? "(MONOPHYLY)"
                                                        : "[ MONOPHYLY ]";
  if (plain) out.put("\nbegin paup;");
  out.print("\nconstraints outout %s =\n%s;\n", kind, tree.c_str());
  if (plain) out.put("end;\n");
}

}  // namespace zeb
