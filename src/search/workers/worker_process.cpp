#include "search/workers/worker_process.h"

#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <fstream>
#include <span>
#include <string>

#include "base/command.h"
#include "base/hooks.h"
#include "base/interrupts.h"
#include "base/process.h"
#include "base/time_limit.h"
#include "console/output.h"
#include "trees/notation/auto_save.h"

namespace zeb {
namespace {

struct worker_state {
  worker_task task;
  bool failed = false;           // an error was told: only the user's process can do that
  int part = 0;                  // in work
  int seconds = 0;               // between two tellings of the trees that it has; 0: nobody asks
  double last_told = 0;          // wall clock
  std::size_t trees_before = 0;  // beyond the buffer, when the worker began
};
worker_state worker;

void send_bytes(std::span<const std::byte> bytes) {
  while (!bytes.empty()) {
    const ssize_t count = send(worker.task.descriptor, bytes.data(), bytes.size(), MSG_NOSIGNAL);
    if (count < 0 && errno != EINTR) _exit(1);  // nobody waits for it
    if (count > 0) bytes = bytes.subspan(static_cast<std::size_t>(count));
  }
}

void send_frame(std::span<const std::byte> head, std::span<const std::byte> rest) {
  const frame_length length = head.size() + rest.size();
  send_bytes(std::as_bytes(std::span(&length, 1)));
  send_bytes(head);
  send_bytes(rest);
}

/// For automatic saving.
void send_trees() {
  worker.last_told = wall_clock();
  packet_writer frame;
  frame.put(worker.part);
  frame.put_byte(1);
  const tree_list trees = trees_beyond_buffer();
  for (std::size_t t = worker.trees_before; t < trees.size(); ++t) frame.put_list(trees[t]);
  send_frame(frame.bytes(), {});
}

void look_for_stop(bool) {
  if (getppid() != worker.task.parent) _exit(1);
  if (worker.seconds > 0 && wall_clock() - worker.last_told >= worker.seconds) send_trees();
  if (worker.task.page->stop) stop_search(stop_reason::user);
}

void note_failure(const std::string&) { worker.failed = true; }

void keep_warning(const std::string& message) { output.capture->add_warning(message); }

/// Nothing that the worker does is seen but by who reads its results.
void leave_the_world() {
  prctl(PR_SET_PDEATHSIG, SIGKILL);  // no worker outlives who waits for it
  if (getppid() != worker.task.parent) _exit(1);
  // What asks a whole group of processes to stop is answered by who reads the results.
  for (const int signal : {SIGINT, SIGTERM, SIGHUP}) std::signal(signal, SIG_IGN);
  const int nothing = open("/dev/null", O_RDWR | O_CLOEXEC);
  for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) dup2(nothing, stream);
  worker.seconds = auto_save.view.beyond ? auto_save.seconds : 0;
  worker.last_told = wall_clock();
  worker.trees_before = trees_beyond_buffer().size();
  set_auto_save(0, "", false);
  disarm_time_limit();
  become_worker(
      {.tell_error = note_failure, .tell_warning = keep_warning, .check_interrupt = look_for_stop});
}

/// Mbytes that this process has written to, and doesn't share any more; 0 where the system doesn't
/// tell.
double own_memory() {
  std::ifstream file("/proc/self/smaps_rollup");
  std::string word;
  double kbytes = 0;
  constexpr double kbytes_of_mbyte = 1024;
  while (file >> word)
    if (word == "Private_Dirty:" && file >> kbytes) return kbytes / kbytes_of_mbyte;
  return 0;
}

void put_use(packet_writer& to) {
  rusage use{};
  getrusage(RUSAGE_SELF, &use);
  constexpr double micro = 1e-6;
  constexpr double kbytes_of_mbyte = 1024;
  to.put_real(static_cast<double>(use.ru_utime.tv_sec + use.ru_stime.tv_sec) +
              micro * static_cast<double>(use.ru_utime.tv_usec + use.ru_stime.tv_usec));
  to.put_real(static_cast<double>(use.ru_maxrss) / kbytes_of_mbyte);
  to.put_real(own_memory());
}

void send_part(int part, const output_capture& said, const packet_writer& found) {
  packet_writer head;
  head.put(part);
  head.put_byte(0);
  head.put_byte(worker.failed ? 1 : 0);
  put_use(head);
  head.put(static_cast<std::int32_t>(said.pieces().size()));
  for (const captured_piece& piece : said.pieces()) {
    head.put(static_cast<std::int32_t>(piece.mask));
    head.put_text(piece.text);
    head.put_byte(piece.is_warning ? 1 : 0);
  }
  send_frame(head.bytes(), found.bytes());
}

void make_and_send(int part, const part_maker& make) {
  const output_capture said;
  packet_writer found;
  worker.failed = false;
  worker.part = part;
  const jump_context around;
  try {
    make(part, found);
  } catch (...) {
    worker.failed = true;
  }
  if (worker.seconds > 0) send_trees();  // others may keep the part waiting
  send_part(part, said, worker.failed ? packet_writer() : found);
}

}  // namespace

void leave_part_to_process() {
  if (!worker.task.page) return;
  worker.failed = true;
  worker.task.page->next = worker.task.parts;  // nor can those that follow
  throw_to_jump_context();
}

void run_worker(const worker_task& task, const part_maker& make) {
  worker.task = task;
  leave_the_world();
  std::atomic<int>& in_hand = task.page->in_hand[static_cast<std::size_t>(task.number)];
  for (;;) {
    in_hand = -1;
    const int part = task.page->next.fetch_add(1);
    in_hand = part + 1;
    if (part >= task.parts || task.page->stop) break;
    make_and_send(part, make);
  }
  _exit(0);
}

}  // namespace zeb
