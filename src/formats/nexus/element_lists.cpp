#include "formats/nexus/element_lists.h"

#include <strings.h>

#include <algorithm>
#include <cctype>
#include <functional>

#include "base/indices.h"
#include "base/text_columns.h"
#include "language/fit_text.h"
#include "matrix/character_steps.h"

namespace zeb {

namespace {

bool all_digits(const std::string& text) {
  return !text.empty() &&
         std::all_of(text.begin(), text.end(), [](unsigned char c) { return std::isdigit(c); });
}

bool same_name(std::string_view a, std::string_view b) {
  return a.size() == b.size() && strncasecmp(a.data(), b.data(), a.size()) == 0;
}

// What a list can name.
struct list_scope {
  nexus_list kind;
  const nexus_characters* block;  // null: all
  int first() const { return block ? block->first : 0; }
  int count() const {
    return block ? block->count : kind == nexus_list::taxa ? matrix.ntax : matrix.nchar;
  }
  int find(const std::string& text) const {
    return kind == nexus_list::taxa ? find_nexus_taxon(text) : find_nexus_character(text, block);
  }
};

// One end of a range; "." is the last. Digits are a number, unless they stand in quotes.
int find_element(nexus_file& file, const std::string& text, bool quoted, const list_scope& scope) {
  if (text == "." && !quoted) return scope.first() + scope.count() - 1;
  int element = 0;
  if (!quoted && whole_number(text, 1, scope.count(), &element)) return scope.first() + element - 1;
  element = scope.find(text);
  if (element < 0) {
    file.in.fail((scope.kind == nexus_list::taxa ? "No taxon " : "No character ") + text);
  }
  return element;
}

// Can all active taxa have the same state?
bool is_constant(int character) {
  const bool continuous = matrix.characters[at(character)].is_continuous;
  std::uint32_t common = ~std::uint32_t{0};
  for (int t = 0; t < matrix.ntax && !continuous; ++t) {
    if (matrix.taxon_active[at(t)]) common &= cell(t, character);
  }
  return !continuous && common != 0;
}

// "3-7" may come as one word or as several: a "-" at the end or start joins words.
struct range_words {
  std::string first;
  std::string last;  // empty: one element
};

range_words split_range(nexus_file& file, const std::string& word, const list_scope& scope) {
  range_words range;
  const std::size_t dash = word.find('-', 1);
  // A name may hold a dash of its own.
  const bool whole_name = !all_digits(word.substr(0, dash)) && scope.find(word) >= 0;
  if (dash == std::string::npos || whole_name) {
    range.first = word;
    const nexus_token& next = file.in.peek_token();
    if (next.what == nexus_token::kind::word && next.text[0] == '-') {
      const std::string rest = file.in.token().text.substr(1);
      range.last = rest.empty() ? file.in.token().text : rest;
    }
    return range;
  }
  range.first = word.substr(0, dash);
  range.last = word.substr(dash + 1);
  if (range.last.empty()) range.last = file.in.token().text;
  return range;
}

}  // namespace

int find_nexus_taxon(const std::string& text) {
  const std::string fit = fit_name(text_in_bytes(text, at(matrix.name_length) - 1));
  for (int t = 0; t < matrix.ntax; ++t) {
    if (same_name(taxon_name(t), fit)) return t;
  }
  int number = 0;
  return whole_number(text, 1, matrix.ntax, &number) ? number - 1 : -1;
}

int find_nexus_character(const std::string& text, const nexus_characters* block) {
  const int first = block ? block->first : 0;
  const int count = block ? block->count : matrix.nchar;
  const std::string fit = fit_name(text, named::character);
  for (int c = first; c < first + count && at(c) < matrix.char_names.size(); ++c) {
    if (same_name(matrix.char_names[at(c)].name, fit)) return c;
  }
  int number = 0;
  return whole_number(text, 1, count, &number) ? first + number - 1 : -1;
}

const nexus_characters* find_nexus_block(nexus_file& file, const std::string& title) {
  const std::string name = lower_case(fit_name(title));
  for (const nexus_characters& block : file.character_blocks)
    if (lower_case(block.title) == name) return &block;
  if (file.character_blocks.size() > 1) file.in.fail("No block of characters named " + title);
  return nullptr;
}

std::vector<std::uint8_t> read_nexus_list(nexus_file& file, nexus_list kind,
                                          const nexus_characters* block) {
  const list_scope scope = {kind, kind == nexus_list::characters ? block : nullptr};
  const int count = kind == nexus_list::taxa ? matrix.ntax : matrix.nchar;
  std::vector<std::uint8_t> flags(at(count), 0);
  for (;;) {
    const nexus_token& next = file.in.peek_token();
    if (next.is(';') || next.is(',') || next.is('/') || next.what == nexus_token::kind::end)
      return flags;
    const nexus_token word = file.in.token();
    if (word.what != nexus_token::kind::word)
      file.in.fail("unexpected " + word.text + " in a list");
    if (word.is("all") && !word.quoted) {
      std::fill_n(flags.begin() + scope.first(), scope.count(), std::uint8_t{1});
      continue;
    }
    if (kind == nexus_list::characters && !word.quoted &&
        (word.is("uninf") || word.is("constant"))) {
      for (int c = scope.first(); c < scope.first() + scope.count(); ++c) {
        if (!is_informative(c) && (word.is("uninf") || is_constant(c))) flags[at(c)] = 1;
      }
      continue;
    }
    const nexus_sets& sets = file.sets_of(kind);
    const auto set = sets.find(lower_case(word.text));
    if (set != sets.end() && set->second.size() == flags.size()) {
      std::transform(flags.begin(), flags.end(), set->second.begin(), flags.begin(),
                     std::bit_or<std::uint8_t>());
      continue;
    }
    range_words range;
    range.first = word.text;
    if (!word.quoted) range = split_range(file, word.text, scope);
    const int first = find_element(file, range.first, word.quoted, scope);
    const int last = range.last.empty() ? first : find_element(file, range.last, false, scope);
    int step = 1;
    if (file.in.accept('\\') && !whole_number(file.in.token().text, 1, count, &step)) {
      file.in.fail("a step of a range must be a number");
    }
    for (int i = first; i <= last; i += step) flags[at(i)] = 1;
  }
}

}  // namespace zeb
