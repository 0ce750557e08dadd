#include "trees/drawing/branch_style.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cmath>
#include <cstdlib>

#include "base/indices.h"
#include "base/message_text.h"
#include "base/number_text.h"

namespace zeb {
namespace {

constexpr double widest_branch = 1000;     // pixels
constexpr double longest_branch = 100000;  // pixels

bool is_digit(char c) { return std::isdigit(static_cast<unsigned char>(c)) != 0; }

/// A digit, or a code in parentheses, with what belongs to it. False: neither.
bool read_color(std::string_view colors, branch_style& style) {
  if (colors.size() == 1 && is_digit(colors[0])) {
    style.color = color_of_digit(colors[0] - '0');
    return true;
  }
  const std::size_t close = colors.find(')');
  if (colors.empty() || colors[0] != '(' || close == std::string_view::npos) return false;
  std::string numbers(colors.substr(1, close - 1));
  if (close + 1 < colors.size()) numbers += "," + std::string(colors.substr(close + 1));
  const color_code code = read_color_code(numbers);
  if (code.count < 3) return false;
  style.color = code.rgb();
  style.dashed = style.dashed || code.value[0] < 0;
  if (code.count > 3) style.thickness = std::clamp(code.value[3], 0.0, widest_branch);
  if (code.count > 4) style.length = std::clamp(code.value[4], 0.0, longest_branch);
  return true;
}

}  // namespace

const char* color_of_digit(int digit) {
  constexpr std::array names = {"red",  "blue",   "green",  "cyan",    "brown",
                                "pink", "orange", "purple", "magenta", "yellow"};
  return names[at(digit)];
}

std::string color_code::rgb() const {
  const auto part = [&](int i) {
    return static_cast<int>(std::min(255.0, std::round(std::abs(value[i]))));
  };
  return text_of("rgb(%i,%i,%i)", part(0), part(1), part(2));
}

color_code read_color_code(std::string_view text) {
  color_code code;
  while (!text.empty() && code.count < 5) {
    const std::optional<double> value = take_real(text);
    if (!value || !std::isfinite(*value)) break;
    code.value[code.count++] = *value;
    text.remove_prefix(std::min(text.find_first_not_of(" ,:"), text.size()));
  }
  if (!text.empty()) code.count = -1;
  return code;
}

branch_style read_branch_style(std::string_view tag) {
  branch_style style;
  if (tag.empty()) return style;
  const std::size_t slash = tag.find('/');
  std::string_view colors = tag.substr(0, slash);
  if (slash != std::string_view::npos) style.text = tag.substr(slash + 1);
  if (!colors.empty() && colors[0] == '-') {
    style.dashed = true;
    colors.remove_prefix(1);
  }
  if (!colors.empty() && !read_color(colors, style)) style.color = "gray";
  return style;
}

}  // namespace zeb
