#include "search/part_search.h"

namespace zeb {

part_search_state part_search;

namespace {

struct part_search_records {
  tracked_nodes of_process;  // where all its data are a sector
};
part_search_records records;

}  // namespace

void track_sector_of_process(const tracked_nodes& nodes) {
  records.of_process = nodes;
  part_search.tracked = &records.of_process;
}

part_search_scope::part_search_scope(search_context& sector, const tracked_nodes* tracked) {
  part_search = {&sector, outer_.level + 1, tracked};
}

part_search_scope::~part_search_scope() { part_search = outer_; }

}  // namespace zeb
