// Aligning the configurations of taxa with that of a reference taxon, which never moves.
#pragma once

#include <optional>
#include <vector>

#include "matrix/landmarks.h"

namespace zeb {

enum class alignment_kind { none, baseline, resistant, linear, tree, random };

struct reference_alignment {
  alignment_kind kind = alignment_kind::linear;
  int reference = 0;  // taxon
  bool scales = false;
  bool turns = true;
  int first_point = 0;  // of the baseline
  int second_point = 0;
};

/// What became of one configuration.
struct alignment_outcome {
  int reference = -1;                 // the first taxon that has the configuration, where the
                                      // reference lacks it; -1: no taxon has it
  std::vector<int> too_few_points;    // taxa left alone: too few points in common
  std::vector<int> without_baseline;  // taxa only shifted: their baseline has no length
};
/// Moves the points of the configuration; all or, when interrupted, none of its taxa.
alignment_outcome align_with_reference(const reference_alignment& how, int character);

/// Does the taxon lack the whole configuration?
bool lacks_configuration(int character, int taxon);

}  // namespace zeb
