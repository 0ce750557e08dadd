// `rseed`: the seed and the ways of randomising.
#include "base/errors.h"
#include "base/message_text.h"
#include "base/random.h"
#include "console/output.h"
#include "console/settings.h"
#include "language/commands/commands.h"
#include "language/input.h"
#include "language/interpreter.h"
#include "language/lexer.h"

namespace zeb {
namespace {

void chatter(std::string_view text) {
  if (settings.report) report_line(text);
}

void take_seed(double seed) {
  if (!(seed >= 0 && seed <= random_generator::largest)) {
    error_end_f("Random seed must be 0-%i", random_generator::largest);
  }
  expect_end();
  set_seed(static_cast<int>(seed));
  reseed();  // for what doesn't begin anew each time: seeds of tasks, edited cells
}

void read_seed_step() {
  int step = 0;
  if (!read_optional_int(&step) || step < 0) error_end("Give increase of seed per replication");
  expect_end();
  zeb::set_seed_step(static_cast<unsigned>(step));
  chatter(step == 0 ? "Checking random seed for each randomization"
                    : text_of("In multiple randomizations, seed increases %u per replication",
                              randomness.seed_step));
}

void set_insertion(bool random) {
  expect_end();
  set_random_insertion(random);
  chatter(random ? "Randomizing insertion sequence in Wagner trees"
                 : "Using up/down insertion sequence in Wagner trees");
}

void set_outgroup(bool random) {
  expect_end();
  set_random_outgroup(random);
  chatter(random ? "Outgroup taxon is also randomized in Wagner trees"
                 : "Outgroup taxon is always first in Wagner trees");
}

void set_quick(bool quick) {
  expect_end();
  set_quick_shuffle(quick);
  chatter(quick ? "Using quick approximation for randomizations"
                : "Using proper (=slower) randomizations");
}

void add_to_seed() {
  double more = 1;
  read_optional_whole(&more);
  take_seed(randomness.random_seed + more);
}

void draw_seed() {
  expect_end();
  reseed();
  set_seed(draw());
}

}  // namespace

void rseed_command() {
  no_timing();
  const int sign = next_nonblank();
  double seed = 0;
  switch (sign) {
    case ';':
      return report_line("Random seed is", randomness.random_seed);
    case '+':
      add_to_seed();
      break;
    case '*':
      draw_seed();
      break;
    case ':':
      read_seed_step();
      break;
    case '[':
      set_insertion(true);
      break;
    case ']':
      set_insertion(false);
      break;
    case '>':
      set_outgroup(true);
      break;
    case '<':
      set_outgroup(false);
      break;
    case '!':
      return set_quick(true);
    case '-':
      return set_quick(false);
    default:
      unread_char();
      if (!read_optional_whole(&seed)) {
        error_end("Wrong argument for rseed:", static_cast<char>(sign));
      }
      take_seed(seed);
  }
  if (settings.report) report_line("Random seed is", randomness.random_seed);
}

}  // namespace zeb
