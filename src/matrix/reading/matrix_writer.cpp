#include "matrix/reading/matrix_writer.h"

#include <algorithm>
#include <bit>
#include <vector>

#include "base/indices.h"
#include "base/message_text.h"
#include "base/number_text.h"
#include "base/text_columns.h"
#include "console/output.h"
#include "matrix/costs/cost_text.h"
#include "matrix/landmarks.h"
#include "matrix/matrix.h"
#include "matrix/reading/letter_check.h"
#include "matrix/symbols.h"

namespace zeb {
namespace {

constexpr std::size_t piece = 1000;  // bytes sent at a time: fits the line buffer

// Collects text and sends it in pieces, whatever the length of a line.
class line_writer {
 public:
  void add(std::string_view text) {
    text_ += text;
    if (text_.size() >= piece) send();
  }
  void send() {
    for (std::size_t i = 0; i < text_.size(); i += piece) emit(text_.substr(i, piece));
    text_.clear();
  }

 private:
  std::string text_;
};

// "0.5", "12.345": thousandths without the zeros at the end.
std::string thousandths_text(std::uint32_t value) {
  std::string text = text_of("%u.%03u", value / 1000, value % 1000);
  text.erase(text.find_last_not_of('0') + 1);
  if (text.back() == '.') text.pop_back();
  return text;
}

// Characters that are written as one block: neighbours of one block in memory, read alike.
struct section {
  int block;
  data_type type;
  bool gap_is_state;
  std::vector<int> characters;
};

class matrix_writer {
 public:
  explicit matrix_writer(const write_request& request) : request_(request) {
    for (int t = 0; t < matrix.ntax; ++t) {
      if (request.taxa[at(t)]) taxa_.push_back(t);
    }
    new_number_.assign(at(matrix.nchar), -1);
    for (int c = 0; c < matrix.nchar; ++c) {
      if (!request.characters[at(c)]) continue;
      new_number_[at(c)] = nchar_++;
      add_to_sections(c);
    }
    for (std::size_t i = 0; i < request.more_rows.size(); ++i) {
      taxa_.push_back(matrix.ntax + static_cast<int>(i));
    }
    for (const int t : taxa_) longest_name_ = std::max(longest_name_, text_columns(name_of_row(t)));
  }
  void write() {
    write_head();
    for (const section& s : sections_) write_section(s);
    out_.add(";\n");
    if (request_.settings) write_settings();
    out_.send();
  }

 private:
  void add_to_sections(int character);
  std::string_view name_of_row(int row) const {
    return row < matrix.ntax ? taxon_name(row) : request_.more_rows[at(row - matrix.ntax)].name;
  }
  bool is_plain() const {
    return sections_.size() == 1 && sections_[0].type == numeric_data && matrix.block_names.empty();
  }
  bool sections_are_blocks() const;
  static std::string block_name(const section& s) {
    return matrix.block_names.empty() ? std::string() : matrix.block_names[at(s.block)];
  }
  bool heads_name_blocks() const;
  void write_head();
  void write_section(const section& s);
  std::string section_head(const section& s) const;
  std::uint32_t cell_of(int taxon, int character) const;
  bool is_written_as_gap(int taxon, int character) const {
    return taxon < matrix.ntax && request_.cells.empty() && was_gap(taxon, character);
  }
  void write_settings() {
    write_scales();
    write_codes();
    write_blocks();
    write_character_names();
    write_taxon_settings();
    if (!hooks_of_matrix.landmark_commands) return;
    for (const std::string& command : hooks_of_matrix.landmark_commands(new_number_))
      out_.add(command + ";\n");
  }
  void write_scales();
  void write_codes();
  void write_costs();
  template <class predicate>
  void write_code(const std::string& specifier, predicate has_code);
  void write_blocks();
  void write_character_names();
  void write_taxon_settings();

  const write_request& request_;
  line_writer out_;
  std::vector<int> taxa_;        // rows: taxa, and from ntax on those added to them
  std::vector<int> new_number_;  // by character; -1 not written
  std::vector<section> sections_;
  int nchar_ = 0;
  int longest_name_ = 0;
};

void matrix_writer::add_to_sections(int character) {
  const character_record& record = matrix.characters[at(character)];
  const auto type = static_cast<data_type>(record.type);
  const bool gap = record.gap_is_state != 0;
  const bool continues = type != landmark_data && !sections_.empty() &&
                         sections_.back().block == record.block && sections_.back().type == type &&
                         sections_.back().gap_is_state == gap;
  if (!continues) sections_.push_back({record.block, type, gap, {}});
  sections_.back().characters.push_back(character);
}

// Reading makes a block of each section: is that the block table in memory?
bool matrix_writer::sections_are_blocks() const {
  for (std::size_t i = 1; i < sections_.size(); ++i) {
    if (sections_[i].block == sections_[i - 1].block) return false;
  }
  return true;
}

// Reading gives names of its own to blocks without one if others have one.
bool matrix_writer::heads_name_blocks() const {
  return sections_are_blocks() &&
         std::none_of(sections_.begin(), sections_.end(),
                      [](const section& s) { return block_name(s).empty(); });
}

void matrix_writer::write_head() {
  if (matrix.name_length != 32) out_.add(text_of("taxname +%i;\n", matrix.name_length));
  const bool say_numeric = is_plain() || has_digits_and_letters();
  out_.add(text_of(say_numeric ? "nstates num %i;\n" : "nstates %i;\n", 8 * matrix.cell_bytes));
  out_.add("xread\n");
  if (!matrix.title.empty()) out_.add(matrix.title + "\n");
  out_.add(text_of("%i %i\n", nchar_, static_cast<int>(taxa_.size())));
}

std::string matrix_writer::section_head(const section& s) const {
  std::string head = "&[";
  if (s.type == continuous_data) head += "continuous";
  if (s.type == numeric_data) head += "numeric";
  if (s.type == dna_data) head += s.gap_is_state ? "dna gaps" : "dna nogaps";
  if (s.type == landmark_data) {
    const landmark_configuration* const points = configuration_of(s.characters.front());
    head += points && points->dimensions == 3 ? "landmark 3d" : "landmark 2d";
  }
  if (s.type == protein_data) head += s.gap_is_state ? "proteins gaps" : "proteins nogaps";
  if (heads_name_blocks()) head += " /" + block_name(s);
  return head + "]\n";
}

std::uint32_t matrix_writer::cell_of(int taxon, int character) const {
  if (taxon >= matrix.ntax) return request_.more_rows[at(taxon - matrix.ntax)].cells[at(character)];
  if (request_.cells.empty()) return cell(taxon, character);
  return request_.cells[at(taxon) * at(matrix.nchar) + at(character)];
}

/// Nodes have no points; a configuration that no taxon has is one missing point.
std::string row_of_points(int row, int character) {
  const landmark_configuration* const configuration = configuration_of(character);
  if (row >= matrix.ntax || !configuration || configuration->points == 0) return "?";
  std::string text;
  for (const landmark_point& point : landmarks_of(character, row)) {
    if (!text.empty()) text += ' ';
    text += written_point(point, configuration->dimensions);
  }
  return text;
}

void matrix_writer::write_section(const section& s) {
  if (!is_plain()) out_.add(section_head(s));
  for (const int t : taxa_) {
    std::string row = padded_right(name_of_row(t), longest_name_ + 1);
    for (const int c : s.characters) {
      if (s.type == landmark_data) {
        row += row_of_points(t, c);
        continue;
      }
      if (s.type == continuous_data) row += ' ';
      row += is_written_as_gap(t, c) ? "-" : written_cell(c, cell_of(t, c));
    }
    out_.add(row + "\n");
  }
}

void matrix_writer::write_scales() {
  std::string text;
  for (int c = 0; c < matrix.nchar; ++c) {
    const character_record& record = matrix.characters[at(c)];
    if (new_number_[at(c)] < 0 || !record.is_continuous || !record.scale_changed) continue;
    text += text_of(" %i ", new_number_[at(c)]) + exact_text(matrix.scales[at(c)].factor) + " " +
            exact_text(matrix.scales[at(c)].shift) + (record.log_scale ? " *" : "");
  }
  if (!text.empty()) out_.add("nstates scale" + text + ";\n");
}

template <class predicate>
void matrix_writer::write_code(const std::string& specifier, predicate has_code) {
  std::string text;
  for (int c = 0; c < matrix.nchar; ++c) {
    if (new_number_[at(c)] >= 0 && has_code(matrix.characters[at(c)])) {
      text += " " + std::to_string(new_number_[at(c)]);
    }
  }
  if (!text.empty()) out_.add("ccode " + specifier + text + ";\n");
}

// Files with costs say whether cells are completed, whatever the setting where they are read.
void matrix_writer::write_costs() {
  const std::string costs = costs_as_commands(new_number_);
  out_.add(step_matrices_as_commands() + costs);
  if (costs.empty()) return;
  if (!matrix.fill_polymorphic) out_.add("fillsank -;\n");
  for (const std::string& command : cost_settings()) out_.add(command + ";\n");
}

void matrix_writer::write_codes() {
  write_code("+", [](const character_record& r) { return r.additive && !r.is_continuous; });
  write_costs();
  write_code("]", [](const character_record& r) { return !r.active; });
  std::vector<int> weights;
  std::vector<int> steps;
  for (const character_record& r : matrix.characters) {
    weights.push_back(r.weight);
    steps.push_back(r.internal_steps);
  }
  for (std::vector<int>* values : {&weights, &steps}) {
    std::sort(values->begin(), values->end());
    values->erase(std::unique(values->begin(), values->end()), values->end());
  }
  for (const int w : weights) {
    if (w == 1) continue;
    write_code("/" + std::to_string(w), [w](const character_record& r) { return r.weight == w; });
  }
  for (const int s : steps) {
    if (s == 0) continue;
    write_code("=" + std::to_string(s),
               [s](const character_record& r) { return r.internal_steps == s; });
  }
}

// What the heads of sections don't tell: where blocks start, and their names.
void matrix_writer::write_blocks() {
  std::string starts;
  std::string names;
  int number = 0;
  for (std::size_t i = 0; i < sections_.size(); ++i) {
    if (i && sections_[i].block == sections_[i - 1].block) continue;
    ++number;
    starts += " " + std::to_string(new_number_[at(sections_[i].characters.front())]);
    const std::string name = block_name(sections_[i]);
    if (!name.empty()) names += text_of("[%i %s ;\n", number, name.c_str());
  }
  if (!sections_are_blocks()) out_.add("blocks" + starts + ";\n");
  if (number > 1 && !names.empty() && !heads_name_blocks()) out_.add("cnames\n" + names + ";\n");
}

void matrix_writer::write_character_names() {
  std::string text;
  for (std::size_t c = 0; c < matrix.char_names.size(); ++c) {
    if (new_number_[c] >= 0) text += written_names(new_number_[c], matrix.char_names[c]);
  }
  if (!text.empty()) out_.add("cnames\n" + text + ";\n");
}

void matrix_writer::write_taxon_settings() {
  std::string inactive;
  for (std::size_t i = 0; i < taxa_.size(); ++i) {
    const int t = taxa_[i];
    if (t >= matrix.ntax) break;
    if (t == matrix.outgroup && i != 0) out_.add(text_of("outgroup %i;\n", static_cast<int>(i)));
    if (!matrix.taxon_active[at(t)]) inactive += " " + std::to_string(i);
  }
  if (!inactive.empty()) out_.add("taxcode -" + inactive + ";\n");
}

}  // namespace

std::string written_point(const landmark_point& point, int dimensions) {
  if (is_missing(point)) return "?";
  std::string text = exact_text(point.x) + "," + exact_text(point.y);
  if (dimensions == 3) text += "," + exact_text(point.z);
  return text;
}

std::string written_names(int number, const matrix_state::character_name& names) {
  if (names.name.empty() && names.states.empty()) return {};
  const auto word = [](const std::string& name) { return " " + (name.empty() ? "-" : name); };
  std::string text = "{" + std::to_string(number) + word(names.name);
  for (const std::string& state : names.states) text += word(state);
  return text + " ;\n";
}

std::string written_cell(int character, std::uint32_t states) {
  const auto type = static_cast<data_type>(matrix.characters[at(character)].type);
  if (type == continuous_data) {
    if (states == missing_continuous) return "?";
    if (states == inapplicable_continuous) return "*";
    const std::uint32_t low = states & 0xffffU;
    const std::uint32_t high = states >> 16;
    return low == high ? thousandths_text(low)
                       : thousandths_text(low) + "-" + thousandths_text(high);
  }
  const char symbol = symbol_of_set(type, matrix.cell_bytes, states);
  if (symbol) return {symbol};
  std::string text = "[";
  for (std::uint32_t rest = states; rest; rest &= rest - 1) {
    text += symbol_of_state(type, std::countr_zero(rest));
  }
  return text + "]";
}

void write_matrix(const write_request& request) { matrix_writer(request).write(); }

}  // namespace zeb
