#include "matrix/part_matrix.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include "base/arena.h"
#include "base/indices.h"

namespace zeb {
namespace {

template <class T>
std::span<T> copy_in_arena(std::span<const T> from) {
  const std::span<T> own = alloc_low<T>(from.size());
  std::copy(from.begin(), from.end(), own.begin());
  return own;
}

void lay_out_rows(matrix_state& part) {
  const std::size_t bytes = at(part.nchar) * at(part.cell_bytes);
  part.rows8 = calloc_low<std::uint8_t*>(at(part.nnodes));
  part.rows16 = calloc_low<std::uint16_t*>(at(part.nnodes));
  part.rows32 = calloc_low<std::uint32_t*>(at(part.nnodes));
  for (std::size_t t = 0; t < at(part.ntax); ++t) {
    void* const row = alloc_low_bytes(bytes, alignof(std::uint32_t));
    part.rows8[t] = static_cast<std::uint8_t*>(row);
    part.rows16[t] = static_cast<std::uint16_t*>(row);
    part.rows32[t] = static_cast<std::uint32_t*>(row);
  }
}

matrix_state part_of(const matrix_state& whole, int ntax) {
  matrix_state part = whole;
  part.ntax = ntax;
  part.nnodes = 2 * ntax - 1;
  ++part.generation;
  lay_out_rows(part);
  part.gap_bits = {};
  part.characters = copy_in_arena<character_record>(whole.characters);
  for (character_record& c : part.characters) c.needs_recheck = 1;
  part.kept_characters = copy_in_arena<character_record>(whole.kept_characters);
  part.taxa_of_steps.clear();
  part.taxon_names = calloc_low<char*>(at(part.nnodes));
  for (int t = 0; t < ntax; ++t)
    part.taxon_names[at(t)] = calloc_low<char>(at(part.name_length)).data();
  part.taxon_active = calloc_low<std::uint8_t>(at(part.nnodes));
  std::fill_n(part.taxon_active.begin(), ntax, std::uint8_t{1});
  part.outgroup = 0;
  part.taxon_groups = calloc_low<std::uint32_t>(at(ntax));
  part.character_groups = copy_in_arena<std::uint32_t>(whole.character_groups);
  part.defined_taxon_groups = 0;
  return part;
}

}  // namespace

part_matrix_scope::part_matrix_scope(std::span<const part_taxon> taxa) : whole_(matrix) {
  matrix = part_of(whole_, static_cast<int>(taxa.size()));
  for (int t = 0; t < matrix.ntax; ++t) {
    set_taxon_name(t, taxa[at(t)].name);
    for (int c = 0; c < matrix.nchar; ++c) set_cell(t, c, taxa[at(t)].cells[at(c)]);
  }
}

part_matrix_scope::~part_matrix_scope() { matrix = std::move(whole_); }

}  // namespace zeb
