#include "formats/text_lines.h"

#include "base/errors.h"
#include "base/input_file.h"

namespace zeb {

text_lines::text_lines(const std::string& file) {
  input_file stream;
  if (!stream.open(file)) error_end("Can't open", file + stream.cause());
  text_ = stream.rest();
  if (!stream.fault().empty()) error_end("Can't read", file + stream.cause());
  const std::string_view text = text_;
  if (is_utf16(text)) error_end("Can't read", file + ": it is UTF-16 text. Save it as UTF-8");
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
