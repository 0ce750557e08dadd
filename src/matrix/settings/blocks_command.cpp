// `blocks`: data blocks, and restriction of the analysis to some of them.
#include <algorithm>
#include <string>

#include "base/errors.h"
#include "base/indices.h"
#include "base/message_text.h"
#include "console/output.h"
#include "language/input.h"
#include "language/interpreter.h"
#include "language/lexer.h"
#include "language/list_text.h"
#include "language/lists.h"
#include "matrix/blocks.h"
#include "matrix/commands.h"
#include "matrix/matrix.h"
#include "matrix/settings/character_settings.h"
#include "matrix/settings/taxon_settings.h"

namespace zeb {
namespace {

std::string block_name(int block) {
  if (matrix.block_names.size() <= at(block) || matrix.block_names[at(block)].empty()) {
    return "unnamed";
  }
  return matrix.block_names[at(block)];
}

void show_blocks() {
  if (matrix.nblocks < 1) {
    emit("No data blocks defined\n");
  } else if (matrix.nblocks == 1) {
    report_line("Data (chars. 0 -", matrix.nchar - 1, ") read in a single block");
  } else {
    for (int block = 1; block <= matrix.nblocks; ++block) {
      int first = 0;
      int end = 0;
      characters_of_block(block, &first, &end);
      emit(text_of("Block %i (%s): chars. %i-%i", block, block_name(block).c_str(), first, end - 1),
           "\n");
    }
  }
}

void write_blocks() {
  std::vector<std::string> starts;
  for (int block = 1; block <= matrix.nblocks; ++block) {
    starts.push_back(std::to_string(matrix.block_first[at(block)]));
  }
  emit("blocks", wrapped_words(starts, 6), " ;\n");
}

void define_blocks() {
  std::vector<int> starts{0};
  for (int c = skip_blanks_peek(); c != ';'; c = skip_blanks_peek()) {
    int start = -1;
    if (!((c >= '0' && c <= '9') || c == '(') || (start = read_int()) < 0) {
      error_end("Block definition must end with a semicolon");
    }
    if (start >= matrix.nchar) error_end("No character", start);
    starts.push_back(start);
  }
  std::sort(starts.begin(), starts.end());
  starts.erase(std::unique(starts.begin(), starts.end()), starts.end());
  if (!matrix.block_names.empty()) {
    warning("Re-defining blocks will discard current block names");
  }
  set_blocks(starts);
}

/// The blocks after "=", flagged by number; 0 stands for all of them.
std::vector<std::uint8_t> read_block_list() {
  std::vector<std::uint8_t> flags(at(matrix.nblocks) + 1);
  list_reader list(list_slash_ends, 0, matrix.nblocks + 1, find_list_kind("block"), flags);
  bool any = false;
  for (int c = skip_blanks_peek(); c != ';'; c = skip_blanks_peek(), any = true) {
    const bool is_number = (c >= '0' && c <= '9') || c == '(' || c == '.' || c == '+' || c == '-';
    if (c == '{' || c == '@') error_end("Block scopes can be used only with numbers");
    if (!is_number && matrix.block_names.empty()) error_end("Block names undefined");
    const bool whole_range = c == '.';
    list.read_item_at(c);
    // "." and ".N" go over the blocks, not over the name for all of them.
    if (whole_range) flags[0] = 0;
  }
  if (!any) error_end("Must specify block number");
  if (flags[0]) std::fill(flags.begin(), flags.end(), std::uint8_t{1});
  flags[0] = 0;
  if (std::count(flags.begin(), flags.end(), 1) == 0) error_end("Must specify block number");
  return flags;
}

std::vector<std::uint8_t> taxa_with_data(std::span<const std::uint8_t> blocks, bool in_all) {
  std::vector<std::uint8_t> taxa(at(matrix.ntax));
  for (int t = 0; t < matrix.ntax; ++t) {
    bool all = true;
    bool any = false;
    for (int block = 1; block <= matrix.nblocks; ++block) {
      if (!blocks[at(block)]) continue;
      const bool has = taxon_has_data(t, block);
      all &= has;
      any |= has;
    }
    taxa[at(t)] = in_all ? all : any;
  }
  return taxa;
}

/// Only the characters of these blocks, and the taxa with data in one (or each) of them.
void activate_blocks() {
  const bool shared = accept_char('&');
  const std::vector<std::uint8_t> blocks = read_block_list();
  const std::vector<std::uint8_t> taxa = taxa_with_data(blocks, shared);
  if (std::count(taxa.begin(), taxa.end(), 1) < fewest_active_taxa) {
    if (shared) error_end("Specified blocks share less than four taxa");
    error_end("Cannot have less than 4 active taxa");
  }
  for (int c = 0; c < matrix.nchar; ++c) {
    const int block = matrix.characters[at(c)].block;
    change_character(c, {.active = blocks[at(block)] != 0});
  }
  set_active_taxa(taxa);
  if (taxa[at(matrix.outgroup)]) return;
  const auto first = std::find(taxa.begin(), taxa.end(), 1);
  set_outgroup(static_cast<int>(first - taxa.begin()));
  report_line("Active blocks set - outgroup is", taxon_name(matrix.outgroup));
}

}  // namespace

void blocks_command() {
  no_timing();
  require_data("defining blocks");
  switch (skip_blanks_peek()) {
    case ';':
      return show_blocks();
    case '*':
      read_char();
      check_end();
      return write_blocks();
    case '=':
      read_char();
      return activate_blocks();
    default:
      return define_blocks();
  }
}

}  // namespace zeb
