#include "base/process.h"

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <new>
#include <vector>

#include "base/hooks.h"
#include "base/memory_reserve.h"

namespace zeb {

process_state process;
base_hooks hooks_of_base;

namespace {

struct end_of_process {
  std::vector<quit_hook> hooks;
  std::vector<quit_hook> closing_hooks;
  std::string losses;
};
end_of_process at_quit;

// One that fails doesn't keep the others from doing what they can.
void run_safely(quit_hook hook) {
  try {
    hook();
  } catch (const std::bad_alloc&) {
    note_loss("Not enough memory to write out all that was to be saved");
  } catch (...) {
    process.failed = true;  // the error has been told
  }
}

}  // namespace

void go_to_background() { process.background = true; }

void become_task() { process.background = process.slave = true; }

void become_worker(const base_hooks& hooks) {
  become_task();
  hooks_of_base = hooks;
}

void go_to_batch() { process.batch = true; }
void note_failure() { process.failed = true; }
void end_by_signal(int signal) { process.ended_by = signal; }

double wall_clock() {
  return std::chrono::duration<double>(std::chrono::system_clock::now().time_since_epoch()).count();
}

void add_quit_hook(quit_hook hook) { at_quit.hooks.push_back(hook); }

void add_closing_hook(quit_hook hook) { at_quit.closing_hooks.push_back(hook); }

void note_loss(const std::string& what) {
  process.failed = true;
  at_quit.losses += what + "\n";
}

void note_memory_refused() { process.memory_refused = true; }

void give_up_process(const std::string& why) {
  process.gave_up = true;
  note_loss(why);
}

void run_quit_hooks() {
  const memory_reserve_scope reserve;
  for (const quit_hook hook : at_quit.hooks) run_safely(hook);
}

void end_process(int status) {
  constexpr int status_of_failure = 255;
  const memory_reserve_scope reserve;
  for (const quit_hook hook : at_quit.closing_hooks) run_safely(hook);
  if (hooks_of_base.close_outputs) run_safely(hooks_of_base.close_outputs);
  std::fputs(at_quit.losses.c_str(), stderr);
  if (process.failed && status == 0) status = status_of_failure;
  std::exit(status);  // NOLINT(concurrency-mt-unsafe)
}

}  // namespace zeb
