// `xperm`: permutes the states of each character among the taxa.
#include "base/message_text.h"
#include "console/output.h"
#include "console/settings.h"
#include "language/interpreter.h"
#include "language/lexer.h"
#include "language/lists.h"
#include "matrix/commands.h"
#include "matrix/matrix.h"
#include "matrix/reading/cell_editing.h"

namespace zeb {

void xperm_command() {
  require_data("permuting states");
  const auto nchar = static_cast<std::size_t>(matrix.nchar);
  const auto ntax = static_cast<std::size_t>(matrix.ntax);
  const bool with_missing = accept_char('*');
  std::vector<std::uint8_t> chosen(nchar, 0);
  const bool given = read_list(list_plain, 0, matrix.nchar, "character", chosen);
  expect_end();
  const auto taxa = matrix.taxon_active.first(ntax);
  std::vector<std::uint32_t> cells(ntax);
  std::vector<int> scratch(ntax);
  int permuted = 0;
  for (std::size_t c = 0; c < nchar; ++c) {
    character_record& record = matrix.characters[c];
    if (given ? !chosen[c] : !record.active) continue;
    if (record.type == landmark_data) continue;
    const int character = static_cast<int>(c);
    for (int t = 0; t < matrix.ntax; ++t) cells[static_cast<std::size_t>(t)] = cell(t, character);
    permute_cells(character, cells, taxa, with_missing, scratch);
    for (int t = 0; t < matrix.ntax; ++t) {
      set_cell(t, character, cells[static_cast<std::size_t>(t)]);
    }
    matrix.values_as_read.erase(character);
    record.needs_recheck = 1;
    ++permuted;
  }
  drop_packed_data();
  if (settings.report) {
    report_line("States of", counted(permuted, "character", "characters"), "permuted");
  }
}

}  // namespace zeb
