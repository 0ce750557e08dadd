#include "supports/bremer_requests.h"

#include <algorithm>

#include "base/errors.h"
#include "base/indices.h"
#include "language/interpreter.h"
#include "language/lexer.h"
#include "language/lists.h"
#include "language/options.h"
#include "matrix/matrix.h"
#include "supports/commands.h"
#include "supports/search_text.h"
#include "trees/tree_store.h"

namespace zeb {
namespace {

constexpr auto how = &bremer_request::how;

[[noreturn]] void specified_twice() {
  error_end("TBR-checking for bremer supports cannot be specified twice");
}

/// "!", "!+", "!!", and both.
void read_swapping(bremer_request& request) {
  if (request.how.source == bremer_settings::by_swapping) specified_twice();
  if (request.how.source == bremer_settings::by_searching)
    error_end("Bremer supports are calculated either by TBR or by searches");
  request.how.source = bremer_settings::by_swapping;
  for (int c = skip_blanks_peek(); c == '!' || c == '+'; c = skip_blanks_peek()) {
    next_nonblank();
    bool& asked = c == '!' ? request.how.collapse_none : request.how.add_excess;
    if (asked) specified_twice();
    asked = true;
  }
}

/// "&X*F", either of them optional.
void refuse_landmarks() {
  for (const character_record& record : matrix.characters)
    if (record.active && record.type == landmark_data)
      error_end("Cannot do combined bremer supports for data sets with landmarks");
}

void read_power(bremer_request& request) {
  refuse_landmarks();
  bremer_settings& s = request.how;
  s.combination = bremer_settings::power;
  if (read_optional_float(&s.deletion)) {
    if (!(s.deletion < 1)) error_end("Deletion probability must be less than 1");
    if (s.deletion < 0) error_end("Deletion probability cannot be negative");
  }
  if (!accept_char('*')) return;
  if (!read_optional_float(&s.factor))
    error_end("Symbol '*' must be followed by factor for absolute bremer supports");
  if (!(s.factor > 0)) error_end("Factor for absolute bremer supports must be greater than 0");
}

void read_product(bremer_request& request) {
  refuse_landmarks();
  request.how.combination = bremer_settings::product;
  if (!accept_char('x')) accept_char('X');
}

/// "<[commands]", the commands optional.
void read_searching(bremer_request& request) {
  if (request.how.source == bremer_settings::by_swapping)
    error_end("Bremer supports are calculated either by TBR or by searches");
  request.how.source = bremer_settings::by_searching;
  if (skip_blanks_peek() == '[')
    request.how.search = read_bracketed_search("Expected ']' after the search for other trees");
}

/// ":T/P".
void read_approximation(bremer_request& request) {
  int tree = -1;
  if (!read_optional_int(&tree)) error_end("Must give a tree to approximate Bremer supports");
  check_tree_number(tree);
  request.approximate = tree;
  if (!accept_char('/')) return;
  if (!read_optional_float(&request.spared) || !(request.spared >= 0 && request.spared < 1))
    error_end("Proportion of groups must be at least 0, and less than 1");
}

constexpr command_options rows = {
    form<read_swapping>("!").argument("[!][+]").help(
        "by TBR moves within the value of subopt; with \"!!\" no group is collapsed, with \"+\" "
        "trees that cost more than the best count with that"),
    form<read_searching>("<")
        .argument("[commands]")
        .help("by searches: for each group one that is not to find it, by the commands in "
              "brackets, or "
              "else by five replications of mult"),
    real<how, &bremer_settings::cut>("=", {-1e9, 1e9}, "Must give a cutoff for Bremer supports")
        .help("collapse groups with less than X"),
    choice<how, &bremer_settings::measure>("[", bremer_settings::relative)
        .help("relative supports"),
    choice<how, &bremer_settings::measure>("]", bremer_settings::relative_within)
        .help("relative supports by trees within the absolute support only"),
    form<read_power>("&").argument("[X][*F]").help(
        "combined supports, for a deletion probability of X (0.36 without it), absolute supports "
        "divided by F"),
    form<read_product>("|").argument("x").help(
        "combined supports, the product of absolute and relative ones"),
    form<read_approximation>(":").argument("T[/P]").help(
        "the value of subopt that collapses all groups of tree T, or all but a proportion P"),
    choice<how, &bremer_settings::save>("*", 1).help("save the result as the last tree"),
    choice<how, &bremer_settings::table>(">", 1).help("show the values as a table too"),
};

int count_of(std::span<const std::uint8_t> flags) {
  return static_cast<int>(std::count(flags.begin(), flags.end(), 1));
}

/// Signs and items of the list of trees, in any order; a colon after an item is one of the list.
void read_trees(bremer_request& request) {
  request.trees.assign(at(store.ntrees), 0);
  constexpr unsigned flags = list_slash_ends | list_in_tree_buffer;
  list_reader list(flags, 0, store.ntrees, find_list_kind("tree"), request.trees);
  bool any = false;
  for (int c = skip_blanks_peek(); c != ';' && c != '/'; c = skip_blanks_peek()) {
    if ((c != ':' || !any) && read_sign(request, bsupport_options)) continue;
    list.read_item_at(c);
    any = true;
  }
  if (!any) request.trees.assign(at(store.ntrees), 1);
  request.n_trees = count_of(request.trees);
  if (request.n_trees == 0) error_end("No trees specified");
}

void read_excluded(bremer_request& request) {
  request.excluded.assign(at(matrix.ntax), 0);
  if (accept_char('/')) read_list(list_plain, 0, matrix.ntax, "taxon", request.excluded);
  if (count_of(request.excluded) == matrix.ntax) error_end("Cannot exclude all taxa of the trees");
}

}  // namespace

constexpr option_table bsupport_options = rows.table("bsupport", {});

bremer_request read_bremer_request() {
  require_data("calculating Bremer supports");
  if (store.ntrees == 0) error_end("No trees specified");
  bremer_request request;
  read_trees(request);
  read_excluded(request);
  while (read_sign(request, bsupport_options)) continue;
  check_end();
  if (request.how.cut < 0 && request.how.source == bremer_settings::from_trees)
    error_end("Cutoff for Bremer cannot be negative (unless TBR is used)");
  return request;
}

}  // namespace zeb
