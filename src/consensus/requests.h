// What users write after the words of the consensus commands, read for the commands themselves and
// for expression functions that want the same values.
#pragma once

#include <cstdint>
#include <vector>

#include "consensus/selection.h"

namespace zeb {

/// What stands after the command's word.
struct consensus_request {
  bool store = false;                  // "*": keep the result as the last tree
  int reference = -1;                  // "[J]" and "(J)": a tree whose groups are looked for
  bool as_table = false;               // "(J)"
  std::vector<std::uint8_t> trees;     // by number
  std::vector<std::uint8_t> excluded;  // by taxon
  int n_trees = 0;
  int n_excluded = 0;
};

/// Reads "[J]" or "(J)" where one comes next; false where none does.
bool read_reference(consensus_request& request);
/// Reads the arguments up to ";", which stays unread. The forms of a reference tree are read if
/// `has_reference_forms`, and refused otherwise.
consensus_request read_consensus_request(bool has_reference_forms);
/// The trees asked for. Errors where no taxon is left.
tree_selection selection_of(const consensus_request& request);

[[noreturn]] void invalid_option();
/// Errors unless ";" is next.
void require_end();

/// Reads what stands after `majority` (or `freqdifs`, for frequency differences) up to ";", which
/// stays unread, and returns the percentages by node, up to the last node: of tree J for the forms
/// "[J]" and "(J)", else of the consensus tree. Nodes without a group (terminals, the root) have
/// 100. Errors as those of the commands.
std::vector<double> requested_frequencies(bool differences);

}  // namespace zeb
