// `cores`: how many processors searches use.
#include "base/errors.h"
#include "base/message_text.h"
#include "base/process.h"
#include "console/output.h"
#include "language/interpreter.h"
#include "language/lexer.h"
#include "search/commands.h"
#include "search/workers/cores.h"

namespace zeb {
namespace {

void show() {
  emit("Searches use ", counted(cores.wanted, "core", "cores"), "\n");
  if (process.slave && cores.wanted > 1) emit("(tasks use one)\n");
  if (cores.workers.empty()) return;
  emit("Workers of the last command that had any (", cores.command, "):\n");
  for (const worker_record& worker : cores.workers)
    emit(text_of("   process %i: %i done in %.1f s; %.1f Mbytes, of which %.1f its own",
                 worker.process, worker.parts, worker.seconds, worker.peak, worker.own),
         worker.lost ? "; lost\n" : "\n");
}

}  // namespace

void cores_command() {
  no_timing();
  const int first = skip_blanks_peek();
  if (first == ';') return show();
  double number = 0;
  if (accept_char('*')) {
    number = processors_here();
  } else if (!read_optional_whole(&number) || number < 1 || number > most_cores) {
    error_end("Give the number of cores, 1 to", most_cores, "(or * for all)");
  }
  check_end();
  set_cores(static_cast<int>(number));
  emit("Searches use ", counted(cores.wanted, "core", "cores"), "\n");
}

}  // namespace zeb
