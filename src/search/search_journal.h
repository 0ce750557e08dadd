// The searches of a run and what they found, for the section on methods.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "base/scores.h"

namespace zeb {

struct option_table;

/// What a search tells at its end.
struct search_outcome {
  double best = no_score;  // no_score: it tells none
  std::string score{};     // the same as searches show it
  int hits = 0;            // replications that found the best, of ...
  int replications = 0;    // 0: the search has none
  int trees = -1;          // that it left
  double rearrangements = 0;
  bool interrupted = false;
};

/// Searches in the same words on the same data, under the same settings.
struct search_record {
  std::string command;  // with the options and settings that differ from the defaults
  int data_set = 0;     // of this run
  int seed = 0;         // of the first one
  bool other_seeds = false;
  int runs = 0;
  int interrupted = 0;     // of the runs
  search_outcome found{};  // the best of all; replications and rearrangements in all
  double seconds = 0;
};
struct search_journal {
  std::vector<search_record> searches;
  int data_sets = 0;
};
extern search_journal searches_done;  // written by the functions of this file only

/// Notes a search that ends, by the table of its command; the settings are those in force.
void note_search(const option_table& table, const search_outcome& outcome);
/// The searches from here on are of other data.
void note_new_data();
/// The journal in words.
std::vector<std::string> searches_in_words();

}  // namespace zeb
