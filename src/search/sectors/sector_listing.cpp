#include "search/sectors/sector_listing.h"

#include <string>
#include <vector>

#include "base/indices.h"
#include "base/message_text.h"
#include "base/number_text.h"
#include "engine/packing/packed_matrix.h"
#include "matrix/matrix.h"
#include "search/drivers/cycle_options.h"
#include "search/part_search.h"
#include "search/sectors/sectors.h"

namespace zeb {
namespace {

std::string divisions_text() {
  std::string text = std::to_string(sectors.divisions);
  if (sectors.divisions_last != sectors.divisions)
    text += "-" + std::to_string(sectors.divisions_last);
  return text + (sectors.xeven ? "" : " (approximm.)");
}

void add_lines_of_selection(std::vector<std::string>& lines) {
  switch (sectors.selection) {
    case sector_settings::exclusive:
      lines.push_back(text_of("Exclusive sectors: %s divisions, %i rounds, global TBR every %i",
                              divisions_text().c_str(), sectors.xss_rounds, sectors.xss_global));
      return;
    case sector_settings::constrained:
      lines.push_back(
          text_of("Sectors by the groups of the constraint tree:\n        - "
                  "Min. fork %i, max. fork %i\n        - %i rounds",
                  sectors.minfork, sectors.maxfork, sectors.css_rounds));
      return;
    case sector_settings::around:
      lines.push_back(text_of("Sector around node %i, up to %i branches away", sectors.center,
                              sectors.diameter));
      return;
    default:
      break;
  }
  std::string selections =
      text_of("Max. selections for size S is M = ( T/S * 100 ) / ( 100 - %i )\n        - ",
              100 - sectors.selfactor);
  if (sectors.selection_count > 0) {
    selections = "Max. selections, size by size:";
    for (int i = 0; i < sectors.selection_count; ++i)
      selections += " " + std::to_string(sectors.selections[at(i)]);
    selections += "\n        - ";
  }
  std::string text =
      text_of("Min. size %i, max. size %i\n        - ", sectors.minsize, sectors.maxsize) +
      selections;
  text += sectors.moveon > 0
              ? text_of("Increasing size in %i%% when M selections made,\n          or %i failed",
                        sectors.increase, sectors.moveon)
              : text_of("Increasing size in %i%% when M selections made", sectors.increase);
  lines.push_back("Random sectors:\n        - " + text);
}

void add_lines_of_analysis(std::vector<std::string>& lines) {
  const sector_search_settings& how = sectors.each;
  lines.push_back(
      text_of("Sectors of size below %i analyzed with %i RAS+TBR\n       "
              "(and extra %i starts if the first %i produce score differences).",
              how.godrift, how.starts, how.starts, how.starts));
  if (how.fuse > 0) lines.back() += text_of("\n       Starts are fused (%i rounds)", how.fuse);
  if (how.gocomb == 0 || how.gocomb > how.godrift) {
    lines.push_back(text_of("Sectors of size above %i analyzed with %i cycles of drift",
                            how.godrift, how.drift));
  }
  if (how.gocomb > 0) {
    lines.push_back(
        text_of("Sectors of size above %i analyzed with %i RAS,\n       "
                "drift (%i cycles), and fusing (%i rounds)",
                how.gocomb, how.combstarts, how.drift, how.fuse > 0 ? how.fuse : 3));
  }
  const std::size_t level = at(part_search.level);
  for (std::size_t i = level; i < how.instructions.size(); ++i)
    if (!how.instructions[i].empty())
      lines.push_back(text_of("Instructions for sectors of level %i: %s", static_cast<int>(i) + 1,
                              how.instructions[i].c_str()));
  if (how.equals) lines.emplace_back("Accepting equally good subtrees");
}

}  // namespace

void list_sector_settings() {
  std::vector<std::string> lines;
  if (sectors.tree >= 0) lines.push_back(text_of("Searching tree %i only", sectors.tree));
  add_lines_of_selection(lines);
  add_lines_of_analysis(lines);
  if (sectors.global > 0 || sectors.dglobal > 0) {
    lines.push_back(
        text_of("Doing global TBR every %i substitutions in small sectors,\n       "
                "and every %i substitutions in large sectors.",
                sectors.global, sectors.dglobal));
  } else {
    lines.emplace_back("No global TBR");
  }
  constexpr int fewest_taxa = 8;
  if (sectors.each.xbuffer && matrix.present && active_taxa() >= fewest_taxa)
    lines.push_back(text_of("Using separate matrix-buffer for sectors with up to %i terms",
                            largest_sector(packed_matrix(true), sectors.each)));
  if (sectors.each.slack > 0)
    lines.push_back(text_of("Extra memory for sectors: %i%%", sectors.each.slack));
  if (sectors.findscore > 0)
    lines.push_back("Stopping when score " + exact_text(sectors.findscore) + " found");
  lines.emplace_back(sectors.keepall ? "Keeping all trees" : "Keeping the best trees only");
  list_lines("Sectorial search settings: ", lines);
}

}  // namespace zeb
