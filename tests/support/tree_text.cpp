#include "support/tree_text.h"

#include <cctype>

namespace zeb_test {
namespace {

std::size_t at(int i) { return static_cast<std::size_t>(i); }

}  // namespace

std::vector<std::int32_t> tree_of(const std::string& text, int ntax) {
  std::vector<std::int32_t> tree(at(2 * ntax - 1), 0);
  int next = ntax;
  int current = -1;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] == '(') {
      if (next > ntax) tree[at(next)] = current;
      current = next++;
    } else if (text[i] == ')') {
      current = current == ntax ? -1 : tree[at(current)];
    } else if (std::isdigit(static_cast<unsigned char>(text[i]))) {
      int number = 0;
      for (; i < text.size() && std::isdigit(static_cast<unsigned char>(text[i])); ++i)
        number = number * 10 + (text[i] - '0');
      --i;
      tree[at(number)] = current;
    }
  }
  tree[at(ntax)] = next;
  return tree;
}

}  // namespace zeb_test
