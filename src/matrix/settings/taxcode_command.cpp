// `taxcode`: which taxa are active.
#include <algorithm>
#include <vector>

#include "base/errors.h"
#include "base/indices.h"
#include "console/output.h"
#include "console/settings.h"
#include "language/input.h"
#include "language/interpreter.h"
#include "language/lexer.h"
#include "language/list_text.h"
#include "language/lists.h"
#include "matrix/commands.h"
#include "matrix/matrix.h"
#include "matrix/settings/taxon_settings.h"

namespace zeb {
namespace {

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

/// Activity as one command asks for it. What can stand takes effect at once; too few taxa, or an
/// outgroup left out, may be put right by what follows, and are refused only at the end.
class wanted_activity {
 public:
  wanted_activity()
      : active_(matrix.taxon_active.begin(), matrix.taxon_active.begin() + matrix.ntax) {}

  void set(const std::vector<std::uint8_t>& flags, bool active) {
    for (std::size_t t = 0; t < active_.size(); ++t) {
      if (flags[t]) active_[t] = active;
    }
    if (can_stand()) apply();
  }
  void check() const {
    if (!enough()) error_end("Cannot have less than 4 active taxa");
    if (!can_stand()) {
      error_end("Cannot deactivate", taxon_name(matrix.outgroup), "(it is current outgroup)");
    }
  }

 private:
  bool enough() const {
    return std::count(active_.begin(), active_.end(), 1) >= fewest_active_taxa;
  }
  bool can_stand() const { return enough() && active_[at(matrix.outgroup)]; }
  void apply() const {
    if (!std::equal(active_.begin(), active_.end(), matrix.taxon_active.begin())) {
      set_active_taxa(active_);
    }
  }

  std::vector<std::uint8_t> active_;
};

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
  wanted_activity wanted;
  std::vector<std::uint8_t> flags(at(matrix.ntax));
  for (int c = skip_blanks_peek(); c != ';'; c = skip_blanks_peek()) {
    if (c != '+' && c != '-' && c != '|') error_end("Wrong argument for", "taxon");
    read_char();
    if (c == '|') {
      write_taxcode();
    } else if (read_list(list_ends_at_plus_minus, 0, matrix.ntax, "taxon", flags)) {
      wanted.set(flags, c == '+');
      changed = true;
    } else if (c == '+') {
      show_active();
    } else {
      show_inactive();
    }
  }
  wanted.check();
  if (changed && settings.report) emit(active_taxa(), " active taxa\n");
}

}  // namespace zeb
