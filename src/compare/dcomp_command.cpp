// `dcomp`: compares two data sets, and makes one of them.
#include <string>
#include <utility>
#include <vector>

#include "base/errors.h"
#include "base/output_file.h"
#include "compare/combination.h"
#include "compare/combined_file.h"
#include "compare/commands.h"
#include "compare/compared_names.h"
#include "compare/compared_trees.h"
#include "compare/comparing.h"
#include "compare/comparison.h"
#include "compare/data_files.h"
#include "compare/difference_figure.h"
#include "compare/forced_matches.h"
#include "compare/last_comparison.h"
#include "compare/reports.h"
#include "compare/requests.h"
#include "compare/trees/tree_comparison.h"
#include "console/output.h"
#include "console/settings.h"
#include "language/lexer.h"
#include "matrix/reading/matrix_reader.h"
#include "trees/hooks.h"

namespace zeb {
namespace {

std::string read_name(const char* missing) {
  if (read_file_name() == 0) error_end(missing);
  return std::string(token());
}

void warn_of_data(const std::string& first, const std::string& second) {
  warn_of_replacement((first + " and " + second).c_str());
}

data_set read_set(const std::string& file) {
  data_set data = read_data_file(file);
  if (data.ntax() == 0) error_end(file, "contains no data!");
  make_names_fit_figures(data);
  return data;
}

// Groups 0 and 1: what only one of the two has.
std::vector<unique_group> groups_of_unique(const comparison_task& task, const comparison& found,
                                           const combination& combined) {
  const auto flags = [](const std::vector<int>& unique, const std::vector<int>& numbers,
                        int count) {
    std::vector<std::uint8_t> marked(at(count), 0);
    for (const int i : unique) marked[at(numbers[at(i)])] = 1;
    return marked;
  };
  const combined_numbers& n = combined.numbers;
  return {
      {"Unique_to_" + task.first.word, flags(found.taxa.only_in_first(), n.taxa_of_first, n.ntax),
       flags(found.characters.only_in_first(), n.characters_of_first, n.nchar)},
      {"Unique_to_" + task.second.word,
       flags(found.taxa.only_in_second(), n.taxa_of_second, n.ntax),
       flags(found.characters.only_in_second(), n.characters_of_second, n.nchar)}};
}

std::vector<tree_section> tree_sections(const comparison_task& task) {
  const int first = static_cast<int>(task.first.trees.size());
  const int second = static_cast<int>(task.second.trees.size());
  return {{"tree(s) from " + task.first.word, "from_" + task.first.word, 0, first},
          {"tree(s) for " + task.second.word, "from_" + task.second.word, first, second}};
}

// For each taxon or character of the newer set.
void store_list(const match_list& wanted, const comparison_task& task, const comparison& found) {
  if (wanted.array < 0) return;
  const correspondence& matches = wanted.of_taxa ? found.taxa : found.characters;
  std::vector<int> list = matches.in_second;
  if (wanted.closest) {
    list = wanted.of_taxa
               ? closest_names(task.first.taxa, task.second.taxa, matches)
               : closest_names(character_names(task.first), character_names(task.second), matches);
  }
  hooks_of_trees.user_arrays.store(wanted.array, std::vector<double>(list.begin(), list.end()), 1);
}

// Once the combined matrix is in memory. The lines of the figures written.
std::vector<std::string> compare_results(const comparison_request& request,
                                         const comparison_task& task, comparison& found,
                                         const combination& combined,
                                         const std::vector<std::uint8_t>& left_out) {
  std::vector<std::string> figures;
  if (request.trees.figures && found.counts.any()) {
    draw_differences(task, found, combined, "matrix_differences.svg");
    figures.emplace_back("    matrix_differences.svg\n");
  }
  if (!have_trees(task)) return figures;
  const tree_comparison_result trees =
      compare_trees_of_files(results_to_compare(task, found, combined, left_out), request.trees);
  found.counts.critical_cells = trees.critical_cells;
  figures.insert(figures.end(), trees.figures.begin(), trees.figures.end());
  return figures;
}

struct named_files {
  std::string combined, newer, older;
  std::string left_out;  // names of taxa; empty: none
};

named_files read_names() {
  named_files files;
  files.combined = read_name("Must give name of file");
  files.newer = read_name("Must specify TWO input files");
  files.older = read_name("Must specify TWO input files");
  if (read_file_name() > 0) files.left_out = token();
  expect_end();
  return files;
}

}  // namespace

void dcomp_command() {
  const comparison_request request = read_comparison_request();
  const named_files files = read_names();
  output_file file;
  open_combined_file(file, files.combined);
  warn_of_data(files.newer, files.older);
  data_set first = read_set(files.newer);
  data_set second = read_set(files.older);
  tell_words_apart({&first, &second});
  forced_matches forced;
  if (!request.forced_file.empty())
    forced = read_forced_matches(request.forced_file, first, second);
  decision_maker decisions(request.decisions);
  const comparison_task task = {.first = first,
                                .second = second,
                                .decisions = decisions,
                                .forced_taxa = forced.taxa,
                                .forced_characters = forced.characters,
                                .by_similarity = !request.exact_names,
                                .compare_states = !request.ignore_states,
                                .by_taxon = request.by_taxon};
  comparison found = compare_data(task);
  if (have_trees(task)) check_trees(task, found);
  const combination combined = combine(task, found);
  const std::vector<std::uint8_t> left_out = taxa_in_file(files.left_out, combined.data);
  write_combined_file(file, combined.data, tree_sections(task),
                      groups_of_unique(task, found, combined));
  read_back(files.combined);
  store_list(request.list, task, found);
  if (settings.report) tell_details(task, found);
  if (request.tell_scores) tell_scorings(task, found);
  tell_counts(task, found);
  const std::vector<std::string> figures =
      compare_results(request, task, found, combined, left_out);
  if (!figures.empty()) emit("\nSaved image file(s) with summaries:\n");
  for (const std::string& line : figures) emit(line);
  note_comparison(found.counts);
}

}  // namespace zeb
