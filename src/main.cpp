#include <cstdio>
#include <new>
#include <string_view>

#include "bash_completion.h"
#include "language/main_loop.h"
#include "start_up.h"

int main(int argc, char** argv) {
  if (argc > 1 && std::string_view(argv[1]) == "--completion") {
    std::fputs(zeb::bash_completion().c_str(), stdout);
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
