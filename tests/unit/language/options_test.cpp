// The one reader of options, with a made-up command.
#include "language/options.h"

#include <gtest/gtest.h>

#include "base/command.h"
#include "language/input.h"
#include "language/lexer.h"
#include "support/captured_log.h"
#include "support/program.h"

namespace zeb {
namespace {

enum class way { slow, fast };
struct inner_settings {
  int depth = 2;
};
struct test_settings {
  int replications = 10;
  int look_ahead = 0;
  int rule = 0;
  double limit = 1;
  bool keep = false;
  bool number_first = false;
  way chosen = way::slow;
  inner_settings inner;
  int twin = 2;
  int fuse = 0;
  int rounds = 3;
  int lowest = 0;
  int highest = 0;
  double threshold = 0.75;
  std::string title;
  int applied = 0;
};
void read_applied(test_settings& s) { s.applied = read_int(); }

constexpr command_options rows = {
    number<&test_settings::replications>("replications", {0, 100}, "Give number of reps",
                                         "Can't do %i reps (max=100)")
        .bare()
        .help("how often"),
    toggle<&test_settings::keep>("keepall"),
    toggle<&test_settings::number_first>("nofirst"),
    choice<&test_settings::chosen>("fast", static_cast<int>(way::fast)),
    optional_number<&test_settings::look_ahead>("cas", 1000, {0, 5000}, "Bad look-ahead")
        .also<&test_settings::rule>(4)
        .no(),
    real<&test_settings::limit>("limit", {0.5, 2}, "Give limit"),
    number<&test_settings::inner, &inner_settings::depth>("depth", {1, 9}, "Depth is 1-9, not %i")
        .with<&test_settings::twin>(),
    number<&test_settings::fuse>("fuse", {0, 100}, "Give frequency")
        .then<&test_settings::rounds>('x', {1, 100}, "Give rounds")
        .no()
        .argument("N[xR]")
        .help("how often fused"),
    number<&test_settings::lowest>("clip", {0, 50}, "Give a range")
        .then<&test_settings::highest>('-', {0, 50}, "Give a range", true),
    optional_real<&test_settings::threshold>("match", {0, 1}, "Bad threshold"),
    form<read_applied>("apply"),
    text<&test_settings::title>("title", 10, "Title too long"),
};
constexpr option_table table =
    rows.table("test", {.unknown = "Unidentified string in test options: %s",
                        .wrong_sign = "Wrong argument for test: %c"});

struct outcome_of {
  option_outcome outcome = option_outcome::run;
  std::string error;
  test_settings settings;
};

outcome_of read(const std::string& text) {
  zeb_test::start_program();
  outcome_of result;
  output.output_mask = no_console;
  zeb_test::captured_log log;
  push_string(text, "test");
  const jump_context context;
  try {
    result.outcome = read_search_options(result.settings, table,
                                         [](const test_settings& wanted, option_outcome) {
                                           if (wanted.applied == 13) error_end("Not thirteen");
                                         });
  } catch (const command_unwinding&) {
    const std::string all = log.text();
    const std::string lines = all.substr(0, all.find_last_not_of(" \n") + 1);
    result.error = lines.substr(lines.rfind('\n') + 1);
  }
  output.output_mask = 0;
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

TEST(search_options, every_kind_sets_its_members) {
  const test_settings s =
      read("=k nok r 7 cas limit 0.6 depth 5 fast fuse 8 x 2 clip 3-7 apply 4;").settings;
  EXPECT_FALSE(s.keep);
  EXPECT_EQ(s.replications, 7);
  EXPECT_EQ(s.look_ahead, 1000);
  EXPECT_EQ(s.rule, 4);
  EXPECT_EQ(s.limit, 0.6);
  EXPECT_EQ(s.inner.depth, 5);
  EXPECT_EQ(s.twin, 5);
  EXPECT_EQ(s.chosen, way::fast);
  EXPECT_EQ(s.fuse, 8);
  EXPECT_EQ(s.rounds, 2);
  EXPECT_EQ(s.lowest, 3);
  EXPECT_EQ(s.highest, 7);
  EXPECT_EQ(s.applied, 4);
  EXPECT_EQ(read("=fuse 8 nofuse match keep;").settings.fuse, 0);
  EXPECT_EQ(read("=match keep;").settings.threshold, 0.75);
  EXPECT_EQ(read("=match 0.5;").settings.threshold, 0.5);
  const test_settings last = read("=keep title  Any words;").settings;
  EXPECT_TRUE(last.keep);
  EXPECT_EQ(last.title, "Any words");
}

TEST(search_options, keywords_that_begin_with_no_win) {
  EXPECT_TRUE(read("=nofi;").settings.number_first);
  EXPECT_FALSE(read("=nofirst nonofirst;").settings.number_first);
  EXPECT_EQ(read("=cas nocas;").settings.look_ahead, 0);
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
      {"=keepall limit 0.4;", "Give limit"},
      {"=keepall cas 5001;", "Bad look-ahead"},
      {"=keepall depth 10;", "Depth is 1-9, not 10"},
      {"=keepall fuse 5x;", "Give rounds"},
      {"=keepall clip 5;", "Give a range"},
      {"=keepall clip 5-51;", "Give a range"},
      {"=keepall title Eleven word;", "Title too long"},
      {"=keepall apply 13;", "Not thirteen"},
      {"101;", "Can't do 101 reps (max=100)"},
      {"!keepall;", "Wrong argument for test: !"},
  };
  for (const auto& c : cases) {
    const outcome_of result = read(c.text);
    EXPECT_EQ(result.error, c.error) << c.text;
    EXPECT_FALSE(result.settings.keep) << c.text;
  }
}

TEST(search_options, what_was_changed_is_told_in_the_words_that_change_it) {
  EXPECT_EQ(changed_options(test_settings(), table), "");
  EXPECT_EQ(changed_options(read("=keep fuse 8x2 limit 0.6;").settings, table),
            "keepall limit 0.6 fuse 8x2");
  for (const char* text : {"=keep nofirst replic 7 clip 3-7 depth 5;", "=cas;", "=cas 3 keep;",
                           "=fast match 0.5 apply 4;", "12;"}) {
    const std::string words = changed_options(read(text).settings, table);
    EXPECT_EQ(changed_options(read(("=" + words + " ;").c_str()).settings, table), words) << text;
  }
}

TEST(search_options, the_help_tells_the_form_and_the_default) {
  EXPECT_EQ(option_help(table, table.rows[0]), "replications N how often [10]");
  EXPECT_EQ(option_help(table, table.rows[7]), "[no]fuse N[xR] how often fused [off]");
}

}  // namespace
}  // namespace zeb
