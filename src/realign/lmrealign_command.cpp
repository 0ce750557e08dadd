// lmrealign: the configurations of all taxa are laid on each other.
#include <algorithm>
#include <string>
#include <utility>
#include <vector>

#include "base/errors.h"
#include "base/message_text.h"
#include "base/random.h"
#include "console/output.h"
#include "console/progress.h"
#include "language/interpreter.h"
#include "language/lexer.h"
#include "matrix/landmarks.h"
#include "matrix/matrix.h"
#include "realign/commands.h"
#include "realign/random_moves.h"
#include "realign/realign_request.h"

namespace zeb {
namespace {

/// What is told once, however many configurations it concerns.
struct notes {
  bool other_reference = false;
  int too_few_points = 0;  // taxa and configurations
  int without_baseline = 0;
  std::vector<std::pair<int, tree_alignment_outcome>> on_tree;  // by character
};

void note(const realign_request& request, const alignment_outcome& outcome, notes& told) {
  if (outcome.reference >= 0 && outcome.reference != request.how.reference &&
      !told.other_reference) {
    told.other_reference = true;
    warning(
        "Configurations where reference taxon is missing\nwill be aligned by reference to the "
        "first\nnon-missing taxon in the configuration.");
  }
  told.too_few_points += static_cast<int>(outcome.too_few_points.size());
  told.without_baseline += static_cast<int>(outcome.without_baseline.size());
}

/// The packed data are those of before even if the user stops the work half done.
struct data_changing {
  data_changing() = default;
  ~data_changing() { drop_packed_data(); }
  data_changing(const data_changing&) = delete;
  data_changing& operator=(const data_changing&) = delete;
};

/// The points of a configuration, by taxon, then point.
std::vector<landmark_point> coordinates_of(int character) {
  return configuration_of(character)->coordinates;
}

void put_back(const realign_request& request,
              const std::vector<std::vector<landmark_point>>& former) {
  for (std::size_t i = 0; i < former.size(); ++i) {
    const int c = request.characters[i];
    const auto points = former[i].begin();
    for (int t = 0; t < matrix.ntax; ++t) {
      const auto changed = changeable_landmarks_of(c, t);
      std::copy_n(points + t * std::ssize(changed), changed.size(), changed.begin());
    }
  }
}

/// A point may have been moved to where there can't be any.
bool has_lost_points(int character, const std::vector<landmark_point>& former) {
  const std::vector<landmark_point> now = coordinates_of(character);
  for (std::size_t i = 0; i < now.size(); ++i)
    if (!is_missing(former[i]) && !can_hold(now[i])) return true;
  return false;
}

notes realign(const realign_request& request) {
  const data_changing scope;
  std::vector<std::vector<landmark_point>> former;
  reseed();
  notes told;
  double done = 0;
  for (const int c : request.characters) {
    show_progress("Aligning", done++, static_cast<double>(request.characters.size()));
    former.push_back(coordinates_of(c));
    if (request.how.kind == alignment_kind::random)
      move_at_random(c, request.moves);
    else if (request.how.kind == alignment_kind::tree)
      told.on_tree.emplace_back(c, align_on_tree(request.on_tree, c));
    else
      note(request, align_with_reference(request.how, c), told);
    if (!has_lost_points(c, former.back())) continue;
    put_back(request, former);
    error_end_f(
        "Aligned, points of configuration %i would have coordinates below -1000000 or above "
        "1e+12; nothing is changed",
        c);
  }
  clear_progress();
  return told;
}

std::string method_text(const realign_request& request) {
  switch (request.how.kind) {
    case alignment_kind::baseline:
      return text_of("by two point registration on landmarks %i and %i\n", request.how.first_point,
                     request.how.second_point);
    case alignment_kind::resistant:
      return "with RFTRA against a reference taxon\n";
    case alignment_kind::linear:
      return "by least linear distances to a reference taxon\n";
    case alignment_kind::tree:
      return text_of("by reference to tree %i\n", request.on_tree.tree);
    case alignment_kind::random:
      return text_of("by %i cycles of random moves\n", request.moves);
    case alignment_kind::none:
      break;
  }
  return {};
}

void tell(const realign_request& request, const notes& told) {
  emitf("Landmark matrix modified for %i configuration(s)",
        static_cast<int>(request.characters.size()));
  emit(method_text(request));
  for (const auto& [character, outcome] : told.on_tree)
    emitf("Configuration %i: length %.3f before, %.3f after (%i taxa)", character, outcome.before,
          outcome.after, outcome.aligned);
  if (told.too_few_points)
    emit(counted(told.too_few_points, "configuration of a taxon", "configurations of taxa"),
         " with too few points of the reference's left as before\n");
  if (told.without_baseline)
    emit(counted(told.without_baseline, "configuration of a taxon", "configurations of taxa"),
         " with both landmarks at one place shifted only\n");
}

}  // namespace

void lmrealign_command() {
  require_data("realigning landmarks");
  if (landmark_configurations().empty()) error_end("No landmark characters in matrix");
  const realign_request request = read_realign_request();
  if (request.how.scales)
    warning(
        "The size of the configurations will be modified (resulting\nscores will not be "
        "comparable to those from the original matrix)");
  const auto is_incomplete = [&](int c) { return has_incomplete_terminals(request.on_tree, c); };
  if (request.how.kind == alignment_kind::tree &&
      std::ranges::any_of(request.characters, is_incomplete))
    warning(
        "Some terminals have missing landmarks in some configuration(s).\nThose cannot be aligned "
        "and will be skipped");
  expect_end();
  tell(request, realign(request));
}

}  // namespace zeb
