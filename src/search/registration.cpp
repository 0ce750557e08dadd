#include "search/registration.h"

#include "base/message_text.h"
#include "engine/hooks.h"
#include "language/methods.h"
#include "matrix/matrix_layout.h"
#include "search/search_journal.h"
#include "search/search_results.h"
#include "search/search_settings.h"
#include "search/store/swap_collapse.h"

namespace zeb {

void register_search() {
  hooks_of_engine.collapse_by_swapping = collapse_by_swapping;
  add_new_matrix_hook(forget_lowest_score);
  add_new_matrix_hook(note_new_data);
  add_methods(methods_part::choices, [] {
    std::vector<std::string> lines;
    const search_settings_state& s = search_settings;
    if (s.suboptimal > 0 || s.relative_suboptimal > 0)
      lines.push_back(text_of("subopt %gx%g", s.suboptimal, s.relative_suboptimal));
    return lines;
  });
  add_methods(methods_part::searches, searches_in_words);
}

}  // namespace zeb
