// Sectorial searches: parts of a tree are searched as data sets of their own, which costs little,
// and the whole tree is swapped now and then.
#pragma once

#include <array>
#include <cstdint>
#include <span>

#include "search/sectors/sector_search.h"

namespace zeb {

/// The settings of `sectsch`.
struct sector_settings {
  enum selection_kind : int { random, constrained, exclusive, around };
  int selection = random;
  sector_search_settings each;

  // -- random sectors --
  int minsize = 45;  // terminals of the smallest and the largest
  int maxsize = 45;
  int increase = 100;                // per cent by which sizes grow
  int selfactor = 50;                // for size S of T taxa, T * 100 / (S * selfactor) are drawn
  std::array<int, 30> selections{};  // or as many as this says, size by size
  int selection_count = 0;
  int moveon = 0;    // go to the next size after so many that brought nothing; 0 never
  int global = 10;   // TBR on the whole tree after so many changes; 0 never
  int dglobal = 10;  // likewise, for sizes from `godrift` on

  // -- exclusive sectors --
  int divisions = 8;  // in the first round
  int divisions_last = 12;
  bool divisions_given = false;  // else they are lowered where chunks would be too small
  int xss_rounds = 2;
  int xss_global = 4;  // TBR on the whole tree every so many rounds, and after the last
  bool xeven = false;
  bool chkroot = false;

  // -- by the groups of the constraints in force --
  int minfork = 10;  // branches of the smallest and the largest fork
  int maxfork = 1000;
  int css_rounds = 3;

  // -- around a node --
  int center = -1;
  int diameter = 0;

  double findscore = 0;  // stop at this score or a better one; 0 never
  bool keepall = true;
  int tree = -1;  // this one only; -1: all

  // What the options that are being read say; forgotten before the settings are taken.
  int brackets = 0;               // pairs of brackets
  const char* fixed_by_run = "";  // an option that can't be set by a command that runs
};
extern sector_settings sectors;  // written by the command

/// Improves `tree` (internal numbering, not a slot) by sectors; returns its score. With
/// `constrained`, those are the forks of the tree of all groups that the constraints in force ask
/// for, the user's or an `auto_constraint`; without any, all of the tree is one.
double search_sectors(search_context& context, std::span<std::int32_t> tree,
                      const sector_settings& options);

/// Tells where memory allows only smaller sectors than are wanted.
void tell_limit_of_sectors(const search_context& context, const sector_settings& options);

}  // namespace zeb
