#include "formats/nexus/data_writer.h"

#include <algorithm>
#include <bit>
#include <string>

#include "base/indices.h"
#include "base/text_columns.h"
#include "matrix/costs/character_costs.h"
#include "matrix/symbols.h"

namespace zeb {

namespace {

const char* type_name(data_type type) {
  if (type == continuous_data) return "Continuous";
  return type == dna_data ? "DNA" : type == protein_data ? "Protein" : "Standard";
}

// "mixed(DNA:1-20,Standard:21-30)".
std::string mixed_types(const writing_style& style) {
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

bool has_stars(const writing_style& style) {
  for (int t = 0; t < matrix.ntax; ++t) {
    for (int c = 0; c < matrix.nchar; ++c) {
      if (cell_symbols(t, c, style) == "*") return true;
    }
  }
  return false;
}

// The symbols of standard states: "012" where spelt out, else "0~2".
std::string symbol_list(const writing_style& style) {
  int states = most_states(style.as_standard ? all_data : numeric_data);
  for (int c = 0; c < matrix.nchar && style.step_matrices; ++c)
    if (matrix.characters[at(c)].is_sankoff && written_type(c, style) == numeric_data)
      states = std::max(states, costs_of_character(c).states.back() + 1);
  if (!style.plain && states > 10) return "0~9ABCDEFGHIJKLMNOPQRSTUV";
  if (!style.plain) return "0~" + std::to_string(std::max(1, states - 1));
  std::string symbols;
  for (int s = 0; s < std::max(2, states); ++s) symbols += symbol_of_state(numeric_data, s);
  return symbols;
}

// What stands after "datatype="; empty where it goes without saying.
std::string datatype(const writing_style& style) {
  int types = 0;
  for (int c = 0; c < matrix.nchar; ++c) types |= written_type(c, style);
  if (!std::has_single_bit(static_cast<unsigned>(types))) return mixed_types(style);
  if (types == numeric_data) return style.plain ? "standard" : "";
  return types == dna_data ? "dna" : types == protein_data ? "protein" : "continuous";
}

void write_format(output_file& out, const writing_style& style) {
  const std::string type = datatype(style);
  std::string text = style.plain ? "" : " missing=?";
  if (!type.empty()) text += " datatype=" + type;
  if (style.plain) text += " missing=?";
  const bool symbols_differ = type != "dna" && type != "protein" && type != "continuous";
  const bool has_gaps = !type.empty() || !matrix.gap_bits.empty();
  if (has_gaps && type != "continuous") text += " gap=-";
  // "*", any state but the last, is as good as missing for other programs.
  if (has_stars(style)) text += " equate=\"*=?\"";
  if (symbols_differ) text += " symbols=\"" + symbol_list(style) + "\"";
  if (type == "dna" && !style.plain) text += ' ';
  out.print("format%s;\nmatrix\n", text.c_str());
}

void write_names(output_file& out) {
  if (matrix.char_names.empty()) return;
  out.put("charstatelabels\n");
  bool first = true;
  for (int c = 0; c < matrix.nchar && at(c) < matrix.char_names.size(); ++c) {
    const auto& entry = matrix.char_names[at(c)];
    if (entry.name.empty() && entry.states.empty()) continue;
    out.print("%s  %i %s", first ? "" : ",\n", c + 1,
              entry.name.empty() ? "" : quoted_label(entry.name).c_str());
    if (!entry.states.empty()) out.put(" /");
    for (const std::string& state : entry.states) out.print(" %s", quoted_label(state).c_str());
    first = false;
  }
  out.put(";\n");
}

}  // namespace

void write_nexus_data(output_file& out, const writing_style& style, const word_writer& words) {
  out.put("#NEXUS\nbegin data;\n");
  if (style.plain && !matrix.title.empty()) {
    std::string title = matrix.title.substr(1, matrix.title.size() - 2);
    std::replace(title.begin(), title.end(), '\n', ' ');
    out.print("title %s;\n", quoted_label(title).c_str());
  }
  out.print("dimensions ntax=%i nchar=%i;\n", matrix.ntax, matrix.nchar);
  write_format(out, style);
  // Names that need it stand in quotes, so that nothing in them is taken for a cell.
  for (int t = 0; t < matrix.ntax; ++t) {
    std::string row = padded_right(words.taxon(t), 23) + ' ';
    for (int c = 0; c < matrix.nchar; ++c) {
      row += cell_symbols(t, c, style);
      if (matrix.characters[at(c)].is_continuous) row += ' ';
    }
    out.print("%s\n", row.c_str());
  }
  out.put(";\n");
  write_names(out);
  out.put("end;\n");
}

}  // namespace zeb
