#include "matrix/costs/state_tree_diagram.h"

#include <algorithm>
#include <array>
#include <bit>
#include <vector>

#include "base/errors.h"
#include "base/indices.h"
#include "matrix/costs/cost_items.h"
#include "matrix/costs/step_matrices.h"
#include "matrix/symbols.h"

namespace zeb {
namespace {

constexpr std::size_t most_lines = 200;
constexpr std::size_t most_columns = 500;

int state_of(char symbol) {
  const std::uint32_t states =
      make_symbols(entry_type(), 4, true)[static_cast<unsigned char>(symbol)];
  const bool is_sign = symbol == '-' || symbol == '?' || symbol == '*';
  return !is_sign && std::has_single_bit(states) ? std::countr_zero(states) : -1;
}

bool is_line(char symbol) { return std::string_view("-|/\\X").find(symbol) != std::string::npos; }

struct direction {
  int down;
  int right;
  std::string_view signs;  // that go on in it
};
constexpr std::array<direction, 8> directions = {{{0, 1, "-"},
                                                  {0, -1, "-"},
                                                  {1, 0, "|"},
                                                  {-1, 0, "|"},
                                                  {1, 1, "\\X"},
                                                  {-1, -1, "\\X"},
                                                  {1, -1, "/X"},
                                                  {-1, 1, "/X"}}};

class diagram {
 public:
  explicit diagram(const std::string& text) {
    lines_.emplace_back();
    for (const char c : text) {
      if (c == '\n')
        lines_.emplace_back();
      else if (c != '\r')
        lines_.back() += c == '\t' ? ' ' : c;
    }
    std::erase_if(lines_, [](const std::string& line) {
      return line.find_first_not_of(' ') == std::string::npos;
    });
    check_lines();
  }

  /// Calls `join(a, b)` for each line between two states; both ways round.
  template <class function>
  void for_each_link(function join) {
    used_.clear();
    for (const std::string& line : lines_) used_.emplace_back(line.size(), 0);
    for (int row = 0; row < static_cast<int>(lines_.size()); ++row)
      for (int column = 0; column < static_cast<int>(lines_[at(row)].size()); ++column) {
        const int state = state_of(sign(row, column));
        if (state < 0) continue;
        for (const direction& way : directions)
          if (const int other = follow(row, column, way); other >= 0) join(state, other);
      }
    for (std::size_t row = 0; row < lines_.size(); ++row)
      for (std::size_t column = 0; column < lines_[row].size(); ++column)
        if (is_line(lines_[row][column]) && !used_[row][column]) loose_line(row, column);
  }
  std::uint32_t states() const {
    std::uint32_t all = 0;
    for (const std::string& line : lines_)
      for (const char c : line)
        if (state_of(c) >= 0) all |= std::uint32_t{1} << state_of(c);
    return all;
  }

 private:
  char sign(int row, int column) const {
    if (row < 0 || column < 0 || row >= static_cast<int>(lines_.size())) return ' ';
    const std::string& line = lines_[at(row)];
    return column < static_cast<int>(line.size()) ? line[at(column)] : ' ';
  }

  void check_lines() const {
    if (lines_.empty()) error_end("Character state tree must start with a state");
    if (lines_.size() > most_lines) error_end("Can't read character state tree: too many lines");
    for (std::size_t row = 0; row < lines_.size(); ++row) {
      if (lines_[row].size() > most_columns) {
        if (row == 0) error_end("First line too wide");
        error_end("Can't read character state tree: line", row, "too wide");
      }
      for (const char c : lines_[row])
        if (c != ' ' && state_of(c) < 0 && !is_line(c))
          error_end_f("Illegal character (%c) reading character state tree", c);
    }
    if (state_of(lines_[0][lines_[0].find_first_not_of(' ')]) < 0)
      error_end("Character state tree must start with a state");
  }

  /// The state at the other end of a line; -1 where none begins.
  int follow(int row, int column, const direction& way) {
    int steps = 0;
    for (;;) {
      row += way.down;
      column += way.right;
      const char next = sign(row, column);
      if (next != ' ' && way.signs.find(next) != std::string_view::npos) {
        used_[at(row)][at(column)] = 1;
        ++steps;
        continue;
      }
      if (steps == 0) return -1;
      if (const int state = state_of(next); state >= 0) return state;
      const int last_row = row - way.down;
      const char last = sign(last_row, column - way.right);
      if (last_row == 0 && next == ' ') loose_line(0, at(column - way.right));
      error_end_f("Wrong character state tree: '%c' (line %i) connects to '%c' ?\n", last, last_row,
                  next);
    }
  }

  [[noreturn]] void loose_line(std::size_t row, std::size_t column) const {
    const char c = lines_[row][column];
    if (row == 0)
      error_end_f(
          "Can't read character state tree: '%c' in first line doesn't connect to any state", c);
    error_end_f("Wrong character state tree: '%c' (line %i) connects to '%c' ?\n", c,
                static_cast<int>(row), ' ');
  }

  std::vector<std::string> lines_;
  std::vector<std::vector<char>> used_;
};

}  // namespace

cost_table read_state_tree(const std::string& text, int highest) {
  diagram drawn(text);
  const int most = std::max(highest, 31 - std::countl_zero(drawn.states()));
  for (int s = 0; s <= most; ++s)
    if (!(drawn.states() >> s & 1U))
      error_end_f(
          "Can't read character state tree:\n   state %i not included (must include \n   all "
          "states between 0 and %i)...\n",
          s, most);
  if (most >= 8 * matrix.cell_bytes)
    error_end_f("Only states 0-%i allowed", 8 * matrix.cell_bytes - 1);
  std::vector<std::pair<int, int>> links;
  drawn.for_each_link([&](int a, int b) { links.emplace_back(a, b); });
  cost_table costs =
      costs_along_links(static_cast<std::uint32_t>((std::uint64_t{2} << most) - 1), links);
  for (int i = 0; i <= most; ++i)
    for (int j = 0; j < i; ++j)
      if (costs.costs[at(i)][at(j)] >= forbidden_cost)
        error_end_f("\nERROR: no cost defined between states %c-%c\n",
                    symbol_of_state(entry_type(), j), symbol_of_state(entry_type(), i));
  return costs;
}

}  // namespace zeb
