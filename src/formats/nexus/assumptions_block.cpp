#include "formats/nexus/assumptions_block.h"

#include <algorithm>
#include <cmath>

#include "base/errors.h"
#include "base/indices.h"
#include "base/number_text.h"
#include "console/output.h"
#include "console/settings.h"
#include "formats/nexus/data_rows.h"
#include "formats/nexus/element_lists.h"
#include "formats/nexus/step_matrix_reader.h"
#include "language/interpreter.h"
#include "language/list_text.h"
#include "matrix/matrix.h"
#include "matrix/settings/character_settings.h"
#include "matrix/settings/taxon_settings.h"
#include "matrix/step_matrices.h"

namespace zeb {

namespace {

void change_characters(const std::vector<std::uint8_t>& flags, const character_change& change) {
  for (int c = 0; c < matrix.nchar; ++c) {
    if (flags[at(c)]) change_character(c, change);
  }
}

std::string flagged_words(const std::vector<std::uint8_t>& flags) {
  const auto flagged = [&flags](int c) { return flags[at(c)] != 0; };
  return wrapped_words(list_items(static_cast<int>(flags.size()), flagged), 60).substr(1);
}

std::vector<std::uint8_t> all_but(std::vector<std::uint8_t> flags) {
  for (std::uint8_t& flag : flags) flag = !flag;
  return flags;
}

void set_additive(const std::vector<std::uint8_t>& flags, bool additive) {
  change_characters(flags, {.additive = additive, .sankoff = false});
}

// A default type is for characters whose own type isn't told, wherever in the file it stands.
void note_typed(nexus_file& file, const std::vector<std::uint8_t>& flags) {
  file.typed_characters.resize(at(matrix.nchar), 0);
  for (int c = 0; c < matrix.nchar; ++c) file.typed_characters[at(c)] |= flags[at(c)];
}

// "ord: 1-5, unord: 7": type by type, up to ";".
void read_types(nexus_file& file) {
  while (!file.in.accept(';')) {
    if (file.in.accept(',')) continue;
    const nexus_token word = file.in.token();
    const std::string type = lower_case(word.text);
    file.in.expect(':', "after a type of characters");
    const std::vector<std::uint8_t> flags = read_nexus_list(file, nexus_list::characters);
    note_typed(file, flags);
    if (type == "ord" || type == "unord") {
      set_additive(flags, type == "ord");
    } else if (const int number = find_step_matrix(word.text); number >= 0) {
      for (int c = 0; c < matrix.nchar; ++c) {
        if (flags[at(c)]) use_step_matrix(c, number);
      }
    } else {
      warning("Character type", word.text,
              "is not available; these characters stay as they are:", flagged_words(flags));
    }
  }
}

int read_weight(nexus_file& file, const std::string& text) {
  const double weight = real_of(text).value_or(-1);
  if (!(weight >= 0) || weight > largest_weight) file.in.fail("bad weight " + text);
  const int whole = static_cast<int>(std::lround(weight));
  if (weight != whole) warning("Weight", text, "is not a whole number: rounded to", whole);
  return whole;
}

// "2: 1-5 7, 3: 6;"
void read_weights(nexus_file& file) {
  while (!file.in.accept(';')) {
    if (file.in.accept(',')) continue;
    const int weight = read_weight(file, file.in.token().text);
    file.in.expect(':', "after a weight");
    change_characters(read_nexus_list(file, nexus_list::characters), {.weight = weight});
  }
}

// "/ only" after a list: what isn't in it gets the opposite.
bool read_only(nexus_file& file) {
  if (!file.in.accept('/')) return false;
  const std::string option = file.in.token().text;
  if (lower_case(option) != "only") file.in.fail("unknown option after a list, " + option);
  return true;
}

void set_activity(nexus_file& file, bool active) {
  const std::vector<std::uint8_t> flags = read_nexus_list(file, nexus_list::characters);
  const bool only = read_only(file);
  file.in.expect(';', "after a list of characters");
  change_characters(flags, {.active = active});
  if (only) change_characters(all_but(flags), {.active = !active});
}

void set_taxa(nexus_file& file, bool active) {
  const std::vector<std::uint8_t> flags = read_nexus_list(file, nexus_list::taxa);
  const bool only = read_only(file);
  file.in.expect(';', "after a list of taxa");
  if (settings.report) emit(active ? "Undeleting:" : "Deleting:");
  const auto former = matrix.taxon_active.first(at(matrix.ntax));
  std::vector<std::uint8_t> wanted(former.begin(), former.end());
  for (int t = 0; t < matrix.ntax; ++t) {
    if (!flags[at(t)]) {
      if (only) wanted[at(t)] = !active;
      continue;
    }
    if (settings.report) emit(" ", t);
    wanted[at(t)] = active;
  }
  if (settings.report) emit("\n");
  if (std::count(wanted.begin(), wanted.end(), 1) < fewest_active_taxa)
    error_end("Cannot have less than 4 active taxa");
  if (!wanted[at(matrix.outgroup)])
    error_end("Cannot deactivate", matrix.outgroup, "(it is current outgroup)");
  set_active_taxa(wanted);
}

// The head of "typeset * name (format) = ...".
struct set_head {
  std::string name;
  bool in_force = false;  // "*": other sets are only defined
  bool vector = false;    // one value a character, instead of lists
};

set_head read_set_head(nexus_file& file) {
  set_head head;
  head.in_force = file.in.accept('*');
  while (!file.in.accept('=')) {
    const nexus_token word = file.in.token();
    if (word.is(';') || word.what == nexus_token::kind::end) file.in.fail("a set has no \"=\"");
    if (head.name.empty() && word.what == nexus_token::kind::word) head.name = word.text;
    // "(vector)", "(characters = name)": which block is meant is of no matter to us.
    for (bool inside = word.is('('); inside;) {
      const nexus_token option = file.in.token();
      if (option.what == nexus_token::kind::end || option.is(';'))
        file.in.fail("a parenthesis isn't closed");
      head.vector = head.vector || option.is("vector");
      inside = !option.is(')');
    }
  }
  return head;
}

// "wtset * name (vector) = 1 2 1;"
void read_weight_vector(nexus_file& file) {
  for (int c = 0; c < matrix.nchar; ++c)
    change_character(c, {.weight = read_weight(file, file.in.token().text)});
  file.in.expect(';', "after the weights of all characters");
}

// Sets that are in force change the settings; others are told, and left alone.
void read_setting_set(nexus_file& file, const nexus_token& word) {
  const set_head head = read_set_head(file);
  if (!head.in_force) {
    report_line("  ... Skipping", lower_case(word.text), head.name, "(not marked by \"*\") ...");
    file.in.skip_rest();
  } else if (head.vector && word.is("exset")) {
    file.in.fail("excluded characters must be given as lists");
  } else if (word.is("exset")) {
    set_activity(file, false);
  } else if (head.vector && word.is("typeset")) {
    file.in.fail("types of characters must be given as lists");
  } else if (word.is("typeset")) {
    read_types(file);
  } else if (head.vector) {
    read_weight_vector(file);
  } else {
    read_weights(file);
  }
}

void read_named_set(nexus_file& file, nexus_list kind) {
  const set_head head = read_set_head(file);
  if (head.vector) file.in.fail("sets must be given as lists");
  file.sets_of(kind)[lower_case(head.name)] = read_nexus_list(file, kind);
  file.in.expect(';', "after a set");
}

// "options deftype=ord gapmode=newstate ...;", "pset gapmode=newstate;"
void read_options(nexus_file& file) {
  for (nexus_token word = file.in.token(); !word.is(';'); word = file.in.token()) {
    if (word.what == nexus_token::kind::end) file.in.fail("the file ends within \"options\"");
    const bool gap_mode = word.is("gapmode");
    if (!(gap_mode || word.is("deftype")) || !file.in.accept('=')) continue;
    const std::string type = lower_case(file.in.value());
    if (gap_mode) {
      if (type == "newstate") make_gaps_states(file);
    } else if (!matrix.present) {
      continue;
    } else if (type == "ord" || type == "unord") {
      file.typed_characters.resize(at(matrix.nchar), 0);
      set_additive(all_but(file.typed_characters), type == "ord");
    } else {
      warning("Character type", type, "is not available; characters stay as they are");
    }
  }
}

bool read_command(nexus_file& file, const nexus_token& word) {
  if (word.is("ctype")) {
    read_types(file);
  } else if (word.is("weights")) {
    read_weights(file);
  } else if (word.is("typeset") || word.is("wtset") || word.is("exset")) {
    read_setting_set(file, word);
  } else if (word.is("charset")) {
    read_named_set(file, nexus_list::characters);
  } else if (word.is("taxset")) {
    read_named_set(file, nexus_list::taxa);
  } else if (word.is("exclude") || word.is("include")) {
    set_activity(file, word.is("include"));
  } else if (word.is("delete") || word.is("undelete")) {
    set_taxa(file, word.is("undelete"));
  } else if (word.is("usertype")) {
    read_nexus_step_matrix(file);
  } else {
    return false;
  }
  return true;
}

}  // namespace

void read_assumptions_block(nexus_file& file) {
  nexus_token word;
  while (file.in.command_follows(word)) {
    if (word.is(';')) continue;
    if (word.is("delete") || word.is("undelete")) require_data("deleting/undeleting taxa");
    if (word.is("options") || word.is("pset")) {
      read_options(file);
      continue;
    }
    if (word.what == nexus_token::kind::word && matrix.present && read_command(file, word))
      continue;
    file.in.skip_rest();
  }
}

}  // namespace zeb
