#include "search/registration.h"

#include "base/command.h"
#include "base/number_text.h"
#include "engine/hooks.h"
#include "landmarks/landmark_workers.h"
#include "language/methods.h"
#include "language/settings_scope.h"
#include "matrix/matrix_layout.h"
#include "search/combined/combined_settings.h"
#include "search/drivers/drift.h"
#include "search/drivers/fusing.h"
#include "search/drivers/mult.h"
#include "search/drivers/ratchet.h"
#include "search/drivers/rebuild.h"
#include "search/hooks.h"
#include "search/landmarks/landmark_swap.h"
#include "search/landmarks/searched_landmarks.h"
#include "search/search_journal.h"
#include "search/search_results.h"
#include "search/search_settings.h"
#include "search/sectors/sectors.h"
#include "search/store/swap_collapse.h"
#include "search/workers/cores.h"

namespace zeb {

namespace {

void register_settings() {
  add_settings(noted<swapping>);
  add_settings(noted<search_settings>);
  add_settings(noted<mult>);
  add_settings(noted<ratchet>);
  add_settings(noted<drift>);
  add_settings(noted<fusing>);
  add_settings(noted<sectors>);
  add_settings(noted<combined>);
  add_settings(noted<rebuilding>);
  add_settings(noted<last_search>);
  add_settings(
      []() -> settings_restorer { return [former = cores.wanted] { set_cores(former); }; });
}

}  // namespace

void register_search() {
  register_settings();
  hooks_of_engine.collapse_by_swapping = collapse_by_swapping;
  hooks_of_engine.landmarks_of_data =
      [](const search_data& data,
         const packing_request& request) -> std::shared_ptr<whole_tree_characters> {
    return std::make_shared<searched_landmarks>(data, request);
  };
  hooks_of_search.judge_of_swap = [](swap_run& run) -> std::unique_ptr<candidate_judge> {
    return std::make_unique<landmark_swap>(run);
  };
  add_command_over_hook(rest_workers);
  add_new_matrix_hook(forget_lowest_score);
  add_new_matrix_hook(note_new_data);
  add_methods(methods_part::choices, [] {
    std::vector<std::string> lines;
    const search_settings_state& s = search_settings;
    if (s.suboptimal > 0 || s.relative_suboptimal > 0)
      lines.push_back("subopt " + exact_text(s.suboptimal) + "x" +
                      exact_text(s.relative_suboptimal));
    return lines;
  });
  add_methods(methods_part::searches, searches_in_words);
}

}  // namespace zeb
