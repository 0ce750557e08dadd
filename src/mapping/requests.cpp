#include "mapping/requests.h"

#include <algorithm>
#include <cstdint>

#include "base/errors.h"
#include "base/indices.h"
#include "language/input.h"
#include "language/interpreter.h"
#include "language/lexer.h"
#include "language/lists.h"
#include "mapping/node_states.h"
#include "mapping/soft_polytomy.h"
#include "matrix/matrix.h"
#include "trees/tree_store.h"

namespace zeb {
namespace {

std::vector<int> marked(const std::vector<std::uint8_t>& marks) {
  std::vector<int> numbers;
  for (std::size_t i = 0; i < marks.size(); ++i)
    if (marks[i]) numbers.push_back(static_cast<int>(i));
  return numbers;
}

}  // namespace

void require_data_and_trees(const char* doing) {
  require_data(doing);
  require_trees();
}

mapping_request read_trees_and_characters() {
  mapping_request request;
  std::vector<std::uint8_t> trees(at(store.ntrees), 0);
  constexpr unsigned flags = list_slash_ends | list_in_tree_buffer | list_one_tree;
  if (!read_list(flags, 0, store.ntrees, "tree", trees)) trees.assign(trees.size(), 1);
  request.trees = marked(trees);
  if (request.trees.empty()) error_end("No trees specified");
  std::vector<std::uint8_t> characters(at(matrix.nchar), 0);
  request.characters_listed = accept_char('/');
  if (request.characters_listed) {
    if (!read_list(list_plain, 0, matrix.nchar, "character", characters))
      error_end("Expected a list of characters");
  } else {
    for (int c = 0; c < matrix.nchar; ++c) characters[at(c)] = matrix.characters[at(c)].active != 0;
  }
  request.characters = marked(characters);
  return request;
}

std::optional<figure_request> read_figure_or_end(const svg_options& defaults) {
  std::optional<figure_request> figure;
  if (accept_char('&')) figure = read_figure_request(defaults);
  expect_end();
  return figure;
}

void refuse_soft_landmarks(const std::vector<int>& characters, polytomy_kind polytomies) {
  if (polytomies != polytomy_kind::soft) return;
  const auto found = std::ranges::find_if(characters, is_landmark);
  if (found != characters.end())
    error_end_f(
        "Polytomies for landmark characters (e.g. char. %i) cannot be optimized as \"soft\"",
        *found);
}

void warn_of_large_polytomies(const std::vector<int>& trees,
                              const std::function<bool(std::size_t)>& is_resolved) {
  for (const int t : trees) {
    const descendant_lists lists = descendants_of(stored_tree(t), matrix.ntax);
    const auto most = at(*std::max_element(lists.count.begin(), lists.count.end()));
    if (is_resolved(most)) continue;
    warning("Large polytomies are taken as hard, as in tree", t);
    return;
  }
}

void warn_of_large_polytomies(const mapping_request& request) {
  warn_of_large_polytomies(request.trees, [&](std::size_t branches) {
    return std::all_of(request.characters.begin(), request.characters.end(), [&](int c) {
      return is_landmark(c) || can_resolve(state_model(c), branches);
    });
  });
}

}  // namespace zeb
