// The program's only threads: they share out a piece of work that is split in parts, and never
// touch anything else.
#pragma once

#include <atomic>
#include <functional>
#include <thread>
#include <vector>

namespace zeb {

/// Threads that wait for work. A process that was forked off has none of them: all of its work is
/// done by the caller.
class worker_threads {
 public:
  /// `count` with the caller's own thread; 1: no others are begun. Error: a thread can't be made.
  explicit worker_threads(int count);
  ~worker_threads();
  worker_threads(const worker_threads&) = delete;
  worker_threads& operator=(const worker_threads&) = delete;

  /// Calls `task(part)` for each of the parts, in any order and on any thread; returns when all are
  /// done. Tasks don't throw, and write to places of their own, so that results don't depend on the
  /// number of threads.
  void run(int parts, const std::function<void(int part)>& task);
  int count() const { return static_cast<int>(threads_.size()) + 1; }

 private:
  /// Parts that one thread does first. Each has a line of the cache for itself.
  struct alignas(64) share {
    std::atomic<int> next{0};
    int end = 0;
  };
  void wait_for_work(int thread);
  void work_off(int thread);
  void stop();

  std::vector<std::jthread> threads_;
  int process_ = 0;  // that made them
  const std::function<void(int)>* task_ = nullptr;
  std::vector<share> shares_;       // that of the caller's thread is the first
  std::atomic<int> at_work_{0};     // threads that haven't finished
  std::atomic<unsigned> round_{0};  // changes when there is work, or when all is over
  std::atomic<bool> over_{false};
};

}  // namespace zeb
