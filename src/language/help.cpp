#include "language/help.h"

#include <algorithm>

#include "console/output.h"
#include "language/help_texts.h"

namespace zeb {
namespace {

void print_lines(std::string_view text) {
  while (!text.empty()) {
    const std::size_t end = text.find('\n');
    const std::size_t length = end == text.npos ? text.size() : end + 1;
    emit(text.substr(0, length));
    text.remove_prefix(length);
  }
}

}  // namespace

bool print_help_text(std::string_view name) {
  const auto texts = all_help_texts();
  const auto found = std::find_if(texts.begin(), texts.end(),
                                  [name](const help_text& entry) { return entry.name == name; });
  if (found == texts.end()) return false;
  emit("\n");
  print_lines(found->text);
  return true;
}

void print_command_help(std::string_view command_name) {
  // Every command that is built has a text; the tests see to that.
  if (!print_help_text(command_name))
    emit("No help text for ", command_name, ": the command is not available yet\n");
}

void show_banner() {
  emit("ZEB version " ZEB_VERSION ", phylogenetic analysis under parsimony\n");
  emit("LUMA (Lineage Utility MAchine)\n");
  emit("Enter \"help\" for the commands, \"thanks\" for acknowledgments, \"quit\" to leave.\n");
}

}  // namespace zeb
