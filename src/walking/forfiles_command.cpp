// `forfiles`: a piece of script for each file that a pattern matches.
#include <filesystem>
#include <memory>
#include <string>
#include <system_error>
#include <utility>
#include <vector>

#include "base/errors.h"
#include "console/output.h"
#include "console/settings.h"
#include "language/interpreter.h"
#include "language/lexer.h"
#include "macro/bodies.h"
#include "macro/body_text.h"
#include "macro/macro_language.h"
#include "macro/macro_state.h"
#include "macro/script_text.h"
#include "walking/commands.h"
#include "walking/file_names.h"

namespace zeb {
namespace {

class file_items : public body_items {
 public:
  explicit file_items(std::vector<std::string> names) : names_(std::move(names)) {
    if (settings.report) report_line("Start checking files...");
  }
  ~file_items() override { tell_file(std::move(outer_name_), outer_is_directory_); }

  bool next() override {
    if (next_ == names_.size()) return false;
    const std::string& name = names_[next_++];
    std::error_code unknown;
    tell_file(name, std::filesystem::is_directory(name, unknown));
    return true;
  }
  void over() override {
    if (settings.report)
      emitf("Finished checking files (%i found).", static_cast<int>(names_.size()));
  }
  std::string place() const override { return "forfiles (" + names_[next_ - 1] + ")"; }

 private:
  std::vector<std::string> names_;
  std::size_t next_ = 0;
  // Of the walk around this one.
  std::string outer_name_ = walked.file;
  bool outer_is_directory_ = walked.is_directory;
};

}  // namespace

void forfiles_command() {
  require_macros();
  no_timing();
  check_loop_depth(0);
  if (read_file_name() == 0) error_end("Must give filename");
  const std::string pattern(token());
  body_record body = capture_body(body_kind::files);
  matching_files found = files_matching(pattern);
  if (found.reserved_names)
    report_line("File names with # ' \" or $ will be skipped (they're reserved sigils)");
  body.items = std::make_unique<file_items>(std::move(found.names));
  enter_body(std::move(body));
}

void killfiles_command() {
  require_macros();
  check_end();
  reach_body(body_kind::files, "forfiles").items->end();
  skip_to_body_end();
}

}  // namespace zeb
