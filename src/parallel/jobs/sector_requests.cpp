#include "parallel/jobs/sector_requests.h"

#include <algorithm>
#include <cstdint>

#include "base/errors.h"
#include "base/indices.h"
#include "language/lexer.h"
#include "language/lists.h"
#include "matrix/matrix.h"
#include "trees/tree_store.h"

namespace zeb {
namespace {

constexpr int most_sectors = 64;

int read_number(const char* refusal) {
  double number = 0;
  if (!read_optional_whole(&number) || number < 0 || number > 1e9) error_end(refusal);
  return static_cast<int>(number);
}

std::vector<int> read_trees() {
  require_trees();
  std::vector<std::uint8_t> marks(at(store.ntrees), 0);
  const bool given = read_list(list_slash_ends | list_bracket_ends, 0, store.ntrees, "tree", marks);
  std::vector<int> trees;
  for (int t = 0; t < store.ntrees; ++t)
    if (!given || marks[at(t)]) trees.push_back(t);
  return trees;
}

void read_tree(sector_request& request) {
  request.trees = {read_number("P-ZEB: must give the tree for sectors")};
  check_tree_number(request.trees[0]);
}

void read_exclusive(sector_request& request) {
  request.how = sector_request::way::exclusive;
  request.loose = accept_char('-');
  request.size = read_number("P-ZEB: must give number of exclusive sectors (1-64)");
  if (request.size < 1 || request.size > most_sectors)
    error_end("P-ZEB: must give number of exclusive sectors (1-64)");
  read_tree(request);
  if (!accept_char('[')) return;
  std::vector<std::uint8_t> marks(most_sectors, 0);
  read_list(list_plain, 0, most_sectors, "sector", marks);
  if (!accept_char(']')) error_end("Expected ']' after list of sectors");
  for (int i = 0; i < most_sectors; ++i)
    if (marks[at(i)]) request.launched.push_back(i);
}

int read_size(char sign) {
  constexpr const char* missing = "P-ZEB: must give sizes of polytomies, as \">X <Y\"";
  if (!accept_char(sign)) error_end(missing);
  return read_number(missing);
}

void read_polytomies(sector_request& request) {
  request.how = sector_request::way::polytomies;
  request.node = read_number("P-ZEB: must give a node");
  request.above = read_size('>');
  request.below = read_size('<');
  if (request.below - request.above < 2)
    error_end_f("P-ZEB: no size of polytomies is above %i and below %i", request.above,
                request.below);
  read_tree(request);
  if (request.node < matrix.ntax)
    error_end("P-ZEB: must give an internal node, not terminal", request.node);
}

void read_around(sector_request& request) {
  request.how = sector_request::way::around;
  request.node = read_number("P-ZEB: must give a node");
  request.distance = read_number("P-ZEB: must give a distance in branches");
  if (request.distance < 1) error_end("P-ZEB: must give a distance of at least 1 branch");
  request.trees = {0};
  if (skip_blanks_peek() >= '0' && skip_blanks_peek() <= '9') read_tree(request);
}

}  // namespace

sector_request read_sector_request() {
  require_trees();
  if (matrix.ntax < 8)
    error_end("P-ZEB: cannot spawn parallel sectorial searches for less than 8 taxa");
  sector_request request;
  if (accept_char('*')) {
    read_exclusive(request);
  } else if (accept_char('!')) {
    read_polytomies(request);
  } else if (accept_char('d')) {
    read_around(request);
  } else {
    double size = 0;
    const int largest = matrix.ntax / 2;
    if (!read_optional_whole(&size) || size <= 5 || size > largest)
      error_end_f("P-ZEB: must specify size of random sector (5 < S <= %i)", largest);
    request.size = static_cast<int>(size);
    request.trees = read_trees();
  }
  if (request.how != sector_request::way::random && request.how != sector_request::way::exclusive)
    check_node_number(request.trees[0], request.node);
  return request;
}

}  // namespace zeb
