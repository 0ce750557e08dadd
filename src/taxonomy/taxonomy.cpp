#include "taxonomy/taxonomy.h"

#include <strings.h>

#include <algorithm>
#include <map>

#include "base/indices.h"
#include "matrix/matrix.h"
#include "trees/tree_walks.h"

namespace zeb {

taxonomy_state taxonomy;

namespace {

constexpr std::string_view line = "____";

/// Where the name proper ends, and where the taxonomy begins; both the end of the name without one.
struct name_parts {
  std::size_t end = 0;
  std::size_t groups = 0;
};
name_parts parts_of(std::string_view name) {
  const std::size_t sign = name.find('@');
  const std::size_t underlines = name.find(line);
  if (sign < underlines) return {sign, sign + 1};
  if (underlines != name.npos) return {underlines, underlines + line.size()};
  return {name.size(), name.size()};
}

std::vector<std::string> group_names(std::string_view name) {
  std::vector<std::string> out;
  std::string word;
  for (const char c : std::string(name.substr(parts_of(name).groups)) + '_') {
    if (c != '_') {
      word += c;
    } else if (!word.empty()) {
      out.push_back(std::move(word));
      word.clear();
    }
  }
  return out;
}

/// A label as one word of a taxonomy.
std::string as_group_name(std::string label) {
  for (char& c : label)
    if (c == '_' || c == ' ' || c == '@') c = '-';
  return label;
}

}  // namespace

void use_taxonomy(bool on) { taxonomy = {on, matrix.generation}; }

bool taxonomy_in_use() { return taxonomy.on && taxonomy.generation == matrix.generation; }

std::string_view name_proper(std::string_view name) { return name.substr(0, parts_of(name).end); }

taxonomic_groups read_taxonomy() {
  taxonomic_groups out;
  out.group_of.assign(at(matrix.ntax), -1);
  std::map<std::pair<int, std::string>, int> numbers;  // by parent and name
  for (int t = 0; t < matrix.ntax; ++t) {
    int& innermost = out.group_of[at(t)];
    for (std::string& name : group_names(taxon_name(t))) {
      const auto [place, is_new] =
          numbers.try_emplace({innermost, name}, static_cast<int>(out.groups.size()));
      const int rank = innermost < 0 ? 0 : out.groups[at(innermost)].rank + 1;
      if (is_new) out.groups.push_back({std::move(name), innermost, rank, taxon_set(matrix.ntax)});
      innermost = place->second;
      out.groups[at(innermost)].members.insert(t);
    }
  }
  return out;
}

std::string taxonomic_groups::path(int group) const {
  std::string text;
  for (int g = group; g >= 0; g = groups[at(g)].parent)
    text = groups[at(g)].name + (text.empty() ? "" : "_") + text;
  return text;
}

bool taxonomic_groups::is_within(int group, int outer) const {
  while (group >= 0 && group != outer) group = groups[at(group)].parent;
  return group == outer;
}

bool taxonomic_groups::may_belong(int taxon, int group) const {
  const int own = group_of[at(taxon)];
  return own < 0 || is_within(own, group) || is_within(group, own);
}

std::vector<tree_node> taxonomic_groups::tree(int ntax, std::vector<std::string>* texts) const {
  const int first = ntax + 1;  // node of group 0
  std::vector<int> up(at(first) + std::max(groups.size(), at(ntax)), -1);
  const auto node_of = [&](int group) { return group < 0 ? ntax : first + group; };
  for (int t = 0; t < ntax; ++t) up[at(t)] = node_of(group_of[at(t)]);
  for (std::size_t g = 0; g < groups.size(); ++g) up[at(first) + g] = node_of(groups[g].parent);
  std::vector<tree_node> out(at(2 * ntax - 1), 0);
  std::vector<int> new_numbers;
  record_from_ancestors(up, out, ntax, &new_numbers);
  if (!texts) return out;
  texts->assign(out.size(), {});
  for (std::size_t g = 0; g < groups.size(); ++g) {
    const int node = new_numbers[at(first) + g];
    if (node < 0) continue;
    std::string& text = (*texts)[at(node)];
    text += (text.empty() ? "" : "/") + groups[g].name;
  }
  return out;
}

int taxonomic_group_named(std::string_view name) {
  const taxonomic_groups all = read_taxonomy();
  const std::string wanted(name);
  for (std::size_t g = 0; g < all.groups.size(); ++g)
    if (strcasecmp(all.groups[g].name.c_str(), wanted.c_str()) == 0) return static_cast<int>(g);
  return -1;
}

int names_from_labels(const_tree_span tree, const std::vector<std::string>& labels) {
  int cut = 0;
  const std::size_t longest = at(matrix.name_length) - 1;
  for (int t = 0; t < matrix.ntax; ++t) {
    if (is_absent(tree, t)) continue;
    std::vector<std::string> path;
    for (int v = t; v != matrix.ntax;) {
      v = tree[at(v)];
      if (!labels[at(v)].empty()) path.push_back(as_group_name(labels[at(v)]));
    }
    std::string name(name_proper(taxon_name(t)));
    char separator = '@';
    for (auto group = path.rbegin(); group != path.rend(); ++group) {
      if (name.size() + 1 + group->size() > longest) {
        ++cut;
        break;
      }
      name += separator + *group;
      separator = '_';
    }
    set_taxon_name(t, name);
  }
  return cut;
}

}  // namespace zeb
