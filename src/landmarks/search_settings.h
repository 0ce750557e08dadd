// What the user asked of searches with landmark characters: part of the options of `lmark`.
#pragma once

#include <array>
#include <string>

namespace zeb {

/// How far above the best a joining may be by its estimate and still be optimised in full. Margins
/// are proportions of the length that the joining adds; they grow as a swap goes on.
struct error_margin {
  static constexpr int most_stages = 5;
  int stages = 1;
  std::array<double, most_stages> margins{0.15};
  std::array<double, most_stages> from_percent{};  // of the clippings; before the first: no margin
  /// The smaller or larger of the margin and mean + `deviations` standard deviations of the errors
  /// met so far in the search.
  enum class observed { ignored, smaller, larger };
  observed by_errors = observed::ignored;
  double deviations = 0;

  /// The margin after that part of the clippings, 0 to 100, by the stages alone.
  double at_percent(double percent) const;
};

struct landmark_search_settings {
  error_margin margin;
  int refine_depth = 5;       // branches from the point of union that are optimised anew
  int refine_rounds = 2;      // ... so often; 0 of either: they aren't
  bool quick_wagner = true;   // points aren't optimised anew after each addition
  int threads = 0;            // 0: by the number of processors
  bool threads_stay = false;  // between searches
};
extern landmark_search_settings landmark_searching;
void set_landmark_searching(const landmark_search_settings& wanted);

constexpr int most_landmark_threads = 32;
/// What `threads` 0 means on this machine: up to 3 all processors, else three quarters of them, at
/// most 10.
int recommended_landmark_threads();
/// The threads that optimise: those asked for, or the recommended ones; 1 in a process that works
/// for another.
int landmark_threads();
/// Tells once what number of threads is used where the user gave none.
void tell_landmark_threads();

/// Readers of what follows the keywords "errmarg", "refine" and "threads".
void read_error_margin(landmark_search_settings& settings);
void read_refinement(landmark_search_settings& settings);
void read_threads(landmark_search_settings& settings);

/// The margin in the user's words, with its stages; no end of line.
std::string error_margin_in_words(const error_margin& margin);

}  // namespace zeb
