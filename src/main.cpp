#include <cstdio>
#include <new>
#include <string_view>

#include "language/main_loop.h"
#include "start_up.h"

namespace {

constexpr const char* usage =
    "ZEB: phylogenetic analysis under parsimony.\n\n"
    "  zeb                      commands from the console or the standard input\n"
    "  zeb command, command,    runs the commands; a comma ends each\n"
    "  zeb bground command,     the same without a console\n\n"
    "Examples:\n"
    "  zeb proc data.zeb, mult, nelsen, quit,\n"
    "  zeb help mult,\n";

}  // namespace

int main(int argc, char** argv) {
  const std::string_view first = argc > 1 ? argv[1] : "";
  if (first == "--help" || first == "-h") {
    std::fputs(usage, stdout);
    return 0;
  }
  if (first == "--version") {
    std::puts("zeb " ZEB_VERSION);
    return 0;
  }
  try {
    zeb::register_everything();
    return zeb::run_process(argc, argv);
  } catch (const std::bad_alloc&) {
    std::fputs("Sorry, cannot allocate initial memory\n", stderr);
    return 255;
  }
}
