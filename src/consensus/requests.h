// Consensus values for others than the consensus commands, asked for in the words of the commands.
#pragma once

#include <vector>

namespace zeb {

/// Reads what stands behind `majority` (or `freqdifs`, for frequency differences) up to ";", which
/// stays unread, and returns the percentages by node, up to the last node: of tree J for the forms
/// "[J]" and "(J)", else of the consensus tree. Nodes without a group (terminals, the root) have
/// 100. Errors as those of the commands.
std::vector<double> requested_frequencies(bool differences);

}  // namespace zeb
