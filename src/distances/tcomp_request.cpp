#include "distances/tcomp_request.h"

#include "base/errors.h"
#include "distances/commands.h"
#include "distances/compared_request.h"
#include "language/interpreter.h"

namespace zeb {
namespace {

constexpr auto trees = &tcomp_request::trees;

constexpr command_options rows = {
    choice<&tcomp_request::groups>("rf", 1).help(
        "Robinson-Foulds distances: the groups in only one of the trees"),
    choice<&tcomp_request::triplets>("triplets", 1)
        .help("sets of three taxa that the trees don't resolve alike"),
    choice<&tcomp_request::quartets>("quartets", 1)
        .help("sets of four taxa that the trees, without roots, don't resolve alike"),
    choice<&tcomp_request::agreement>("agreement", 1)
        .help("taxa that must be left out for the trees to be the same: those beyond the largest "
              "agreement subtree"),
    choice<trees, &compared_trees_request::unrooted>("unrooted", 1)
        .help("groups and agreement subtrees without regard to the root"),
    choice<trees, &compared_trees_request::normalised>("normalise", 1)
        .help("distances as a share of the most there can be"),
    choice<trees, &compared_trees_request::common>("common", 1)
        .help(
            "cut all trees to the taxa that all of them have, rather than each pair to those that "
            "both have"),
    choice<&tcomp_request::together>("together", 1)
        .help("instead, the largest agreement subtree of all the trees at once, as found by taking "
              "them in several random orders"),
    choice<&tcomp_request::list>("list", 1).help(
        "of two trees, list the groups that only one of them has"),
    choice<&tcomp_request::draw>("draw", 1).help(
        "draw the first tree, with the number of other trees that have each group, and of those "
        "that contradict it"),
    phylip_option<tcomp_request>,
    csv_option<tcomp_request>,
    array_option<tcomp_request>,
    choice<&tcomp_request::save>("*", 1).help(
        "keep the largest agreement subtree, of two trees or of all together, as the last tree"),
};

void check(const tcomp_request& request) {
  if (request.target.is_given() && request.measures() > 1)
    error_end("Only distances of one kind can be written or stored");
  const std::size_t n = request.trees.count();
  if (request.list && n != 2) error_end("Option \"list\" is for two trees");
  if (request.save && n != 2 && !request.together)
    error_end("Option \"*\" is for two trees, or for \"together\"");
}

}  // namespace

constexpr option_table tcomp_options =
    rows.table("tcomp", {.unknown = "Unidentified string in tcomp options: %s"});

tcomp_request read_tcomp_request() {
  require_data("comparing trees");
  tcomp_request request;
  read_compared_trees(request, tcomp_options);
  check(request);
  return request;
}

}  // namespace zeb
