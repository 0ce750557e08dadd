// tables: the form of tables, and the decimals of fractions.
#include "base/errors.h"
#include "console/output.h"
#include "console/settings.h"
#include "language/input.h"
#include "language/interpreter.h"
#include "language/lexer.h"
#include "trees/commands.h"
#include "trees/drawing/tables.h"

namespace zeb {
namespace {

constexpr int most_decimals = 15;

void show_tables() {
  emitf("Tables are printed in the %s form, with %i decimals for fractions",
        tables.dense ? "dense" : "plain", table_decimals());
}

}  // namespace

void tables_command() {
  no_timing();
  const int c = skip_blanks_peek();
  if (c == ';') return show_tables();
  next_nonblank();
  switch (c) {
    case '=':
    case '-':
      check_end();
      tables.dense = c == '=';
      break;
    case '/': {
      const int decimals = read_int();
      if (decimals < 0) error_end("Give number of decimals for tables");
      check_end();
      if (decimals > most_decimals) error_end("Tables can have at most", most_decimals, "decimals");
      tables.precision = decimals;
      break;
    }
    default:
      error_end_f("Wrong argument for tables: %c", c);
  }
  if (settings.report) show_tables();
}

}  // namespace zeb
