#include "formats/written_words.h"

#include <algorithm>
#include <cctype>
#include <set>

#include "base/errors.h"
#include "base/indices.h"
#include "base/message_text.h"
#include "base/text_columns.h"
#include "matrix/matrix.h"

namespace zeb {

namespace {

constexpr std::size_t longest_of_ten = 10;

/// Signs that end a word or begin a comment where quotes aren't known, or that patterns have, in
/// which names go into some readers.
bool ends_plain_word(unsigned char c) {
  constexpr std::string_view ends = "()[]{}<>,:;='\"`*\\|^?";
  return c < 33 || c == 127 || ends.find(static_cast<char>(c)) != std::string_view::npos;
}

std::string folded(std::string word) {
  for (char& c : word) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  return word;
}

}  // namespace

word_writer::word_writer(word_form form) : form_(form) {
  std::set<std::string> taken;
  for (int t = 0; t < matrix.ntax; ++t) {
    const std::string_view name = taxon_name(t);
    const std::string fit = fitted(name);
    std::string own = fit;
    // "name" and "name_2", within the length that names may have.
    for (int n = 2; !taken.insert(folded(own)).second; ++n) {
      const std::string number = "_" + std::to_string(n);
      own = (form_ == word_form::ten_letters
                 ? std::string(text_in_bytes(fit, longest_of_ten - number.size()))
                 : fit) +
            number;
    }
    if (form_ != word_form::quoted) note(name, own);
    taxa_.push_back(std::move(own));
  }
}

const std::string& word_writer::taxon(int taxon) const { return taxa_[at(taxon)]; }

std::string word_writer::word(std::string_view text) {
  std::string written = fitted(text);
  if (form_ != word_form::quoted) note(text, written);
  return written;
}

std::string word_writer::fitted(std::string_view text) {
  if (form_ == word_form::quoted) return quoted_label(text);
  std::string word(text);
  if (form_ == word_form::ten_letters) word = text_in_bytes(text, longest_of_ten);
  for (char& c : word) {
    const auto byte = static_cast<unsigned char>(c);
    const bool ends =
        form_ == word_form::line ? byte < 32 || byte == 127 || c == '>' : ends_plain_word(byte);
    if (ends) c = '_';
  }
  return word.empty() ? "_" : word;
}

void word_writer::note(std::string_view text, const std::string& written) {
  if (text == written) return;
  if (changed_++ == 0) first_change_ = std::string(text) + " as " + written;
}

void word_writer::tell_changes() const {
  if (changed_ == 0) return;
  warning(counted(changed_, "name or label isn't", "names or labels aren't"),
          "fit for this format, and written otherwise:",
          first_change_ + (changed_ > 1 ? " and others" : ""));
}

std::string quoted_label(std::string_view name) {
  const bool plain = !name.empty() && std::all_of(name.begin(), name.end(), [](unsigned char c) {
    return std::isalnum(c) || c == '_' || c == '.' || c > 127;
  });
  if (plain) return std::string(name);
  std::string quoted = "'";
  for (const char c : name) {
    quoted += c;
    if (c == '\'') quoted += '\'';
  }
  return quoted + "'";
}

}  // namespace zeb
