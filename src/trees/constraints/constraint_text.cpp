#include "trees/constraints/constraint_text.h"

#include <algorithm>
#include <functional>
#include <vector>

#include "language/list_text.h"
#include "matrix/matrix.h"
#include "trees/constraints/constraints.h"
#include "trees/notation/parenthetical_writer.h"

namespace zeb {
namespace {

using set_words_maker = std::function<std::vector<std::string>(const taxon_set&)>;

/// Members, and floating taxa in parentheses.
std::vector<std::string> words_of(const constraint_group& group, const set_words_maker& words) {
  std::vector<std::string> result = words(group.members);
  std::vector<std::string> floating = words(group.floating);
  if (floating.empty()) return result;
  floating.front().insert(0, "(");
  floating.back() += ')';
  result.insert(result.end(), floating.begin(), floating.end());
  return result;
}

std::vector<std::string> numbers(const taxon_set& taxa) {
  return list_items(taxa.size(), [&taxa](int taxon) { return taxa.contains(taxon); });
}

std::vector<std::string> labels(const taxon_set& taxa) {
  std::vector<std::string> words;
  for (const int taxon : taxa) words.push_back(taxon_label(taxon));
  return words;
}

std::string group_as_item(const constraint_group& group, char sign) {
  return std::string("\n  ") + sign + "[" + wrapped_words(words_of(group, numbers), 4) + " ]";
}

std::string list_of_groups(const char* title, const std::vector<constraint_group>& groups) {
  std::string text = std::string("  ") + title + " constraints:\n";
  for (std::size_t g = 0; g < groups.size(); ++g) {
    const std::string head = "    Group " + std::to_string(g) + ":";
    text += head + wrapped_words(words_of(groups[g], labels), head.size()) + "\n";
  }
  return text;
}

}  // namespace

std::string definitions_text() {
  if (!constraints.defined()) return "const -";
  std::string text = "force";
  if (!constraints.tree.empty()) {
    text += "\n  = " + parenthetical_text(constraints.tree, matrix.ntax,
                                          [](int taxon) { return std::to_string(taxon); });
  }
  for (const constraint_group& group : constraints.positive) text += group_as_item(group, '+');
  for (const constraint_group& group : constraints.negative) text += group_as_item(group, '-');
  return text;
}

std::string definitions_line() {
  std::string line = definitions_text();
  std::replace(line.begin(), line.end(), '\n', ' ');
  line.erase(
      std::unique(line.begin(), line.end(), [](char a, char b) { return a == ' ' && b == ' '; }),
      line.end());
  return line;
}

std::string definitions_list() {
  std::string text = "List of constraints:\n";
  if (!constraints.positive.empty()) text += list_of_groups("Positive", constraints.positive);
  if (!constraints.negative.empty()) text += list_of_groups("Negative", constraints.negative);
  if (!constraints.tree.empty()) {
    text += "  Tree constraints\n    " +
            parenthetical_text(constraints.tree, matrix.ntax, taxon_label) + "\n";
  }
  return text;
}

}  // namespace zeb
