#include "shell/help.h"

#include "shell/help_texts.h"
#include "shell/output.h"

namespace zeb {
namespace {

void print_lines(std::string_view text) {
  while (!text.empty()) {
    const std::size_t end = std::min(text.find('\n'), text.size() - 1);
    emit(text.substr(0, end + 1));
    text.remove_prefix(end + 1);
  }
}

}  // namespace

void print_command_help(std::string_view command_name) {
  for (const help_text& entry : all_help_texts()) {
    if (entry.name != command_name) continue;
    emit("\n");
    print_lines(entry.text);
    return;
  }
  report_line("No help text for", command_name);
}

}  // namespace zeb
