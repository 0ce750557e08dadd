// A small world of elements with names, groups and blocks for tests of the list parser.
#pragma once

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "base/command.h"
#include "base/errors.h"
#include "language/input.h"
#include "language/lexer.h"
#include "language/list_kinds.h"
#include "language/lists.h"
#include "language/taxon_reference.h"
#include "program.h"

namespace zeb_test {

inline constexpr int elements = 24;
inline constexpr int blocks = 3;  // of 8 elements each
inline constexpr int groups = 4;  // group g holds the multiples of g + 2; group 3 isn't defined

/// "Aba0", "Abb1", ... : the names of elements that share their third letter begin alike.
inline const std::vector<std::string>& element_names() {
  static const std::vector<std::string> names = [] {
    std::vector<std::string> made;
    for (int e = 0; e < elements; ++e) {
      made.push_back(std::string("Ab") + static_cast<char>('a' + e % 5) + std::to_string(e));
    }
    return made;
  }();
  return names;
}

inline const std::vector<std::string>& group_names() {
  static const std::vector<std::string> names{"twos", "threes", "fours", "fives"};
  return names;
}

inline bool block_range(int block, int* first, int* end) {
  if (block < 0 || block > blocks) return false;
  *first = block == 0 ? 0 : (block - 1) * 8;
  *end = block == 0 ? elements : block * 8;
  return true;
}

/// In the place of the program's kinds "taxon", "character" and "tree" (no names) those of that
/// world, as long as the object lives.
class list_world {
 public:
  list_world() {
    start_program();
    for (const std::string_view noun : {"tree", "taxon", "character"}) {
      of_program_.push_back(zeb::find_list_kind(noun));
    }
    zeb::list_kind kind{
        .noun = "tree",
        .count = [] { return elements; },
        .group_count = [] { return groups; },
        .group_name = [](int group) -> std::string_view {
          return group_names()[static_cast<std::size_t>(group)];
        },
        .group_defined = [](int group) { return group < 3; },
        .in_group = [](int element, int group) { return group < 3 && element % (group + 2) == 0; }};
    zeb::register_list_kind(kind);
    kind.name = [](int element) -> std::string_view {
      return element_names()[static_cast<std::size_t>(element)];
    };
    kind.noun = "taxon";
    zeb::register_list_kind(kind);
    kind.noun = "character";
    kind.block_range = block_range;
    kind.block_count = [] { return blocks; };
    kind.block_named = [](std::string_view word) {
      return zeb::is_prefix(word, "second") ? 2 : -1;
    };
    zeb::register_list_kind(kind);
  }
  ~list_world() {
    for (const zeb::list_kind& kind : of_program_) zeb::register_list_kind(kind);
  }
  list_world(const list_world&) = delete;
  list_world& operator=(const list_world&) = delete;

 private:
  std::vector<zeb::list_kind> of_program_;
};

/// Reads `text` as a list of `kind`. Nothing where it ended in an error. `rest`, if given, gets the
/// character at which the list ended.
inline std::optional<std::vector<std::uint8_t>> read_list_of(std::string_view text,
                                                             std::string_view kind,
                                                             unsigned flags = 0,
                                                             int* rest = nullptr) {
  const list_world world;
  std::vector<std::uint8_t> marks(elements, 7);
  const zeb::jump_context context;
  zeb::push_string(text, "list");
  try {
    zeb::read_list(flags, 0, elements, kind, marks);
    if (rest) *rest = zeb::skip_blanks_peek();
    zeb::pop_all();
    return marks;
  } catch (const zeb::command_unwinding&) {
    zeb::pop_all();
    return std::nullopt;
  }
}

inline void check_marks(const std::vector<std::uint8_t>& marks) {
  if (std::any_of(marks.begin(), marks.end(), [](std::uint8_t m) { return m > 1; })) std::abort();
}

inline void probe_taxon(const std::string& text) {
  const list_world world;
  std::vector<std::uint8_t> marks(elements);
  const zeb::jump_context context;
  zeb::push_string(text, "taxon");
  try {
    const int taxon = zeb::read_taxon(marks);
    if (taxon < -1 || taxon >= elements) std::abort();
  } catch (const zeb::command_unwinding&) {
  }
  zeb::pop_all();
  check_marks(marks);
}

/// Reads the text as a list and as a reference to a taxon; aborts where a mark is neither 0 nor 1.
/// The first byte chooses kind and flags.
inline void probe_list_parser(std::string_view text) {
  static const char* const kinds[] = {"taxon", "character", "tree"};
  if (text.empty()) return;
  const auto choice = static_cast<unsigned char>(text.front());
  // A zero byte ends a text of the input.
  std::string clean(text.substr(1));
  std::replace(clean.begin(), clean.end(), '\0', ' ');
  const auto marks = read_list_of(clean, kinds[choice % 3], (choice / 3) % 32);
  if (marks) check_marks(*marks);
  probe_taxon(clean);
}

}  // namespace zeb_test
