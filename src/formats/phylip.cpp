#include "formats/phylip.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <optional>
#include <vector>

#include "base/errors.h"
#include "formats/foreign_matrix.h"
#include "formats/text_lines.h"
#include "matrix/reading/block_format.h"
#include "matrix/symbols.h"

namespace zeb {

namespace {

struct phylip_row {
  std::string name;
  std::string cells;
};

std::string without_blanks(std::string_view text) {
  std::string result;
  for (const char c : text) {
    if (static_cast<unsigned char>(c) > 32) result += c;
  }
  return result;
}

std::int64_t read_number(std::string_view& text) {
  text = trimmed(text);
  std::int64_t value = -1;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (error != std::errc()) return -1;
  text.remove_prefix(static_cast<std::size_t>(end - text.data()));
  return value;
}

struct name_and_cells {
  std::string name;
  std::string_view cells;
};

std::optional<name_and_cells> split_row(std::string_view line, bool strict) {
  if (strict) {
    if (line.size() < 10) return std::nullopt;
    return name_and_cells{std::string(trimmed(line.substr(0, 10))), line.substr(10)};
  }
  line = trimmed(line);
  const std::size_t end = line.find_first_of(" \t");
  if (end == std::string_view::npos) return name_and_cells{std::string(line), {}};
  return name_and_cells{std::string(line.substr(0, end)), line.substr(end)};
}

// Tries one way of reading; empty where the rows don't come out at the length that the head says.
std::vector<phylip_row> try_rows(const std::vector<std::string_view>& lines, std::size_t ntax,
                                 std::size_t nchar, bool strict, bool interleaved) {
  std::vector<phylip_row> rows;
  std::size_t next = 0;
  for (const std::string_view line : lines) {
    const bool names_follow = rows.size() < ntax;
    const bool row_is_open = !interleaved && !rows.empty() && rows.back().cells.size() < nchar;
    if (names_follow && !row_is_open) {
      const auto row = split_row(line, strict);
      if (!row || row->name.empty()) return {};
      rows.push_back({row->name, without_blanks(row->cells)});
    } else if (row_is_open) {
      rows.back().cells += without_blanks(line);
    } else {
      if (!interleaved) return {};
      rows[next % ntax].cells += without_blanks(line);
      ++next;
    }
  }
  if (rows.size() != ntax) return {};
  for (const phylip_row& row : rows) {
    if (row.cells.size() != nchar) return {};
  }
  return rows;
}

data_type type_of(const std::vector<phylip_row>& rows) {
  bool digits = true;
  bool bases = true;
  for (const phylip_row& row : rows) {
    for (const char c : row.cells) {
      if (c == '?' || c == '-') continue;
      digits = digits && std::isdigit(static_cast<unsigned char>(c));
      bases = bases && std::string_view("ACGTURYMKSWBDHVNacgturymkswbdhvn").find(c) !=
                           std::string_view::npos;
    }
  }
  return digits ? numeric_data : bases ? dna_data : protein_data;
}

}  // namespace

void read_phylip_file(const std::string& file) {
  const text_lines text(file);
  std::vector<std::string_view> lines;
  for (const std::string_view line : text.lines()) {
    if (!trimmed(line).empty()) lines.push_back(line);
  }
  if (lines.empty()) error_end("PHYLIP file", file, "is empty");
  std::string_view head = lines.front();
  const std::int64_t ntax = read_number(head);
  const std::int64_t nchar = read_number(head);
  if (ntax < 1 || nchar < 1)
    error_end("PHYLIP file", file, "must begin with the numbers of taxa and characters");
  if (ntax > static_cast<std::int64_t>(lines.size()))
    error_end("PHYLIP file", file, "has fewer rows than taxa");
  lines.erase(lines.begin());
  std::vector<phylip_row> rows;
  for (const bool strict : {false, true}) {
    for (const bool interleaved : {false, true}) {
      if (rows.empty()) {
        rows = try_rows(lines, static_cast<std::size_t>(ntax), static_cast<std::size_t>(nchar),
                        strict, interleaved);
      }
    }
  }
  if (rows.empty()) {
    error_end("PHYLIP file", file, "doesn't hold", std::to_string(ntax), "rows of",
              std::to_string(nchar), "characters, neither sequential nor interleaved");
  }
  const data_type type = type_of(rows);
  check_type_fits(type);
  begin_foreign_matrix(file, ntax, nchar);
  const symbol_table symbols = make_symbols(type, matrix.cell_bytes, matrix.gaps_are_states);
  foreign_taxa taxa(matrix.ntax);
  for (const phylip_row& row : rows) {
    const int taxon = taxa.add(row.name);
    for (int c = 0; c < matrix.nchar; ++c) {
      const auto symbol = static_cast<unsigned char>(row.cells[static_cast<std::size_t>(c)]);
      if (!symbols[symbol]) {
        error_end_f("Found alien symbol for taxon %i (%s), char. %i: '%c'", taxon, row.name.c_str(),
                    c, symbol);
      }
      set_cell(taxon, c, symbols[symbol]);
    }
  }
  finish_sequences(type);
}

}  // namespace zeb
