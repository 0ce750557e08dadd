#include "language/command_strings.h"

#include <gtest/gtest.h>

#include <string>

#include "base/errors.h"
#include "base/interrupts.h"
#include "base/process.h"
#include "base/random.h"
#include "base/time_limit.h"
#include "console/output.h"
#include "language/input.h"
#include "support/captured_log.h"
#include "support/program.h"

namespace zeb {
namespace {

// What running the string printed to the log, and whether it came to its end.
struct run_of_string {
  bool ended = false;
  std::string printed;
};

std::string string_to_run;
bool string_ended = false;

run_of_string run_string(const std::string& text) {
  zeb_test::start_program();
  string_to_run = text;
  string_ended = false;
  zeb_test::captured_log log;
  output.output_mask = no_console;
  run_in_jump_context([] {
    run_search_string(string_to_run, nullptr);
    string_ended = true;
  });
  EXPECT_EQ(output.output_mask, no_console) << text;
  EXPECT_EQ(command_string_depth(), 0) << text;
  EXPECT_EQ(input.top, 0) << text;
  output.output_mask = 0;
  return {string_ended, log.text()};
}

TEST(command_strings, run_in_silence_and_keep_what_they_set) {
  command.command_name = "outer";
  randomness.random_seed = 1;
  const run_of_string run = run_string(";; rseed 77; quote not heard; rseed+");
  EXPECT_TRUE(run.ended);
  EXPECT_EQ(run.printed, "");
  EXPECT_EQ(randomness.random_seed, 78);
  EXPECT_EQ(command.command_name, "outer");
  randomness.random_seed = 1;
}

TEST(command_strings, errors_reach_the_caller) {
  const struct {
    std::string text;
    const char* message;
  } cases[] = {
      {"rseed 3; xyzzy;", "Unknown command: xyzzy"},
      {"12;", "Found '1' when expecting a command"},
      {"rseed 2.5;", "Expected integral number"},
      {"loop 1 2;", "loop legal only when macros are enabled"},
      {std::string(5000, ' '), "Sorry, instructions are too long (5000 bytes; max. is 4128)"},
  };
  for (const auto& c : cases) {
    const run_of_string run = run_string(c.text);
    EXPECT_FALSE(run.ended) << c.text;
    EXPECT_NE(run.printed.find(c.message), std::string::npos) << run.printed;
  }
  randomness.random_seed = 1;
}

TEST(command_strings, need_a_free_place_on_the_stack) {
  zeb_test::start_program();  // which would set the depth again if it came later
  const int depth = input.mxproc;
  set_input_depth(0);
  const run_of_string run = run_string("rseed 5;");
  set_input_depth(depth);
  EXPECT_FALSE(run.ended);
  EXPECT_NE(run.printed.find("Can't run this command with 0 open files\n"
                             "You may increase \"mxproc\" and try again"),
            std::string::npos)
      << run.printed;
}

TEST(command_strings, end_a_search_whose_time_is_out) {
  set_time_limit(5);
  command.start = wall_clock() - 6;
  const run_of_string run = run_string("rseed;");
  EXPECT_TRUE(run.ended);
  EXPECT_EQ(interrupts.reason, stop_reason::user);
  EXPECT_NE(run.printed.find("Interrupting search (time is out!)"), std::string::npos);
  set_time_limit(0);
  forget_interrupt();
}

}  // namespace
}  // namespace zeb
