// A text file read as a whole, line by line, whatever its line ends.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "base/input_file.h"

namespace zeb {

/// The lines of a file, without their ends (LF, CRLF or lone CR) and without a byte order mark.
/// Errors: "Can't read". What is left of the file is held in memory until the object goes.
class text_lines {
 public:
  explicit text_lines(input_file& file);
  const std::vector<std::string_view>& lines() const { return lines_; }

 private:
  std::string text_;
  std::vector<std::string_view> lines_;
};

/// The text without blanks at its ends.
std::string_view trimmed(std::string_view text);

}  // namespace zeb
