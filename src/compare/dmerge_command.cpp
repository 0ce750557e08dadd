// `dmerge`: one matrix made of many files.
#include <algorithm>
#include <string>
#include <utility>
#include <vector>

#include "base/errors.h"
#include "base/interrupts.h"
#include "base/message_text.h"
#include "base/output_file.h"
#include "base/process.h"
#include "compare/combined_file.h"
#include "compare/commands.h"
#include "compare/data_files.h"
#include "compare/merging.h"
#include "console/output.h"
#include "console/progress.h"
#include "console/settings.h"
#include "formats/tps.h"
#include "language/interpreter.h"
#include "language/lexer.h"
#include "matrix/matrix_layout.h"
#include "matrix/reading/matrix_reader.h"

namespace zeb {
namespace {

void merge_in_memory() {
  require_data("merging characters");
  expect_end();
  data_set data = data_in_memory(matrix.file_name);
  const int gone = merge_characters_of_one_name(data);
  if (gone > 0) put_into_memory(data);
  if (settings.report)
    report_line(counted(gone, "character has", "characters have"),
                "been merged into others of the same name");
}

std::vector<std::string> read_inputs() {
  std::string directory;
  if (accept_char('=')) {
    if (read_file_name() == 0) error_end("Must give name of directory after \"=\"");
    directory = token();
    if (directory.back() != '/') directory += '/';
  }
  std::vector<std::string> files;
  while (read_file_name() > 0) files.push_back(directory + std::string(token()));
  if (files.empty()) error_end("No input files specified");
  return files;
}

std::vector<data_set> read_sets(const std::vector<std::string>& files) {
  std::vector<data_set> sets;
  for (std::size_t i = 0; i < files.size(); ++i) {
    check_interrupt();
    show_progress("Reading files", static_cast<double>(i), static_cast<double>(files.size()));
    data_set data = read_data_file(files[i]);
    if (data.ntax() == 0) {
      warning(files[i], "contains no data!");
    } else {
      sets.push_back(std::move(data));
    }
  }
  if (sets.empty()) error_end("No file contains any data");
  std::vector<data_set*> all;
  for (data_set& set : sets) all.push_back(&set);
  tell_words_apart(all);
  return sets;
}

std::vector<tree_section> tree_sections(const std::vector<data_set>& sets) {
  std::vector<tree_section> sections;
  int first = 0;
  for (const data_set& set : sets) {
    const int count = static_cast<int>(set.trees.size());
    sections.push_back({"tree(s) from " + set.word, "from_" + set.word, first, count});
    first += count;
  }
  return sections;
}

// Taxa are those of all files, each of which is a character.
data_set merged_landmarks(const std::vector<std::string>& files) {
  const data_settings_scope settings_of_session;
  wipe_matrix();
  read_tps_files(files, false);
  std::vector<std::string_view> names(files.begin(), files.end());
  data_set data = data_in_memory(joined_list(names));
  data.title = "Data from " + data.file;
  return data;
}

void merge_files(output_file& file, const std::vector<std::string>& files) {
  const std::vector<data_set> sets = read_sets(files);
  write_combined_file(file, merge_data(sets), tree_sections(sets), {});
}

}  // namespace

void dmerge_command() {
  if (accept_char('*')) return merge_in_memory();
  // In the background it isn't the user who shuts the console.
  const unsigned shut_anyway = process.background ? no_console : 0U;
  if ((output.output_mask & ~shut_anyway) != 0)
    error_end("Must turn silent off before merging data files");
  const bool landmarks = accept_char('|');
  if (read_file_name() == 0) error_end("Must give name of file");
  const std::string combined(token());
  const std::vector<std::string> files = read_inputs();
  expect_end();
  output_file file;
  open_combined_file(file, combined);
  std::vector<std::string_view> names(files.begin(), files.end());
  warn_of_replacement(joined_list(names).c_str());
  if (landmarks) {
    write_combined_file(file, merged_landmarks(files), {}, {});
  } else {
    merge_files(file, files);
  }
  read_back(combined);
}

}  // namespace zeb
