#include "formats/nexus/assumptions_block.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <map>

#include "base/errors.h"
#include "base/indices.h"
#include "base/number_text.h"
#include "console/output.h"
#include "console/settings.h"
#include "formats/nexus/data_rows.h"
#include "formats/nexus/element_lists.h"
#include "formats/nexus/named_sets.h"
#include "formats/nexus/nexus_constraints.h"
#include "formats/nexus/set_heads.h"
#include "formats/nexus/step_matrix_reader.h"
#include "language/fit_text.h"
#include "language/interpreter.h"
#include "language/list_text.h"
#include "matrix/costs/step_matrices.h"
#include "matrix/matrix.h"
#include "matrix/settings/character_settings.h"
#include "matrix/settings/taxon_settings.h"

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

void set_type(nexus_file& file, const std::string& name, const std::vector<std::uint8_t>& flags) {
  const std::string type = lower_case(name);
  note_typed(file, flags);
  if (type == "ord" || type == "unord") {
    set_additive(flags, type == "ord");
  } else if (const int number = find_step_matrix(fit_name(name, named::character)); number >= 0) {
    for (int c = 0; c < matrix.nchar; ++c) {
      if (flags[at(c)]) use_step_matrix(c, number);
    }
  } else {
    warning("Character type", name,
            "is not available; these characters stay as they are:", flagged_words(flags));
  }
}

// "ord: 1-5, unord: 7": type by type, up to ";".
void read_types(nexus_file& file, const nexus_characters* block) {
  while (!file.in.accept(';')) {
    if (file.in.accept(',')) continue;
    const std::string type = file.in.token().text;
    file.in.expect(':', "after a type of characters");
    set_type(file, type, read_nexus_list(file, nexus_list::characters, block));
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
void read_weights(nexus_file& file, const nexus_characters* block) {
  while (!file.in.accept(';')) {
    if (file.in.accept(',')) continue;
    const int weight = read_weight(file, file.in.token().text);
    file.in.expect(':', "after a weight");
    change_characters(read_nexus_list(file, nexus_list::characters, block), {.weight = weight});
  }
}

// "/ only" after a list: what isn't in it gets the opposite.
bool read_only(nexus_file& file) {
  if (!file.in.accept('/')) return false;
  const std::string option = file.in.token().text;
  if (lower_case(option) != "only") file.in.fail("unknown option after a list, " + option);
  return true;
}

void set_activity(nexus_file& file, bool active, const nexus_characters* block) {
  const std::vector<std::uint8_t> flags = read_nexus_list(file, nexus_list::characters, block);
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
  set_active_taxa(wanted);
  if (wanted[at(matrix.outgroup)]) return;
  // The file doesn't say what the outgroup is: the first taxon that is left.
  set_outgroup(static_cast<int>(std::find(wanted.begin(), wanted.end(), 1) - wanted.begin()));
  report_line("Outgroup is", taxon_name(matrix.outgroup));
}

void read_type_vector(nexus_file& file, const set_head& head) {
  std::map<std::string, std::vector<std::uint8_t>> types;
  read_value_vector(file, head, [&types](int character, const std::string& type) {
    std::vector<std::uint8_t>& flags = types[type];
    flags.resize(at(matrix.nchar), 0);
    flags[at(character)] = 1;
  });
  for (const auto& [type, flags] : types) set_type(file, type, flags);
}

// Sets that are in force change the settings; others are told, and left alone.
void read_setting_set(nexus_file& file, const nexus_token& word) {
  const set_head head = read_set_head(file);
  if (!head.in_force) {
    report_line("  ... Skipping", lower_case(word.text), fit_name(head.name),
                "(not marked by \"*\") ...");
    file.in.skip_rest();
  } else if (word.is("exset") && head.vector) {
    change_characters(read_flag_vector(file, head, nexus_list::characters), {.active = false});
    file.in.expect(';', "after a set");
  } else if (word.is("exset")) {
    set_activity(file, false, head.block);
  } else if (word.is("typeset")) {
    if (head.vector) {
      read_type_vector(file, head);
    } else {
      read_types(file, head.block);
    }
  } else if (head.vector) {
    read_value_vector(file, head, [&file](int character, const std::string& text) {
      change_character(character, {.weight = read_weight(file, text)});
    });
  } else {
    read_weights(file, head.block);
  }
}

// "link characters = title": lists of the rest of the block count within that block.
void read_link(nexus_file& file) {
  for (nexus_token word = file.in.token(); !word.is(';'); word = file.in.token()) {
    if (word.what == nexus_token::kind::end) file.in.fail("the file ends within \"link\"");
    if (!file.in.accept('=')) continue;
    const std::string title = file.in.value();
    if (word.is("characters")) file.linked = find_nexus_block(file, title);
  }
}

bool read_command(nexus_file& file, const nexus_token& word) {
  if (word.is("ctype")) {
    read_types(file, file.linked);
  } else if (word.is("weights")) {
    read_weights(file, file.linked);
  } else if (word.is("typeset") || word.is("wtset") || word.is("exset")) {
    read_setting_set(file, word);
  } else if (word.is("charset")) {
    read_named_set(file, nexus_list::characters);
  } else if (word.is("taxset")) {
    read_named_set(file, nexus_list::taxa);
  } else if (word.is("exclude") || word.is("include")) {
    set_activity(file, word.is("include"), file.linked);
  } else if (word.is("delete") || word.is("undelete")) {
    set_taxa(file, word.is("undelete"));
  } else if (word.is("codonposset")) {
    read_codon_positions(file);
  } else if (word.is("constraints")) {
    read_nexus_constraints(file);
  } else if (word.is("usertype")) {
    read_nexus_step_matrix(file);
  } else {
    return false;
  }
  return true;
}

}  // namespace

void read_nexus_options(nexus_file& file) {
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

void read_assumptions_block(nexus_file& file) {
  file.linked = nullptr;
  nexus_token word;
  while (file.in.command_follows(word)) {
    if (word.is(';')) continue;
    if (word.is("delete") || word.is("undelete")) require_data("deleting/undeleting taxa");
    if (word.is("options") || word.is("pset")) {
      read_nexus_options(file);
    } else if (word.is("link") && matrix.present) {
      read_link(file);
    } else if (word.what != nexus_token::kind::word || !matrix.present ||
               !read_command(file, word)) {
      file.skip_command(word);
    }
  }
  tell_groups(file);
}

}  // namespace zeb
