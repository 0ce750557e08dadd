#include "formats/text_lines.h"

#include "base/errors.h"
#include "language/input.h"

namespace zeb {

text_lines::text_lines(input_file& file) {
  check_encoding(file);
  text_ = file.rest();
  if (!file.fault().empty()) error_end("Can't read", file.name() + file.cause());
  const std::string_view text = text_;
  std::size_t start = text.starts_with("\xef\xbb\xbf") ? 3 : 0;
  while (start < text.size()) {
    std::size_t end = text.find_first_of("\r\n", start);
    if (end == std::string_view::npos) end = text.size();
    lines_.push_back(text.substr(start, end - start));
    start = end + (text.substr(end, 2) == "\r\n" ? 2 : 1);
  }
}

std::string_view trimmed(std::string_view text) {
  while (!text.empty() && static_cast<unsigned char>(text.front()) < 33) text.remove_prefix(1);
  while (!text.empty() && static_cast<unsigned char>(text.back()) < 33) text.remove_suffix(1);
  return text;
}

}  // namespace zeb
