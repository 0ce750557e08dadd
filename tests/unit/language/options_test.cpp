// The one reader of search options, with a made-up command.
#include "language/options.h"

#include <gtest/gtest.h>

#include "base/process.h"
#include "language/input.h"
#include "support/program.h"

namespace zeb {
namespace {

struct test_settings {
  int replications = 10;
  int look_ahead = 0;
  double limit = 1;
  bool keep = false;
  bool fast = false;
  int applied = -1;
  bool operator==(const test_settings&) const = default;
};
using option = search_option<test_settings>;
constexpr option options[] = {
    number("replications", &test_settings::replications, {0, 100}, "Give number of reps",
           "Can't do %i reps (max=100)"),
    toggle("keepall", &test_settings::keep),
    toggle("nofast", &test_settings::fast),
    {.keyword = "cas",
     .kind = option::argument::optional_number,
     .integer = &test_settings::look_ahead,
     .missing = "Bad look-ahead",
     .default_number = 1000},
    {.keyword = "limit",
     .kind = option::argument::real,
     .real = &test_settings::limit,
     .missing = "Give limit"},
    action<test_settings>("reset", [](test_settings& s, int on) { s.applied = on; }),
};

struct outcome_of {
  option_outcome outcome = option_outcome::run;
  std::string error;
  test_settings settings;
};

outcome_of read(const std::string& text) {
  zeb_test::start_program();
  outcome_of result;
  output.output_mask = no_console;
  char* printed = nullptr;
  std::size_t size = 0;
  output.log_stream = open_memstream(&printed, &size);
  push_string(text, "test");
  const jump_context context;
  try {
    result.outcome = read_search_options(result.settings, std::span<const option>(options),
                                         "Unidentified string in test options: %s",
                                         "Wrong argument for test: %c", &options[0]);
  } catch (const command_unwinding&) {
    std::fflush(output.log_stream);
    const std::string all(printed, size);
    const std::string lines = all.substr(0, all.find_last_not_of(" \n") + 1);
    result.error = lines.substr(lines.rfind('\n') + 1);
  }
  std::fclose(output.log_stream);
  output.log_stream = nullptr;
  output.output_mask = 0;
  std::free(printed);
  pop_all();
  return result;
}

TEST(search_options, what_follows_the_word_decides_what_happens) {
  EXPECT_EQ(read(";").outcome, option_outcome::run);
  EXPECT_EQ(read("=;").outcome, option_outcome::list);
  EXPECT_EQ(read(":;").outcome, option_outcome::list);
  EXPECT_EQ(read("=keep;").outcome, option_outcome::run);
  EXPECT_EQ(read(": keep;").outcome, option_outcome::set);
  EXPECT_EQ(read("25;").settings.replications, 25);
  const outcome_of both = read("5=keepall cas 3;");
  EXPECT_EQ(both.outcome, option_outcome::run);
  EXPECT_EQ(both.settings.replications, 5);
  EXPECT_TRUE(both.settings.keep);
  EXPECT_EQ(both.settings.look_ahead, 3);
}

TEST(search_options, prefixes_negations_and_optional_numbers) {
  const test_settings s = read("=k nok r 7 cas limit 0.5 reset noreset;").settings;
  EXPECT_FALSE(s.keep);
  EXPECT_EQ(s.replications, 7);
  EXPECT_EQ(s.look_ahead, 1000);
  EXPECT_EQ(s.limit, 0.5);
  EXPECT_EQ(s.applied, 0);
  EXPECT_TRUE(read("=nofa;").settings.fast);  // a keyword that begins with "no" itself
  EXPECT_FALSE(read("=nonofast;").settings.fast);
}

TEST(search_options, errors_name_the_fault_and_change_nothing) {
  const struct {
    const char* text;
    const char* error;
  } cases[] = {
      {"=keepall bogus;", "Unidentified string in test options: bogus"},
      {"=keepall 12;", "Unidentified string in test options: 12"},
      {"=keepall replic;", "Give number of reps"},
      {"=keepall replic -3;", "Give number of reps"},
      {"=keepall replic 101;", "Can't do 101 reps (max=100)"},
      {"=keepall noreplic;", "Unidentified string in test options: noreplic"},
      {"=keepall limit x;", "Give limit"},
      {"101;", "Can't do 101 reps (max=100)"},
      {"!keepall;", "Wrong argument for test: !"},
  };
  for (const auto& c : cases) {
    const outcome_of result = read(c.text);
    EXPECT_EQ(result.error, c.error) << c.text;
    EXPECT_EQ(result.settings, test_settings{}) << c.text;
  }
}

}  // namespace
}  // namespace zeb
