// `iterrecs`: a piece of script for each most parsimonious reconstruction of a character.
#include <algorithm>
#include <cctype>
#include <cmath>
#include <cstdint>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "base/errors.h"
#include "base/indices.h"
#include "base/message_text.h"
#include "console/output.h"
#include "console/settings.h"
#include "language/input.h"
#include "language/lexer.h"
#include "macro/assignment.h"
#include "macro/bodies.h"
#include "macro/body_text.h"
#include "macro/macro_language.h"
#include "macro/macro_state.h"
#include "macro/variable_reference.h"
#include "macro/variables.h"
#include "matrix/matrix.h"
#include "trees/tree_store.h"
#include "walking/commands.h"
#include "walking/reconstruction_walk.h"
#include "walking/walk_nesting.h"

namespace zeb {
namespace {

constexpr const char* own_name = "Command \"iterrecs\" can't\nuse specified variable; it";

// What stands between the character and the array.
struct iteration_options {
  bool forced = false;       // `&`
  bool differences = false;  // `+`
};

class reconstruction_items : public body_items {
 public:
  reconstruction_items(const reconstruction_request& request, bool differences,
                       const variable_reference& target)
      : walk_(request), character_(request.character), differences_(differences), target_(target) {}
  double count() const { return walk_.count(); }

  bool next() override {
    if (!walk_.next()) return false;
    ++done_;
    tell_reconstruction_steps(static_cast<double>(walk_.steps()) / unit());
    const running_assignment target(target_);
    write_list(own_name, cells());
    return true;
  }
  std::string place() const override {
    return text_of("iterrecs (character %i, reconstruction %lld)", character_, done_);
  }

 private:
  double unit() const { return matrix.characters[at(character_)].is_continuous ? 1000 : 1; }
  std::vector<double> cells() const {
    std::vector<double> cells;
    const std::vector<int>& values = walk_.values();
    for (int v = 0; v < static_cast<int>(values.size()); ++v) {
      const int value = values[at(v)];
      const bool nothing = value < 0 || (differences_ && v == matrix.ntax);
      const int from = differences_ && !nothing ? values[at(walk_.ancestor(v))] : 0;
      cells.push_back(nothing ? (differences_ ? 0 : -1) : (value - from) / unit());
    }
    return cells;
  }

  reconstruction_walk walk_;
  int character_;
  bool differences_;
  variable_reference target_;
  long long done_ = 0;
};

int read_character() {
  const int character = read_int();
  if (character < 0) error_end("Must give character number");
  if (character >= matrix.nchar) error_end("No character number", character);
  if (matrix.characters[at(character)].type == landmark_data) {
    error_end_f("Sorry, reconstructions for a landmark character (i.e. %i) cannot be iterated",
                character);
  }
  return character;
}

bool is_continuous(int character) { return matrix.characters[at(character)].is_continuous; }

// In thousandths; 0 for discrete characters.
int read_increment(int character) {
  double increment = 0;
  const bool given = read_optional_float(&increment);
  if (!is_continuous(character)) {
    report_line(
        text_of("Increase can be defined only for continuous characters\nCharacter %i is discrete "
                "(increase will be ignored)",
                character));
    return 0;
  }
  if (!given || !(increment > 0))
    error_end("Increase for reconstructions of continuous characters must be greater than 0");
  return static_cast<int>(std::max(1.0, std::min(std::round(increment * 1000), 65535.0)));
}

int read_sample_size() {
  int size = 0;
  if (!read_optional_int(&size) || size < 1) error_end("Must specify sample size...");
  return size;
}

iteration_options read_options(reconstruction_request& request) {
  iteration_options options;
  for (;;) {
    if (accept_char('*')) {
      request.increment = read_increment(request.character);
    } else if (accept_char('+')) {
      options.differences = true;
    } else if (accept_char('&')) {
      options.forced = true;
    } else if (accept_char('/')) {
      request.choice = reconstruction_choice::sample;
      request.wanted = read_sample_size();
    } else if (accept_char('\\')) {
      request.choice = reconstruction_choice::settled;
      request.wanted = read_sample_size();
    } else {
      return options;
    }
  }
}

// A cell as a demand on its node: the states allowed, as bits; 0 for all.
std::uint32_t states_allowed(double cell) {
  constexpr int states = 32;
  if (cell >= 0 && cell < states) return 1U << static_cast<int>(cell);
  if (cell < 0 && cell > -states) return ~(1U << static_cast<int>(-cell));
  return 0;
}

void check_demands(int character) {
  if (macros.integer_only)
    error_end("States can't be forced when variables hold whole numbers (macfloat -)");
  if (is_continuous(character))
    error_end_f("States can be forced only for discrete characters (not %i)", character);
}

std::vector<std::uint32_t> read_demands(const variable_reference& target, std::size_t nodes) {
  const running_assignment cells(target);
  if (assignment.room < static_cast<int>(nodes))
    error_end(own_name, "has", nodes, "values, but array can store only", assignment.room);
  std::vector<std::uint32_t> allowed(nodes, 0);
  for (std::size_t v = at(matrix.ntax); v < nodes; ++v)
    allowed[v] = states_allowed(variable_value(assignment.target + static_cast<int>(v)));
  return allowed;
}

void report_iteration(const reconstruction_request& request, int tree, double count) {
  if (!settings.report) return;
  std::string text =
      text_of("Tree %i, character %i: %.15g reconstructions", tree, request.character, count);
  if (request.choice != reconstruction_choice::all)
    text += text_of(" (sampling up to %i reconsts.)", request.wanted);
  report_line(text);
}

}  // namespace

void iterrecs_command() {
  require_macros();
  if (accept_walk_limit(body_kind::iterrecs)) return;
  check_walk_nesting(body_kind::iterrecs);
  require_trees();
  reconstruction_request request;
  const int tree = read_walked_tree();
  request.character = read_character();
  request.tree.assign(stored_tree(tree).begin(), stored_tree(tree).end());
  const iteration_options options = read_options(request);
  if (options.forced) check_demands(request.character);
  if (request.choice == reconstruction_choice::settled && is_continuous(request.character))
    error_end("Nodes can be settled by chance (\\N) only for discrete characters");
  const int next = skip_blanks_peek();
  if (!std::isalnum(next) && next != '(') error_end("Sorry, expected a variable name/number");
  const variable_reference target = read_variable_reference(false);
  const auto nodes = at(node_limit(request.tree, matrix.ntax));
  if (options.forced) request.allowed = read_demands(target, nodes);
  body_record body = capture_body(body_kind::iterrecs);
  auto items = std::make_unique<reconstruction_items>(request, options.differences, target);
  report_iteration(request, tree, items->count());
  body.items = std::move(items);
  enter_body(std::move(body));
}

void killrecs_command() { end_walk(body_kind::iterrecs); }

void endrecs_command() { unmatched_closing_word("iterrecs"); }

}  // namespace zeb
