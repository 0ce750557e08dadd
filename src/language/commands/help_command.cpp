// `help`: texts of commands, lists by topic, and the switch for approximate matching of names.
#include <iterator>
#include <string>
#include <vector>

#include "base/errors.h"
#include "base/message_text.h"
#include "console/output.h"
#include "language/commands/commands.h"
#include "language/help.h"
#include "language/help_texts.h"
#include "language/hooks.h"
#include "language/input.h"
#include "language/interpreter.h"
#include "language/lexer.h"
#include "language/name_matching.h"
#include "language/options.h"

namespace zeb {
namespace {

constexpr int commands_in_row = 7;

struct topic_name {
  const char* name;
  const char* matched;  // what a typed word must be a prefix of
  std::uint32_t bit;
};
// "weights" is found by "weight" and shorter only: an old misspelling that scripts rely on.
constexpr topic_name topics[] = {
    {"input", "input", topic_input},
    {"output", "output", topic_output},
    {"save", "save", topic_save},
    {"mapping", "mapping", topic_mapping},
    {"searching", "searching", topic_searching},
    {"diagnosis", "diagnosis", topic_diagnosis},
    {"compare", "compare", topic_compare},
    {"consensus", "consensus", topic_consensus},
    {"settings", "settings", topic_settings},
    {"various", "various", topic_various},
    {"scripts", "scripts", topic_scripts},
    {"memory", "memory", topic_memory},
    {"supports", "supports", topic_supports},
    {"trees", "trees", topic_trees},
    {"characters", "characters", topic_characters},
    {"weights", "weightgs", topic_weights},
};
constexpr topic_name list_of_topics = {"topics", "topics", 0};

const topic_name* find_topic(std::string_view word) {
  std::vector<std::string_view> names;
  for (const topic_name& topic : topics) names.emplace_back(topic.matched);
  names.emplace_back(list_of_topics.matched);
  const int index = find_keyword(word, names);
  if (index < 0) return nullptr;
  return index < static_cast<int>(std::size(topics)) ? &topics[index] : &list_of_topics;
}

// Rows before the heading of the macro commands, those with all of the topics; true if any. A star
// stands before those that can't be run yet.
bool list_commands(std::uint32_t wanted, bool with_macros) {
  int printed = 0;
  bool any_to_come = false;
  std::string line;
  for (const command_row& row : command_table()) {
    if (row.name[0] == '\n') {
      if (!with_macros) break;
      continue;
    }
    if ((row.topics & wanted) != wanted) continue;
    const bool to_come = row.handler == nullptr;
    any_to_come |= to_come;
    line += text_of("%11s", ((to_come ? "*" : "") + std::string(row.name)).c_str());
    if (++printed % commands_in_row != 0) continue;
    emit(line, "\n");
    line.clear();
  }
  if (!line.empty()) emit(line, "\n");
  if (any_to_come) emit("(* not available yet)\n");
  return printed > 0;
}

void list_all() {
  emit("For help on command \"xxxx\" enter \"help xxxx\"\n");
  emit("For help on ALL commands, enter \"help*\"\n");
  emit("For help with scripting language, enter \"help+\"\n");
  emit("Enter \"help [ topic ]\" for possible help topics.\n\n");
  emit("COMMANDS:\n");
  list_commands(0, false);
}

void list_topics() {
  emit("Possible help topics are:\n");
  for (const topic_name& topic : topics) emit("    ", topic.name, "\n");
  emit("Specifying multiple topics shows commands that share all topics.\n\n");
}

void list_by_topic() {
  std::uint32_t wanted = 0;
  std::string names;
  bool show_topics = false;
  while (skip_blanks_peek() != ']' && skip_blanks_peek() != ';') {
    if (read_word() == 0) {
      const char c = static_cast<char>(read_char());
      error_end("Unrecognized help topic:", c);
    }
    const topic_name* topic = find_topic(token());
    if (!topic) {
      emit("Unrecognized help topic: ", token(), "\n");
      skip_to(';');
      return list_topics();
    }
    if (topic->bit == 0) show_topics = true;
    wanted |= topic->bit;
    if (topic->bit != 0) names += (names.empty() ? "" : " ") + std::string(topic->name);
  }
  accept_char(']');
  expect_end();
  if (show_topics || wanted == 0) return list_topics();
  emit("\nTopic(s): ", names, "\n");
  emit("Commands on specified topic(s):\n");
  if (!list_commands(wanted, true)) emit("    none found!\n");
}

void help_on_all() {
  expect_end();
  for (const command_row& row : command_table()) {
    if (row.name[0] == '\n') {
      emit(row.name, "\n");
    } else if (!print_help_text(row.name)) {
      emit("\n", row.name, "\n");
    }
  }
}

void help_on_scripting() {
  if (read_word() == 0) {
    if (!print_help_text("_macros")) report_line("No help text for the scripting language");
    if (hooks_of_language.print_expression_help) {
      emit("\nEXPRESSIONS:\n\n");
      hooks_of_language.print_expression_help({});
    }
    return;
  }
  const std::string word(token());
  expect_end();
  if (!hooks_of_language.print_expression_help || !hooks_of_language.print_expression_help(word)) {
    report_line("No expression function named", word);
  }
}

void match_approximately(int mode) {
  double threshold = matching.match_threshold;
  if (read_optional_float(&threshold) && (threshold < 0 || threshold > 1)) {
    error_end("Threshold for approximate matching must be 0 to 1");
  }
  expect_end();
  set_matching(mode, threshold);
  emitf("Searching closest string in lists of names (threshold=%.2f)...", threshold);
}

void match_exactly() {
  expect_end();
  set_matching(0, matching.match_threshold);
  report_line("String match must be exact...");
}

void help_on_word() {
  if (read_word() == 0)
    error_end("Wrong argument for help:", static_cast<char>(skip_blanks_peek()));
  const std::string word(token());
  expect_end();
  const command_row* row = find_command(word);
  if (row) {
    print_command_help(row->name);
  } else {
    emitf("%s: command not recognized", word.c_str());
  }
}

}  // namespace

void help_command() {
  no_timing();
  switch (next_nonblank()) {
    case ';':
      return list_all();
    case '*':
      return help_on_all();
    case '+':
      return help_on_scripting();
    case '[':
      return list_by_topic();
    case '!':
      return match_approximately(2);
    case '>':
      return match_approximately(1);
    case '<':
      return match_exactly();
    default:
      break;
  }
  unread_char();
  help_on_word();
}

}  // namespace zeb
