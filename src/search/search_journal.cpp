#include "search/search_journal.h"

#include <algorithm>

#include "base/command.h"
#include "base/message_text.h"
#include "base/random.h"
#include "engine/kernels/kernel_choice.h"
#include "engine/settings.h"
#include "language/methods.h"
#include "language/options.h"
#include "search/part_search.h"

namespace zeb {

search_journal searches_done;

namespace {

/// The command with its options, then the other settings in force.
std::string words_of_command(const option_table& table) {
  const std::string name(table.command);
  std::string text = table.changed ? table.changed() : std::string();
  text = text.empty() ? name : name + "=" + text;
  std::string others;
  for (const std::string& line : changed_settings()) {
    if (line.starts_with(name + ":")) continue;
    others += (others.empty() ? "" : ", ") + line;
  }
  return others.empty() ? text : text + " (with " + others + ")";
}

void add(search_outcome& found, const search_outcome& outcome) {
  const search_outcome before = found;
  found = outcome;
  found.replications += before.replications;
  found.rearrangements += before.rearrangements;
  if (before.best < 0 || outcome.best < before.best) return;
  found.best = before.best;
  found.score = before.score;
  found.hits = before.hits + (outcome.best == before.best ? outcome.hits : 0);
}

std::string in_words(const search_record& record) {
  const search_outcome& found = record.found;
  std::string text = record.command + ": seed " + std::to_string(record.seed);
  if (record.other_seeds) text += " and others";
  if (record.runs > 1) text += ", " + std::to_string(record.runs) + " runs";
  if (found.best >= 0) text += ", best score " + found.score;
  if (found.replications > 0 && found.best >= 0)
    text += text_of(" hit %i times out of %i", found.hits, found.replications);
  if (found.replications > 0 && found.best < 0)
    text += ", " + counted(found.replications, "replication", "replications");
  if (found.trees >= 0) text += ", " + counted(found.trees, "tree", "trees") + " kept";
  if (found.rearrangements > 0)
    text += ", " + with_commas(text_of("%.0f", found.rearrangements)) + " rearrangements";
  text += text_of(", %.1f seconds", record.seconds);
  if (record.interrupted > 0 && record.runs == 1) text += ", interrupted";
  if (record.interrupted > 0 && record.runs > 1)
    text += text_of(", %i interrupted", record.interrupted);
  return text;
}

}  // namespace

void note_search(const option_table& table, const search_outcome& outcome) {
  if (part_search.sector) return;
  const std::string words = words_of_command(table);
  std::vector<search_record>& all = searches_done.searches;
  auto record = std::find_if(all.begin(), all.end(), [&](const search_record& r) {
    return r.data_set == searches_done.data_sets && r.command == words;
  });
  if (record == all.end()) {
    all.push_back(
        {.command = words, .data_set = searches_done.data_sets, .seed = randomness.random_seed});
    record = all.end() - 1;
  }
  ++record->runs;
  record->interrupted += outcome.interrupted ? 1 : 0;
  record->other_seeds = record->other_seeds || randomness.random_seed != record->seed;
  add(record->found, outcome);
  record->seconds += command_seconds();
}

void note_new_data() { ++searches_done.data_sets; }

std::vector<std::string> searches_in_words() {
  const std::vector<search_record>& all = searches_done.searches;
  std::vector<std::string> lines;
  if (all.empty()) return lines;
  lines.push_back(text_of("words of %i bits", engine.long_words ? widest_kernels() : 32));
  int data_set = all.front().data_set;
  for (const search_record& record : all) {
    if (record.data_set != data_set) lines.push_back("then, on other data:");
    data_set = record.data_set;
    lines.push_back(in_words(record));
  }
  return lines;
}

}  // namespace zeb
