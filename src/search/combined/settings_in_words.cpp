#include "search/combined/settings_in_words.h"

#include <algorithm>
#include <utility>

#include "base/indices.h"
#include "base/message_text.h"
#include "base/number_text.h"
#include "matrix/matrix.h"
#include "search/drivers/addition_options.h"

namespace zeb {
namespace {

std::string sector_text(const combined_settings& settings) {
  std::string text;
  for (const auto& [is_on, name] : {std::pair{settings.rss, "random"},
                                    {settings.css, "constraint"},
                                    {settings.xss, "exclusive"}})
    if (is_on) text += (text.empty() ? "" : ", ") + std::string(name);
  return (text.empty() ? "no" : text) + " sectorial searches";
}

std::string stages_text(const combined_settings& settings) {
  std::string text = "Each replication with " + sector_text(settings);
  const char* joint = ",\n       with ";
  for (const auto& [cycles, name] : {std::pair{settings.rebuild, "rebuilding"},
                                     {settings.ratchet, "ratchet"},
                                     {settings.drift, "drifting"}}) {
    if (cycles <= 0) continue;
    text += joint + text_of("%s (%i iters.)", name, cycles);
    joint = " and ";
  }
  return text;
}

void add_lines_of_crossing(const combined_settings& settings, std::vector<std::string>& lines) {
  if (settings.hybrid) {
    lines.push_back(
        text_of("Hybridizing trees, with %.2f times as many replications", settings.hybrid_factor));
  }
  lines.push_back(settings.fuse > 0 ? text_of("Fusing trees (%i rounds)", settings.fuse)
                                    : "Not fusing trees");
  if (settings.picktype > 0) {
    lines.push_back(text_of("Selecting either tree fusing or hybridization automatically (%.3f)",
                            settings.picktype));
  }
  if (settings.gfuse > 0)
    lines.push_back(text_of("Fusing all trees every %i hits", settings.gfuse));
  if (settings.hfuse > 0)
    lines.push_back(text_of("Hybridizing all trees every %i hits", settings.hfuse));
}

void add_lines_of_hits(const combined_settings& settings, std::vector<std::string>& lines) {
  if (settings.targetscore > 0)
    lines.push_back("Searching until score " + exact_text(settings.targetscore) + " found");
  lines.push_back(text_of("Finding best score %i times (=hits)", settings.hits));
  if (settings.giveupscore > 0)
    lines.push_back("Giving up when score " + exact_text(settings.giveupscore) + " found");
  if (settings.consense == 0) {
    lines.emplace_back("Not consensing trees during search");
  } else {
    lines.push_back(text_of("Consensing trees (until stabilized %i times; every %i hits and more)",
                            settings.consense, settings.conbase));
  }
}

void add_lines_of_effort(const combined_settings& settings, std::vector<std::string>& lines) {
  if (settings.level >= 0) lines.push_back(text_of("Search level %g", settings.level));
  if (settings.chklevel == 0) return;
  std::string text = text_of("Checking search parameters every %i hits", settings.chklevel);
  if (settings.moves_level && settings.level >= 0) {
    text +=
        " (increasing/decreasing" + text_of("\n       search level in %.2f; current level is %.2f)",
                                            settings.level_step, settings.level);
  }
  lines.push_back(text);
}

/// What a level sets follows it: that may have been changed since.
std::string level_in_words(const combined_settings& settings) {
  constexpr int fewest_taxa = 4;
  const auto cycles = [](const char* keyword, int n) {
    return n > 0 ? text_of(" %s %i", keyword, n) : text_of(" no%s", keyword);
  };
  return " level " + exact_text(settings.level) +
         text_of(" %i replications %i", std::max(fewest_taxa, active_taxa()),
                 settings.replications) +
         cycles("fuse", settings.fuse) + cycles("drift", settings.drift) +
         cycles("ratchet", settings.ratchet) + cycles("autoconst", settings.autoconst) +
         (settings.xmix ? " xmix" : " noxmix");
}

std::string sectors_of_level(const sector_settings& sector) {
  std::string text = text_of("; sectsch: minsize %i maxsize %i increase %i selfactor %i noglobal",
                             sector.minsize, sector.maxsize, sector.increase, sector.selfactor);
  if (sector.global > 0) text += text_of(" global %i", sector.global);
  if (sector.dglobal > 0) text += text_of(" dglobal %i", sector.dglobal);
  if (sector.selection_count > 0) text += " selfactor =";
  for (int i = 0; i < sector.selection_count; ++i) text += text_of(" %i", sector.selections[at(i)]);
  return text;
}

}  // namespace

std::vector<std::string> lines_of_settings(const combined_settings& settings) {
  std::vector<std::string> lines = {
      text_of("Using %i replications as starting point for each hit", settings.replications)};
  if (settings.addition.look > 0 || settings.addition.informative > 0)
    lines.push_back("Addition sequence: " + addition_text(settings.addition));
  if (settings.autoconst > 0) {
    const char* steps[] = {"wagner)", "SPR)", "TBR)"};
    lines.push_back("Each replication initially autoconstrained (previous and " +
                    std::string(steps[settings.autoconst - 1]));
  }
  lines.push_back(stages_text(settings));
  if (settings.hold > 1)
    lines.push_back(text_of("Saving up to %i trees per replication", settings.hold));
  add_lines_of_crossing(settings, lines);
  if (settings.retouch > 0)
    lines.push_back(text_of("Retouching trees %i times before new replications", settings.retouch));
  add_lines_of_hits(settings, lines);
  add_lines_of_effort(settings, lines);
  return lines;
}

std::string options_in_words(const combined_settings& settings, const sector_settings& sector,
                             const std::string& changed) {
  const bool has_level = settings.level >= 0;
  std::string text = has_level ? level_in_words(settings) : "";
  if (!changed.empty()) text += " " + changed;
  if (settings.hybrid) text += " hybrid x" + exact_text(settings.hybrid_factor);
  if (settings.chklevel > 0) {
    text += " chklevel ";
    text += settings.moves_level ? "+" + exact_text(settings.level_step) : "-";
    text += text_of(" %i", settings.chklevel);
  }
  if (has_level) text += sectors_of_level(sector);
  return text.empty() ? text : text.substr(1);
}

}  // namespace zeb
