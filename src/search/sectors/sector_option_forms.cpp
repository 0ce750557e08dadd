#include "search/sectors/sector_option_forms.h"

#include <string>
#include <vector>

#include "base/errors.h"
#include "base/indices.h"
#include "base/message_text.h"
#include "language/input.h"
#include "language/lexer.h"
#include "macro/script_text.h"
#include "search/part_search.h"

namespace zeb {
namespace {

constexpr int most_divisions = 64;
constexpr std::size_t longest_instructions = 4000;

/// A comment must end before the bracket does.
void skip_comment() {
  int before = 0;
  for (int c = read_char(); before != '*' || c != '/'; c = read_char()) {
    if (c == ']' || level_zero_ended())
      error_end("Unfinished comment in instructions for sectorial searches");
    before = c;
  }
}

/// Up to the bracket that closes; comments are left out.
std::string read_bracketed() {
  const reading_flag as_it_stands(&macro_reading::no_expansion);  // it is expanded when it runs
  std::string text;
  int depth = 1;
  for (int c = read_char(); c != ']' || --depth > 0; c = read_char()) {
    if (level_zero_ended()) error_end("Unfinished instructions for sectorial searches");
    if (c == '[') ++depth;
    text += static_cast<char>(c);
    if (text.ends_with("/*")) {
      text.resize(text.size() - 2);
      skip_comment();
    }
    if (text.size() > longest_instructions)
      error_end(
          text_of("Sorry, string for sectors can't exceed %i bytes\n"
                  "(place instructions in a file)",
                  static_cast<int>(longest_instructions)));
  }
  return text;
}

bool is_blank(const std::string& text) {
  return text.find_first_not_of(" \t\n;") == std::string::npos;
}

}  // namespace

void read_exclusive(sector_settings& settings) {
  settings.selection = sector_settings::exclusive;
  const std::string refusal = text_of("Number of divisions must be 2-%i", most_divisions);
  const auto in_range = [](double n) { return n >= 2 && n <= most_divisions; };
  double number = 0;
  if (read_optional_whole(&number)) {
    if (!in_range(number)) error_end(refusal);
    settings.divisions = settings.divisions_last = static_cast<int>(number);
    settings.divisions_given = true;
    if (accept_char('-')) {
      if (!read_optional_whole(&number) || !in_range(number)) error_end(refusal);
      settings.divisions_last = static_cast<int>(number);
    }
  }
  if (accept_char('+')) {
    if (!read_optional_whole(&number) || number < 1 || number > 10000)
      error_end("Number of rounds for xss must be 1-10000");
    settings.xss_rounds = static_cast<int>(number);
  }
  if (accept_char('-')) {
    int frequency = 0;
    if (!read_optional_int(&frequency) || frequency < 1)
      error_end("Global TBR frequency must be 1 or more");
    settings.xss_global = frequency;
  }
}

void read_around(sector_settings& settings) {
  int center = 0;
  int diameter = 0;
  if (!read_optional_int(&center) || center < 0) error_end("Must specify center for DSS");
  if (!read_optional_int(&diameter) || diameter < 1)
    error_end("Must specify diameter to use for DSS");
  settings.center = center;
  settings.diameter = diameter;
  settings.selection = sector_settings::around;
}

void read_selections(sector_settings& settings) {
  int number = 0;
  if (!accept_char('=')) {
    if (!read_optional_int(&number) || number < 0 || number > 99)
      error_end("Factor for number of selections must be 0 - 99");
    settings.selfactor = number;
    settings.selection_count = 0;
    return;
  }
  settings.selection_count = 0;
  const int most = static_cast<int>(settings.selections.size());
  while (read_optional_int(&number)) {
    if (number < 0) error_end("Factor for number of selections must be 0 - 99");
    if (settings.selection_count == most)
      error_end(
          text_of("Can't define more than %i numbers of selections\n"
                  "(values above %i will be identical to last one)",
                  most, most));
    settings.selections[at(settings.selection_count++)] = number;
  }
}

void read_instructions(sector_settings& settings) {
  std::vector<std::string>& all = settings.each.instructions;
  const std::size_t level = at(part_search.level + settings.brackets);
  std::string text = read_bracketed();
  if (text == "*") {
    if (level == 0) error_end("Cannot repeat instructions for sectorial search from level 0");
    text = level <= all.size() ? all[level - 1] : "";
  }
  all.resize(level);
  all.push_back(is_blank(text) ? "" : text + ";");
  ++settings.brackets;
}

void read_recursion(sector_settings& settings) {
  double number = 0;
  if (!read_optional_whole(&number) || number < 0 || number > 20)
    error_end("Give number of levels of recursion (0-20)");
  settings.fixed_by_run = "Maximum recursion level can't be changed with '=' --use ':' instead";
  settings.each.recurse = static_cast<int>(number);
}

void read_slack(sector_settings& settings) {
  double number = 0;
  if (!read_optional_whole(&number) || number < 0 || number > 1000)
    error_end("Extra memory must be a number between 0 and 1000");
  settings.fixed_by_run = "Memory slack for sectors can't be changed with '=' --use ':' instead";
  settings.each.slack = static_cast<int>(number);
}

namespace {

void set_private_buffer(sector_settings& settings, bool on) {
  settings.fixed_by_run =
      "Usage of private buffer for sectors can't be changed with '=' --use ':' instead";
  settings.each.xbuffer = on;
}

}  // namespace

void use_private_buffer(sector_settings& settings) { set_private_buffer(settings, true); }
void use_no_private_buffer(sector_settings& settings) { set_private_buffer(settings, false); }

namespace {

std::string selections_in_words(const sector_settings& settings, const sector_settings& standard) {
  std::string text;
  if (settings.selfactor != standard.selfactor)
    text += text_of(" selfactor %i", settings.selfactor);
  if (settings.selection_count == 0) return text;
  text += " selfactor =";
  for (int i = 0; i < settings.selection_count; ++i)
    text += text_of(" %i", settings.selections[at(i)]);
  return text;
}

std::string exclusive_in_words(const sector_settings& settings) {
  std::string text = " xss ";
  if (settings.divisions_given)
    text += text_of("%i-%i", settings.divisions, settings.divisions_last);
  return text + text_of("+%i-%i", settings.xss_rounds, settings.xss_global);
}

}  // namespace

std::string changed_forms(const sector_settings& settings) {
  const sector_settings standard;
  std::string text;
  const bool exclusive = settings.selection == sector_settings::exclusive;
  if (exclusive || settings.divisions_given || settings.xss_rounds != standard.xss_rounds ||
      settings.xss_global != standard.xss_global)
    text += exclusive_in_words(settings);
  if (settings.center >= 0) text += text_of(" dss %i %i", settings.center, settings.diameter);
  if (!text.empty() && settings.selection == sector_settings::random) text += " rss";
  if (exclusive && settings.center >= 0) text += " xss";
  text += selections_in_words(settings, standard);
  if (settings.each.recurse != standard.each.recurse)
    text += text_of(" recurse %i", settings.each.recurse);
  if (settings.each.slack != standard.each.slack) text += text_of(" slack %i", settings.each.slack);
  if (!settings.each.xbuffer) text += " noxbuffer";
  // Each text got a semicolon when it was read.
  for (const std::string& commands : settings.each.instructions)
    text += " [" + commands.substr(0, commands.size() - !commands.empty()) + "]";
  return text.empty() ? text : text.substr(1);
}

}  // namespace zeb
