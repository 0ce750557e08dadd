// `sprit` and `tbrit`: a piece of script for each tree that is one move away from a tree.
#include <algorithm>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "base/command.h"
#include "base/errors.h"
#include "base/message_text.h"
#include "base/process.h"
#include "console/output.h"
#include "console/settings.h"
#include "language/lexer.h"
#include "macro/bodies.h"
#include "macro/body_text.h"
#include "macro/macro_language.h"
#include "macro/macro_state.h"
#include "macro/script_text.h"
#include "matrix/matrix.h"
#include "trees/tree_store.h"
#include "walking/commands.h"
#include "walking/rearrangements.h"
#include "walking/walk_nesting.h"
#include "walking/working_tree.h"

namespace zeb {
namespace {

class swap_items : public body_items {
 public:
  swap_items(int tree, move_kind kind, bool moves_outgroup)
      : number_(tree),
        kind_(kind),
        moves_outgroup_(moves_outgroup),
        current_(stored_tree(tree).begin(), stored_tree(tree).end()),
        moves_(begin()) {
    if (settings.report) report_line("Start to swap");
  }

  bool next() override {
    const bool more = moves_.next(current_);
    tell_percent_swapped(moves_.percent());
    if (!more) return false;
    ++done_;
    working_.put(current_);
    if (macros.report) report_move();
    return true;
  }
  void over() override {
    if (!settings.report) return;
    emitf("Finished swapping (%lld swappings done)", done_);
    emitf("%s swapping, %.2f secs.", kind_ == move_kind::spr ? "SPR" : "TBR",
          wall_clock() - start_);
  }
  void broken_off() override {
    if (settings.report) report_line("Interrupted swapping");
  }
  std::string place() const override {
    return text_of("%s (rearrangement %lld)", kind_ == move_kind::spr ? "sprit" : "tbrit", done_);
  }
  // The rearrangement takes the place of the tree, and is swapped in turn.
  void swap_current() {
    check_tree_number(number_);
    std::ranges::copy(current_, stored_tree(number_).begin());
    moves_ = begin();
  }

 private:
  rearrangements begin() const {
    return {current_, matrix.ntax, matrix.outgroup, kind_, moves_outgroup_};
  }
  void report_move() const {
    if (moves_.rooting() < 0) {
      emitf("Move %i to %i", moves_.clip(), moves_.target());
    } else {
      emitf("Move %i (%i) to %i", moves_.clip(), moves_.rooting(), moves_.target());
    }
  }

  int number_;
  move_kind kind_;
  bool moves_outgroup_;
  std::vector<tree_node> current_;
  rearrangements moves_;
  working_tree working_{"No space to store new trees (increase maxtrees): tree"};
  long long done_ = 0;
  double start_ = wall_clock();
};

void swap(move_kind kind) {
  require_macros();
  check_enumeration_nesting();
  bool moves_outgroup = accept_char('+');
  const int tree = read_walked_tree();
  moves_outgroup = accept_char('+') || moves_outgroup;
  body_record body = capture_body(body_kind::moves);
  body.items = std::make_unique<swap_items>(tree, kind, moves_outgroup);
  enter_body(std::move(body));
}

swap_items& swap_in_work() {
  require_macros();
  check_end();
  body_record& body = reach_body(body_kind::moves, "sprit or tbrit");
  auto* items = dynamic_cast<swap_items*>(body.items.get());
  if (!items) error_end(command.command_name, "valid only within sprit or tbrit");
  return *items;
}

}  // namespace

void sprit_command() { swap(move_kind::spr); }
void tbrit_command() { swap(move_kind::tbr); }

void endswap_command() {
  swap_in_work().end();
  skip_to_body_end();
}

void resetswap_command() {
  swap_in_work().swap_current();
  skip_to_body_end();
}

}  // namespace zeb
