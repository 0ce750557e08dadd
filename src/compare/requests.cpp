#include "compare/requests.h"

#include <cctype>
#include <vector>

#include "base/errors.h"
#include "compare/commands.h"
#include "language/input.h"
#include "language/lexer.h"
#include "language/options.h"
#include "macro/macro_state.h"
#include "trees/hooks.h"

namespace zeb {
namespace {

constexpr std::string_view action_letters = "ynbi?";

void set_action(comparison_request& request, const std::vector<query>& kinds, char action) {
  for (const query kind : kinds) {
    if (action == 'i' && kind != query::missing)
      error_end("Option \"i\" is only for missing entries (\"m\")");
    if (action != '?' && actions_of(kind).find(action) == std::string_view::npos)
      error_end_f("Unrecognized option for action: %c", action);
    request.decisions.actions[kind] = action;
  }
}

// The name of a file: up to a blank, or the end of the group.
std::string read_name_in_group(const char* missing) {
  if (skip_blanks_peek() == '"') {
    if (read_file_name() == 0) error_end(missing);
    return std::string(token());
  }
  std::string name;
  for (int c = read_char();; c = read_char()) {
    if (c < 33 || c == ')' || c == ';') {
      unread_char();
      break;
    }
    name += static_cast<char>(c);
  }
  if (name.empty()) error_end(missing);
  return name;
}

void read_store(std::string& target) {
  target = read_name_in_group("Filename expected after \">\" or \"<\"");
}

void read_forced_file(comparison_request& request) {
  if (!request.forced_file.empty()) error_end("Can open only one file for forced matches");
  request.forced_file = read_name_in_group("Filename expected after \"f\"");
}

// Letters of queries wait for the action that follows them; an action without any is for all.
void read_actions(comparison_request& request) {
  std::vector<query> kinds;
  for (int c = next_nonblank(); c != ')'; c = next_nonblank()) {
    const char letter = static_cast<char>(c);
    if (letter == '>') {
      read_store(request.decisions.write_to);
    } else if (letter == '<') {
      read_store(request.decisions.read_from);
    } else if (letter == 'f') {
      read_forced_file(request);
    } else if (query_letters.find(letter) != std::string_view::npos) {
      kinds.push_back(static_cast<query>(letter));
    } else if (action_letters.find(letter) != std::string_view::npos) {
      if (kinds.empty()) {
        for (const char each : query_letters) kinds.push_back(static_cast<query>(each));
      }
      set_action(request, kinds, letter);
      kinds.clear();
    } else if (!kinds.empty() && letter != ';') {
      error_end_f("Unrecognized option for action: %c", c);
    } else {
      error_end_f("Unexpected option: %c\n", c);
    }
  }
  if (!kinds.empty()) error_end_f("Unrecognized option for action: %c", ')');
}

/// "+", and "++", which keeps the taxa for the consensus as well.
void read_plus(comparison_request& request) {
  missing_taxa& addition = request.trees.addition;
  addition =
      addition == missing_taxa::stay_away ? missing_taxa::added : missing_taxa::added_for_consensus;
}

void read_critical(comparison_request& request) {
  int method = -1;
  if (std::isdigit(peek_char())) read_optional_int(&method);
  if (method < 0 || method > 4) error_end("Number 0-4 expected after \"/\"");
  request.trees.critical = static_cast<critical_method>(method);
}

void read_bremer(comparison_request& request) {
  int least = request.trees.least_bremer;
  if (std::isdigit(peek_char())) read_optional_int(&least);
  if (least < 0 || least > 100) error_end("Number 0-100 expected after \"&\"");
  request.trees.bremer = true;
  request.trees.least_bremer = least;
}

// ":X name".
void read_list_request(comparison_request& request) {
  int lists = 0;
  int kinds = 0;
  for (int c = next_nonblank(); c > 32 && c != ';'; c = read_char()) {
    lists += c == 't' || c == 'c';
    kinds += c == 's' || c == 'm';
    if (c == 't') request.list.of_taxa = true;
    if (c == 'm') request.list.closest = true;
  }
  if (lists != 1) error_end("Must specify either 'c' or 't' --and only one of those");
  if (kinds != 1) error_end("Must specify either 's' or 'm' --and only one of those");
  if (!macros_on()) error_end("To save lists to arrays, macros must be ON");
  request.list.array = hooks_of_trees.user_arrays.read_name();
}

constexpr command_options rows = {
    choice<&comparison_request::exact_names>("!", 1).help("names must be the same, not alike"),
    choice<&comparison_request::ignore_states>("-", 1).help(
        "names of states don't count for the identity of characters"),
    form<read_plus>("+").help(
        "trees get the taxa that only the other file has, at their best places by the characters "
        "that both have; \"++\" keeps them for consensus as well"),
    choice<&comparison_request::trees, &tree_comparison_settings::figures>("]", 0).help(
        "no figures"),
    choice<&comparison_request::trees, &tree_comparison_settings::list_characters>("<", 0).help(
        "no list of characters with other lengths on the trees of the other file"),
    choice<&comparison_request::tell_scores>(">", 1).help(
        "tables of the entries that gain and lose states, by character and by taxon"),
    form<read_critical>("/").argument("N").help(
        "when an entry is critical for what trees differ in: 0 isn't looked at, 1 by "
        "synapomorphies, 2 by tree length, 3 by either (default), 4 by both"),
    choice<&comparison_request::by_taxon>("*", 1).help(
        "ask about entries taxon by taxon, not character by character"),
    form<read_bremer>("&").argument("[N]").help(
        "for each character that differs, what it does to combined Bremer supports; differences "
        "of N per cent and more are reported (0-100; default 5)"),
    choice<&comparison_request::trees, &tree_comparison_settings::bremer>("|", 1)
        .also<&comparison_request::trees, &tree_comparison_settings::bremer_table>(1)
        .help("the same as a table"),
    form<read_list_request>(":").argument("XY A").help(
        "store in array A, for each taxon (X is \"t\") or character (\"c\") of the newer file, "
        "which one of the older file matches it (Y is \"s\"), or is most like one without a match "
        "(\"m\"); -1 none"),
    form<read_actions>("(").help("what is done where the two files disagree, as told below"),
};

// "/" before a letter begins a path.
bool path_follows() {
  if (skip_blanks_peek() != '/') return false;
  read_char();
  const int c = peek_char();
  unread_char();
  return std::isalpha(c) || c == '_';
}

}  // namespace

constexpr option_table dcomp_options = rows.table("dcomp", {});

comparison_request read_comparison_request() {
  comparison_request request;
  while (!path_follows() && read_sign(request, dcomp_options)) continue;
  return request;
}

}  // namespace zeb
