#include "matrix/reading/taxon_rows.h"

#include "base/errors.h"
#include "base/message_text.h"
#include "language/name_matching.h"
#include "matrix/matrix.h"
#include "matrix/matrix_layout.h"
#include "matrix/reading/cell_reader.h"

namespace zeb {

std::vector<int> taxon_rows::taxa_with_prefix(std::string_view word) const {
  const std::size_t end = std::min(word.find("..."), word.find("____"));
  std::vector<int> taxa;
  if (end == std::string_view::npos) return taxa;
  const std::string prefix = fit_name(word.substr(0, end));
  for (int t = 0; t < count_; ++t) {
    if (taxon_name(t).substr(0, prefix.size()) == prefix) taxa.push_back(t);
  }
  return taxa;
}

// The named taxon that resembles the name most, from the last to the first; -1 below the threshold.
int taxon_rows::most_similar(const std::string& name) const {
  int best = -1;
  double best_similarity = matching.match_threshold;
  for (int t = count_ - 1; t >= 0; --t) {
    const double found = similarity(name, taxon_name(t), best_similarity);
    if (found > best_similarity || (best < 0 && found >= best_similarity)) {
      best = t;
      best_similarity = found;
    }
  }
  return best;
}

int taxon_rows::add_taxon(const std::string& name) {
  if (count_ == matrix.ntax) {
    error_end("Error reading block", block_, ": can't have more than", matrix.ntax,
              "taxa in a block\nFound a row for " + name + place_in_file());
  }
  set_taxon_name(count_, name);
  blank_row(count_);
  by_name_.emplace(name, count_);
  return count_++;
}

void taxon_rows::note_row(int taxon, const std::string& name, bool by_prefix) {
  int& block = block_of_row_[static_cast<std::size_t>(taxon)];
  if (block == block_) {
    const std::string head = text_of("Error reading block %i:", block_);
    if (by_prefix) {
      error_end(head, "each taxon can appear only once -", taxon_name(taxon),
                "appears twice" + place_in_file());
    }
    if (block_ == 1) {
      // Rows of the first block are the taxa, in order.
      error_end(head, name, "appears twice",
                text_of("(rows %i and %i)", taxon, rows_in_block_) + place_in_file());
    }
    error_end(head, name, "appears twice" + place_in_file());
  }
  block = block_;
  ++rows_in_block_;
}

std::vector<int> taxon_rows::taxa_of_row(std::string_view word, bool similar) {
  const std::size_t longest = static_cast<std::size_t>(matrix.name_length) - 1;
  std::string too_long = text_of("Taxon names over %zu letters will be truncated", longest);
  if (word.size() > longest) {
    too_long += "\n(the first one: " + fit_name(word) +
                "; for longer names give \"taxname +N\" before reading data)";
  }
  const std::string name = fitter_.fit(word, longest, too_long);
  const auto found = by_name_.find(name);
  if (found != by_name_.end()) {
    note_row(found->second, name, false);
    return {found->second};
  }
  if (block_ > 1) {
    const bool is_prefix_row =
        word.find("...") != std::string_view::npos || word.find("____") != std::string_view::npos;
    if (is_prefix_row) {
      std::vector<int> taxa = taxa_with_prefix(word);
      if (taxa.empty()) {
        error_end(text_of("Error reading block %i:", block_), "no taxon has a name beginning as",
                  std::string(word) + place_in_file());
      }
      for (const int t : taxa) note_row(t, name, true);
      return taxa;
    }
    const int t = similar ? most_similar(name) : -1;
    if (t >= 0) {
      warning("Taxon", name, text_of("of block %i", block_), "read as", taxon_name(t));
      note_row(t, name, false);
      return {t};
    }
  }
  const int t = add_taxon(name);
  note_row(t, name, false);
  return {t};
}

}  // namespace zeb
