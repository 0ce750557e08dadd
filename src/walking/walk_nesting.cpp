#include "walking/walk_nesting.h"

#include <string>

#include "base/command.h"
#include "base/errors.h"
#include "console/output.h"
#include "language/input.h"
#include "language/interpreter.h"
#include "language/lexer.h"
#include "macro/bodies.h"
#include "macro/macro_language.h"
#include "macro/script_text.h"
#include "trees/tree_store.h"

namespace zeb {

walk_limits walk_levels;

namespace {

struct walk_kind {
  int& limit;
  const char* command;  // as the refusal of nesting names it
  const char* noun;
};

walk_kind describe(body_kind kind) {
  switch (kind) {
    case body_kind::iterrecs:
      return {walk_levels.iterrecs, "iterrecs", "reconstructions"};
    case body_kind::combine:
      return {walk_levels.combine, "\"combine\"", "combinations"};
    default:
      return {walk_levels.travtree, "travtree", "tree-traversing"};
  }
}

}  // namespace

bool accept_walk_limit(body_kind kind) {
  if (!accept_char('=')) return false;
  no_timing();
  const walk_kind walk = describe(kind);
  const std::string noun = std::string("Maximum level of recursion for ") + walk.noun;
  int limit = walk.limit;
  const bool given = read_optional_int(&limit);
  check_end();
  if (given && open_bodies(kind) > 0) error_end(noun + " can't be set while iterating!");
  if (limit < 1) error_end(noun + " must be >= 1 ");
  walk.limit = limit;
  report_line(noun, "is", limit);
  return true;
}

void check_walk_nesting(body_kind kind) {
  const walk_kind walk = describe(kind);
  const std::string refusal = std::string("Cannot nest ") + walk.command + " (change mxproc)";
  if (open_bodies(kind) >= walk.limit) {
    error_end(refusal + "\nMaximum level of recursion for " + walk.noun, "is", walk.limit);
  }
  const int walks = open_bodies(body_kind::travtree) + open_bodies(body_kind::iterrecs) +
                    open_bodies(body_kind::combine);
  if (input.top + walks >= input.mxproc) error_end(refusal);
}

int read_walked_tree() {
  const int tree = read_int();
  if (tree < 0) error_end("Must give tree number");
  if (tree >= store.ntrees) error_end("No tree number", tree);
  return tree;
}

void check_enumeration_nesting() {
  if (open_bodies(body_kind::moves) > 0)
    error_end("Can't nest \"sprit\", \"tbrit\", or \"bandb\" commands");
  check_loop_depth(0);
}

void end_walk(body_kind kind) {
  const char* where = describe(kind).command;
  require_macros();
  check_end();
  reach_body(kind, where).items->end();
  skip_to_body_end();
}

void unmatched_closing_word(const char* opening) {
  require_macros();
  error_end(command.command_name, "valid only after", opening);
}

}  // namespace zeb
