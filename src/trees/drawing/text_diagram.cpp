#include "trees/drawing/text_diagram.h"

#include <algorithm>

#include "base/indices.h"
#include "base/text_columns.h"

namespace zeb {
namespace {

/// Rows without a branch, at most, that a pass of a cut diagram keeps in a stretch.
constexpr int longest_gap = 12;
constexpr std::string_view cut_sign = ">>>";

using pieces_of_pass = std::vector<diagram_piece>;

/// Puts a piece into the windows that it touches, cut at their borders.
void spread(diagram_piece piece, const diagram_windows& windows,
            std::vector<pieces_of_pass>& passes) {
  for (bool more = true; more;) {
    const auto window = at(windows.index(piece.column));
    if (passes.size() <= window) passes.resize(window + 1);
    const int room = windows.end(piece.column) - piece.column;
    more = piece.length > room;
    diagram_piece part = piece;
    if (more) {
      part.length = room;
      part.joined_right = true;
      if (piece.character == 0) part.words = text_in_columns(piece.words, 0, at(room));
      piece.words.remove_prefix(part.words.size());
      piece.column += room;
      piece.length -= room;
      piece.joined_left = true;
    }
    passes[window].push_back(part);
  }
}

class pass_writer {
 public:
  /// `pieces` lie in columns `start` to `end` - 1. `is_cut`: the diagram is in several passes.
  pass_writer(pieces_of_pass& pieces, int start, int end, bool is_cut)
      : pieces_(pieces), start_(start), end_(end), is_cut_(is_cut) {
    std::sort(pieces.begin(), pieces.end(), [](const diagram_piece& a, const diagram_piece& b) {
      return a.row != b.row ? a.row < b.row : a.column < b.column;
    });
  }

  void write(std::vector<std::string>& out) {
    int row = is_cut_ && !pieces_.empty() ? pieces_.front().row : 0;
    while (next_ < pieces_.size()) {
      const int gap = pieces_[next_].row - row;
      out.insert(out.end(), at(is_cut_ && gap > longest_gap ? 1 : gap), "");
      row = pieces_[next_].row;
      out.push_back(line_of_row(row));
      ++row;
    }
  }

 private:
  std::string line_of_row(int row) {
    std::string line;
    const diagram_piece& first = pieces_[next_];
    if (start_ > 0)
      line = first.column == start_ && first.joined_left ? cut_sign
                                                         : std::string(cut_sign.size(), ' ');
    int column = start_;
    bool goes_on = false;
    for (; next_ < pieces_.size() && pieces_[next_].row == row; ++next_) {
      const diagram_piece& piece = pieces_[next_];
      line.append(at(piece.column - column), ' ');
      if (piece.character == 0)
        line += piece.words;
      else
        line.append(at(piece.length), piece.character);
      column = piece.column + piece.length;
      goes_on = is_cut_ && column == end_ && piece.joined_right;
    }
    if (goes_on) line += cut_sign;
    line.erase(line.find_last_not_of(' ') + 1);
    return line;
  }

  pieces_of_pass& pieces_;
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
    pass_writer(layout.pieces, 0, layout.columns, false).write(out);
    return out;
  }
  const diagram_windows windows = windows_for(style.columns);
  std::vector<pieces_of_pass> passes;
  for (const diagram_piece& piece : layout.pieces) spread(piece, windows, passes);
  for (std::size_t i = 0; i < passes.size(); ++i) {
    if (passes[i].empty()) continue;
    if (!out.empty()) out.emplace_back();
    const int start = windows.start(static_cast<int>(i));
    pass_writer(passes[i], start, windows.end(start), true).write(out);
  }
  return out;
}

}  // namespace zeb
