// Texts that files bring, as names and titles: made such that they can't be taken for commands
// where they are written, read back or put in by the macro language.
#pragma once

#include <string>
#include <string_view>

namespace zeb {

/// What has a name. Lists of taxa give meaning to "+", "-" and "/".
enum class named { taxon, character };

/// One word: blanks, control characters and all signs that mean something in commands, lists or
/// expansions (; ' " $ # %, for taxa + - /, "&" in front, "," after ".") become "_". In normal
/// form.
std::string fit_name(std::string_view name, named what = named::taxon);
/// Several words, in which nothing ends a command or opens an expansion: such quotes become "`",
/// ";" a comma, "$", "#" and "%" that open an expansion "_", control characters blanks.
std::string fit_text(std::string_view text);
/// Control characters but newlines become blanks; the rest stays.
std::string without_controls(std::string_view text);

/// Fits names and warns of what it changes, once for each sign.
class name_fitter {
 public:
  explicit name_fitter(named what) : what_(what) {}
  std::string fit(std::string_view name);
  /// The same, cut to `longest` bytes; the first time this is told with `warning_of_length`.
  std::string fit(std::string_view name, std::size_t longest, std::string_view warning_of_length);

 private:
  void tell(std::string_view name);

  named what_;
  std::string told_signs_;
  bool told_controls_ = false;
  bool told_length_ = false;
};

}  // namespace zeb
