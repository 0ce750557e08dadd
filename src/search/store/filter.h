// The end of a search: which of the trees found are kept.
#pragma once

#include "search/search_context.h"

namespace zeb {

/// Drops trees above `best` + suboptimal and, under a collapsing rule by which trees of different
/// length can be one, the worse (or later) of each pair that is the same once collapsed.
void filter_by_score(search_context& context, double best);
/// The same; under any rule, of trees that are the same one stays. The store lets no tree in twice,
/// but the user may have had some.
void recheck_trees(search_context& context, double best);

/// Under the rules that searches only approach (4 to 6), drops the worse (or later) of any two
/// trees that the full rule makes one. Returns how many went. After a search over the user's data
/// in the buffer.
int drop_equal_by_full_rule(search_context& context);

/// The note about trees dropped since others are the same once collapsed; nothing for none.
void tell_equal_as_collapsed(int dropped);

/// After the session: with automatic collapsing on, the trees in memory lose the branches that the
/// rule collapses.
void condense_if_automatic();

}  // namespace zeb
