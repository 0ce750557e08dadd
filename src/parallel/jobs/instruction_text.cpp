#include "parallel/jobs/instruction_text.h"

#include <algorithm>
#include <cctype>
#include <string_view>
#include <utility>

#include "base/errors.h"
#include "base/process.h"
#include "language/input.h"
#include "language/lexer.h"
#include "macro/macro_state.h"
#include "macro/script_text.h"
#include "parallel/tasks/instructions.h"
#include "parallel/tasks/task_state.h"

namespace zeb {
namespace {

class instruction_reader {
 public:
  std::string read();

 private:
  int next();
  void add(int c);
  void end_word();
  void copy_run_block();

  std::string text_;
  std::string word_;  // read last, in lower case
  std::string last_word_;
  int depth_ = 1;
  bool ending_ = false;  // the last `return` has come, and its options are read
};

int instruction_reader::next() {
  if (input_ended()) error_end("Found end-of-file:", "expecting \"return\"");
  return read_char();
}

void instruction_reader::add(int c) {
  const bool blank = c < 33;
  if (blank && (text_.empty() || text_.back() == ' ')) return;
  text_ += blank ? ' ' : static_cast<char>(c);
  const std::size_t room = static_cast<std::size_t>(macros.heap_end - macros.heap_top);
  if (text_.size() + 1 > room)
    error_end(
        "P-ZEB: not enough memory to send instructions\n       to slaves! (increase memory "
        "for macros)");
}

/// From "runc !" to its "!".
void instruction_reader::copy_run_block() {
  for (;;) {
    if (input_ended()) error_end("a \"runc !\" block must end with \"!\"");
    const int c = read_raw_char();
    add(c);
    if (c == '!') return;
  }
}

void instruction_reader::end_word() {
  if (begins_instructions(last_word_, word_)) ++depth_;
  if (word_ == "return" && --depth_ == 0) ending_ = true;
  last_word_ = std::move(word_);
  word_.clear();
}

std::string instruction_reader::read() {
  const reading_flag quotes(&macro_reading::single_quotes_only);
  bool after_runc = false;
  for (;;) {
    const int c = next();
    if (std::isalnum(c) || c == '_') {
      word_ += static_cast<char>(std::tolower(c));
    } else {
      if (!word_.empty()) {
        after_runc = word_ == "runc";
        end_word();
      }
      if (c > 32 && c != '!') after_runc = false;
    }
    add(c);
    if (c == '!' && after_runc) copy_run_block();
    if (ending_ && c == ';') return text_;
  }
}

}  // namespace

std::string read_instructions(bool may_repeat) {
  if (skip_blanks_peek() != '.') return instruction_reader().read();
  for (int dots = 0; dots < 3; ++dots)
    if (!accept_char('.')) error_end("Expected \"...\"");
  accept_char(';');
  if (read_word() == 0 || token() != "return") error_end("Expected \"return\" after \"...\"");
  skip_to(';');
  read_char();
  if (may_repeat) return {};
  if (!process.slave) error_end("P-ZEB: cannot repeat instructions for master!");
  return task.instructions;
}

}  // namespace zeb
