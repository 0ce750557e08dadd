// `export`: the data and trees in memory as NEXUS, FASTA, PHYLIP, TPS or Newick.
#include <unistd.h>

#include <optional>
#include <string>

#include "base/errors.h"
#include "base/message_text.h"
#include "base/numbered_name.h"
#include "base/output_file.h"
#include "console/output.h"
#include "formats/commands.h"
#include "formats/fasta.h"
#include "formats/newick.h"
#include "formats/nexus/assumptions_writer.h"
#include "formats/nexus/data_writer.h"
#include "formats/nexus/nexus_constraints.h"
#include "formats/nexus/trees_writer.h"
#include "formats/phylip.h"
#include "formats/tps.h"
#include "formats/written_words.h"
#include "language/input.h"
#include "language/interpreter.h"
#include "language/lexer.h"
#include "language/options.h"
#include "matrix/landmarks.h"
#include "matrix/matrix.h"
#include "matrix/settings/continuous_scales.h"
#include "trees/drawing/tags.h"
#include "trees/tree_store.h"

namespace zeb {

namespace {

struct export_choice {
  bool trees = false;          // "*"
  bool step_matrices = false;  // "+"
  bool trees_only = false;     // "-"
  bool tag_lengths = false;    // ">"
  bool tag_labels = false;     // "<"
  bool as_dna = false;         // "["
  bool as_standard = false;    // "]"
  bool fasta = false;          // "!"
  bool skip_gaps = false;      // "!!"
  bool phylip = false;         // ":"
  bool strict_names = false;   // "::"
  bool tps = false;            // "|"
  bool newick = false;         // "="
  bool plain = false;          // "&"
  bool writes_data() const { return !trees_only && !tag_lengths && !tag_labels && !newick; }
};

/// "!", and "!!", which leaves out gaps.
void read_fasta(export_choice& choice) {
  choice.skip_gaps = choice.fasta;
  choice.fasta = true;
}

/// ":", and "::" for names of ten columns.
void read_phylip(export_choice& choice) {
  choice.strict_names = choice.phylip;
  choice.phylip = true;
}

constexpr command_options rows = {
    choice<&export_choice::trees>("*", 1).help("trees in memory as well"),
    choice<&export_choice::trees_only>("-", 1).help(
        "trees only, with the tree tags if there are any"),
    choice<&export_choice::tag_lengths>(">", 1).help("tree tags only, as branch lengths"),
    choice<&export_choice::tag_labels>("<", 1).help("tree tags only, as labels of nodes"),
    choice<&export_choice::as_dna>("[", 1).help("all characters as DNA (at most four states)"),
    choice<&export_choice::as_standard>("]", 1).help("all characters as numbered states"),
    form<read_fasta>("!").help("FASTA rather than NEXUS; \"!!\" leaves out gaps"),
    form<read_phylip>(":").help("PHYLIP; \"::\" gives names ten columns"),
    choice<&export_choice::tps>("|", 1).help("landmarks as TPS, a file for each configuration"),
    choice<&export_choice::newick>("=", 1).help("trees only, in Newick notation"),
    choice<&export_choice::plain>("&", 1).help(
        "NEXUS in its plainest form: symbols spelt out, sets of characters by their standard "
        "commands, names without quotes, for programs that read little of NEXUS; with the title, "
        "and with continuous characters. With \"=\" names without quotes"),
    choice<&export_choice::step_matrices>("+", 1).help(
        "the step-matrices in use as well, as user-defined types"),
};

void check_tps(const export_choice& choice) {
  if (choice.fasta) error_end("Cannot save as both Fasta and TPS");
  if (choice.phylip) error_end("Cannot save as both PHYLIP and TPS");
  if (choice.trees || choice.step_matrices || !choice.writes_data())
    error_end("Cannot save in TPS with costs or trees");
  if (landmark_configurations().empty()) error_end("No landmark characters in matrix");
}

/// Other formats have no place for them.
void check_landmarks() {
  const auto landmarks = landmark_configurations();
  if (landmarks.empty()) return;
  if (static_cast<int>(landmarks.size()) == matrix.nchar)
    error_end("Cannot export landmark characters but as TPS (\"export | file\")");
  warning("Landmark characters are written as missing entries (e.g. char.",
          std::to_string(landmarks.front().character) + "); \"export | file\" writes them as TPS");
}

void check_choice(const export_choice& choice) {
  if (choice.tps) return check_tps(choice);
  if (choice.fasta &&
      (choice.trees || choice.step_matrices || choice.trees_only || choice.newick)) {
    error_end("Saving trees as FASTA doesn't allow saving trees/costs");
  }
  if (choice.phylip && (choice.trees || choice.step_matrices || !choice.writes_data()))
    error_end("Saving data as PHYLIP doesn't allow saving trees/costs");
  if (choice.phylip && choice.fasta) error_end("Cannot save as both Fasta and PHYLIP");
  if ((choice.trees || choice.trees_only || choice.newick) && store.ntrees == 0 &&
      !(choice.trees_only && tags.tags_present)) {
    error_end("No trees to save to NEXUS file!");
  }
  if ((choice.tag_lengths || choice.tag_labels) && !tags.tags_present)
    error_end("No tree-tags to save!");
  if (!choice.writes_data()) return;
  check_landmarks();
  if (any_continuous() && !choice.plain)
    error_end("Cannot export data sets with continuous characters");
  if (most_states(all_data) > 32) error_end("Cannot export data sets with more than 32 states");
  // Gaps of DNA stay gaps.
  if (choice.as_dna && most_states(all_data & ~dna_data) > 4)
    error_end("Cannot save data as DNA (too many states!)");
}

void open_output(output_file& file, const std::string& name) {
  if (access(name.c_str(), F_OK) == 0)
    warning_f("File \"%s\" already exists.  It will be overwritten.", name.c_str());
  if (file.create(name)) return;
  error_end(text_of("Can't open file \"%s\" for writing...", name.c_str()) + file.cause());
}

/// With "-", unless a tree in memory has what they say.
bool tags_follow_trees(const export_choice& choice) {
  return choice.trees_only && tags.tags_present &&
         (tags.source == tag_source::hand || store.ntrees == 0);
}

/// How the tag tree is written, if it is.
std::optional<tag_use> use_of_tags(const export_choice& choice) {
  if (choice.tag_lengths && choice.tag_labels) return tag_use::both;
  if (choice.tag_lengths) return tag_use::lengths;
  if (choice.tag_labels) return tag_use::labels;
  if (tags_follow_trees(choice)) return tag_use::both;
  return std::nullopt;
}

word_form form_of_words(const export_choice& choice) {
  if (choice.fasta || choice.tps) return word_form::line;
  if (choice.strict_names) return word_form::ten_letters;
  return choice.plain || choice.phylip ? word_form::plain : word_form::quoted;
}

void write_nexus(output_file& out, const export_choice& choice, word_writer& words) {
  if (choice.writes_data()) {
    const writing_style style = {choice.as_dna, choice.as_standard, choice.plain,
                                 choice.step_matrices, some_gap_is_state()};
    write_nexus_data(out, style, words);
    write_nexus_assumptions(out, style);
    write_nexus_constraints(out, choice.plain, words);
    warn_of_continuous();
  } else {
    out.put("#NEXUS\n");
  }
  written_trees what;
  what.plain = choice.plain;
  what.stored = (choice.trees || choice.trees_only) && store.ntrees > 0;
  what.tags = use_of_tags(choice);
  if (what.stored || what.tags) write_nexus_trees(out, what, words);
}

void export_tps(const export_choice& choice, const std::string& name) {
  const word_writer words(form_of_words(choice));
  const int files = write_tps_files(name, words, open_output);
  words.tell_changes();
  const std::string several =
      files > 1 ? "files " + numbered_file_name(name, landmark_configurations().front().character) +
                      " to " + numbered_file_name(name, landmark_configurations().back().character)
                : "file " + name;
  report_line("Saved", counted(files, "configuration", "configurations"), "(TPS format) to",
              several);
}

// What follows "+" after the name, up to ";", goes to the end of the file; ".," in it stands for a
// semicolon, as in `quote`.
void copy_text(output_file& out) {
  const comma_reading commas;
  commas.set_literal(true);
  for (int c = read_char(); c != ';'; c = read_char()) {
    if (c == '.') {
      if (read_char() == ',') {
        c = ';';
      } else {
        unread_char();
      }
    }
    if (c != '\r') out.put(std::string(1, static_cast<char>(c)));
  }
  out.put("\n");
}

std::string what_was_saved(const export_choice& choice) {
  if (choice.newick && !choice.trees_only) return "trees";
  if (choice.tag_lengths || choice.tag_labels) return "tree-tags";
  if (choice.trees_only) return tags.tags_present ? "trees and tree-tags" : "trees";
  if (!choice.step_matrices) return choice.trees ? "data and trees" : "data";
  return choice.trees ? "data, step-matrices and trees" : "data and step-matrices";
}

}  // namespace

constexpr option_table export_options = rows.table("export", {});

void export_command() {
  require_data("exporting data");
  export_choice choice;
  while (read_sign(choice, export_options)) continue;
  check_choice(choice);
  if (read_file_name() == 0) error_end("Must give name of file");
  const std::string name(token());
  const bool text_follows = accept_char('+');
  if (choice.tps && text_follows) error_end("TPS files can't have further text");
  if (!text_follows) expect_end();
  if (choice.tps) return export_tps(choice, name);
  output_file file;
  open_output(file, name);
  word_writer words(form_of_words(choice));
  if (choice.fasta) {
    write_fasta(file, choice.skip_gaps, words);
  } else if (choice.phylip) {
    write_phylip(file, choice.strict_names, words);
  } else if (choice.newick) {
    write_newick_trees(file, tags_follow_trees(choice), words);
  } else {
    write_nexus(file, choice, words);
  }
  words.tell_changes();
  if (text_follows) copy_text(file);
  if (!file.close()) error_end("Cannot write file", name + file.cause());
  const char* format = choice.fasta    ? "Fasta"
                       : choice.phylip ? "PHYLIP"
                       : choice.newick ? "Newick"
                                       : "Nexus";
  report_line("Saved", what_was_saved(choice), text_of("(%s format) to file", format), name);
}

}  // namespace zeb
