// The collapsing rule in its full form, on the trees that a search ends with.
#pragma once

namespace zeb {

/// Inside a search_session: under the rules that searches only approach (4 to 6), drops the later
/// of any two trees that the full rule makes one. Returns how many went.
int drop_equal_by_full_rule();

/// After the session: with automatic collapsing on, the trees in memory lose the branches that the
/// rule collapses.
void condense_if_automatic();

}  // namespace zeb
