#include "matrix/matrix_layout.h"

#include <algorithm>
#include <cstring>
#include <exception>
#include <limits>
#include <utility>

#include "base/arena.h"
#include "base/command.h"
#include "base/errors.h"
#include "base/indices.h"
#include "base/message_text.h"
#include "language/lexer.h"
#include "matrix/landmarks.h"

namespace zeb {
namespace {

struct layout_hooks {
  std::vector<matrix_hook> new_matrix;
  std::vector<matrix_hook> matrix_gone;
};
layout_hooks hooks;

void copy_settings(const matrix_state& from, matrix_state& to) {
  to.gaps_are_states = from.gaps_are_states;
  to.default_type = from.default_type;
  to.type_given = from.type_given;
  to.one_scale = from.one_scale;
  to.name_length = from.name_length;
  to.use_taxon_names = from.use_taxon_names;
  to.use_char_names = from.use_char_names;
  to.exact_min_steps = from.exact_min_steps;
  to.show_original_scale = from.show_original_scale;
  to.state_entry_type = from.state_entry_type;
  to.costs_allowed = from.costs_allowed;
  to.older_cost_format = from.older_cost_format;
  to.exact_relative_fits = from.exact_relative_fits;
  to.fill_polymorphic = from.fill_polymorphic;
  to.decompose_state_trees = from.decompose_state_trees;
}

// What is set for the next matrix survives; the data themselves go.
void clear_state() {
  matrix_state fresh;
  fresh.generation = matrix.generation + 1;
  fresh.cell_bytes = next_cell_width();
  fresh.state_mask = mask_of_width(fresh.cell_bytes);
  copy_settings(matrix, fresh);
  matrix = std::move(fresh);
}

void lay_out_rows() {
  const std::size_t nodes = at(matrix.nnodes);
  const std::size_t row_bytes = checked_product(at(matrix.nchar), at(matrix.cell_bytes));
  matrix.rows8 = calloc_low<std::uint8_t*>(nodes);
  matrix.rows16 = calloc_low<std::uint16_t*>(nodes);
  matrix.rows32 = calloc_low<std::uint32_t*>(nodes);
  for (std::size_t t = 0; t < at(matrix.ntax); ++t) {
    void* row = alloc_low_bytes(row_bytes, alignof(std::uint32_t));
    matrix.rows8[t] = static_cast<std::uint8_t*>(row);
    matrix.rows16[t] = static_cast<std::uint16_t*>(row);
    matrix.rows32[t] = static_cast<std::uint32_t*>(row);
  }
}

void lay_out_names() {
  matrix.taxon_names = calloc_low<char*>(at(matrix.nnodes));
  const auto bytes = calloc_low<char>(checked_product(at(matrix.ntax), at(matrix.name_length)));
  for (std::size_t t = 0; t < at(matrix.ntax); ++t) {
    matrix.taxon_names[t] = bytes.data() + t * at(matrix.name_length);
  }
}

void name_groups(std::vector<std::string>& names) {
  names.clear();
  for (int g = 0; g < matrix_state::group_count; ++g) names.push_back(text_of("Group_%d", g));
}

// A single block unless the reader has made a table of its own.
void complete_blocks() {
  if (matrix.nblocks == 0) {
    matrix.nblocks = 1;
    matrix.block_first = {0, 0};
  }
  for (int b = 1; b <= matrix.nblocks; ++b) {
    const int end = b == matrix.nblocks ? matrix.nchar : matrix.block_first[at(b) + 1];
    for (int c = matrix.block_first[at(b)]; c < end; ++c) matrix.characters[at(c)].block = b;
  }
}

void complete_types() {
  matrix.data_type_in_use = 0;
  for (const character_record& record : matrix.characters) matrix.data_type_in_use |= record.type;
  if (!(matrix.data_type_in_use & continuous_data)) return;
  if (matrix.scales.empty()) {
    matrix.scales = alloc_low<continuous_scale>(at(matrix.nchar));
    for (continuous_scale& scale : matrix.scales) scale = continuous_scale{};
  }
}

}  // namespace

void add_new_matrix_hook(matrix_hook hook) { hooks.new_matrix.push_back(hook); }
void add_matrix_gone_hook(matrix_hook hook) { hooks.matrix_gone.push_back(hook); }

void wipe_matrix() {
  // A hook may fail, as where a tree file can't be closed for want of room on the disk. The data go
  // all the same, since others have let go of them, and the error goes on from there.
  std::exception_ptr failure;
  if (matrix.present) {
    for (const matrix_hook hook : hooks.matrix_gone) {
      try {
        hook();
      } catch (...) {
        failure = std::current_exception();
      }
    }
  }
  unlock(&locks.matrix_lock);
  clear_state();
  if (failure) std::rethrow_exception(failure);
}

void set_cell_width(int cell_bytes) {
  if (matrix.present) {
    matrix.next_cell_bytes = cell_bytes;
    return;
  }
  matrix.cell_bytes = cell_bytes;
  matrix.state_mask = mask_of_width(cell_bytes);
}

int next_cell_width() {
  return matrix.next_cell_bytes ? matrix.next_cell_bytes : matrix.cell_bytes;
}

data_settings_scope::data_settings_scope()
    : cell_bytes_(next_cell_width()), name_limit_(lexer.name_limit) {
  copy_settings(matrix, former_);
}

// The names of data in memory keep their room.
data_settings_scope::~data_settings_scope() {
  const int name_length = matrix.present ? matrix.name_length : former_.name_length;
  copy_settings(former_, matrix);
  matrix.name_length = name_length;
  limit_names_to(name_limit_);
  set_cell_width(cell_bytes_);
}

void blank_row(int taxon) {
  std::memset(matrix.rows8[at(taxon)], 255, at(matrix.nchar) * at(matrix.cell_bytes));
}

void begin_matrix(int ntax, int nchar, matrix_rows rows) {
  wipe_matrix();
  if (nchar < 1) error_end("Must specify number of characters");
  if (ntax < 4) error_end("Must specify number of taxa (4 or more)");
  // Node numbers are 32-bit, and there are nearly twice as many nodes as taxa.
  if (ntax > std::numeric_limits<int>::max() / 2) out_of_memory();
  if (static_cast<double>(ntax) * nchar * matrix.cell_bytes > static_cast<double>(arena_free())) {
    out_of_memory();
  }
  matrix.ntax = ntax;
  matrix.nchar = nchar;
  matrix.nnodes = 2 * ntax - 1;
  matrix.name_length = lexer.name_limit;
  matrix.state_mask = mask_of_width(matrix.cell_bytes);

  matrix.characters = alloc_low<character_record>(at(nchar));
  matrix.kept_characters = alloc_low<character_record>(at(nchar));
  for (character_record& record : matrix.characters) record = character_record{};
  lay_out_rows();
  for (int t = 0; t < ntax && rows == matrix_rows::blank; ++t) blank_row(t);
  lay_out_names();
  matrix.taxon_active = alloc_low<std::uint8_t>(at(matrix.nnodes));
  std::memset(matrix.taxon_active.data(), 1, matrix.taxon_active.size());
  matrix.taxon_groups = calloc_low<std::uint32_t>(at(ntax));
  matrix.character_groups = calloc_low<std::uint32_t>(at(nchar));
}

void shrink_matrix(int ntax, int nchar) {
  ALWAYS_CHECK(!matrix.present && ntax <= matrix.ntax && nchar <= matrix.nchar,
               "a matrix grows while it is read");
  const std::size_t nodes = at(2 * ntax - 1);
  for (std::size_t t = at(ntax); t < nodes && t < at(matrix.ntax); ++t) {
    matrix.rows8[t] = nullptr;
    matrix.rows16[t] = nullptr;
    matrix.rows32[t] = nullptr;
    matrix.taxon_names[t] = nullptr;
  }
  shrink_landmarks(ntax);
  matrix.ntax = ntax;
  matrix.nchar = nchar;
  matrix.nnodes = 2 * ntax - 1;
  matrix.rows8 = matrix.rows8.first(nodes);
  matrix.rows16 = matrix.rows16.first(nodes);
  matrix.rows32 = matrix.rows32.first(nodes);
  matrix.taxon_names = matrix.taxon_names.first(nodes);
  matrix.taxon_active = matrix.taxon_active.first(nodes);
  matrix.taxon_groups = matrix.taxon_groups.first(at(ntax));
  matrix.characters = matrix.characters.first(at(nchar));
  matrix.kept_characters = matrix.kept_characters.first(at(nchar));
  matrix.character_groups = matrix.character_groups.first(at(nchar));
}

void set_character_type(int character, data_type type, bool gap_is_state) {
  character_record& record = matrix.characters[at(character)];
  record.type = type;
  record.is_continuous = type == continuous_data;
  record.gap_is_state = gap_is_state && (type == dna_data || type == protein_data);
}

void finish_matrix() {
  complete_types();
  complete_blocks();
  matrix.outgroup = 0;
  name_groups(matrix.taxon_group_names);
  name_groups(matrix.character_group_names);
  std::copy(matrix.characters.begin(), matrix.characters.end(), matrix.kept_characters.begin());
  // The lock comes first, so that what the hooks allocate and lock lies above the matrix.
  lock(&locks.matrix_lock);
  for (const matrix_hook hook : hooks.new_matrix) hook();
  matrix.present = true;
}

// A matrix that was begun and never finished has lost its memory with the command.
void drop_unfinished_matrix() {
  if (matrix.present || matrix.ntax == 0) return;
  unlock(&locks.matrix_lock);
  clear_state();
}

void set_matrix_source(std::string title, std::string file_name) {
  matrix.title = std::move(title);
  matrix.file_name = std::move(file_name);
}

}  // namespace zeb
