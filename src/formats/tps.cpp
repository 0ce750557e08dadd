#include "formats/tps.h"

#include <algorithm>
#include <optional>
#include <unordered_set>

#include "base/errors.h"
#include "base/indices.h"
#include "base/numbered_name.h"
#include "base/text_columns.h"
#include "console/output.h"
#include "console/settings.h"
#include "formats/foreign_matrix.h"
#include "formats/tps_file.h"
#include "language/fit_text.h"
#include "language/input.h"
#include "matrix/blocks.h"
#include "matrix/matrix_growth.h"
#include "matrix/matrix_layout.h"
#include "matrix/reading/matrix_reader.h"
#include "trees/drawing/tags.h"
#include "trees/tree_store.h"

namespace zeb {
namespace {

using configurations = std::vector<tps_configuration>;

/// A name as it is compared with others: those that files had to be fit are the same.
std::string key_of(const std::string& name) { return normal_form(fit_name(name)); }

/// Names of the taxa that aren't among `known`, in the order of the files.
std::vector<std::string> new_names(const configurations& all,
                                   const std::vector<std::string>& known) {
  std::unordered_set<std::string> met;
  for (const std::string& name : known) met.insert(key_of(name));
  std::vector<std::string> names;
  for (const tps_configuration& one : all)
    for (const tps_specimen& specimen : one.specimens)
      if (met.insert(key_of(specimen.name)).second) names.push_back(specimen.name);
  return names;
}

int taxon_of(const std::string& name, const foreign_taxa& taxa) {
  const int taxon = taxa.find(name);
  return taxon >= 0 ? taxon : taxa.find(fit_name(name));
}

void check_size(std::size_t ntax) {
  if (ntax < 4) error_end("Sorry, can't read less than 4 taxa");
}

void store_configuration(const tps_configuration& read, int character, const foreign_taxa& taxa) {
  const auto points = read.specimens.front().points.size();
  add_landmark_configuration(character, read.dimensions, static_cast<int>(points));
  for (const tps_specimen& specimen : read.specimens)
    std::ranges::copy(specimen.points,
                      changeable_landmarks_of(character, taxon_of(specimen.name, taxa)).begin());
  set_character_type(character, landmark_data);
  name_fitter fitter(named::character);
  set_character_name(character, {fitter.fit(read.name), {}});
}

/// Each configuration is a block.
void lay_out_blocks_with(std::vector<int> starts, int first) {
  for (int c = first; c < matrix.nchar; ++c) starts.push_back(c);
  lay_out_blocks(starts);
}

/// The matrix is laid out; `former` are the data whose characters come first.
void fill_matrix(const configurations& all, int first, const std::vector<std::string>& added,
                 const data_aside* former) {
  foreign_taxa taxa(matrix.ntax, warning_of_long_names());
  if (former)
    for (const std::string& name : former->taxon_names()) taxa.adopt(name, name);
  for (const std::string& name : added) taxa.add(name);
  if (former) former->put_back_cells();
  for (std::size_t i = 0; i < all.size(); ++i)
    store_configuration(all[i], first + static_cast<int>(i), taxa);
  lay_out_blocks_with(former ? former->block_starts() : std::vector<int>{}, first);
  finish_matrix();
  if (former) former->put_back_settings();
  tell_what_was_read();
}

void make_matrix(const configurations& all, const std::string& source) {
  const std::vector<std::string> names = new_names(all, {});
  check_size(names.size());
  begin_foreign_matrix(source, static_cast<std::int64_t>(names.size()),
                       static_cast<std::int64_t>(all.size()));
  fill_matrix(all, 0, names, nullptr);
}

void add_to_matrix(const configurations& all) {
  if (store.ntrees > 0 || tags.tags_present)
    warning("Trees are dropped: further characters come after them");
  if (!matrix.block_names.empty())
    warning("Names of blocks are dropped: data with landmarks have none");
  const std::string title = matrix.title;
  const std::string source = matrix.file_name;
  const int first = matrix.nchar;
  const data_aside former(first, static_cast<int>(all.size()));
  const std::vector<std::string> names = new_names(all, former.taxon_names());
  lay_out_foreign_matrix(source, former.taxa() + static_cast<int>(names.size()),
                         first + static_cast<int>(all.size()), title, false);
  fill_matrix(all, first, names, &former);
}

}  // namespace

void read_tps_files(std::span<const std::string> names, bool add) {
  configurations all;
  for (const std::string& name : names) {
    input_file file = opened_file(name);
    all.push_back(read_tps_configuration(file));
  }
  if (add && matrix.present)
    add_to_matrix(all);
  else
    make_matrix(all, names.front());
}

int write_tps_files(const std::string& name, const word_writer& words,
                    const std::function<void(output_file&, const std::string&)>& open) {
  const auto all = landmark_configurations();
  for (const landmark_configuration& one : all) {
    const std::string file_name = all.size() > 1 ? numbered_file_name(name, one.character) : name;
    output_file out;
    open(out, file_name);
    write_tps(out, one, words);
    if (!out.close()) error_end("Cannot write file", file_name + out.cause());
  }
  return static_cast<int>(all.size());
}

void read_tps_file(input_file& file) { make_matrix({read_tps_configuration(file)}, file.name()); }

}  // namespace zeb
