// Names and labels as a format can have them: made fit by one function for all writers.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace zeb {

/// A word as programs that know quotes read it back: in single quotes, doubled inside, where it
/// holds anything but letters, digits, "_" and ".".
std::string quoted_label(std::string_view name);

enum class word_form {
  quoted,       // in quotes where they hold more than letters, digits, "_" and "."
  plain,        // never in quotes: what programs that know no quotes stumble on becomes "_"
  line,         // a line each, as in FASTA
  ten_letters,  // as strict PHYLIP has names, without blanks; the rest as in `plain`
};

/// The words of one file. Names of taxa stay apart from each other, whatever becomes of their case.
class word_writer {
 public:
  explicit word_writer(word_form form);
  /// For programs that read no quotes.
  bool plain() const { return form_ == word_form::plain; }
  const std::string& taxon(int taxon) const;
  /// The name of anything else, or a label.
  std::string word(std::string_view text);
  /// Warns of names and labels that the format couldn't have as they are.
  void tell_changes() const;

 private:
  std::string fitted(std::string_view text);
  void note(std::string_view text, const std::string& written);

  word_form form_;
  std::vector<std::string> taxa_;
  int changed_ = 0;
  std::string first_change_;
};

}  // namespace zeb
