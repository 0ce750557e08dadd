#include "compare/combined_file.h"

#include <unistd.h>

#include <algorithm>
#include <cmath>

#include "base/arena.h"
#include "base/errors.h"
#include "base/indices.h"
#include "base/message_text.h"
#include "compare/data_set.h"
#include "console/output.h"
#include "language/list_text.h"
#include "matrix/matrix_memory.h"
#include "matrix/reading/matrix_writer.h"
#include "trees/notation/parenthetical_writer.h"

namespace zeb {
namespace {

std::string text_of_matrix() {
  const std::vector<std::uint8_t> taxa(at(matrix.ntax), 1);
  const std::vector<std::uint8_t> characters(at(matrix.nchar), 1);
  const output_capture said;
  write_matrix(
      {.taxa = taxa, .characters = characters, .settings = true, .cells = {}, .more_rows = {}});
  return said.text();
}

std::string list_of(const std::vector<std::uint8_t>& flags) {
  const auto holds = [&flags](int element) { return flags[at(element)] != 0; };
  return wrapped_words(list_items(static_cast<int>(flags.size()), holds), 10);
}

void put_groups(output_file& file, const std::vector<unique_group>& groups) {
  int number = 0;
  for (const unique_group& group : groups) {
    const auto put = [&](const char* command, const std::vector<std::uint8_t>& flags) {
      if (std::count(flags.begin(), flags.end(), 1) == 0) return;
      file.print("%s =%i (%s)", command, number, group.name.c_str());
      file.put(list_of(flags) + " ;\n");
    };
    put("agroup", group.taxa);
    put("xgroup", group.characters);
    ++number;
  }
}

void put_trees(output_file& file, const data_set& data, const tree_section& trees) {
  if (trees.count == 0) return;
  file.put("tread '" + trees.title + "'\n");
  for (int i = 0; i < trees.count; ++i) {
    if (i) file.put("*\n");
    file.put(parenthetical_text(data.trees[at(trees.first + i)], data.ntax(),
                                [](int taxon) { return std::to_string(taxon); }));
  }
  file.put(";\n");
}

void put_tree_groups(output_file& file, const std::vector<tree_section>& trees, int total) {
  int number = 0;
  for (const tree_section& t : trees) {
    if (t.count == 0) {
      ++number;
      continue;
    }
    const int last = t.first + t.count - 1;
    file.print("tgroup =%i ( %s ) %i.", number++, t.group.c_str(), t.first);
    if (last + 1 < total) file.print("%i", last);
    file.put(" ;\n");
  }
}

// The sections that the text has after the cells.
void tell_sections(const std::string& text) {
  const auto tell = [&text](const char* command, const char* what) {
    if (text.find(std::string("\n") + command) != std::string::npos) emit("Saving ", what, "...\n");
  };
  tell("ccode", "ccodes");
  tell("cnames", "char. names");
  tell("&[", "blocks");
  tell("costs", "costs");
  tell("ancstates", "ancstates");
}

}  // namespace

void open_combined_file(output_file& file, const std::string& name) {
  if (access(name.c_str(), F_OK) == 0)
    warning_f("File \"%s\" already exists.  It will be overwritten.", name.c_str());
  if (!file.create(name))
    error_end(text_of("Can't open file \"%s\" for writing...", name.c_str()) + file.cause());
}

void write_combined_file(output_file& file, const data_set& data,
                         const std::vector<tree_section>& trees,
                         const std::vector<unique_group>& groups) {
  constexpr int default_hold = 100;
  put_into_memory(data);
  emit("Saving data...\n");
  const double megabytes = static_cast<double>(arena.size) / 1e6;
  file.print("mxram %i ;\n", static_cast<int>(std::ceil(megabytes)));
  const std::string text = text_of_matrix();
  file.put(text);
  tell_sections(text);
  put_groups(file, groups);
  const int total = static_cast<int>(data.trees.size());
  if (total > 0) {
    emit("Saving trees...\n");
    file.print("hold %i ;\n", std::max(total, default_hold));
    for (const tree_section& t : trees) put_trees(file, data, t);
    put_tree_groups(file, trees, total);
  }
  file.put("proc/;\n");
  const std::string name = file.name();
  if (!file.publish() || !file.close()) {
    error_end("Sorry, unknown error trying to write final matrix" + file.cause());
  }
  emitf("\nFinal combined matrix contains %i characters, %i taxa\n", data.nchar(), data.ntax());
}

}  // namespace zeb
