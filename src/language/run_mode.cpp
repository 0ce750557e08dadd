// Run modes: what the first argument makes of the process.
#include <csignal>
#include <cstring>

#include <unistd.h>

#include "base/command.h"
#include "language/run_mode.h"

namespace zeb {
namespace {

struct run_mode_word {
  const char* word;
  run_mode mode;
};
constexpr run_mode_word mode_words[] = {
    {"bground", run_mode::background},
    {"slaveproc", run_mode::parallel},
    {"mpi_slaveproc", run_mode::parallel},
    {"just_numprocs", run_mode::parallel},
    {"mpi_just_numprocs", run_mode::parallel},
    {"slavesettingdata", run_mode::parallel},
    {"mpi_slavesettingdata", run_mode::parallel},
};

// Whole numbers divided by 0 and the like; nothing can be trusted after one.
extern "C" void end_at_math_error(int) {
  constexpr char text[] = "\nOOOPS -- a math error occured!\nCurrent command: ";
  const auto written =
      write(STDERR_FILENO, text, sizeof text - 1) +
      write(STDERR_FILENO, command.command_name.c_str(), command.command_name.size()) +
      write(STDERR_FILENO, "\n", 1);
  _exit(written > 0 ? 255 : 254);
}

}  // namespace

run_mode run_mode_of(int argc, char** argv) {
  if (argc < 2) return run_mode::interactive;
  for (const run_mode_word& entry : mode_words) {
    if (std::strcmp(argv[1], entry.word) == 0) return entry.mode;
  }
  return run_mode::commands;
}

std::string joined_arguments(int argc, char** argv) {
  std::string text;
  for (int i = 1; i < argc; ++i) {
    if (i > 1) text += ' ';
    text += argv[i];
  }
  if (argc > 1) text += '\n';
  return text;
}

void set_signals() {
  std::signal(SIGFPE, end_at_math_error);
  std::signal(SIGXFSZ, SIG_IGN);  // a file that may grow no more is a write that fails
}

}  // namespace zeb
