#include "search/part_search.h"

namespace zeb {

part_search_state part_search;

namespace {

struct settings_list {
  std::vector<settings_restorer (*)()> notes;
};
settings_list settings_of_searches;

struct process_sector {
  tracked_nodes nodes;
};
process_sector sector_of_process;

}  // namespace

void track_sector_of_process(const tracked_nodes& nodes) {
  sector_of_process.nodes = nodes;
  part_search.tracked = &sector_of_process.nodes;
}

void add_settings_of_searches(settings_restorer (*note)()) {
  settings_of_searches.notes.push_back(note);
}

part_search_scope::part_search_scope(search_context& sector, const tracked_nodes* tracked) {
  for (const auto note : settings_of_searches.notes) settings_.push_back(note());
  part_search = {&sector, outer_.level + 1, tracked};
}

part_search_scope::~part_search_scope() {
  for (const settings_restorer& restore : settings_) restore();
  part_search = outer_;
}

}  // namespace zeb
