#include "trees/notation/parenthetical_reader.h"

#include "base/errors.h"

namespace zeb {

namespace {

/// One tree on its way in. The closing of the root is taken back when more of the tree follows: the
/// parenthesis was one too many.
class parenthetical_parser {
 public:
  parenthetical_parser(tree_builder& tree, const parenthetical_dialect& dialect)
      : tree_(tree), dialect_(dialect) {}

  int read_tree() {
    tree_.begin();
    while (true) {
      const int c = dialect_.read();
      if (c < 33) continue;
      if (c == '(') {
        check_commas(met::opening);
        reopen_root();
        tree_.open_node();
        just_closed_ = false;
      } else if (c == ')') {
        check_commas(met::closing);
        close();
        if (dialect_.root_ends && root_closed_) return c;
      } else if (c == ',') {
        if (dialect_.comma_ends && tree_.at_root() && (root_closed_ || !tree_.root_opened())) {
          finish();
          return ';';
        }
        check_commas(met::comma);
        just_closed_ = false;
      } else if (c < 128 && dialect_.terminators.find(static_cast<char>(c)) != c_none) {
        finish();
        return c;
      } else if (dialect_.annotation != 0 && c == dialect_.annotation && !tree_.untouched()) {
        dialect_.read_annotation(tree_, tree_.last_node());
      } else if (c == '[' && dialect_.bracket_comments) {
        skip_comment();
      } else {
        dialect_.unread();
        read_item();
      }
    }
  }

 private:
  static constexpr std::size_t c_none = std::string_view::npos;

  void read_item() {
    if (just_closed_ && dialect_.labels_after_nodes) {
      just_closed_ = false;
      dialect_.read_label(tree_, tree_.last_node());
      return;
    }
    check_commas(met::item);
    reopen_root();
    just_closed_ = false;
    dialect_.read_item(tree_);
  }

  enum class met { nothing, opening, closing, comma, item };

  void check_commas(met now) {
    const met before = last_met_;
    last_met_ = now;
    if (!dialect_.odd_commas || before == met::nothing) return;
    const bool place_ended = before == met::item || before == met::closing;
    const bool place_begins = now == met::item || now == met::opening;
    if (place_ended && place_begins) dialect_.odd_commas("has no comma between two groups or taxa");
    if (!place_ended && !place_begins)
      dialect_.odd_commas("has an empty place at a comma or \"()\"");
  }

  void close() {
    just_closed_ = true;
    if (tree_.close_node()) return;
    if (root_closed_ || !tree_.root_opened()) {
      report_excess();
    } else {
      root_closed_ = true;
    }
  }

  void reopen_root() {
    if (!root_closed_) return;
    root_closed_ = false;
    report_excess();
  }

  void report_excess() {
    if (mended_) return;
    mended_ = true;
    dialect_.excess();
  }

  void finish() {
    if (!tree_.at_root() || (tree_.root_opened() && !root_closed_ && !mended_)) {
      dialect_.missing(tree_.terminal_near_current());
      error_end("Parentheses of the tree are not closed");
    }
  }

  void skip_comment() {
    for (int open = 1; open > 0;) {
      const int c = dialect_.read();
      if (c == ';' && dialect_.ended()) error_end("Comment within a tree is not closed");
      open += c == '[' ? 1 : c == ']' ? -1 : 0;
    }
  }

  tree_builder& tree_;
  const parenthetical_dialect& dialect_;
  met last_met_ = met::nothing;
  bool root_closed_ = false;
  bool mended_ = false;
  bool just_closed_ = false;
};

}  // namespace

int read_parenthetical(tree_builder& tree, const parenthetical_dialect& dialect) {
  return parenthetical_parser(tree, dialect).read_tree();
}

}  // namespace zeb
