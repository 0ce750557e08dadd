#include "trees/drawing/tags.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <utility>

#include "base/indices.h"
#include "base/message_text.h"
#include "base/number_text.h"
#include "base/text_columns.h"
#include "console/output.h"
#include "language/fit_text.h"
#include "matrix/matrix.h"
#include "trees/branch_labels.h"
#include "trees/drawing/text_lines.h"
#include "trees/notation/parenthetical_writer.h"
#include "trees/notation/taxon_names.h"
#include "trees/terminal_sets.h"
#include "trees/tree_store.h"

namespace zeb {

tag_store tags;

namespace {

constexpr std::string_view number_symbols = "-YN X";  // stand for -1 to -5

/// New numbers of the nodes under normalisation, -1 for numbers that aren't in the tree.
std::vector<int> normal_numbers(const_tree_span tree, int ntax) {
  std::vector<int> number(tree.size(), -1);
  number[at(ntax)] = ntax;
  int next = ntax + 1;
  for (int t = 0; t < ntax; ++t) {
    if (is_absent(tree, t)) continue;
    number[at(t)] = t;
    for (int n = tree[at(t)]; number[at(n)] < 0; n = tree[at(n)]) number[at(n)] = next++;
  }
  return number;
}

void add_tags(const_tree_span tree, std::span<const std::string> texts) {
  const int ntax = matrix.ntax;
  note_source_of_tags(tag_source::hand);
  std::map<terminal_set_key, int> target;
  const std::vector<terminal_set_key> own = terminal_set_keys(tags.tag_tree, ntax);
  for (int n = 0; n < static_cast<int>(own.size()); ++n)
    if (is_tag_node(n)) target.emplace(own[at(n)], n);
  const std::vector<terminal_set_key> keys = terminal_set_keys(tree, ntax);
  bool too_long = false;
  for (std::size_t n = 0; n < keys.size() && n < texts.size(); ++n) {
    const auto found = texts[n].empty() ? target.end() : target.find(keys[n]);
    if (found == target.end()) continue;
    std::string& tag = tags.tag_texts[at(found->second)];
    const char separator = tags.tag_separator ? tags.tag_separator : '/';
    const std::string longer = tag.empty() ? texts[n] : tag + separator + texts[n];
    if (longer.size() > longest_tag)
      too_long = true;
    else
      tag = longer;
  }
  if (too_long) report_line("Message too long (not copied)");
}

void add_title(std::string_view title) {
  if (title.empty()) return;
  const std::string before = tags.tag_title.empty() ? "" : tags.tag_title + " / ";
  if (before.size() + title.size() <= longest_tag_title)
    tags.tag_title = before + std::string(title);
}

/// What ends a tag in a tree's text can't stand within one.
std::string one_word(std::string text) {
  const auto ends_tag = [](unsigned char c) { return c < 33 || c == '*' || c == ';'; };
  std::replace_if(text.begin(), text.end(), ends_tag, '_');
  return text;
}

}  // namespace

void set_tag_storing(bool on) { tags.tags_on = on; }
void set_tag_adding(bool on) { tags.tags_add = on; }

void separate_tag_lines(int width, char position) {
  tags.tag_separator = '\\';
  tags.tag_width = width;
  tags.tag_position = position;
}
void join_tag_lines() { tags.tag_separator = 0; }

void note_source_of_tags(tag_source source) { tags.source = source; }

void clear_tags() {
  note_source_of_tags(tag_source::hand);
  tags.tags_present = false;
  tags.tag_tree.clear();
  tags.tag_texts.clear();
  tags.tag_title.clear();
}

void set_tag_tree(const_tree_span tree, std::span<const std::string> texts,
                  std::string_view title) {
  const std::vector<int> number = normal_numbers(tree, matrix.ntax);
  std::vector<tree_node> copy(tree.begin(), tree.end());
  normalise_tree(copy, matrix.ntax);
  std::vector<std::string> moved(copy.size());
  for (std::size_t n = 0; n < texts.size() && n < number.size(); ++n)
    if (number[n] >= 0) moved[at(number[n])] = text_in_bytes(fit_text(texts[n]), longest_tag);
  tags.tag_tree = std::move(copy);
  tags.tag_texts = std::move(moved);
  tags.tag_title = title.substr(0, longest_tag_title);
  tags.tags_present = true;
  note_source_of_tags(tag_source::hand);
}

void set_tag_tree_to_stored(int number, tag_source source, std::string_view title) {
  std::vector<std::string> texts;
  for (const branch_label& one : labels_of_tree(number)) texts.push_back(one.text());
  set_tag_tree(stored_tree(number), texts, title);
  note_source_of_tags(source);
}

void store_drawn_tags(const_tree_span tree, std::string_view title,
                      std::span<const std::string> texts) {
  if (!tags.tags_present) return set_tag_tree(tree, texts, title);
  if (texts.empty()) return;
  add_tags(tree, texts);
  add_title(title);
}

void set_tag_tree_with_former(const_tree_span tree, std::span<const std::string> texts,
                              std::string_view title) {
  if (!tags.tags_present) return set_tag_tree(tree, texts, title);
  const std::vector<tree_node> former_tree = tags.tag_tree;
  const std::vector<std::string> former_texts = tags.tag_texts;
  const std::string former_title = tags.tag_title;
  set_tag_tree(tree, {}, former_title);
  add_tags(former_tree, former_texts);
  add_tags(tree, texts);
  add_title(title);
}

bool is_tag_node(int node) {
  if (!tags.tags_present || node < 0 || node >= node_limit(tags.tag_tree, matrix.ntax))
    return false;
  return node >= matrix.ntax || !is_absent(tags.tag_tree, node);
}

bool has_any_tag() {
  if (!tags.tags_present) return false;
  for (const std::string& text : tags.tag_texts)
    if (!text.empty()) return true;
  return false;
}

void set_tag(int node, std::string_view text) {
  tags.tag_texts[at(node)] = text;
  note_source_of_tags(tag_source::hand);
}

void collapse_untagged_nodes() {
  const int ntax = matrix.ntax;
  const int limit = node_limit(tags.tag_tree, ntax);
  const auto stays = [&](int v) { return v <= ntax || !tags.tag_texts[at(v)].empty(); };
  std::vector<int> up(tags.tag_tree.size(), -1);
  for (int v = 0; v < limit; ++v) {
    if (v == ntax || !stays(v) || (v < ntax && is_absent(tags.tag_tree, v))) continue;
    int above = tags.tag_tree[at(v)];
    while (!stays(above)) above = tags.tag_tree[at(above)];
    up[at(v)] = above;
  }
  std::vector<tree_node> tree(tags.tag_tree.size(), 0);
  std::vector<int> number;
  record_from_ancestors(up, tree, ntax, &number);
  std::vector<std::string> texts(tree.size());
  for (int v = 0; v < limit; ++v)
    if (number[at(v)] >= 0) texts[at(number[at(v)])] = tags.tag_texts[at(v)];
  const std::string title = tags.tag_title;
  set_tag_tree(tree, texts, title);
}

void erase_tags(bool of_terminals) {
  note_source_of_tags(tag_source::hand);
  for (int n = 0; n < static_cast<int>(tags.tag_texts.size()); ++n)
    if ((n < matrix.ntax) == of_terminals) tags.tag_texts[at(n)].clear();
}

void set_tag_title(std::string_view title) { tags.tag_title = title.substr(0, longest_tag_title); }

void eliminate_empty_tag_lines() {
  note_source_of_tags(tag_source::hand);
  for (std::string& text : tags.tag_texts) {
    std::string kept;
    for (const std::string& line : text_lines(text, '\\', 0)) {
      if (line.find_first_not_of(' ') == std::string::npos) continue;
      if (!kept.empty()) kept += '\\';
      kept += line;
    }
    text = kept;
  }
}

std::string tag_tree_text() {
  taxon_names names;
  return parenthetical_text(
      tags.tag_tree, matrix.ntax, [&](int t) { return tree_label(t, names); },
      [](int node) { return one_word(tags.tag_texts[at(node)]); });
}

std::vector<std::string> readable_tags() {
  std::vector<std::string> out{"tread", "'Tree with tags'"};
  out.push_back(stored_tree_text(tags.tag_tree) + ";");
  out.emplace_back("ttag *!;");
  for (int n = 0; n < static_cast<int>(tags.tag_texts.size()); ++n)
    if (is_tag_node(n) && !tags.tag_texts[at(n)].empty())
      out.push_back("ttag +" + std::to_string(n) + " " + tags.tag_texts[at(n)] + ";");
  return out;
}

std::vector<double> tags_as_numbers(bool symbols, bool internal_only, int* bad_node) {
  std::vector<double> values(tags.tag_texts.size(), 0);
  *bad_node = -1;
  for (int n = internal_only ? matrix.ntax : 0; n < static_cast<int>(values.size()); ++n) {
    const std::string& text = tags.tag_texts[at(n)];
    if (!is_tag_node(n) || text.empty()) continue;
    const std::size_t symbol = text.size() == 1 ? number_symbols.find(text[0]) : std::string::npos;
    if (symbols && symbol != std::string::npos) {
      values[at(n)] = -1.0 - static_cast<double>(symbol);
      continue;
    }
    const std::optional<double> value = real_of(text);
    values[at(n)] = value.value_or(0);
    if ((!value || !std::isfinite(*value)) && *bad_node < 0) *bad_node = n;
  }
  return values;
}

void tags_from_numbers(std::span<const double> values, bool symbols, bool internal_only) {
  note_source_of_tags(tag_source::hand);
  for (int n = internal_only ? matrix.ntax : 0; at(n) < values.size(); ++n) {
    if (!is_tag_node(n)) continue;
    const double value = values[at(n)];
    const int symbol =
        value < 0 && value >= -5 && value == std::floor(value) ? static_cast<int>(-value) - 1 : -1;
    tags.tag_texts[at(n)] = symbols && symbol >= 0 ? std::string(1, number_symbols[at(symbol)])
                                                   : text_of("%.10g", value);
  }
}

}  // namespace zeb
