// The text buffer and the line editor under any bytes: what is held can always be read back.
#include <cstdint>
#include <cstdlib>

#include "base/text_columns.h"
#include "console/line_editor.h"
#include "console/text_buffer.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace zeb;
  if (size < 2) return 0;
  const std::string_view text(reinterpret_cast<const char*>(data) + 1, size - 1);
  static text_buffer buffer;
  if (buffer.kilobytes() == 0 && !buffer.allot(50)) std::abort();
  if (data[0] & 1) buffer.set_compression((data[0] & 2) != 0);
  for (int times = 1 + (data[0] >> 2); times > 0; --times) buffer.add(text);
  std::uint64_t bytes = 0;
  for (std::size_t i = 0; i < buffer.lines(); ++i) bytes += buffer.line(i).size() + 1;
  if (bytes < buffer.written_bytes() || bytes > buffer.written_bytes() + 1) std::abort();

  console_history history;
  history.read_file_text(text);
  console_history copy;
  copy.read_file_text(history.file_text());
  if (copy.file_text() != history.file_text()) std::abort();
  line_editor editor(history, 100);
  for (const char c : text) {
    editor.take(c >= 0 && c < 16 ? 1000 + c : static_cast<unsigned char>(c));
    if (editor.cursor() > editor.text().size() || editor.text().size() > 255) std::abort();
  }
  if (text_in_columns(text, data[0] % 16, 40).size() > text.size()) std::abort();
  return 0;
}
