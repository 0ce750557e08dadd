#include <cstdio>
#include <new>

#include "language/main_loop.h"
#include "start_up.h"

int main(int argc, char** argv) {
  try {
    zeb::register_everything();
    return zeb::run_process(argc, argv);
  } catch (const std::bad_alloc&) {
    std::fputs("Sorry, cannot allocate initial memory\n", stderr);
    return 255;
  }
}
