// Wide characters: those whose sets don't fit in the fields of packed words, because a node needs
// more of them than a set of states, such as a cost for each state or a range of values.
//
// A kind of such characters is one row of a table, a `wide_kind`: which characters it takes, how
// much room their sets need, and what to do with them at one node or one branch. Where the sets of
// nodes change, the engine calls the driver (wide_sets.h) beside the kernels of packed words, and
// the driver walks the tree and asks the rows: in full passes and those of subtrees, in the waves
// after a clip and an insertion, when a subtree is rerooted, when clusters are united and widened,
// when changes are undone, and when branches are judged for collapsing. The searches ask it what a
// joining costs, after the packed words have had their say: a candidate that these refuse costs a
// wide character nothing. Each call is made only if `search_data::has_wide` is set, so data without
// such characters pay for one test, outside of all loops over words.
//
// A row knows sets, not trees. It gets characters (a span, so that a loop over cheap ones stays
// inside) and the sets of the nodes concerned, each character's at its own place, and tells the
// steps of each character. Weights, units, implied weights, bounds, undoing and the order of
// nodes are the driver's. So a row must keep this contract, by which waves may stop early: what a
// function writes depends on nothing but the sets that it is given, and it writes every word of
// them, so that comparing words tells whether anything changed. `down` depends on the subtree of a
// node alone, `final` on the ancestor's `final` and the node's own sets, `branch` on these three.
//
// Characters with costs of changes (`cost_vectors.h`) and ranges of values (`value_ranges.h`) are
// such kinds. The length of a tree may depend on where its root is (`is_rooted`): then searches
// take full passes where a root moves, and keep the outgroup. Joining a clip by another branch than
// its own root then also changes what the clip itself costs, up or down; since searches take costs
// for at least 0, the driver finds the rooting of a clip that costs least (`rooting`), and `join`
// counts from there.
//
// Tried first with one kernel slot for each function and kind, as the packed words have: then every
// place that walks the tree was written once more for each kind.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "engine/kernels/kernels.h"

namespace zeb {

/// Words that a character takes in each of a node's arrays. Clusters have those of `branch`.
struct wide_room {
  std::int32_t down = 0;
  std::int32_t final = 0;
  std::int32_t branch = 0;
};

/// A character in wide sets. The sets of a node are three arrays of words (`down`, `final`,
/// `branch`); the character has its own part of each, from the word given here.
struct wide_character {
  std::int32_t character;  // of the matrix
  std::int32_t weight;
  std::int32_t min_steps;       // least on any tree, less what `encode` has told
  std::int32_t internal_steps;  // add to the homoplasy under implied weights
  std::int32_t down_at;
  std::int32_t final_at;
  std::int32_t branch_at;
  wide_room room;
  const void* model;  // what the kind knows of it, in the arena
  // Implied weights: steps on the tree in work, or its two halves, and their fit, unweighted.
  std::int64_t steps;
  double here;
  fit_curve curve;   // by homoplasy
  std::int32_t set;  // -1: weighted by itself
  std::int64_t
      least_rooting;  // what the clip costs by its best root, less what it costs by its own
};
using wide_characters = std::span<const wide_character>;

/// What is joined to what: a whole tree by its root, whose `down` sets count (a terminal by itself
/// is one); a branch; a cluster of branches. Or a node by its `final` sets, which is no joining but
/// asks roughly how much changes between two nodes.
enum class join_end : std::uint8_t { root, branch, cluster, final };
struct wide_operand {
  join_end end;
  const word* words;
};

struct wide_kind {
  const char* name;
  /// What a step is in units of the score.
  double unit = 1;
  /// How many characters waves and bounded costs take at a time.
  int together = 1;

  // -- when data are packed --
  bool (*takes)(int character);
  /// Null: the kind needs no model.
  const void* (*model)(int character);
  /// Rooted characters: the model for a part of the tree by itself. Its root stands for the node
  /// next to the part, and pays what the whole tree outside costs by the state of that node
  /// (`above`: its `final`, `down`: that of the part's top). Terminal 0 says nothing then: its sets
  /// are written to `outside`. Null: the kind has none.
  const void* (*model_of_part)(const wide_character& c, const word* above, const word* down,
                               word* outside) = nullptr;
  wide_room (*room)(const wide_character& c);
  /// Does the length of a tree depend on where its root is?
  bool (*is_rooted)(const wide_character& c);
  /// Sets of a terminal, from the cell of a taxon (matrix row). Returns the unweighted steps that
  /// the cell adds on every tree, if they are to be left out of the sets.
  int (*encode)(const wide_character& c, int taxon, word* down);

  // -- sets of nodes; steps are added to `steps`, one entry for each character --
  void (*down)(wide_characters all, const word* left, const word* right, word* own,
               std::int64_t* steps);
  /// `final` of the root of the tree in work, or (`whole` false) of a part of it.
  void (*top)(wide_characters all, const word* down, word* final, bool whole, std::int64_t* steps);
  /// Of an internal node, from its ancestor's `final`.
  void (*final)(wide_characters all, const word* above, const word* down, word* own);
  /// Of the branch from a node to its ancestor; `final` is null at a terminal.
  void (*branch)(wide_characters all, const word* above, const word* final, const word* down,
                 word* own);

  // -- clusters --
  /// The sets of a cluster without branches.
  void (*empty)(wide_characters all, word* cluster);
  /// Takes a branch into a cluster.
  void (*widen)(wide_characters all, const word* branch, word* cluster);

  // -- joining and collapsing --
  /// Steps of joining a clip to the main tree: exact, or with a cluster on either side no more than
  /// with any of its branches. Added to `steps`.
  void (*join)(wide_characters all, wide_operand clip, wide_operand main, std::int64_t* steps);
  /// The same for the sum over all characters, weighted; once it is above `bound` it need not be
  /// exact. Null: made from `join`.
  std::int64_t (*join_sum)(wide_characters all, wide_operand clip, wide_operand main,
                           std::int64_t bound);
  /// Does a character keep the branch above a node under a quick collapsing rule? 1: some
  /// reconstruction has a change there; 2: the final sets differ; 3: every reconstruction has one.
  bool (*stays)(wide_characters all, int rule, const word* above, const word* down,
                const word* final);
  /// Rooted characters: what a clip costs if the branch above one of its nodes has the root, less
  /// what it costs as it stands. Null: the kind has none.
  std::int64_t (*rooting)(const wide_character& c, const word* branch);
};

/// The characters of one kind in a data set.
struct wide_part {
  const wide_kind* kind;
  std::span<wide_character> characters;
};

/// The sets of wide characters in a data set: node v's at `v` times the number of words of that
/// array.
struct wide_data {
  std::span<wide_part> parts;
  word* down = nullptr;
  word* final = nullptr;
  word* branch = nullptr;
  word* cluster = nullptr;  // by cluster, while the swapper has some
  std::size_t down_words = 0;
  std::size_t final_words = 0;
  std::size_t branch_words = 0;
  double base_cost = 0;  // of characters that are the same on all trees, in units of the score
  // Nodes whose `final` a rerooting left wrong: the next wave takes them as changed.
  std::span<std::uint8_t> is_stale;
  // Scratch: the sets of a node, and steps by character.
  std::span<word> scratch;
  std::span<std::int64_t> steps;
};

/// The table of kinds, in the order in which they are asked for a character. `kind` must live as
/// long as it stands there, and data packed with it.
void add_wide_kind(const wide_kind& kind);
void remove_wide_kind(const wide_kind& kind);
const std::vector<const wide_kind*>& wide_kinds();

}  // namespace zeb
