#include "language/group_definition.h"

#include <algorithm>
#include <cctype>
#include <vector>

#include "base/errors.h"
#include "base/indices.h"
#include "base/random.h"
#include "console/output.h"
#include "language/input.h"
#include "language/lexer.h"
#include "language/list_kinds.h"
#include "language/list_text.h"
#include "language/lists.h"

namespace zeb {
namespace {

bool is_one_of(int c, std::string_view set) {
  return c > 0 && c < 128 && set.find(static_cast<char>(c)) != std::string_view::npos;
}

/// Names are what lists can refer to: a letter, then letters, digits and "_-.+".
bool may_stand_in_name(int c, bool first) {
  if (c < 33 || c > 255) return false;
  if (first) return std::isalpha(c) || c == '_';
  return name_chars[at(c)] || std::isdigit(c);
}

bool is_name(std::string_view text) {
  bool first = true;
  for (const char c : text) {
    if (!may_stand_in_name(static_cast<unsigned char>(c), first)) return false;
    first = false;
  }
  return !first;
}

void set_members(const group_kind& kind, int group, const std::vector<std::uint8_t>& members) {
  for (int e = 0; e < kind.elements; ++e) kind.set_member(e, group, members[at(e)] != 0);
}

/// The members that a group has before it is redefined; unless they are replaced, they come back.
struct former_members {
  former_members(const group_kind& its_kind, int its_group)
      : kind(its_kind), group(its_group), members(at(its_kind.elements)) {
    for (int e = 0; e < kind.elements; ++e) members[at(e)] = kind.in_group(e, group);
  }
  ~former_members() {
    if (!replaced) set_members(kind, group, members);
  }
  former_members(const former_members&) = delete;
  former_members& operator=(const former_members&) = delete;

  const group_kind& kind;
  int group;
  std::vector<std::uint8_t> members;
  bool replaced = false;
};

class definition_reader {
 public:
  explicit definition_reader(const group_kind& kind) : kind_(kind), members_(at(kind.elements)) {}

  void read() {
    if (skip_blanks_peek() == ';') return show_groups();
    for (int c = skip_blanks_peek(); c != ';'; c = skip_blanks_peek()) {
      if (!is_one_of(c, "=<>-*!")) error_end("Must use =, > or <");
      read_char();
      if (c == '*') {
        write_groups(false);
      } else if (c == '!') {
        if (!kind_.active) error_end("Must use =, > or <");
        write_groups(true);
      } else if (c == '-') {
        undefine_groups();
      } else {
        change_group(c);
      }
    }
  }

 private:
  // ---- which group ----

  int checked(std::int64_t group) const {
    if (group < 0 || group >= kind_.limit) {
      error_end("Can't define more than", kind_.limit, kind_.element_kind, "groups");
    }
    return static_cast<int>(group);
  }

  int free_group() const {
    int group = 0;
    while (group < kind_.limit && kind_.defined(group)) ++group;
    return checked(group);
  }

  int group_named(std::string_view word) const {
    for (int exact = 1; exact >= 0; --exact) {
      for (int group = 0; group < kind_.limit; ++group) {
        if (!kind_.defined(group) || !is_prefix(word, kind_.name(group))) continue;
        if (!exact || kind_.name(group).size() == word.size()) return group;
      }
    }
    return -1;
  }

  /// The group after a sign. With `may_be_new`, "+" is the next free one, and a name that no group
  /// has is given to it.
  int read_group(bool may_be_new, std::string* new_name) {
    const int c = skip_blanks_peek();
    if (std::isdigit(c) || c == '(') {
      const int group = read_int();
      if (group < 0) error_end("Must specify name or number for goup");
      return checked(group);
    }
    if (c == '+' && may_be_new) {
      read_char();
      return free_group();
    }
    if (c == '/' && kind_.last_automatic) {
      read_char();
      return kind_.last_automatic();
    }
    if (c == ';') error_end("Must specify name or number for goup");
    if (c > 255 || !name_chars[at(c)] || is_one_of(c, "+-.")) {
      error_end_f("Found allien character (%c) when expecting group name", c);
    }
    read_name();
    const int group = group_named(token());
    if (group >= 0) return group;
    if (!may_be_new) error_end("No", kind_.element_kind, "group named", token());
    *new_name = token();
    return free_group();
  }

  void read_new_name(std::string* name) {
    if (!accept_char('(')) return;
    name->clear();
    for (int c = next_nonblank(); c != ')'; c = read_char()) {
      if (c < 33 && skip_blanks_peek() == ')') continue;
      if (!may_stand_in_name(c, name->empty())) {
        error_end("Found illegal character when reading group name");
      }
      name->push_back(static_cast<char>(c));
      if (static_cast<int>(name->size()) >= lexer.name_limit) error_end("Name too long");
    }
    if (name->empty()) error_end("Must specify name or number for goup");
  }

  // ---- definitions ----

  void change_group(int sign) {
    std::string name;
    const int group = read_group(sign == '=', &name);
    if (sign == '=') read_new_name(&name);
    const bool was_defined = kind_.defined(group);
    if (sign == '<' && !was_defined) error_end("No", kind_.element_kind, "group named", group);
    former_members former(kind_, group);
    const std::vector<std::uint8_t>& before = former.members;
    std::fill(members_.begin(), members_.end(), std::uint8_t{0});
    // A list after "=" sees the group as it is from here on: without members.
    if (sign == '=') set_members(kind_, group, members_);
    if (sign == '>') members_ = before;
    removing_ = sign == '<';
    read_members(before);
    if (removing_) {
      for (std::size_t e = 0; e < before.size(); ++e) members_[e] = before[e] && !members_[e];
    }
    if (sign == '=' || !was_defined) kind_.define(group, name);
    former.replaced = true;
    set_members(kind_, group, members_);
  }

  void read_members(const std::vector<std::uint8_t>& before) {
    const unsigned flags = kind_.zaps ? list_slash_ends : list_plain;
    list_reader list(flags, 0, kind_.elements, find_list_kind(kind_.element_kind), members_);
    while (true) {
      const int c = skip_blanks_peek();
      if (is_one_of(c, "=<>;")) return;
      if (c == '+' || c == '-' || c == '@' || (starts_list_item(c) && !std::isalpha(c))) {
        list.read_item_at(c);
      } else if (c == '*') {
        read_random(list, before);
      } else if (c == '/' && kind_.zaps) {
        zap();
      } else if (std::isalpha(c) || c == '_') {
        read_word_item(list);
      } else {
        error_end_f("Unxpected %c symbol when reading group", c);
      }
    }
  }

  void read_word_item(list_reader& list) {
    read_name();
    const std::string word(token());
    std::string lower = word;
    for (char& c : lower) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    std::vector<std::uint8_t> selected(members_.size());
    if (kind_.selector && kind_.selector(lower, selected)) {
      for (std::size_t e = 0; e < selected.size(); ++e) {
        if (selected[e]) list.set(static_cast<int>(e));
      }
      return;
    }
    list.read_item_from(word);
  }

  /// "*R": adds R elements from outside the group, or removes R of its own.
  void read_random(list_reader& list, const std::vector<std::uint8_t>& before) {
    read_char();
    const int wanted =
        std::isdigit(skip_blanks_peek()) || skip_blanks_peek() == '(' ? read_int() : -1;
    if (wanted < 0) {
      error_end("In group definition, \"*\" must be followed by the number of", kind_.element_kind);
    }
    // While a "<N" list is read, what is marked is what goes.
    const bool remove = removing_ == list.adding();
    std::vector<int> candidates;
    for (int e = 0; e < kind_.elements; ++e) {
      const bool inside = removing_ ? before[at(e)] && !members_[at(e)] : members_[at(e)] != 0;
      if (inside == remove) candidates.push_back(e);
    }
    const int available = static_cast<int>(candidates.size());
    if (wanted > available) {
      if (remove) {
        error_end("Cannot remove", wanted, "at random from group: only", available, "in group!");
      }
      error_end("Cannot add", wanted, "at random to group: only", available, "are outside group!");
    }
    for (int i = 0; i < wanted; ++i) {
      const int j = i + draw() % (available - i);
      std::swap(candidates[at(i)], candidates[at(j)]);
      list.set(candidates[at(i)]);
    }
  }

  /// "/N": of what is marked so far, every Nth stays.
  void zap() {
    read_char();
    const int step = std::isdigit(skip_blanks_peek()) || skip_blanks_peek() == '(' ? read_int() : 0;
    if (step <= 0) error_end("Zap must be > 0");
    int seen = 0;
    for (std::uint8_t& member : members_) {
      if (member && seen++ % step != 0) member = 0;
    }
  }

  bool any_defined() const {
    for (int group = 0; group < kind_.limit; ++group) {
      if (kind_.defined(group)) return true;
    }
    return false;
  }

  void undefine_groups() {
    if (!any_defined()) error_end("Can't undefine groups --none defined");
    if (skip_blanks_peek() == ';') {
      for (int group = 0; group < kind_.limit; ++group) {
        if (kind_.defined(group)) kind_.undefine(group);
      }
      return;
    }
    do {
      const int group = read_group(false, nullptr);
      if (!kind_.defined(group)) error_end("No", kind_.element_kind, "group named", group);
      kind_.undefine(group);
    } while (!is_one_of(skip_blanks_peek(), ";=<>-*!"));
  }

  // ---- what there is ----

  void show_groups() const {
    if (!any_defined()) return report_line("No", kind_.element_kind, "groups defined");
    for (int group = 0; group < kind_.limit; ++group) {
      if (!kind_.defined(group)) continue;
      const std::string head =
          "Group " + std::to_string(group) + " (" + std::string(kind_.name(group)) + "):";
      std::vector<std::string> members;
      for (int e = 0; e < kind_.elements; ++e) {
        if (!kind_.in_group(e, group)) continue;
        members.push_back(kind_.label ? kind_.label(e) : std::to_string(e));
      }
      emit(head, wrapped_words(members, head.size()), "\n");
    }
  }

  void write_groups(bool only_active) const {
    emit(kind_.command, "\n");
    for (int group = 0; group < kind_.limit; ++group) {
      if (!kind_.defined(group)) continue;
      std::string head = "=" + std::to_string(group);
      // Trees read from a file may be in a group that is called after it, however that is spelled.
      if (is_name(kind_.name(group))) head += " (" + std::string(kind_.name(group)) + ")";
      const std::vector<std::string> members = list_items(kind_.elements, [&](int e) {
        return kind_.in_group(e, group) && (!only_active || kind_.active(e));
      });
      emit(head, wrapped_words(members, head.size()), "\n");
    }
    emit(";\n");
  }

  const group_kind& kind_;
  std::vector<std::uint8_t> members_;  // of the group being defined; what goes, for "<N"
  bool removing_ = false;
};

}  // namespace

void define_groups(const group_kind& kind) { definition_reader(kind).read(); }

}  // namespace zeb
