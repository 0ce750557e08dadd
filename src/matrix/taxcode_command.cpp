// `taxcode`: which taxa are active.
#include <vector>

#include "matrix/matrix.h"
#include "matrix/settings_commands.h"
#include "matrix/taxon_settings.h"
#include "shell/errors.h"
#include "shell/input.h"
#include "shell/interpreter.h"
#include "shell/lexer.h"
#include "shell/list_text.h"
#include "shell/lists.h"
#include "shell/output.h"
#include "shell/process.h"

namespace zeb {
namespace {

std::size_t at(int i) { return static_cast<std::size_t>(i); }

void show_taxa(const std::string& head, bool active) {
  std::vector<std::string> labels;
  for (int t = 0; t < matrix.ntax; ++t) {
    if ((matrix.taxon_active[at(t)] != 0) == active) labels.push_back(taxon_label(t));
  }
  emit(head, wrapped_words(labels, head.size()), "\n");
}

void show_active() {
  show_taxa(std::to_string(active_taxa()) + " terminal taxa are active:", true);
}

void show_inactive() {
  const int inactive = matrix.ntax - active_taxa();
  if (inactive == 0) {
    emit("No inactive taxa\n");
  } else {
    show_taxa(std::to_string(inactive) + " inactive taxa:", false);
  }
}

void set_activity(const std::vector<std::uint8_t>& marks, bool active) {
  std::vector<std::uint8_t> wanted(matrix.taxon_active.begin(),
                                   matrix.taxon_active.begin() + matrix.ntax);
  int count = 0;
  bool changed = false;
  for (int t = 0; t < matrix.ntax; ++t) {
    if (marks[at(t)]) {
      changed |= (wanted[at(t)] != 0) != active;
      wanted[at(t)] = active;
    }
    count += wanted[at(t)] != 0;
  }
  if (!active && count < fewest_active_taxa) error_end("Cannot have less than 4 active taxa");
  if (!active && marks[at(matrix.outgroup)]) {
    error_end("Cannot deactivate", taxon_name(matrix.outgroup), "(it is current outgroup)");
  }
  if (changed) set_active_taxa(wanted);
}

void write_taxcode() {
  std::string text = "taxcode + .";
  if (active_taxa() < matrix.ntax) {
    text += " -";
    const auto inactive = [](int t) { return matrix.taxon_active[at(t)] == 0; };
    text += wrapped_words(list_items(matrix.ntax, inactive), text.size());
  }
  emit(text, " ;\n");
}

}  // namespace

void taxcode_command() {
  no_timing();
  require_data("changing taxon settings");
  if (skip_blanks_peek() == ';') {
    show_active();
    show_inactive();
    return;
  }
  bool changed = false;
  std::vector<std::uint8_t> marks(at(matrix.ntax));
  for (int c = skip_blanks_peek(); c != ';'; c = skip_blanks_peek()) {
    if (c != '+' && c != '-' && c != '|') error_end("Wrong argument for", "taxon", "code");
    read_char();
    if (c == '|') {
      write_taxcode();
    } else if (read_list(list_ends_at_plus_minus, 0, matrix.ntax, "taxon", marks)) {
      set_activity(marks, c == '+');
      changed = true;
    } else if (c == '+') {
      show_active();
    } else {
      show_inactive();
    }
  }
  if (changed && settings.report) emit(active_taxa(), " active taxa\n");
}

}  // namespace zeb
