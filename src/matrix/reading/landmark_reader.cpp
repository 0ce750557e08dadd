#include "matrix/reading/landmark_reader.h"

#include <algorithm>
#include <cmath>
#include <optional>
#include <vector>

#include "base/errors.h"
#include "base/indices.h"
#include "base/message_text.h"
#include "base/number_text.h"
#include "language/input.h"
#include "matrix/landmarks.h"
#include "matrix/matrix.h"

namespace zeb {
namespace {

bool ends_row(int c) { return c == '\n' || c == '\r' || c == ';'; }

/// The next word of the row; empty at its end, which stays unread.
std::string next_word() {
  int c = read_char();
  while (c < 33 && !ends_row(c)) c = read_char();
  std::string word;
  while (c > 32 && c != ';') {
    word += static_cast<char>(c);
    c = read_char();
  }
  unread_char();
  return word;
}

std::string name_of(int taxon) { return std::string(taxon_name(taxon)); }

/// "Taxon 3 (bee), char. 0 (block 1): ".
std::string place_text(const row_place& place) {
  return text_of("Taxon %i (%s), char. %i (block %i): ", place.taxon, name_of(place.taxon).c_str(),
                 place.first, place.block);
}

/// Nothing where the word isn't a point of these dimensions.
std::optional<landmark_point> point_of(std::string_view word, int dimensions) {
  if (word == "?") return missing_point;
  double values[3] = {0, 0, 0};
  for (int i = 0; i < dimensions; ++i) {
    if (i > 0) {
      if (!word.starts_with(',')) return std::nullopt;
      word.remove_prefix(1);
    }
    const std::optional<double> value = take_real(word);
    if (!value || !std::isfinite(*value)) return std::nullopt;
    values[i] = *value;
  }
  if (!word.empty()) return std::nullopt;
  return landmark_point{values[0], values[1], values[2]};
}

landmark_point parse(const row_place& place, const std::string& word, int dimensions) {
  const std::optional<landmark_point> point = point_of(word, dimensions);
  if (!point) {
    error_end(place_text(place) + "expecting a landmark as", dimensions == 2 ? "x,y" : "x,y,z",
              "or \"?\"; found", word + place_in_file());
  }
  if (word != "?" && !can_hold(*point)) {
    const bool low = std::min({point->x, point->y, point->z}) < least_coordinate;
    error_end(place_text(place) + "coordinates of landmarks can't be",
              low ? "below -1000000; found" : "above 1e+12; found", word + place_in_file());
  }
  return *point;
}

}  // namespace

int landmark_reader::read_row(const row_place& place, int dimensions) {
  if (place.first >= matrix.nchar) {
    error_end("Too many landmark configurations (number of characters set too low?)");
  }
  const comma_reading commas(true);
  std::vector<landmark_point> row;
  for (std::string word = next_word(); !word.empty(); word = next_word())
    row.push_back(parse(place, word, dimensions));
  if (row.empty()) return place.first;
  if (all_missing(row)) return place.first + 1;
  const landmark_configuration* known = configuration_of(place.first);
  const int points = static_cast<int>(row.size());
  if (!known) {
    add_landmark_configuration(place.first, dimensions, points);
    first_taxon_ = name_of(place.taxon);
  } else if (known->points != points) {
    error_end_f("%s%s, but taxon %s has %i%s", place_text(place).c_str(),
                counted(points, "landmark", "landmarks").c_str(), first_taxon_.c_str(),
                known->points, place_in_file().c_str());
  }
  std::ranges::copy(row, changeable_landmarks_of(place.first, place.taxon).begin());
  return place.first + 1;
}

void landmark_reader::copy_row(int from, int to, int character) {
  if (!configuration_of(character)) return;
  std::ranges::copy(landmarks_of(character, from), changeable_landmarks_of(character, to).begin());
}

void landmark_reader::end_block(int character, int dimensions) {
  if (!configuration_of(character)) add_landmark_configuration(character, dimensions, 0);
}

}  // namespace zeb
