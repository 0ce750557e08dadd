// `force`: constraint trees and groups.
#include <string_view>
#include <utility>

#include "base/errors.h"
#include "base/indices.h"
#include "base/message_text.h"
#include "console/output.h"
#include "console/settings.h"
#include "language/input.h"
#include "language/interpreter.h"
#include "language/lexer.h"
#include "language/lists.h"
#include "matrix/matrix.h"
#include "trees/commands.h"
#include "trees/constraints/constraint_text.h"
#include "trees/constraints/constraints.h"
#include "trees/notation/tree_text_reader.h"
#include "trees/tree_lists.h"
#include "trees/tree_store.h"

namespace zeb {
namespace {

/// What stands in one `force`, from its first item to the ";".
class force_reader {
 public:
  force_reader() : floats_in_positive_(matrix.ntax), floats_in_negative_(matrix.ntax) {}

  constraint_definitions read() {
    while (!accept_char(';')) read_item();
    for (constraint_group& group : found_.positive) let_float(group, floats_in_positive_);
    for (constraint_group& group : found_.negative) let_float(group, floats_in_negative_);
    if (!found_.defined()) error_end("No constraints defined");
    return std::move(found_);
  }

 private:
  void read_item() {
    const int sign = next_nonblank();
    switch (sign) {
      case '=':
        if (!found_.tree.empty())
          error_end("Cannot define two trees for strict constraint at the same time");
        found_.tree = read_tree();
        return;
      case '+':
        require_no_negative();
        found_.positive.push_back(read_group());
        return;
      case '/':
        require_no_negative();
        add_groups_of_tree(found_.positive);
        return;
      case '-':
        found_.negative.push_back(read_group());
        return;
      case ':':
        add_groups_of_tree(found_.negative);
        return;
      case '>':
        floats_in_positive_ |= read_floating();
        return;
      case '<':
        floats_in_negative_ |= read_floating();
        return;
      default:
        unread_char();
        error_end_f("Found \"%c\" when expecting one of = / : + - > < in constraints", sign);
    }
  }

  void require_no_negative() const {
    if (!found_.negative.empty())
      error_end("Must define all positive constraints before the negative ones");
  }

  static std::vector<tree_node> read_tree() {
    std::vector<tree_node> tree(at(matrix.nnodes));
    if (accept_char('&')) {
      const int number = read_int();
      if (number < 0 || number >= store.ntrees)
        error_end("& must be followed by a tree number ( 0 -", store.ntrees - 1, ")");
      const const_tree_span stored = stored_tree(number);
      tree.assign(stored.begin(), stored.end());
      return tree;
    }
    if (skip_blanks_peek() != '(') error_end("Expected a tree in parentheses, or & and its number");
    tree_text_reader reader(matrix.ntax);
    reader.read_enclosed_tree();
    reader.tree().finish(tree, false);
    return tree;
  }

  static void add_groups_of_tree(std::vector<constraint_group>& groups) {
    for (constraint_group& group : groups_of_tree(read_tree(), matrix.ntax))
      groups.push_back(std::move(group));
  }

  /// "[ members ( floating ) ]".
  static constraint_group read_group() {
    if (!accept_char('[')) error_end("Taxa of a group must stand in square brackets");
    const auto ntax = at(matrix.ntax);
    std::vector<std::uint8_t> members(ntax, 0);
    std::vector<std::uint8_t> floating(ntax, 0);
    const list_kind& taxa = find_list_kind("taxon");
    list_reader member_list(list_plain, 0, matrix.ntax, taxa, members);
    list_reader floating_list(list_plain, 0, matrix.ntax, taxa, floating);
    bool in_parentheses = false;
    bool any = false;
    for (int c = skip_blanks_peek(); c != ']' || in_parentheses; c = skip_blanks_peek()) {
      if (c == ';') error_end("Unexpected semicolon within brackets");
      if (c == (in_parentheses ? ')' : '(')) {
        read_char();
        in_parentheses = !in_parentheses;
        continue;
      }
      if (c == '(' || (c != '@' && !starts_list_item(c)))
        error_end("Found allien character within brackets");
      (in_parentheses ? floating_list : member_list).read_item_at(c);
      any = true;
    }
    read_char();
    if (!any) error_end("Expected taxon name");
    constraint_group group{taxon_set::of_flags(members), taxon_set(matrix.ntax)};
    let_float(group, taxon_set::of_flags(floating));
    return group;
  }

  /// The taxa after ">" or "<", up to the next item.
  static taxon_set read_floating() {
    std::vector<std::uint8_t> taxa(at(matrix.ntax), 0);
    list_reader list(list_plain, 0, matrix.ntax, find_list_kind("taxon"), taxa);
    bool any = false;
    for (int c = skip_blanks_peek();
         std::string_view("*+-/:;<=>").find(static_cast<char>(c)) == std::string_view::npos;
         c = skip_blanks_peek()) {
      list.read_item_at(c);
      any = true;
    }
    if (!any) error_end("Expected taxon name");
    return taxon_set::of_flags(taxa);
  }

  static void let_float(constraint_group& group, const taxon_set& taxa) {
    group.members -= taxa;
    group.floating |= taxa;
  }

  constraint_definitions found_;
  taxon_set floats_in_positive_;
  taxon_set floats_in_negative_;
};

void define() {
  const bool active = constraints.active;
  forget_constraints();
  define_constraints(force_reader().read(), active);
  if (!settings.report) return;
  std::string defined = constraints.tree.empty() ? "" : ", constraint tree";
  const auto add = [&defined](const std::vector<constraint_group>& groups, const char* kind) {
    if (groups.empty()) return;
    defined += text_of(", %i %s %s", static_cast<int>(groups.size()), kind,
                       groups.size() == 1 ? "group" : "groups");
  };
  add(constraints.positive, "positive");
  add(constraints.negative, "negative");
  emit("Defined: ", defined.substr(2), active ? "\n" : " (not enforced until \"constrain =\")\n");
}

}  // namespace

void force_command() {
  no_timing();
  require_data("defining constraints");
  if (accept_char(';')) {
    emit(definitions_text(), constraints.defined() ? ";\n" : " ;\n");
  } else if (accept_char('*')) {
    expect_end();
    emit(definitions_list());
  } else if (accept_char(']')) {
    expect_end();
    activate_constraints(false);
  } else {
    define();
  }
}

}  // namespace zeb
