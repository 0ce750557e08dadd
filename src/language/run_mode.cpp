// Run modes: what the first argument makes of the process.
#include <csignal>
#include <cstdlib>
#include <string_view>

#include <unistd.h>

#include "base/command.h"
#include "base/signals.h"
#include "language/run_mode.h"

namespace zeb {
namespace {

struct run_mode_word {
  std::string_view word;
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
    {"mpi_gateway", run_mode::parallel},
    {"local_slaveproc", run_mode::parallel},
    {"local_slavesettingdata", run_mode::parallel},
    {"local_just_numprocs", run_mode::parallel},
};

constexpr const char* usage =
    "ZEB: phylogenetic analysis under parsimony.\n\n"
    "  zeb                         commands from the console or the standard input\n"
    "  zeb command, command,       runs the commands; a comma ends each\n"
    "  zeb file command,           reads the file first: data, trees or commands\n"
    "  zeb bground command,        the same without a console\n"
    "  zeb --batch file [file...]  runs each file by itself and asks nothing\n"
    "  zeb --safe ...              in front of any of these: for scripts of others (below)\n"
    "  zeb --help, zeb --version\n"
    "  zeb --completion            a script for bash that completes these arguments\n\n"
    "A batch run writes its output to the standard output, errors and warnings to the\n"
    "standard error. Its exit status is 0 where all files ran to their end or to \"quit\",\n"
    "255 where a command of a file failed (the other files run all the same), 2 for a\n"
    "call that can't be understood, and 128 + N when signal N ended it.\n\n"
    "In safe mode commands start no shell, write only new files below the folder where\n"
    "the program was started, and read only files there and those named in the call. The\n"
    "environment variable ZEB_SAFE, set to anything, does the same; ZEB_NO_SYSTEM\n"
    "forbids the shell alone.\n\n"
    "Examples:\n"
    "  zeb proc data.zeb, mult, nelsen, quit,\n"
    "  zeb --batch analysis.run > analysis.txt\n"
    "  zeb help mult,\n";

run_mode mode_of_word(std::string_view word) {
  for (const run_mode_word& entry : mode_words) {
    if (word == entry.word) return entry.mode;
  }
  return run_mode::commands;
}

void refuse(program_call& call, const std::string& why) {
  call.mode = run_mode::refused;
  call.refusal = why;
}

// False for a word that is no option: words that begin with "--" can't be commands.
bool read_option_word(std::string_view word, program_call& call) {
  if (call.mode == run_mode::refused) return false;
  if (word == "--safe") {
    call.safe = true;
  } else if (word == "--batch") {
    call.mode = run_mode::batch;
  } else if (word == "--help" || word == "-h") {
    call.mode = run_mode::help;
  } else if (word == "--version") {
    call.mode = run_mode::version;
  } else if (word.starts_with("--")) {
    refuse(call, "there is no option " + std::string(word));
  } else {
    return false;
  }
  return true;
}

// A path with blanks and the like would fall apart among the other arguments.
std::string quoted_path(std::string_view argument) {
  std::string_view end;
  if (argument.ends_with(',') || argument.ends_with(';')) {
    end = argument.substr(argument.size() - 1);
    argument.remove_suffix(1);
  }
  const std::string path(argument);
  const bool falls_apart = path.find_first_of(" \t,;") != std::string::npos;
  const bool can_be_quoted = path.find_first_of("\"\n") == std::string::npos;
  if (!falls_apart || !can_be_quoted || access(path.c_str(), F_OK) != 0) return {};
  return '"' + path + '"' + std::string(end);
}

std::string joined(char** first, char** end) {
  std::string text;
  for (char** word = first; word != end; ++word) {
    if (word != first) text += ' ';
    const std::string quoted = quoted_path(*word);
    text += quoted.empty() ? *word : quoted;
  }
  return text;
}

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

program_call read_call(int argc, char** argv) {
  program_call call;
  call.safe = std::getenv("ZEB_SAFE") != nullptr;  // NOLINT(concurrency-mt-unsafe)
  int at = 1;
  for (; at < argc && std::string_view(argv[at]).starts_with("-"); ++at) {
    if (!read_option_word(argv[at], call)) break;
  }
  if (call.mode == run_mode::batch) {
    call.files.assign(argv + at, argv + argc);
    if (call.files.empty()) refuse(call, "--batch needs the names of run files");
  }
  if (call.mode != run_mode::interactive || at == argc) return call;
  call.mode = mode_of_word(argv[at]);
  call.commands = joined(argv + at, argv + argc) + "\n";
  return call;
}

std::string usage_text() { return usage; }

void set_signals() {
  note_signals();
  std::signal(SIGFPE, end_at_math_error);
  std::signal(SIGXFSZ, SIG_IGN);  // a file that may grow no more is a write that fails
}

}  // namespace zeb
