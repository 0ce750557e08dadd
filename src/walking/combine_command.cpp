// `combine`: a piece of script for each subset of the first whole numbers, or for each of their
// permutations.
#include <algorithm>
#include <cctype>
#include <memory>
#include <numeric>
#include <string>
#include <utility>
#include <vector>

#include "base/errors.h"
#include "language/interpreter.h"
#include "language/lexer.h"
#include "macro/assignment.h"
#include "macro/bodies.h"
#include "macro/body_text.h"
#include "macro/macro_language.h"
#include "macro/macro_state.h"
#include "macro/variable_reference.h"
#include "walking/commands.h"
#include "walking/walk_nesting.h"

namespace zeb {
namespace {

constexpr const char* own_name = "Command \"combine\" can't\nuse specified variable; it";

// 0 to `size` - 1: their subsets of `least` to `most`, or all their orders.
struct combinations {
  int size = 0;
  int least = 0;
  int most = 0;
  bool permutations = false;
};

class combination_items : public body_items {
 public:
  combination_items(const combinations& all, const variable_reference& target)
      : all_(all), target_(target) {}

  bool next() override {
    if (!step()) return false;
    const running_assignment target(target_);
    write_list(own_name, std::vector<double>(chosen_.begin(), chosen_.end()));
    return true;
  }
  std::string place() const override {
    std::string list;
    for (const int one : chosen_) list += " " + std::to_string(one);
    return "combine (" + (list.empty() ? "none" : list.substr(1)) + ")";
  }

 private:
  bool step() {
    if (!begun_) {
      begun_ = true;
      return first_of(all_.least);
    }
    if (all_.permutations) return std::ranges::next_permutation(chosen_).found;
    return next_subset() || first_of(static_cast<int>(chosen_.size()) + 1);
  }
  bool first_of(int count) {
    if (count > all_.most) return false;
    chosen_.resize(static_cast<std::size_t>(count));
    std::iota(chosen_.begin(), chosen_.end(), 0);
    return true;
  }
  // The last number that can go up does, and those after it follow it closely.
  bool next_subset() {
    for (std::size_t i = chosen_.size(); i-- > 0;) {
      if (chosen_[i] == all_.size - static_cast<int>(chosen_.size() - i)) continue;
      ++chosen_[i];
      std::iota(chosen_.begin() + static_cast<std::ptrdiff_t>(i) + 1, chosen_.end(),
                chosen_[i] + 1);
      return true;
    }
    return false;
  }

  combinations all_;
  variable_reference target_;
  std::vector<int> chosen_;
  bool begun_ = false;
};

int read_count() {
  int count = 0;
  if (!read_optional_int(&count)) error_end("Unexpected symbol in options for \"combine\"");
  if (count < 0) error_end("Numbers of \"combine\" can't be negative");
  return count;
}

combinations read_combinations() {
  combinations all;
  all.size = read_count();
  if (accept_char('*')) {
    all.permutations = true;
    all.least = all.most = all.size;
    return all;
  }
  all.least = all.most = read_count();
  if (accept_char('/')) all.most = read_count();
  all.most = std::min(all.most, all.size);
  return all;
}

}  // namespace

void combine_command() {
  require_macros();
  no_timing();
  if (accept_walk_limit(body_kind::combine)) return;
  check_walk_nesting(body_kind::combine);
  const combinations all = read_combinations();
  const int next = skip_blanks_peek();
  if (!std::isalnum(next) && next != '(') error_end("Unexpected symbol in options for \"combine\"");
  const variable_reference target = read_variable_reference(false);
  const int values = std::max(all.least <= all.most ? all.most : 0, 0);
  if (values > macros.max_variables)
    error_end(own_name, "has", values, "values, but array can store only", macros.max_variables);
  body_record body = capture_body(body_kind::combine);
  body.items = std::make_unique<combination_items>(all, target);
  enter_body(std::move(body));
}

void endcomb_command() { unmatched_closing_word("combine"); }

}  // namespace zeb
