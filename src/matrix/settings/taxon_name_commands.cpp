// `outgroup`, `taxname` and `taxlabels`: which taxon roots the trees, and how taxa are called.
#include <algorithm>
#include <vector>

#include "base/errors.h"
#include "base/indices.h"
#include "base/message_text.h"
#include "console/output.h"
#include "console/settings.h"
#include "language/interpreter.h"
#include "language/lexer.h"
#include "language/taxon_reference.h"
#include "language/toggles.h"
#include "matrix/commands.h"
#include "matrix/matrix.h"
#include "matrix/settings/taxon_settings.h"

namespace zeb {
namespace {

// A word must fit in the buffer of the lexer, and a name in a line of output.
constexpr int shortest_name_limit = 5;
constexpr int longest_name_limit = 2000;

std::string numbered_name(int taxon) {
  return std::to_string(taxon) + " (" + std::string(taxon_name(taxon)) + ")";
}

/// The taxon that the user names; of several, the first.
int read_one_taxon(bool* several) {
  std::vector<std::uint8_t> flags(at(matrix.ntax));
  const int taxon = read_taxon(flags);
  if (taxon >= 0) return taxon;
  const auto first = std::find(flags.begin(), flags.end(), 1);
  if (first == flags.end()) error_end("No taxon given");
  *several |= std::count(flags.begin(), flags.end(), 1) > 1;
  return static_cast<int>(first - flags.begin());
}

void set_name_limit() {
  int limit = 0;
  if (!read_optional_int(&limit)) error_end("Must give the maximum length of taxon names");
  if (matrix.present) error_end("Length of taxon names must be changed before reading data");
  if (limit < shortest_name_limit || limit > longest_name_limit) {
    error_end("Length of taxon names must be from", shortest_name_limit, "to", longest_name_limit);
  }
  limit_names_to(limit);
}

void show_name_limit() {
  if (settings.report) emit("Taxon names have at most ", lexer.name_limit - 1, " letters\n");
}

}  // namespace

void outgroup_command() {
  no_timing();
  require_data("setting the outgroup");
  if (skip_blanks_peek() == ';') {
    emit("Outgroup is taxon ", numbered_name(matrix.outgroup), "\n");
    return;
  }
  accept_char('=');
  bool several = false;
  const int taxon = read_one_taxon(&several);
  while (skip_blanks_peek() != ';') {
    read_one_taxon(&several);
    several = true;
  }
  if (!matrix.taxon_active[at(taxon)]) {
    error_end("The outgroup must be an active taxon;", numbered_name(taxon), "is inactive");
  }
  if (several) warning("Only one taxon can be the outgroup: the first one is used");
  set_outgroup(taxon);
  if (settings.report) emit("Outgroup is taxon ", numbered_name(matrix.outgroup), "\n");
}

void taxname_command() {
  no_timing();
  if (accept_char('+')) {
    set_name_limit();
    return show_name_limit();
  }
  const bool bare = skip_blanks_peek() == ';';
  toggle_command(matrix.use_taxon_names, "Use of taxon names");
  if (bare) show_name_limit();
}

void taxlabels_command() {
  no_timing();
  require_data("showing taxon names");
  check_end();
  for (int t = 0; t < matrix.ntax; ++t) {
    const char* note = matrix.taxon_active[at(t)] ? "" : "  (inactive)";
    emit(text_of("%5i  ", t), taxon_name(t), t == matrix.outgroup ? "  (outgroup)" : note, "\n");
  }
}

}  // namespace zeb
