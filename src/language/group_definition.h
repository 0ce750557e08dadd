// The language that defines named groups of taxa, characters and trees.
//
// A group is a bit per element. The commands share one reader: "=N (name) list" defines, ">N list"
// adds, "<N list" removes, "-N" undefines, ";" lists, "*" writes the definitions as a command.
#pragma once

#include <cstdint>
#include <functional>
#include <span>
#include <string>
#include <string_view>

namespace zeb {

/// What the reader must know of the groups of one kind. Numbers of groups are 0 to `limit`-1.
struct group_kind {
  std::string_view element_kind;  // kind of list, as registered with the list parser
  std::string_view command;       // that defines the groups
  int limit = 0;
  int elements = 0;
  bool (*defined)(int group) = nullptr;
  std::string_view (*name)(int group) = nullptr;
  bool (*in_group)(int element, int group) = nullptr;
  /// Makes the group exist, without members; an empty name leaves the one it has.
  void (*define)(int group, std::string_view name) = nullptr;
  /// The group no longer exists; its name is the default again.
  void (*undefine)(int group) = nullptr;
  void (*set_member)(int element, int group, bool member) = nullptr;
  std::string (*label)(int element) = nullptr;  // in what ";" shows; null: the number
  bool (*active)(int element) = nullptr;        // for "!"; null: no such form
  int (*last_automatic)() = nullptr;            // group that "/" stands for; null: no such form
  /// Selectors of the command's own. `word` is the letters read, in lower case. Marks the elements
  /// selected and returns true, or returns false for a word that is no selector. Null: none.
  bool (*selector)(std::string_view word, std::span<std::uint8_t> selected) = nullptr;
  bool zaps = false;  // "/N" after a list keeps every Nth of it
};

/// Reads and carries out all arguments up to ";".
void define_groups(const group_kind& kind);

}  // namespace zeb
