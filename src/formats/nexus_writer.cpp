#include "formats/nexus_writer.h"

#include <algorithm>
#include <bit>
#include <map>
#include <set>
#include <vector>

#include "formats/labelled_trees.h"
#include "matrix/symbols.h"
#include "shell/errors.h"
#include "trees/tree_store.h"

namespace zeb {

namespace {

std::size_t at(int i) { return static_cast<std::size_t>(i); }

data_type written_type(int character, const cell_style& style) {
  if (style.as_dna) return dna_data;
  if (style.as_standard) return numeric_data;
  return static_cast<data_type>(matrix.characters[at(character)].type);
}

// One type for all characters, or numeric_data | others: several.
int types_in_use(const cell_style& style) {
  int types = 0;
  for (int c = 0; c < matrix.nchar; ++c) types |= written_type(c, style);
  return types;
}

std::string standard_symbol(int state) {
  return std::string(1, symbol_of_state(numeric_data, state));
}

// Symbols of a cell as NEXUS has them: sets in braces.
std::string cell_symbols(int taxon, int character, const cell_style& style) {
  const std::uint32_t states = cell(taxon, character);
  const data_type type = written_type(character, style);
  if (is_missing(taxon, character)) return "?";
  if (std::popcount(states) > 1) {
    const char one = symbol_of_set(type, matrix.cell_bytes, states);
    if (one) return std::string(1, one);
    std::string set = "{";
    for (int s = 0; s < matrix.cell_bytes * 8; ++s) {
      if (states >> s & 1U)
        set += type == numeric_data ? standard_symbol(s) : std::string(1, symbol_of_state(type, s));
    }
    return set + "}";
  }
  const int state = std::countr_zero(states);
  return type == numeric_data ? standard_symbol(state)
                              : std::string(1, symbol_of_state(type, state));
}

const char* type_name(data_type type) {
  return type == dna_data ? "DNA" : type == protein_data ? "Protein" : "Standard";
}

// "mixed(DNA:1-20,Standard:21-30)".
std::string mixed_types(const cell_style& style) {
  std::string text = "mixed(";
  for (int c = 0; c < matrix.nchar;) {
    const data_type type = written_type(c, style);
    int end = c + 1;
    while (end < matrix.nchar && written_type(end, style) == type) ++end;
    text += (c ? "," : "") + std::string(type_name(type)) + ":" + std::to_string(c + 1) + "-" +
            std::to_string(end);
    c = end;
  }
  return text + ")";
}

bool has_stars(const cell_style& style) {
  for (int t = 0; t < matrix.ntax; ++t) {
    for (int c = 0; c < matrix.nchar; ++c) {
      if (cell_symbols(t, c, style) == "*") return true;
    }
  }
  return false;
}

// "012" rather than "0~2".
std::string spelt_out_symbols(const cell_style& style) {
  const int states = most_states(style.as_standard ? all_data : numeric_data);
  std::string symbols;
  for (int s = 0; s < std::max(2, states); ++s) symbols += standard_symbol(s);
  return symbols;
}

void write_plain_format(std::FILE* out, const cell_style& style) {
  const int types = types_in_use(style);
  const std::string type = types == dna_data       ? "dna"
                           : types == protein_data ? "protein"
                           : types == numeric_data ? "standard"
                                                   : mixed_types(style);
  std::fprintf(out, "format datatype=%s missing=? gap=-", type.c_str());
  if (types & numeric_data) std::fprintf(out, " symbols=\"%s\"", spelt_out_symbols(style).c_str());
  std::fputs(has_stars(style) ? " equate=\"*=?\";\nmatrix\n" : ";\nmatrix\n", out);
}

void write_format(std::FILE* out, const cell_style& style) {
  if (style.plain) return write_plain_format(out, style);
  const int types = types_in_use(style);
  // "*", any state but the last, is as good as missing for other programs.
  const char* const star = has_stars(style) ? " equate=\"*=?\"" : "";
  if (types == dna_data) {
    std::fprintf(out, "format missing=? datatype=dna gap=-%s ;\nmatrix\n", star);
    return;
  }
  std::string datatype;
  if (types == protein_data) datatype = " datatype=protein gap=-";
  if (!std::has_single_bit(static_cast<unsigned>(types)))
    datatype = " datatype=" + mixed_types(style) + " gap=-";
  const int states = most_states(style.as_standard ? all_data : numeric_data);
  if (types == protein_data) {
    std::fprintf(out, "format missing=?%s%s;\nmatrix\n", datatype.c_str(), star);
  } else if (states <= 10) {
    std::fprintf(out, "format missing=?%s%s symbols=\"0~%i\";\nmatrix\n", datatype.c_str(), star,
                 std::max(1, states - 1));
  } else {
    std::fprintf(out, "format missing=?%s%s symbols=\"0~9ABCDEFGHIJKLMNOPQRSTUV\";\nmatrix\n",
                 datatype.c_str(), star);
  }
}

// Numbers from 1 of the flagged elements, with ranges, in lines that can be read.
std::string number_list(const std::vector<bool>& flags) {
  std::string text;
  std::size_t line = 0;
  for (std::size_t i = 0; i < flags.size(); ++i) {
    if (!flags[i]) continue;
    std::size_t end = i;
    while (end + 1 < flags.size() && flags[end + 1]) ++end;
    text += " " + std::to_string(i + 1);
    if (end > i) text += "-" + std::to_string(end + 1);
    if (text.size() - line > 100) {
      text += "\n";
      line = text.size();
    }
    i = end;
  }
  return text;
}

template <class predicate>
std::vector<bool> characters_where(predicate&& holds) {
  std::vector<bool> flags;
  for (const character_record& record : matrix.characters) flags.push_back(holds(record));
  return flags;
}

bool any(const std::vector<bool>& flags) {
  return std::find(flags.begin(), flags.end(), true) != flags.end();
}

void write_names(std::FILE* out) {
  if (matrix.char_names.empty()) return;
  std::fputs("charstatelabels\n", out);
  bool first = true;
  for (int c = 0; c < matrix.nchar && at(c) < matrix.char_names.size(); ++c) {
    const auto& entry = matrix.char_names[at(c)];
    if (entry.name.empty() && entry.states.empty()) continue;
    std::fprintf(out, "%s  %i %s", first ? "" : ",\n", c + 1,
                 entry.name.empty() ? "" : quoted_label(entry.name).c_str());
    if (!entry.states.empty()) std::fputs(" /", out);
    for (const std::string& state : entry.states)
      std::fprintf(out, " %s", quoted_label(state).c_str());
    first = false;
  }
  std::fputs(";\n", out);
}

}  // namespace

int most_states(int types) {
  int most = 0;
  for (int c = 0; c < matrix.nchar; ++c) {
    const character_record& record = matrix.characters[at(c)];
    if (record.is_continuous || !(record.type & types)) continue;
    for (int t = 0; t < matrix.ntax; ++t) {
      const std::uint32_t states = cell(t, c);
      if (!says_nothing(c, states) && states) most = std::max(most, 32 - std::countl_zero(states));
    }
  }
  return most;
}

void write_nexus_data(std::FILE* out, const cell_style& style) {
  std::fprintf(out, "#NEXUS\nbegin data;\ndimensions ntax=%i nchar=%i;\n", matrix.ntax,
               matrix.nchar);
  write_format(out, style);
  // Names that need it stand in quotes, so that nothing in them is taken for a cell.
  for (int t = 0; t < matrix.ntax; ++t) {
    std::string row = quoted_label(taxon_name(t));
    row += std::string(row.size() < 24 ? 24 - row.size() : 1, ' ');
    for (int c = 0; c < matrix.nchar; ++c) row += cell_symbols(t, c, style);
    std::fprintf(out, "%s\n", row.c_str());
  }
  std::fputs(";\n", out);
  write_names(out);
  std::fputs("end;\n", out);
}

void write_nexus_assumptions(std::FILE* out, bool plain) {
  const std::vector<bool> ordered = characters_where([](const auto& r) { return r.additive != 0; });
  const std::vector<bool> inactive = characters_where([](const auto& r) { return r.active == 0; });
  const std::vector<bool> gaps =
      characters_where([](const auto& r) { return r.gap_is_state != 0; });
  std::vector<bool> deleted;
  for (int t = 0; t < matrix.ntax; ++t) deleted.push_back(!matrix.taxon_active[at(t)]);
  std::set<int> weights;
  for (const character_record& record : matrix.characters) {
    if (record.weight != 1) weights.insert(record.weight);
  }
  if (!any(ordered) && !any(inactive) && !any(gaps) && !any(deleted) && weights.empty()) return;
  std::fputs(plain ? "\nbegin assumptions;" : "\nbegin assumptions ; ", out);
  const char* const types = plain ? "typeset * zeb =" : "ctype";
  const char* const excluded = plain ? "exset * zeb =" : "exclude";
  if (any(ordered)) std::fprintf(out, "\n%s ord: %s ;", types, number_list(ordered).c_str());
  if (any(inactive)) std::fprintf(out, "\n%s %s ;", excluded, number_list(inactive).c_str());
  if (any(deleted)) std::fprintf(out, "\ndelete %s ;", number_list(deleted).c_str());
  if (!weights.empty()) {
    std::fputs(plain ? "\nwtset * zeb = " : "\nweights ", out);
    bool first = true;
    for (const int weight : weights) {
      const std::vector<bool> with =
          characters_where([weight](const auto& r) { return r.weight == weight; });
      std::fprintf(out, "%s%i : %s", first ? "" : ",\n", weight, number_list(with).c_str());
      first = false;
    }
    std::fputs(" ;", out);
  }
  if (any(gaps)) std::fputs("\npset gapmode=newstate;\n", out);
  std::fputs(plain ? "\nend;\n" : "\nend ; \n", out);
}

void write_fasta(std::FILE* out, bool skip_gaps) {
  const cell_style style;
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
