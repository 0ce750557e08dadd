#include "search/drivers/addition_options.h"

#include "base/message_text.h"

namespace zeb {

void settle_additions(addition_settings& wanted) {
  for (int* n : {&wanted.look, &wanted.informative}) {
    if (*n < 0) *n = all_taxa;
  }
}

namespace {

std::string look_text(int n) { return n >= all_taxa ? "all taxa" : text_of("%i taxa", n); }

}  // namespace

std::string addition_text(const addition_settings& additions) {
  if (additions.informative > 0) {
    return "by number of informative characters, looking at " + look_text(additions.informative);
  }
  if (additions.look == 0) return "random";
  const char* names[] = {"greatest difference of best and worst place", "closest", "furthest"};
  return std::string(names[additions.rule]) + " first, looking at " + look_text(additions.look);
}

}  // namespace zeb
