#include "formats/phylip.h"

#include <algorithm>
#include <array>
#include <optional>
#include <vector>

#include "base/errors.h"
#include "base/number_text.h"
#include "base/text_columns.h"
#include "formats/foreign_matrix.h"
#include "formats/text_lines.h"
#include "formats/written_cells.h"

namespace zeb {

namespace {

struct text_line {
  std::string_view text;
  std::size_t number;  // in the file, from 1
};

struct phylip_row {
  struct piece {
    std::size_t end;  // one past its last cell
    std::size_t line;
  };
  std::string name;
  std::string cells;
  std::vector<piece> pieces;  // which line has which cells

  void add(std::string_view text, std::size_t line);
};

std::string without_blanks(std::string_view text) {
  std::string result;
  for (const char c : text) {
    if (static_cast<unsigned char>(c) > 32) result += c;
  }
  return result;
}

void phylip_row::add(std::string_view text, std::size_t line) {
  cells += without_blanks(text);
  pieces.push_back({cells.size(), line});
}

std::int64_t read_number(std::string_view& text) {
  text = trimmed(text);
  return take_whole<std::int64_t>(text).value_or(-1);
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

// Tries one way of reading; empty where the rows don't come out at the length that the head says:
// `fault` then tells which row doesn't.
std::vector<phylip_row> try_rows(const std::vector<text_line>& lines, std::size_t ntax,
                                 std::size_t nchar, bool strict, bool interleaved,
                                 std::string& fault) {
  std::vector<phylip_row> rows;
  std::size_t next = 0;
  for (const auto& [line, number] : lines) {
    const bool names_follow = rows.size() < ntax;
    const bool row_is_open = !interleaved && !rows.empty() && rows.back().cells.size() < nchar;
    if (names_follow && !row_is_open) {
      const auto row = split_row(line, strict);
      if (!row || row->name.empty()) return {};
      rows.push_back({row->name, {}, {}});
      rows.back().add(row->cells, number);
    } else if (row_is_open) {
      rows.back().add(line, number);
    } else {
      if (!interleaved) {
        fault = "line " + std::to_string(number) + " is one too many";
        return {};
      }
      rows[next % ntax].add(line, number);
      ++next;
    }
  }
  if (rows.size() != ntax) return {};
  for (const phylip_row& row : rows) {
    if (row.cells.size() == nchar) continue;
    fault = "that of " + row.name + " (line " + std::to_string(row.pieces.front().line) + ") has " +
            std::to_string(row.cells.size());
    return {};
  }
  return rows;
}

data_type type_of(const std::vector<phylip_row>& rows, const std::string& type_word) {
  std::array<bool, 256> letters{};
  for (const phylip_row& row : rows) {
    for (const char c : row.cells) letters[static_cast<unsigned char>(c)] = true;
  }
  return type_of_sequences(type_word, letters);
}

}  // namespace

void read_phylip_file(const std::string& type_word, input_file& source) {
  const text_lines text(source);
  const std::string& file = source.name();
  std::vector<text_line> lines;
  for (std::size_t i = 0; i < text.lines().size(); ++i) {
    if (!trimmed(text.lines()[i]).empty()) lines.push_back({text.lines()[i], i + 1});
  }
  if (lines.empty()) error_end("PHYLIP file", file, "is empty");
  std::string_view head = lines.front().text;
  const std::int64_t ntax = read_number(head);
  const std::int64_t nchar = read_number(head);
  if (ntax < 1 || nchar < 1)
    error_end("PHYLIP file", file, "must begin with the numbers of taxa and characters");
  if (ntax > static_cast<std::int64_t>(lines.size()))
    error_end("PHYLIP file", file, "has fewer rows than taxa");
  lines.erase(lines.begin());
  std::vector<phylip_row> rows;
  std::string fault;  // of names up to a blank, if those show any
  std::string ignored;
  for (const bool strict : {false, true}) {
    for (const bool interleaved : {false, true}) {
      if (rows.empty()) {
        rows = try_rows(lines, static_cast<std::size_t>(ntax), static_cast<std::size_t>(nchar),
                        strict, interleaved, strict && !fault.empty() ? ignored : fault);
      }
    }
  }
  if (rows.empty()) {
    error_end("PHYLIP file", file, "doesn't hold", std::to_string(ntax), "rows of",
              std::to_string(nchar),
              std::string("characters, neither sequential nor interleaved") +
                  (fault.empty() ? fault : ": " + fault));
  }
  const data_type type = type_of(rows, type_word);
  widen_states_for(type);
  begin_foreign_matrix(file, ntax, nchar);
  foreign_taxa taxa(matrix.ntax, warning_of_long_names());
  sequence_cells cells(type, taxa);
  for (const phylip_row& row : rows) {
    const int taxon = taxa.add(row.name);
    std::size_t piece = 0;
    for (std::size_t c = 0; c < row.cells.size(); ++c) {
      while (c >= row.pieces[piece].end) ++piece;
      cells.store(taxon, static_cast<int>(c), row.cells[c], row.pieces[piece].line);
    }
  }
  finish_sequences(type);
}

void write_phylip(output_file& out, bool strict, const word_writer& words) {
  int columns = 10;
  for (int t = 0; t < matrix.ntax && !strict; ++t)
    columns = std::max(columns, text_columns(words.taxon(t)) + 1);
  symbol_rows rows("PHYLIP");
  out.print("%i %i\n", matrix.ntax, matrix.nchar);
  for (int t = 0; t < matrix.ntax; ++t) {
    out.print("%s%s\n", padded_right(words.taxon(t), columns).c_str(), rows.row(t).c_str());
  }
  rows.tell_lost();
}

}  // namespace zeb
