#include "formats/file_kinds.h"

#include <algorithm>
#include <cctype>
#include <string>

#include "formats/fasta.h"
#include "formats/newick.h"
#include "formats/phylip.h"
#include "formats/text_lines.h"
#include "formats/tps.h"
#include "language/interpreter.h"
#include "language/lexer.h"
#include "trees/notation/compact_file.h"

namespace zeb {

namespace {

constexpr std::size_t enough_to_tell = 4096;

// Takes the blanks and, in Newick files, the comments before a tree.
std::string_view after_comments(std::string_view text) {
  for (text = trimmed(text); text.starts_with('['); text = trimmed(text)) {
    text.remove_prefix(std::min(text.find(']'), text.size() - 1) + 1);
  }
  return text;
}

// Two whole numbers alone in the first line.
bool starts_with_dimensions(std::string_view text) {
  std::string_view line = trimmed(text.substr(0, text.find_first_of("\r\n")));
  for (int i = 0; i < 2; ++i) {
    const std::size_t digits = std::min(line.find_first_not_of("0123456789"), line.size());
    if (digits == 0) return false;
    line = trimmed(line.substr(digits));
  }
  return line.empty();
}

// "LM=N" or "LM3=N" alone in the first line.
bool starts_as_tps(std::string_view text) {
  std::string line(trimmed(text.substr(0, text.find_first_of("\r\n"))));
  std::erase(line, ' ');
  for (const std::string_view mark : {"LM=", "LM3="})
    if (line.size() > mark.size() && is_prefix(mark, line))
      return line.find_first_not_of("0123456789", mark.size()) == line.npos;
  return false;
}

}  // namespace

file_kind kind_of_file(std::string_view start) {
  if (starts_as_compact_file(start)) return file_kind::compact_trees;
  if (start.starts_with("\xef\xbb\xbf")) start.remove_prefix(3);
  start = trimmed(start);
  if (start.starts_with('>')) return file_kind::fasta;
  if (after_comments(start).starts_with('(')) return file_kind::newick;
  if (starts_with_dimensions(start)) return file_kind::phylip;
  if (starts_as_tps(start)) return file_kind::tps;
  return file_kind::commands;
}

bool read_known_format(input_file& file) {
  switch (kind_of_file(file.ahead(enough_to_tell))) {
    case file_kind::commands:
      return false;
    case file_kind::fasta:
      read_fasta_file({}, file);
      return true;
    case file_kind::phylip:
      read_phylip_file({}, file);
      return true;
    case file_kind::tps:
      read_tps_file(file);
      return true;
    case file_kind::newick:
      read_newick_file(file);
      return true;
    case file_kind::compact_trees:
      require_data("reading trees");
      read_compact_file(file, {});
      return true;
  }
  return false;
}

}  // namespace zeb
