#include "formats/labels_from_tags.h"

#include <algorithm>
#include <cmath>

#include "base/errors.h"
#include "base/indices.h"
#include "base/message_text.h"
#include "base/number_text.h"
#include "matrix/matrix.h"
#include "trees/drawing/tags.h"

namespace zeb {

namespace {

bool terminals_have_numbers() {
  return std::any_of(tags.tag_texts.begin(), tags.tag_texts.begin() + matrix.ntax, is_number);
}

/// False: a text finds no place. With `beside_labels` what is no length is a label, and a number at
/// the root too, which has no branch.
bool split_tag(int node, const std::string& tag, bool with_lengths, bool beside_labels,
               branch_label& into) {
  const bool terminal = node < matrix.ntax;
  if (with_lengths) {
    if (is_number(tag) && !(beside_labels && node == matrix.ntax)) {
      into.length = tag;
      return true;
    }
    const std::size_t slash = tag.rfind('/');
    if (slash != std::string::npos && is_number(tag.substr(slash + 1))) {
      into = {tag.substr(0, slash), tag.substr(slash + 1)};
      return !terminal || slash == 0;
    }
    if (!beside_labels) return false;
  }
  if (terminal) return false;
  into.label = tag;
  return true;
}

}  // namespace

std::vector<branch_label> labels_from_tags(tag_use use) {
  const bool with_lengths =
      use == tag_use::lengths || (use == tag_use::both && terminals_have_numbers());
  std::vector<branch_label> labels(tags.tag_texts.size());
  int lost = 0;
  std::string first_lost;
  for (int n = 0; n < static_cast<int>(labels.size()); ++n) {
    const std::string& tag = tags.tag_texts[at(n)];
    if (tag.empty() || split_tag(n, tag, with_lengths, use != tag_use::lengths, labels[at(n)]))
      continue;
    if (lost++ == 0) first_lost = "\"" + tag + "\" of node " + std::to_string(n);
  }
  if (lost > 0) {
    warning(counted(lost, "tag", "tags"),
            use == tag_use::lengths ? "can't be written as branch lengths:"
                                    : "of terminals can't be written as labels:",
            first_lost);
  }
  return labels;
}

bool is_number(const std::string& text) { return std::isfinite(real_of(text).value_or(INFINITY)); }

}  // namespace zeb
