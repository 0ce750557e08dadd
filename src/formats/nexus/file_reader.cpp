#include "formats/nexus/file_reader.h"

#include "base/errors.h"
#include "base/interrupts.h"
#include "console/output.h"
#include "console/settings.h"
#include "formats/nexus/assumptions_block.h"
#include "formats/nexus/data_block.h"
#include "formats/nexus/nexus_constraints.h"
#include "formats/nexus/nexus_file.h"
#include "formats/nexus/trees_block.h"
#include "language/fit_text.h"
#include "language/input.h"

namespace zeb {

namespace {

void skip_block(nexus_file& file, const std::string& name) {
  report_line("  ... Skipping", without_controls(name), "block ...");
  nexus_token token;
  while (file.in.command_follows(token)) {
    if (!token.is(';')) file.in.skip_rest();
  }
}

std::string read_block_name(nexus_file& file) {
  file.in.begin_block();
  const nexus_token name = file.in.token();
  if (name.what != nexus_token::kind::word) file.in.fail("a block has no name");
  // Some programs write more after the name.
  if (!file.in.accept(';')) file.in.skip_rest();
  return name.text;
}

// Reads one block; returns false where ordinary commands follow.
bool read_block(nexus_file& file) {
  const std::string name = read_block_name(file);
  const std::string known = lower_case(name);
  if (known == "data" || known == "characters") {
    read_data_block(file, known == "data");
  } else if (known == "taxa") {
    read_taxa_block(file);
  } else if (known == "trees") {
    read_trees_block(file);
  } else if (known == "assumptions" || known == "paup" || known == "sets" || known == "codons") {
    read_assumptions_block(file);
  } else if (known == "zeb") {
    if (settings.report) report_line("Leaving NEXUS mode, parsing ZEB commands...");
    return false;
  } else {
    skip_block(file, name);
  }
  return true;
}

}  // namespace

void read_nexus() {
  nexus_file file(top_frame().name);
  const int level = input.top;
  if (settings.report) report_line("Reading file", file.name, "as NEXUS");
  file.gaps_are_new_states = matrix.gaps_are_states;
  for (;;) {
    // Our own files end the block of assumptions before the types of characters, and have
    // constraints between blocks.
    if (matrix.present && file.in.peek_token().is("ctype")) read_assumptions_block(file);
    const nexus_token token = file.in.token();
    if (token.what == nexus_token::kind::end) break;
    if (matrix.present && token.is("constraints")) read_nexus_constraints(file);
    if (token.is("begin") && !read_block(file)) return;
    check_interrupt();
  }
  if (settings.report) report_line("Closing NEXUS file");
  if (input.top == level) pop_frame();
}

}  // namespace zeb
