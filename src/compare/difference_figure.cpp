#include "compare/difference_figure.h"

#include <algorithm>

#include "base/errors.h"
#include "base/message_text.h"
#include "mapping/figure_legend.h"
#include "trees/drawing/svg_file.h"
#include "trees/drawing/svg_text.h"

namespace zeb {
namespace {

constexpr int cell_width = 10;  // pixels
constexpr int cell_height = 8;
constexpr double font = 8;

enum cell_kind : std::uint8_t {
  in_neither,
  in_both,
  different,
  added,
  removed,
  resolved,
  eliminated,
  rescaled,
  unfixable,
  kinds,
};

constexpr figure_color colors[kinds] = {
    {255, 255, 255}, {225, 225, 225}, {213, 94, 0},  {0, 114, 178},  {240, 190, 40},
    {130, 190, 235}, {250, 225, 140}, {0, 158, 115}, {120, 40, 110},
};

class difference_grid {
 public:
  difference_grid(const comparison_task& task, const comparison& found, const combination& combined)
      : task_(task), found_(found), data_(combined.data), numbers_(combined.numbers) {
    cells_.assign(data_.cells.size(), in_neither);
    mark_all(numbers_.taxa_of_second, numbers_.characters_of_second, removed);
    mark_all(numbers_.taxa_of_first, numbers_.characters_of_first, added);
    mark_shared();
    mark_differences();
  }
  void draw() const;

 private:
  void mark_all(const std::vector<int>& taxa, const std::vector<int>& characters, cell_kind kind) {
    for (const int t : taxa) {
      for (const int c : characters) cells_[data_.place(t, c)] = kind;
    }
  }
  void mark_shared();
  void mark_differences();
  void mark(int taxon, int character, cell_kind kind) {
    cells_[data_.place(numbers_.taxa_of_first[at(taxon)],
                       numbers_.characters_of_first[at(character)])] = kind;
  }
  void draw_row(int taxon) const;
  void draw_numbers() const;
  void draw_legend() const;
  double label_width() const;

  const comparison_task& task_;
  const comparison& found_;
  const data_set& data_;
  const combined_numbers& numbers_;
  std::vector<cell_kind> cells_;
};

void difference_grid::mark_shared() {
  for (std::size_t t = 0; t < found_.taxa.in_second.size(); ++t) {
    for (std::size_t c = 0; c < found_.characters.in_second.size(); ++c) {
      if (found_.taxa.in_second[t] >= 0 && found_.characters.in_second[c] >= 0)
        mark(static_cast<int>(t), static_cast<int>(c), in_both);
    }
  }
}

cell_kind kind_of(bool first_is_missing, bool second_is_missing) {
  if (first_is_missing) return eliminated;
  return second_is_missing ? resolved : different;
}

void difference_grid::mark_differences() {
  for (const cell_difference& d : found_.cells)
    mark(d.taxon, d.character, kind_of(d.first_is_missing, d.second_is_missing));
  for (const scale_match& scale : found_.scales) {
    if (scale.is_changed) {
      for (std::size_t t = 0; t < found_.taxa.in_second.size(); ++t) {
        if (found_.taxa.in_second[t] >= 0) mark(static_cast<int>(t), scale.character, rescaled);
      }
    }
    for (const scale_match::entry& e : scale.differences) {
      const cell_kind kind = kind_of(e.first_is_missing, e.second_is_missing);
      mark(e.taxon, scale.character, kind == different && scale.beyond_scaling ? unfixable : kind);
    }
  }
  for (const landmark_difference& d : found_.landmarks) {
    const cell_kind kind = kind_of(d.first_is_missing, d.second_is_missing);
    mark(d.taxon, d.character, kind == different && d.solved ? rescaled : kind);
  }
}

std::string rectangle(double x, double y, double width, const figure_color& color) {
  return text_of("<rect x=\"%g\" y=\"%g\" width=\"%g\" height=\"%i\" fill=\"%s\"/>\n", x, y, width,
                 cell_height, color.as_svg().c_str());
}

std::string label(double x, double y, const char* anchor, const std::string& text) {
  return text_of(
             "<text x=\"%g\" y=\"%g\" font-family=\"Verdana\" font-size=\"%g\" "
             "text-anchor=\"%s\">",
             x, y, font, anchor) +
         xml_text(text) + "</text>\n";
}

// Neighbours of one kind are one rectangle, which keeps figures of large data small.
void difference_grid::draw_row(int taxon) const {
  const double y = taxon * cell_height;
  write_svg(label(-4, y + cell_height - 1, "end", data_.taxa[at(taxon)]));
  for (int c = 0; c < data_.nchar();) {
    const cell_kind kind = cells_[data_.place(taxon, c)];
    int end = c;
    while (end < data_.nchar() && cells_[data_.place(taxon, end)] == kind) ++end;
    if (kind != in_neither)
      write_svg(rectangle(c * cell_width, y, (end - c) * cell_width, colors[kind]));
    c = end;
  }
}

void difference_grid::draw_numbers() const {
  constexpr int every = 10;
  for (int c = 0; c < data_.nchar(); c += every)
    write_svg(label(c * cell_width, -4, "start", std::to_string(c)));
}

void difference_grid::draw_legend() const {
  struct line {
    cell_kind kind;
    std::string text;
  };
  const std::string& newer = task_.first.file;
  const std::string& older = task_.second.file;
  const std::vector<line> lines = {
      {in_both, "BOTH"},
      {different, "different entries"},
      {added, "only " + newer + " has the taxon or character"},
      {removed, "only " + older + " has the taxon or character"},
      {resolved, "missing in " + older},
      {eliminated, "missing in " + newer},
      {in_neither, "Continuous Codes:"},
      {rescaled, "the same once the scale is changed (landmarks: once realigned)"},
      {unfixable, "differences which can't be fixed by scaling"},
  };
  double y = (data_.ntax() + 2) * cell_height;
  for (const line& l : lines) {
    const bool is_heading = l.kind == in_neither;
    if (!is_heading) write_svg(rectangle(0, y, cell_width, colors[l.kind]));
    const double x = is_heading ? 0 : cell_width + 4;
    write_svg(label(x, y + cell_height - 1, "start", l.text));
    grow_svg_page(0, 0, x + svg_text_width(l.text, font), y + cell_height);
    y += 2 * cell_height;
  }
}

double difference_grid::label_width() const {
  double widest = 0;
  for (const std::string& name : data_.taxa) widest = std::max(widest, svg_text_width(name, font));
  return widest;
}

void difference_grid::draw() const {
  write_svg("<g>\n");
  for (int t = 0; t < data_.ntax(); ++t) draw_row(t);
  draw_numbers();
  draw_legend();
  grow_svg_page(-4 - label_width(), -4 - font, data_.nchar() * cell_width,
                data_.ntax() * cell_height);
}

}  // namespace

void draw_differences(const comparison_task& task, const comparison& found,
                      const combination& combined, const std::string& file_name) {
  open_svg_file(file_name, "Differences between " + task.first.file + " and " + task.second.file);
  difference_grid(task, found, combined).draw();
  if (!close_svg_file()) error_end("Cannot write to file", file_name);
}

}  // namespace zeb
