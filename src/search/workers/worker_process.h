// The side of a worker: a copy of the process, which makes parts until there are no more.
#pragma once

#include <array>
#include <atomic>
#include <cstdint>
#include <functional>

#include "base/packet.h"
#include "search/workers/cores.h"

namespace zeb {

/// Makes one part of a search; what it found is put into the packet. The same for the same part,
/// whatever was made before.
using part_maker = std::function<void(int part, packet_writer& found)>;

/// What the process and its workers share. All is 0 at the start.
struct worker_page {
  std::atomic<int> next;   // the first part that nobody has begun
  std::atomic<bool> stop;  // no more parts are to be begun, and those in work end early
  // By worker: 1 more than the part in its hands; 0 none, -1: it takes one just now.
  std::array<std::atomic<int>, most_cores> in_hand;
};

struct worker_task {
  worker_page* page = nullptr;
  int number = 0;      // of the worker
  int parts = 0;       // in all
  int descriptor = 0;  // where results go
  int parent = 0;      // process that forked it
};

/// In a worker, where the part can't be made since it depends on those before: it has failed.
/// Elsewhere nothing.
void leave_part_to_process();

/// Before a result's bytes: how many there are.
using frame_length = std::uint64_t;

/// Makes parts and sends them: the number of the part, 0, 1 where it failed, the worker's use of
/// processor and memory, what it said, and what the maker put. A part of which an error was told
/// has failed. While trees are saved automatically, those of the part in work are sent now and
/// then: the number of the part, 1, the trees. Never returns.
[[noreturn]] void run_worker(const worker_task& task, const part_maker& make);

}  // namespace zeb
