// mrp: the trees in memory as a matrix.
#include <unistd.h>

#include <map>
#include <string>
#include <vector>

#include "base/errors.h"
#include "base/indices.h"
#include "base/message_text.h"
#include "base/output_file.h"
#include "console/output.h"
#include "distances/commands.h"
#include "distances/supertrees/matrix_representation.h"
#include "distances/tree_words.h"
#include "formats/foreign_matrix.h"
#include "language/interpreter.h"
#include "language/lexer.h"
#include "language/list_text.h"
#include "language/options.h"
#include "matrix/matrix.h"
#include "matrix/settings/character_settings.h"

namespace zeb {
namespace {

struct mrp_request {
  representation_settings how;
  std::string file;  // empty: none
  bool read = false;
};

void read_file(mrp_request& request) {
  if (read_file_name() == 0) error_end("Must give the name of the file for the matrix");
  request.file = std::string(token());
}

constexpr auto how = &mrp_request::how;

constexpr command_options rows = {
    form<read_file>("file").argument("name").help("write the matrix to a file that xread reads"),
    choice<&mrp_request::read>("data", 1).help(
        "read the matrix in the place of the data; the trees are gone then"),
    toggle<how, &representation_settings::root>("root").help(
        "a first row \"MRP_root\" that is in no group, to root the supertrees by"),
    choice<how, &representation_settings::supports>("supports", 1)
        .help("groups weigh the numbers that they have as labels, rounded; 1 without one"),
    choice<how, &representation_settings::balanced>("balanced", 1)
        .help("each tree weighs the same: its groups have a thousand together"),
    choice<how, &representation_settings::merge>("merge", 1)
        .help("equal columns become one, with the sum of their weights"),
};

std::string title_of(std::size_t trees) {
  return text_of("Matrix representation of %i trees", static_cast<int>(trees));
}

/// The columns of each weight but 1.
std::map<int, std::vector<std::string>> columns_by_weight(const matrix_representation& matrix) {
  std::map<int, std::vector<std::string>> columns;
  for (std::size_t c = 0; c < matrix.weights.size(); ++c)
    if (matrix.weights[c] != 1) columns[matrix.weights[c]].push_back(std::to_string(c));
  return columns;
}

void write_matrix(const matrix_representation& represented, const std::string& name,
                  const std::string& title) {
  output_file file;
  if (access(name.c_str(), F_OK) == 0)
    warning_f("File \"%s\" already exists.  It will be overwritten.", name.c_str());
  if (!file.create(name))
    error_end(text_of("Can't open file \"%s\" for writing...", name.c_str()) + file.cause());
  file.print("xread\n'%s'\n%zu %zu\n", title.c_str(), represented.weights.size(),
             represented.names.size());
  for (std::size_t row = 0; row < represented.rows.size(); ++row) {
    file.put(represented.names[row]);
    file.put(" ");
    file.put(represented.rows[row]);
    file.put("\n");
  }
  file.put(";\n");
  for (const auto& [weight, columns] : columns_by_weight(represented)) {
    const std::string head = text_of("ccode /%i", weight);
    file.put(head);
    file.put(wrapped_words(columns, head.size()));
    file.put(";\n");
  }
  file.put("proc /;\n");
  if (!file.close()) error_end("Cannot write file", name + file.cause());
  report_line("Saved matrix to file", name);
}

void read_as_data(const matrix_representation& represented, const std::string& title) {
  widen_states_for(numeric_data, 2);
  begin_foreign_matrix("mrp", static_cast<std::int64_t>(represented.names.size()),
                       static_cast<std::int64_t>(represented.weights.size()), title);
  foreign_taxa taxa(matrix.ntax, warning_of_long_names());
  sequence_cells cells(numeric_data, taxa);
  for (std::size_t row = 0; row < represented.rows.size(); ++row) {
    const int taxon = taxa.add(represented.names[row]);
    for (std::size_t c = 0; c < represented.weights.size(); ++c)
      cells.store(taxon, static_cast<int>(c), represented.rows[row][c], 0);
  }
  finish_sequences(numeric_data);
  for (std::size_t c = 0; c < represented.weights.size(); ++c)
    change_character(static_cast<int>(c), {.weight = represented.weights[c]});
}

}  // namespace

constexpr option_table mrp_options =
    rows.table("mrp", {.unknown = "Unidentified string in mrp options: %s"});

void mrp_command() {
  require_data("representing trees by a matrix");
  mrp_request request;
  const tree_words words = read_tree_words(request, mrp_options, 1);
  expect_end();
  if (request.file.empty() && !request.read)
    error_end("Say \"file\" and a name, or \"data\", for what to do with the matrix");
  const matrix_representation represented =
      represent_trees(words.lists[0], words.excluded, request.how);
  const std::string title = title_of(words.lists[0].size());
  emit(title, ": ", represented.names.size(), " rows, ", represented.weights.size(),
       " characters\n");
  if (represented.unlabelled > 0)
    emit("Note: ", represented.unlabelled,
         " groups have no number above 0 as label, and weigh 1\n");
  if (!request.file.empty()) write_matrix(represented, request.file, title);
  if (request.read) read_as_data(represented, title);
}

}  // namespace zeb
