#include "matrix/reading/continuous_reader.h"

#include <algorithm>
#include <cmath>

#include "base/arena.h"
#include "base/errors.h"
#include "base/indices.h"
#include "base/number_text.h"
#include "language/input.h"

namespace zeb {
namespace {

// The next word of the row; empty at the row's end. A newline that ends the row is consumed.
std::string next_word(bool ends_at_newline) {
  int c = read_char();
  while (c < 33) {
    if (ends_at_newline && (c == '\n' || c == '\r')) return {};
    c = read_char();
  }
  std::string word;
  while (c > 32 && c != ';') {
    word += static_cast<char>(c);
    c = read_char();
  }
  unread_char();
  return word;
}

int thousandths(double value) { return static_cast<int>(std::lround(value * 1000.0)); }

}  // namespace

continuous_value continuous_reader::parse(const row_place& place, int character,
                                          const std::string& text) {
  if (text == "?") return {};
  if (text == "*") return {value_inapplicable, value_inapplicable};
  std::string_view rest = text;
  double ends[2] = {0, 0};
  int found = 0;
  for (; found < 2; ++found) {
    if (rest.empty() || !(std::isdigit(static_cast<unsigned char>(rest[0])) || rest[0] == '.'))
      break;
    std::string_view after = rest;
    ends[found] = take_real(after).value_or(INFINITY);
    if (std::isinf(ends[found])) break;
    rest = after;
    if (rest.empty()) break;
    if (found == 1 || rest[0] != '-') {
      found = 2;
      break;
    }
    rest.remove_prefix(1);
  }
  if (found == 2 || !rest.empty() || text.back() == '-') {
    error_end_f("Taxon %i (%s), char. %i (block %i): expecting real number; found '%c'%s",
                place.taxon, std::string(taxon_name(place.taxon)).c_str(), character, place.block,
                !rest.empty()  ? rest[0]
                : text.empty() ? ';'
                               : text.back(),
                place_in_file().c_str());
  }
  if (found == 0) ends[1] = ends[0];
  if (ends[0] > ends[1]) std::swap(ends[0], ends[1]);
  if (ends[1] > largest_value && !told_rescaling_) {
    told_rescaling_ = true;
    warning_f(
        "Taxon %i (%s), char. %i (block %i): continuous characters with\nmaximum beyond 65.000 "
        "will be rescaled to fit the 0-65 range",
        place.taxon, std::string(taxon_name(place.taxon)).c_str(), character, place.block);
  }
  return {ends[0], ends[1]};
}

int continuous_reader::read_row(const row_place& place) {
  std::vector<continuous_value> row;
  int c = place.first;
  for (; c < place.end; ++c) {
    const std::string word = next_word(place.ends_at_newline);
    if (word.empty() && place.ends_at_newline) break;
    row.push_back(parse(place, c, word));
  }
  if (c == place.first) return c;
  if (blocks_.empty() || blocks_.back().first != place.first) {
    const auto cells = checked_product(at(matrix.ntax), row.size());
    blocks_.push_back({place.first, c, alloc_high<continuous_value>(cells)});
    std::fill(blocks_.back().values.begin(), blocks_.back().values.end(), continuous_value{});
  }
  const block_values& block = blocks_.back();
  const auto start = at(place.taxon) * at(block.end - block.first);
  std::copy(row.begin(), row.end(), block.values.begin() + static_cast<std::ptrdiff_t>(start));
  return c;
}

void continuous_reader::copy_row(int from, int to) {
  if (blocks_.empty()) return;
  const block_values& block = blocks_.back();
  const auto width = at(block.end - block.first);
  const auto source = block.values.subspan(at(from) * width, width);
  std::copy(source.begin(), source.end(), block.values.subspan(at(to) * width).begin());
}

// Values stay in the user's units while they fit. Beyond that the range found becomes 0 to 65; a
// character whose range is no wider than 65 is only shifted, so that its lengths stay true.
continuous_scale scale_of_reading(double least, double largest) {
  continuous_scale scale;
  if (largest <= largest_value) return scale;
  scale.shift = scale.kept_shift = least;
  scale.factor = scale.kept_factor = std::max(1.0, (largest - least) / largest_value);
  return scale;
}

void continuous_reader::store_character(const block_values& block, int character) {
  const auto width = at(block.end - block.first);
  const auto column = at(character - block.first);
  double least = HUGE_VAL;
  double largest = 0;
  for (int t = 0; t < matrix.ntax; ++t) {
    const continuous_value& v = block.values[at(t) * width + column];
    if (v.low < 0) continue;
    least = std::min(least, v.low);
    largest = std::max(largest, v.high);
  }
  const continuous_scale scale = scale_of_reading(least, largest);
  character_record& record = matrix.characters[at(character)];
  record.scale_changed = largest > largest_value;
  for (int t = 0; t < matrix.ntax; ++t) {
    const continuous_value& v = block.values[at(t) * width + column];
    std::uint32_t states = missing_continuous;
    if (v.low == value_inapplicable) states = inapplicable_continuous;
    if (v.low >= 0) {
      const int low = thousandths((v.low - scale.shift) / scale.factor);
      const int high = thousandths((v.high - scale.shift) / scale.factor);
      record.scale_low = std::min(record.scale_low, low);
      record.scale_high = std::max(record.scale_high, high);
      states = static_cast<std::uint32_t>(low) | (static_cast<std::uint32_t>(high) << 16);
    }
    set_cell(t, character, states);
  }
  scales_.emplace_back(character, scale);
}

void continuous_reader::store_all() {
  for (const block_values& block : blocks_) {
    const int end = std::min(block.end, matrix.nchar);
    for (int c = block.first; c < end; ++c) store_character(block, c);
  }
  if (scales_.empty()) return;
  matrix.scales = alloc_low<continuous_scale>(at(matrix.nchar));
  std::fill(matrix.scales.begin(), matrix.scales.end(), continuous_scale{});
  for (const auto& [character, scale] : scales_) matrix.scales[at(character)] = scale;
}

}  // namespace zeb
