// Data blocks, the sequences in them, and how unlike two taxa's rows are.
#include <algorithm>
#include <vector>

#include "base/errors.h"
#include "functions/arguments.h"
#include "functions/subjects.h"
#include "language/interpreter.h"
#include "language/lexer.h"
#include "macro/assignment.h"
#include "macro/macro_values.h"
#include "matrix/matrix.h"
#include "matrix/symbols.h"

namespace zeb {
namespace {

const character_record& record(int character) {
  return matrix.characters[static_cast<std::size_t>(character)];
}

int block_argument() {
  require_data("using data in expressions");
  const int block = whole_argument();
  if (block < 0 || block > matrix.nblocks) error_end("Only valid blocks are 0 -", matrix.nblocks);
  return block;
}

int block_start(int block) {
  return block == 0 || matrix.nblocks < 2 ? 0 : matrix.block_first[static_cast<std::size_t>(block)];
}
int block_end(int block) {
  if (block == 0 || block >= matrix.nblocks) return matrix.nchar - 1;
  return matrix.block_first[static_cast<std::size_t>(block) + 1] - 1;
}

double first_of_block() {
  open_brackets();
  const int block = block_argument();
  close_brackets();
  return block_start(block);
}
double last_of_block() {
  open_brackets();
  const int block = block_argument();
  close_brackets();
  return block_end(block);
}

double blocks_of_characters() {
  open_brackets();
  std::vector<double> blocks;
  while (skip_blanks_peek() != ']') {
    const int block = record(character_argument()).block;
    if (std::find(blocks.begin(), blocks.end(), block) == blocks.end()) blocks.push_back(block);
  }
  close_brackets();
  return write_list("Blocklist possibly", blocks);
}

double taxon_in_block() {
  open_brackets();
  const int taxon = taxon_argument();
  const int block = block_argument();
  close_brackets();
  for (int c = block_start(block); c <= block_end(block); ++c) {
    if (!is_missing(taxon, c)) return 1;
  }
  return 0;
}

// First and last position of a taxon's sequence in a block: where its cells aren't missing.
double sequence_end(bool first) {
  open_brackets();
  const int taxon = taxon_argument();
  const int block = block_argument();
  close_brackets();
  const int from = block_start(block);
  const int to = block_end(block);
  for (int i = 0; i <= to - from; ++i) {
    const int c = first ? from + i : to - i;
    if (!is_missing(taxon, c)) return c;
  }
  return -1;
}
double sequence_start() { return sequence_end(true); }
double sequence_last() { return sequence_end(false); }

// ---- edit cost ----

struct edit_costs {
  double substitution = 1;
  double gap_opening = 1;
  double gap_extension = 1;
  bool gaps_only = false;
};

edit_costs read_edit_costs() {
  edit_costs costs;
  for (double* cost : {&costs.substitution, &costs.gap_opening, &costs.gap_extension}) {
    const int next = skip_blanks_peek();
    if (next == ']' || next == 'G' || next == 'g') break;
    *cost = macro_value();
    if (*cost < 0) error_end("Costs of editing can't be negative");
  }
  costs.gaps_only = accept_char('G') || accept_char('g');
  return costs;
}

bool is_gap(int taxon, int character) {
  const character_record& r = record(character);
  if (!r.gap_is_state) return false;
  const int state = r.type == dna_data ? dna_gap_state : protein_gap_state;
  return cell(taxon, character) == 1U << state;
}

// The cost of turning one taxon's row into the other's, as they are aligned: positions in which
// both have gaps, or one is missing, don't count; a run of gaps of one taxon against residues of
// the other is opened once and extended from there.
double edit_cost() {
  open_brackets();
  const int a = taxon_argument();
  const int b = taxon_argument();
  const edit_costs costs = read_edit_costs();
  close_brackets();
  double sum = 0;
  int gap_of = -1;  // the taxon in whose gap the last counted position lies
  for (int c = 0; c < matrix.nchar; ++c) {
    if (!record(c).active || record(c).is_continuous || record(c).type == landmark_data ||
        is_missing(a, c) || is_missing(b, c))
      continue;
    const bool gap_a = is_gap(a, c);
    const bool gap_b = is_gap(b, c);
    if (gap_a && gap_b) continue;
    if (gap_a || gap_b) {
      const int gapped = gap_a ? a : b;
      sum += gapped == gap_of ? costs.gap_extension : costs.gap_opening;
      gap_of = gapped;
      continue;
    }
    gap_of = -1;
    if (!costs.gaps_only && !(cell(a, c) & cell(b, c))) sum += costs.substitution;
  }
  return sum;
}

// clang-format off
constexpr expression_function rows[] = {
    {"blockstart", "[B]", "first character of data block B", first_of_block},
    {"blockend", "[B]", "last character of data block B", last_of_block},
    {"blocklist", "[C1 C2 ...]", "blocks that hold the characters", blocks_of_characters},
    {"taxinblock", "[T B]", "1 if taxon T has data in block B", taxon_in_block},
    {"seqstart", "[T B]", "first position of the sequence of taxon T in block B", sequence_start},
    {"seqend", "[T B]", "last position of the sequence of taxon T in block B", sequence_last, function_list::general, "seqstart"},
    {"editcost", "[A B S O X G]", "edit cost of taxa A and B as they are aligned; S, O and X are the costs of substitutions, gap openings and gap extensions (optional, default 1:1:1); G counts gaps only. Gaps count where they were read as a state (\"nstates gaps\")", edit_cost},
};
// clang-format on

}  // namespace

const std::span<const expression_function> block_functions = rows;

}  // namespace zeb
