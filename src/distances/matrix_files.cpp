#include "distances/matrix_files.h"

#include <unistd.h>

#include <cmath>

#include "base/errors.h"
#include "base/message_text.h"
#include "base/output_file.h"
#include "console/output.h"

namespace zeb {
namespace {

void open_output(output_file& file, const std::string& name) {
  if (access(name.c_str(), F_OK) == 0)
    warning_f("File \"%s\" already exists.  It will be overwritten.", name.c_str());
  if (file.create(name)) return;
  error_end(text_of("Can't open file \"%s\" for writing...", name.c_str()) + file.cause());
}

void close_output(output_file& file) {
  const std::string name = file.name();
  if (!file.close()) error_end("Cannot write file", name + file.cause());
  report_line("Saved table to file", name);
}

/// Whole numbers as such, fractions with all digits that tell them apart.
std::string value_text(double value) {
  return value == std::floor(value) ? text_of("%.0f", value) : text_of("%.10g", value);
}

}  // namespace

void write_phylip_matrix(const std::string& name, const labelled_matrix& matrix) {
  for (const double value : matrix.values)
    if (std::isnan(value))
      error_end("PHYLIP matrices can't lack values: some trees share too few taxa");
  output_file file;
  open_output(file, name);
  file.print("%zu\n", matrix.rows.size());
  for (std::size_t r = 0; r < matrix.rows.size(); ++r) {
    file.print("%-10s", matrix.rows[r].c_str());
    for (std::size_t c = 0; c < matrix.columns.size(); ++c)
      file.print(" %s", value_text(matrix.values[r * matrix.columns.size() + c]).c_str());
    file.put("\n");
  }
  close_output(file);
}

void write_csv_matrix(const std::string& name, const labelled_matrix& matrix) {
  output_file file;
  open_output(file, name);
  for (const std::string& column : matrix.columns) file.put("," + column);
  file.put("\n");
  for (std::size_t r = 0; r < matrix.rows.size(); ++r) {
    file.put(matrix.rows[r]);
    for (std::size_t c = 0; c < matrix.columns.size(); ++c) {
      const double value = matrix.values[r * matrix.columns.size() + c];
      file.put(",");
      if (!std::isnan(value)) file.put(value_text(value));
    }
    file.put("\n");
  }
  close_output(file);
}

}  // namespace zeb
