// The parts of a search done by workers: forked copies of the process, which share all its memory
// until one of them writes to it. Each takes the next part that nobody has begun, makes it, and
// sends what came of it; the process takes results in the order of the parts and does nothing else
// meanwhile. Who wants a part that isn't to be had from a worker makes it itself, so that a search
// over few parts, an error and a worker that was killed need no ways of their own: all that is lost
// is time.
#pragma once

#include <sys/types.h>

#include <cstddef>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <vector>

#include "console/output.h"
#include "search/workers/shared_memory.h"
#include "search/workers/worker_process.h"
#include "trees/notation/auto_save.h"

namespace zeb {

class worker_pool {
 public:
  /// Begins `parts` parts, numbered from 0, with as many workers as the user's settings allow:
  /// none, where that's less than two.
  worker_pool(int parts, const part_maker& make);
  /// Ends the workers.
  ~worker_pool();
  worker_pool(const worker_pool&) = delete;
  worker_pool& operator=(const worker_pool&) = delete;

  /// Waits for a part, and says what the worker would have said; `idle` is called some times in a
  /// second. Each part once, in order. No value: it is to be made here. After an interrupt it waits
  /// for parts that are in work, which end early, and for no longer than some seconds.
  std::optional<std::vector<std::byte>> result_of(int part, const std::function<void()>& idle);
  bool has_workers() const { return !workers_.empty(); }
  /// What was found in parts that nobody has asked for yet, as far as workers have told.
  tree_list trees_in_work() const;

 private:
  struct worker;
  struct result {
    bool failed = false;
    std::vector<captured_piece> said;
    std::vector<std::byte> found;
  };
  bool start(int number, int parts, const part_maker& make);
  void begin_pool();
  void take_in(int milliseconds);
  void take_in_from(worker& from);
  void take_frames(worker& from);
  void take_frame(worker& from, std::span<const std::byte> frame);
  void take_trees(int part, packet_reader& reader);
  void note_end(worker& ended);
  bool is_in_work(int part) const;
  bool any_left() const;

  std::unique_ptr<shared_memory> shared_;
  worker_page* page_ = nullptr;
  std::vector<std::unique_ptr<worker>> workers_;
  std::map<int, result> results_;
  std::map<int, tree_list> in_work_;  // by part
  worker_pool* outer_ = nullptr;      // whose workers have all ended
  double stop_since_ = 0;             // wall clock; 0: nobody was asked to stop
};

/// Of the workers that there are.
tree_list trees_in_work();

}  // namespace zeb
