#include "search/combined/settings_in_words.h"

#include <utility>

#include "base/message_text.h"
#include "base/number_text.h"
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

}  // namespace zeb
