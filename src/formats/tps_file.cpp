#include "formats/tps_file.h"

#include <algorithm>
#include <cctype>
#include <cmath>
#include <optional>
#include <unordered_map>

#include "base/errors.h"
#include "base/message_text.h"
#include "base/number_text.h"
#include "base/text_columns.h"
#include "formats/text_lines.h"
#include "language/fit_text.h"
#include "matrix/matrix.h"
#include "matrix/reading/matrix_writer.h"

namespace zeb {
namespace {

std::string upper_case(std::string_view text) {
  std::string upper(text);
  for (char& c : upper) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
  return upper;
}

/// Without folders and extension.
std::string stem_of(std::string_view path) {
  path.remove_prefix(std::min(path.find_last_of("/\\") + 1, path.size()));
  return std::string(path.substr(0, path.rfind('.')));
}

class tps_reader {
 public:
  explicit tps_reader(input_file& file) : file_(file.name()), text_(file) {}

  tps_configuration read() {
    configuration_.name = stem_of(file_);
    while (const std::optional<std::string_view> line = next_line()) {
      const std::size_t sign = line->find('=');
      if (sign == line->npos) fail("expecting a keyword and \"=\"; found", *line);
      read_entry(upper_case(trimmed(line->substr(0, sign))), trimmed(line->substr(sign + 1)));
    }
    end_specimen();
    check();
    return std::move(configuration_);
  }

 private:
  [[noreturn]] void fail(const char* what, std::string_view text) const {
    error_end("TPS file", file_, std::string("(line ") + std::to_string(next_) + "):", what,
              std::string(text));
  }
  [[noreturn]] void fail_at_number(const std::string& what, std::string_view text) const {
    const bool has_comma = text.find(',') != text.npos;
    fail((has_comma ? "decimals follow a point, not a comma; " + what : what).c_str(), text);
  }
  /// The next line that isn't empty.
  std::optional<std::string_view> next_line() {
    while (next_ < text_.lines().size()) {
      const std::string_view line = trimmed(text_.lines()[next_++]);
      if (!line.empty()) return line;
    }
    return std::nullopt;
  }

  void read_entry(const std::string& key, std::string_view value) {
    if (key == "LM" || key == "LM3") {
      end_specimen();
      begin_specimen(key == "LM" ? 2 : 3, value);
    } else if (!open_) {
      fail("expecting \"LM=\" first; found", key);
    } else if (key == "POINTS") {
      read_points(value);
    } else if (key == "ID") {
      specimen_.name = value;
    } else if (key == "IMAGE") {
      image_ = stem_of(value);
    } else if (key == "SCALE") {
      scale_ = real_of(value).value_or(0);
      if (!(scale_ > 0)) fail_at_number("bad scale:", value);
    }
  }

  void begin_specimen(int dimensions, std::string_view count) {
    if (configuration_.specimens.empty()) configuration_.dimensions = dimensions;
    if (dimensions != configuration_.dimensions)
      fail("landmarks of two and three dimensions in one file", {});
    open_ = true;
    specimen_ = {};
    specimen_.line = next_;
    image_.clear();
    scale_ = 1;
    read_points(count);
  }

  void read_points(std::string_view text) {
    std::string_view rest = text;
    const auto count = take_whole<int>(rest);
    constexpr int most = 1'000'000;
    if (!count || !rest.empty() || *count < 0 || *count > most) fail("bad number of points:", text);
    for (int i = 0; i < *count; ++i) {
      const std::optional<std::string_view> line = next_line();
      if (!line) fail("the file ends within the points", {});
      specimen_.points.push_back(point_of(*line));
    }
  }

  landmark_point point_of(std::string_view line) const {
    double values[3] = {0, 0, 0};
    bool missing = false;
    std::string_view rest = line;
    for (int i = 0; i < configuration_.dimensions; ++i) {
      rest = trimmed(rest);
      const std::string_view word = rest.substr(0, rest.find_first_of(" \t"));
      rest.remove_prefix(word.size());
      if (word == "?" || upper_case(word) == "NA" || upper_case(word) == "NAN") {
        missing = true;
        continue;
      }
      const std::optional<double> value = real_of(word);
      if (!value || !std::isfinite(*value)) fail_at_number("bad point:", line);
      values[i] = *value;
    }
    if (!trimmed(rest).empty()) fail("too many coordinates:", line);
    const landmark_point point = {values[0], values[1], values[2]};
    if (!can_hold(point)) fail("coordinates can't be below -1000000 or above 1e+12:", line);
    return missing ? missing_point : point;
  }

  void end_specimen() {
    if (!open_) return;
    open_ = false;
    const std::size_t number = configuration_.specimens.size() + 1;
    if (specimen_.name.empty()) specimen_.name = image_;
    if (specimen_.name.empty()) specimen_.name = "Specimen_" + std::to_string(number);
    for (landmark_point& p : specimen_.points) {
      if (is_missing(p)) continue;
      p = {p.x * scale_, p.y * scale_, p.z * scale_};
      if (!can_hold(p))
        fail("the scale brings coordinates below -1000000 or above 1e+12 in", specimen_.name);
    }
    configuration_.specimens.push_back(std::move(specimen_));
  }

  void check() const {
    if (configuration_.specimens.empty()) error_end("TPS file", file_, "has no landmarks");
    const tps_specimen& first = configuration_.specimens.front();
    std::unordered_map<std::string, std::size_t> lines;
    for (const tps_specimen& one : configuration_.specimens) {
      if (one.points.size() != first.points.size())
        error_end_f(
            "TPS file %s: %s has %s, but %s has %zu (line %zu)", file_.c_str(), one.name.c_str(),
            counted(static_cast<long long>(one.points.size()), "landmark", "landmarks").c_str(),
            first.name.c_str(), first.points.size(), one.line);
      const auto [known, is_new] = lines.emplace(normal_form(fit_name(one.name)), one.line);
      if (!is_new)
        error_end("Specimen", one.name, "appears twice in TPS file", file_, "(lines", known->second,
                  "and", std::to_string(one.line) + ")");
    }
  }

  std::string file_;
  text_lines text_;
  std::size_t next_ = 0;  // line to be read; the number, from 1, of the one that was read last
  tps_configuration configuration_;
  bool open_ = false;
  tps_specimen specimen_;
  std::string image_;
  double scale_ = 1;
};

}  // namespace

tps_configuration read_tps_configuration(input_file& file) { return tps_reader(file).read(); }

void write_tps(output_file& out, const landmark_configuration& configuration,
               const word_writer& words) {
  const bool flat = configuration.dimensions == 2;
  for (int t = 0; t < matrix.ntax; ++t) {
    out.print("%s=%i\n", flat ? "LM" : "LM3", configuration.points);
    for (const landmark_point& p : landmarks_of(configuration.character, t)) {
      if (is_missing(p)) {
        out.put(flat ? "NA NA\n" : "NA NA NA\n");
        continue;
      }
      out.put(exact_text(p.x) + " " + exact_text(p.y));
      out.put(flat ? "\n" : " " + exact_text(p.z) + "\n");
    }
    out.print("ID=%s\n\n", words.taxon(t).c_str());
  }
}

}  // namespace zeb
