// The data in memory as FASTA.
#include <string>

#include "base/errors.h"
#include "formats/nexus/data_writer.h"

namespace zeb {

void write_fasta(std::FILE* out, bool skip_gaps) {
  const writing_style style;
  std::int64_t unwritable = 0;
  std::string first_place;
  for (int t = 0; t < matrix.ntax; ++t) {
    std::fprintf(out, ">%s\n", std::string(taxon_name(t)).c_str());
    std::string line;
    for (int c = 0; c < matrix.nchar; ++c) {
      std::string symbols = cell_symbols(t, c, style);
      if (skip_gaps && symbols == "-") continue;
      if (symbols.size() > 1) {
        if (unwritable++ == 0) {
          first_place = std::string(taxon_name(t)) + ", char. " + std::to_string(c);
        }
        symbols = "?";
      }
      line += symbols;
      if (line.size() >= 70) {
        std::fprintf(out, "%s\n", line.c_str());
        line.clear();
      }
    }
    if (!line.empty()) std::fprintf(out, "%s\n", line.c_str());
  }
  if (unwritable > 0) {
    warning("FASTA has no symbol for sets of states:", unwritable,
            unwritable == 1 ? "cell is written as \"?\", that of taxon"
                            : "cells are written as \"?\", the first that of taxon",
            first_place);
  }
}

}  // namespace zeb
