#include "formats/fasta.h"

#include <array>
#include <unordered_map>
#include <vector>

#include "base/arena.h"
#include "base/errors.h"
#include "base/interrupts.h"
#include "base/message_text.h"
#include "console/progress.h"
#include "formats/foreign_matrix.h"
#include "formats/text_lines.h"
#include "formats/written_cells.h"
#include "language/commands/memory_command.h"
#include "matrix/matrix_memory.h"

namespace zeb {

namespace {

struct fasta_sequence {
  std::string name;
  std::size_t name_line;  // from 1
  std::vector<std::string_view> pieces;
  std::vector<std::size_t> piece_lines;
  std::size_t length = 0;
};

std::vector<fasta_sequence> find_sequences(const text_lines& text) {
  std::vector<fasta_sequence> sequences;
  for (std::size_t i = 0; i < text.lines().size(); ++i) {
    const std::string_view line = trimmed(text.lines()[i]);
    if (line.empty()) continue;
    if (line[0] == '>') {
      sequences.push_back({std::string(trimmed(line.substr(1))), i + 1, {}, {}, 0});
      continue;
    }
    if (sequences.empty()) error_end("FASTA taxon names must start with '>'");
    fasta_sequence& sequence = sequences.back();
    sequence.pieces.push_back(line);
    sequence.piece_lines.push_back(i + 1);
    for (const char c : line) sequence.length += static_cast<unsigned char>(c) > 32;
  }
  return sequences;
}

void check_names(const std::vector<fasta_sequence>& sequences) {
  std::unordered_map<std::string, std::size_t> lines;
  for (const fasta_sequence& sequence : sequences) {
    if (sequence.name.empty())
      error_end("FASTA sequence without a name in line", sequence.name_line);
    const auto [known, is_new] = lines.emplace(sequence.name, sequence.name_line);
    if (!is_new) {
      error_end("Sequence", sequence.name, "appears twice in FASTA file (lines", known->second,
                "and", std::to_string(sequence.name_line) + ")");
    }
  }
}

void check_lengths(const std::vector<fasta_sequence>& sequences) {
  const std::size_t length = sequences.front().length;
  for (const fasta_sequence& sequence : sequences) {
    if (sequence.length == length) continue;
    error_end("Sequences in FASTA file seem not to be aligned!\nCannot equalize to", length,
              "characters:", sequence.name,
              sequence.length < length ? "has less than" : "has more than", length, "positions",
              "(line " + std::to_string(sequence.name_line) + ")");
  }
}

// Where memory may grow with the data it will; else this is told while the former data are there.
void check_memory(const std::vector<fasta_sequence>& sequences) {
  const double needed = matrix_memory_estimate(static_cast<int>(sequences.size()),
                                               static_cast<int>(sequences.front().length));
  if (!memory.grow_for_data && needed > static_cast<double>(arena.size))
    error_end("Not enough memory to read FASTA sequences. Re-set RAM and re-try");
}

data_type type_of(const std::vector<fasta_sequence>& sequences, const std::string& type_word) {
  std::array<bool, 256> letters{};
  for (const fasta_sequence& sequence : sequences) {
    for (const std::string_view piece : sequence.pieces) {
      for (const char c : piece) letters[static_cast<unsigned char>(c)] = true;
    }
  }
  return type_of_sequences(type_word, letters);
}

void store_sequence(const fasta_sequence& sequence, int taxon, sequence_cells& cells) {
  int character = 0;
  for (std::size_t i = 0; i < sequence.pieces.size(); ++i) {
    for (const char c : sequence.pieces[i]) {
      if (static_cast<unsigned char>(c) > 32)
        cells.store(taxon, character++, c, sequence.piece_lines[i]);
    }
  }
}

}  // namespace

void read_fasta_file(const std::string& type_word, input_file& file) {
  const text_lines text(file);
  const std::vector<fasta_sequence> sequences = find_sequences(text);
  if (sequences.size() < 4) error_end("Sorry, can't read less than 4 taxa");
  check_names(sequences);
  check_lengths(sequences);
  const data_type type = type_of(sequences, type_word);
  widen_states_for(type);
  check_memory(sequences);
  begin_foreign_matrix(file.name(), static_cast<std::int64_t>(sequences.size()),
                       static_cast<std::int64_t>(sequences.front().length));
  foreign_taxa taxa(matrix.ntax, warning_of_long_names());
  sequence_cells cells(type, taxa);
  for (const fasta_sequence& sequence : sequences) {
    check_interrupt();
    show_progress("Converting matrix", taxa.count(), matrix.ntax);
    store_sequence(sequence, taxa.add(sequence.name), cells);
  }
  clear_progress();
  finish_sequences(type);
}

void write_fasta(output_file& out, bool skip_gaps, const word_writer& words) {
  constexpr std::size_t line_length = 70;
  symbol_rows rows("FASTA");
  for (int t = 0; t < matrix.ntax; ++t) {
    out.print(">%s\n", words.taxon(t).c_str());
    std::string row = rows.row(t);
    if (skip_gaps) std::erase(row, '-');
    for (std::size_t i = 0; i < row.size(); i += line_length)
      out.print("%s\n", row.substr(i, line_length).c_str());
  }
  rows.tell_lost();
}

}  // namespace zeb
