#include "formats/nexus/nexus_file.h"

#include "console/output.h"
#include "language/fit_text.h"

namespace zeb {

void nexus_file::skip_command(const nexus_token& word) {
  if (word.is(';')) return;
  const std::string command = lower_case(fit_name(word.text));
  const bool known = command == "title" || command == "link";
  if (!known && skipped.insert(command).second)
    report_line("  ... Skipping command", command, "...");
  in.skip_rest();
}

}  // namespace zeb
