#include "engine/fit/weighting_set_items.h"

#include <algorithm>
#include <array>
#include <utility>

#include "base/errors.h"
#include "base/indices.h"
#include "engine/fit/weighting_settings.h"
#include "language/input.h"
#include "language/lexer.h"
#include "language/lists.h"
#include "matrix/blocks.h"
#include "matrix/matrix.h"

namespace zeb {
namespace {

/// Gives each character its set, and takes care that none has two.
class set_collector {
 public:
  set_collector() : set_of_(weighting.set_of), next_(weighting_set_count()) {
    set_of_.resize(at(matrix.nchar), -1);
  }
  /// A number for one more set.
  std::int32_t open_set() { return next_++; }
  void add(int character, std::int32_t set) {
    const bool constant = !weighting.has_constant.empty() && weighting.has_constant[at(character)];
    if (constant || set_of_[at(character)] >= 0) error_end("Sub-sets must be mutually exclusive");
    set_of_[at(character)] = set;
  }
  std::vector<std::int32_t> result() { return std::move(set_of_); }

 private:
  std::vector<std::int32_t> set_of_;
  std::int32_t next_;
};

std::vector<int> numbers_of(const std::vector<std::uint8_t>& characters) {
  std::vector<int> numbers;
  for (int c = 0; c < matrix.nchar; ++c)
    if (characters[at(c)]) numbers.push_back(c);
  return numbers;
}

/// "=N": sets of N characters in their order; the last one may be smaller.
void add_chunks(set_collector& sets, const std::vector<int>& characters) {
  int size = 0;
  if (!read_optional_int(&size) || size < 1) error_end("Must give set-size (one or larger!)");
  std::int32_t set = 0;
  for (std::size_t i = 0; i < characters.size(); ++i) {
    if (i % at(size) == 0) set = sets.open_set();
    sets.add(characters[i], set);
  }
}

/// "/12:3": digits are places in a cycle, such as that of a codon, and each group of them a set.
void add_positions(set_collector& sets, const std::vector<int>& characters) {
  constexpr int most_places = 9;
  std::array<std::int32_t, most_places + 1> set_of_place;
  set_of_place.fill(-1);
  int cycle = 0;
  std::int32_t set = sets.open_set();
  for (int c = skip_blanks_peek(); (c >= '1' && c <= '9') || c == ':'; c = peek_char()) {
    read_char();
    if (c == ':') {
      set = sets.open_set();
      continue;
    }
    const int place = c - '0';
    if (set_of_place[at(place)] >= 0) error_end("Sub-sets must be mutually exclusive");
    set_of_place[at(place)] = set;
    cycle = std::max(cycle, place);
  }
  if (cycle == 0) error_end("Must give positions from 1 to 9 after the \"/\"");
  if (characters.back() - characters.front() + 1 != static_cast<int>(characters.size()))
    error_end("The \"/\" option requires a set of contiguous characters!");
  for (std::size_t i = 0; i < characters.size(); ++i) {
    const std::int32_t own = set_of_place[i % at(cycle) + 1];
    if (own >= 0) sets.add(characters[i], own);
  }
}

void add_one_set(set_collector& sets, const std::vector<int>& characters) {
  const std::int32_t set = sets.open_set();
  for (const int c : characters) sets.add(c, set);
}

}  // namespace

std::vector<std::uint8_t> read_character_list(const char* if_empty) {
  std::vector<std::uint8_t> characters(at(matrix.nchar), 0);
  list_reader list(list_slash_ends, 0, matrix.nchar, find_list_kind("character"), characters);
  for (int c = skip_blanks_peek(); starts_list_item(c); c = skip_blanks_peek())
    list.read_item_at(c);
  if (std::count(characters.begin(), characters.end(), 1) == 0) error_end(if_empty);
  return characters;
}

std::vector<std::int32_t> read_weighting_sets() {
  set_collector sets;
  do {
    const std::vector<int> characters = numbers_of(read_character_list("No characters in list"));
    if (accept_char('='))
      add_chunks(sets, characters);
    else if (accept_char('/'))
      add_positions(sets, characters);
    else
      add_one_set(sets, characters);
  } while (accept_char('['));
  check_end();
  return sets.result();
}

std::vector<std::int32_t> weighting_sets_of_blocks() {
  set_collector sets;
  for (int block = 1; block <= std::max(1, matrix.nblocks); ++block) {
    int first = 0;
    int end = matrix.nchar;
    characters_of_block(block, &first, &end);
    const std::int32_t set = sets.open_set();
    for (int c = first; c < end; ++c) sets.add(c, set);
  }
  return sets.result();
}

}  // namespace zeb
