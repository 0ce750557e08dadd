#include "trees/drawing/text_diagram.h"

#include <algorithm>

#include "base/indices.h"
#include "base/text_columns.h"

namespace zeb {
namespace {

/// Rows without a branch, at most, that a pass of a cut diagram keeps in a stretch.
constexpr int longest_gap = 12;
constexpr std::string_view cut_mark = ">>>";

using marks_of_pass = std::vector<diagram_mark>;

/// Puts a mark into the windows that it touches, cut at their borders.
void spread(diagram_mark mark, const diagram_windows& windows, std::vector<marks_of_pass>& passes) {
  for (bool more = true; more;) {
    const auto window = at(windows.index(mark.column));
    if (passes.size() <= window) passes.resize(window + 1);
    const int room = windows.end(mark.column) - mark.column;
    more = mark.length > room;
    diagram_mark part = mark;
    if (more) {
      part.length = room;
      part.joined_right = true;
      if (mark.character == 0) part.words = text_in_columns(mark.words, 0, at(room));
      mark.words.remove_prefix(part.words.size());
      mark.column += room;
      mark.length -= room;
      mark.joined_left = true;
    }
    passes[window].push_back(part);
  }
}

class pass_writer {
 public:
  /// `marks` lie in columns `start` to `end` - 1. `is_cut`: the diagram is in several passes.
  pass_writer(marks_of_pass& marks, int start, int end, bool is_cut)
      : marks_(marks), start_(start), end_(end), is_cut_(is_cut) {
    std::sort(marks.begin(), marks.end(), [](const diagram_mark& a, const diagram_mark& b) {
      return a.row != b.row ? a.row < b.row : a.column < b.column;
    });
  }

  void write(std::vector<std::string>& out) {
    int row = is_cut_ && !marks_.empty() ? marks_.front().row : 0;
    while (next_ < marks_.size()) {
      const int gap = marks_[next_].row - row;
      out.insert(out.end(), at(is_cut_ && gap > longest_gap ? 1 : gap), "");
      row = marks_[next_].row;
      out.push_back(line_of_row(row));
      ++row;
    }
  }

 private:
  std::string line_of_row(int row) {
    std::string line;
    const diagram_mark& first = marks_[next_];
    if (start_ > 0)
      line = first.column == start_ && first.joined_left ? cut_mark
                                                         : std::string(cut_mark.size(), ' ');
    int column = start_;
    bool goes_on = false;
    for (; next_ < marks_.size() && marks_[next_].row == row; ++next_) {
      const diagram_mark& mark = marks_[next_];
      line.append(at(mark.column - column), ' ');
      if (mark.character == 0)
        line += mark.words;
      else
        line.append(at(mark.length), mark.character);
      column = mark.column + mark.length;
      goes_on = is_cut_ && column == end_ && mark.joined_right;
    }
    if (goes_on) line += cut_mark;
    line.erase(line.find_last_not_of(' ') + 1);
    return line;
  }

  marks_of_pass& marks_;
  std::size_t next_ = 0;
  int start_, end_;
  bool is_cut_;
};

}  // namespace

std::vector<std::string> diagram_lines(const_tree_span tree, int ntax,
                                       std::span<const std::string> labels,
                                       std::span<const std::string> node_texts,
                                       const diagram_style& style) {
  diagram_layout layout = lay_out_diagram(tree, ntax, labels, node_texts, style);
  std::vector<std::string> out;
  if (layout.one_pass) {
    pass_writer(layout.marks, 0, layout.columns, false).write(out);
    return out;
  }
  const diagram_windows windows = windows_for(style.columns);
  std::vector<marks_of_pass> passes;
  for (const diagram_mark& mark : layout.marks) spread(mark, windows, passes);
  for (std::size_t i = 0; i < passes.size(); ++i) {
    if (passes[i].empty()) continue;
    if (!out.empty()) out.emplace_back();
    const int start = windows.start(static_cast<int>(i));
    pass_writer(passes[i], start, windows.end(start), true).write(out);
  }
  return out;
}

}  // namespace zeb
