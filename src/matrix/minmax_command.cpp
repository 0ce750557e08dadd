// `minmax`: minimum and maximum possible steps of the active characters.
#include <algorithm>
#include <bit>
#include <string>
#include <vector>

#include "base/errors.h"
#include "base/message_text.h"
#include "base/text_columns.h"
#include "console/output.h"
#include "language/input.h"
#include "language/interpreter.h"
#include "language/lexer.h"
#include "language/lists.h"
#include "matrix/character_steps.h"
#include "matrix/commands.h"
#include "matrix/matrix.h"

namespace zeb {
namespace {

struct minmax_request {
  bool active_taxa = false;  // "-" and "*": over the active taxa, else over all
  bool totals_only = false;  // "*"
  bool minima = true;        // ">" shows the maxima only
  bool maxima = true;        // "<" the minima only
  bool internal = false;     // "+" adds the internal (=extra) steps
};

struct character_steps {
  int character;
  double least;
  double most;
};

minmax_request read_request() {
  minmax_request request;
  bool low = false;
  bool high = false;
  for (;;) {
    switch (skip_blanks_peek()) {
      case '*':
        request.active_taxa = request.totals_only = true;
        break;
      case '-':
        request.active_taxa = true;
        break;
      case '+':
        request.internal = true;
        break;
      case '<':
        low = true;
        break;
      case '>':
        high = true;
        break;
      default:
        if (low != high) {
          request.minima = low;
          request.maxima = high;
        }
        return request;
    }
    next_nonblank();
  }
}

// Weighted, in steps: thousandths of continuous characters become units.
std::vector<character_steps> collect(const minmax_request& request) {
  std::vector<std::uint8_t> chosen(static_cast<std::size_t>(matrix.nchar), 1);
  std::vector<std::uint8_t> listed(chosen.size(), 0);
  if (read_list(list_plain, 0, matrix.nchar, "character", listed)) chosen = listed;
  check_end();
  const auto ntax = static_cast<std::size_t>(matrix.ntax);
  const std::vector<std::uint8_t> all(ntax, 1);
  const std::span<const std::uint8_t> taxa =
      request.active_taxa ? matrix.taxon_active.first(ntax) : std::span(all);
  std::vector<character_steps> steps;
  for (int c = 0; c < matrix.nchar; ++c) {
    const character_record& record = matrix.characters[static_cast<std::size_t>(c)];
    if (!chosen[static_cast<std::size_t>(c)] || !record.active) continue;
    const length_range range = lengths_over_taxa(c, taxa);
    const double extra = request.internal ? record.internal_steps : 0;
    steps.push_back(
        {c, record.weight * (range.least + extra), record.weight * (range.most + extra)});
  }
  return steps;
}

bool any_polymorphic_costs(const std::vector<character_steps>& steps) {
  return std::any_of(steps.begin(), steps.end(), [](const character_steps& s) {
    if (!matrix.characters[static_cast<std::size_t>(s.character)].is_sankoff) return false;
    for (int t = 0; t < matrix.ntax; ++t) {
      const std::uint32_t states = cell(t, s.character);
      if (std::popcount(states) > 1 && !says_nothing(s.character, states)) return true;
    }
    return false;
  });
}

std::string number_text(double value, bool fractional) {
  return fractional ? text_of("%.3f", value) : text_of("%.0f", value);
}

std::string title(const minmax_request& request, const std::string& least,
                  const std::string& most) {
  const bool both = request.minima && request.maxima;
  const std::string total = both ? least + "/" + most : request.minima ? least : most;
  const char* kind = request.minima ? "Minimum" : "Maximum";
  if (both && request.active_taxa) {
    return text_of("Minimum/Maximum numbers of steps, for %i active taxa (total = %s)",
                   active_taxa(), total.c_str());
  }
  if (both) return text_of("Minimum/Maximum numbers of steps (total = %s)", total.c_str());
  if (request.active_taxa) {
    return text_of("%s steps for %i active taxa (total = %s)", kind, active_taxa(), total.c_str());
  }
  return text_of("%s possible steps (total = %s)", kind, total.c_str());
}

// As many entries a line as fit, each "character: value".
void show_table(const std::vector<std::string>& entries) {
  int width = 0;
  for (const std::string& entry : entries) width = std::max(width, text_columns(entry) + 2);
  std::string line;
  for (const std::string& entry : entries) {
    if (text_columns(line) + width > 79 && !line.empty()) {
      emit(line, "\n");
      line.clear();
    }
    line += padded_left(entry, width);
  }
  if (!line.empty()) emit(line, "\n");
}

}  // namespace

void minmax_command() {
  require_data("displaying min/max steps");
  const minmax_request request = read_request();
  const std::vector<character_steps> steps = collect(request);
  if (matrix.data_type_in_use & landmark_data) {
    emit("Please note: minima/maxima for landmark characters are approximate\n\n");
  }
  if (request.minima && any_polymorphic_costs(steps))
    emit("Minimum steps for sankoff polymorphic characters are approximate\n");
  bool fractional = false;
  double least = 0;
  double most = 0;
  for (const character_steps& s : steps) {
    const auto type = matrix.characters[static_cast<std::size_t>(s.character)].type;
    fractional = fractional || (type & (continuous_data | landmark_data));
    least += s.least;
    most += s.most;
  }
  emit(title(request, number_text(least, fractional), number_text(most, fractional)), "\n");
  if (request.totals_only) return;
  std::vector<std::string> entries;
  for (const character_steps& s : steps) {
    std::string text = character_label(s.character) + ": ";
    if (request.minima) text += number_text(s.least, fractional);
    if (request.minima && request.maxima) text += "/";
    if (request.maxima) text += number_text(s.most, fractional);
    entries.push_back(text);
  }
  show_table(entries);
}

}  // namespace zeb
