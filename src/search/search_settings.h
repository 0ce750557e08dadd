// What the user asked of all searches. A search takes what it needs when it begins, as its
// `search_rules`, and changes nothing here.
#pragma once

namespace zeb {

/// The settings of `bbreak`.
struct swap_settings {
  bool use_tbr = true;
  bool fill_only = false;        // stop as soon as the buffer is full
  bool mulpars = true;           // save equally good trees
  bool safe_unclip = false;      // a full pass after every move
  bool skip_spr = true;          // leave out the SPR phase on a single tree
  bool promising_first = false;  // swaps of a single tree begin with the clips that promise most
  bool stratified = false;       // landmarks only
  int move_limit = 0;            // TBR within so many nodes of the clip's place; 0 no limit
  bool random_clip = false;      // clips in random order
  int use_inters = 0;            // union/intersection clusters: 0 off, 1, 2 sorted
  int cluster_size = 15;         // nodes aimed at in a cluster; 3 to 1000
};
extern swap_settings swapping;
void set_swapping(const swap_settings& wanted);

constexpr int all_taxa = 1'000'000'000;  // a look-ahead without a number

/// How a builder puts taxa in order; part of the settings of `mult`.
struct addition_settings {
  int informative = 0;   // `ias`: taxa to reorder by informative characters; 0 off
  int look = 0;          // taxa looked at for each addition; 0: a plain random sequence
  int rule = 0;          // 0 largest best-to-worst difference (`sas`), 1 closest, 2 furthest
  int cluster_from = 0;  // node clusters after this many taxa; 0 never
};

struct search_settings_state {
  double suboptimal = 0;  // trees up to this much above the best are kept; score units
  double relative_suboptimal =
      0;  // largest relative fit difference to the tree being swapped; 0 off
  int clips_between_reports = 0;     // 0: by the size of the data
  bool best_by_constraints = false;  // `best` drops trees that break constraints
};
extern search_settings_state search_settings;
void set_suboptimal(double absolute, double relative);
void set_clips_between_reports(int clips);
void set_best_by_constraints(bool on);

}  // namespace zeb
