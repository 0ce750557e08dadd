#include "trees/notation/taxon_names.h"

#include <algorithm>
#include <cctype>

#include "base/indices.h"
#include "base/text_columns.h"
#include "matrix/matrix.h"

namespace zeb {

namespace {

std::string folded(std::string_view word) {
  std::string result = normal_form(word);
  for (char& c : result) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  return result;
}

}  // namespace

int taxon_names::find(std::string_view word) {
  if (!filled_) {
    filled_ = true;
    taxa_.reserve(at(matrix.ntax));
    for (int t = 0; t < matrix.ntax; ++t) taxa_.emplace(folded(taxon_name(t)), t);
  }
  const auto found = taxa_.find(folded(word));
  return found == taxa_.end() ? -1 : found->second;
}

bool ends_taxon_name(int c) {
  constexpr std::string_view ends = "(),;=*{}@<>[]&\\";
  return c < 33 || (c < 128 && ends.find(static_cast<char>(c)) != std::string_view::npos);
}

bool reads_back_as_name(std::string_view name, int taxon, taxon_names& names) {
  if (name.empty() || name.ends_with("...")) return false;
  if (name.front() == '+' || name.front() == ':' || name.front() == '\'') return false;
  const auto in_names = [](char c) { return !ends_taxon_name(static_cast<unsigned char>(c)); };
  const auto is_digit = [](char c) { return std::isdigit(static_cast<unsigned char>(c)) != 0; };
  return std::all_of(name.begin(), name.end(), in_names) &&
         !std::all_of(name.begin(), name.end(), is_digit) && names.find(name) == taxon;
}

std::string tree_label(int taxon, taxon_names& names) {
  if (matrix.use_taxon_names) {
    const std::string_view name = taxon_name(taxon);
    if (reads_back_as_name(name, taxon, names)) return std::string(name);
  }
  return std::to_string(taxon);
}

}  // namespace zeb
