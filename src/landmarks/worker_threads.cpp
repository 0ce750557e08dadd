#include "landmarks/worker_threads.h"

#include <unistd.h>
#include <algorithm>
#include <csignal>
#include <cstdint>
#include <system_error>

#include "base/errors.h"
#include "base/indices.h"

namespace zeb {
namespace {

/// Signals are for the main thread, which new threads would take them from.
class blocked_signals {
 public:
  blocked_signals() {
    sigset_t all;
    sigfillset(&all);
    pthread_sigmask(SIG_SETMASK, &all, &before_);
  }
  ~blocked_signals() { pthread_sigmask(SIG_SETMASK, &before_, nullptr); }
  blocked_signals(const blocked_signals&) = delete;
  blocked_signals& operator=(const blocked_signals&) = delete;

 private:
  sigset_t before_;
};

/// Work comes in pieces of some 50 microseconds, one right after the other: to be put to sleep and
/// woken would take as long as a piece.
template <class number>
void wait_while(const std::atomic<number>& value, number is) {
  constexpr int turns_before_sleep = 200;
  for (int i = 0; i < turns_before_sleep && value == is; ++i) std::this_thread::yield();
  value.wait(is);
}

}  // namespace

worker_threads::worker_threads(int count) : process_(getpid()), shares_(at(std::max(1, count))) {
  const blocked_signals quiet;
  for (int i = 1; i < count; ++i) {
    try {
      threads_.emplace_back([this, i] { wait_for_work(i); });
    } catch (const std::system_error&) {
      stop();
      error_end_f("Sorry, creation of thread %i failed", i);
    }
  }
}

worker_threads::~worker_threads() { stop(); }

void worker_threads::stop() {
  if (process_ != getpid()) {
    // They are the parent's; here there is nothing to wait for.
    for (std::jthread& thread : threads_) thread.detach();
    return;
  }
  over_ = true;
  ++round_;
  round_.notify_all();
  threads_.clear();
}

void worker_threads::wait_for_work(int thread) {
  for (unsigned seen = 0;;) {
    wait_while(round_, seen);
    seen = round_;
    if (over_) return;
    work_off(thread);
    if (--at_work_ == 0) at_work_.notify_one();
  }
}

/// First the thread's own share: what a part works on lies in that processor's cache since the last
/// time. Then what others haven't come to.
void worker_threads::work_off(int thread) {
  for (std::size_t i = 0; i < shares_.size(); ++i) {
    share& from = shares_[(at(thread) + i) % shares_.size()];
    for (int part = from.next++; part < from.end; part = from.next++) (*task_)(part);
  }
}

void worker_threads::run(int parts, const std::function<void(int part)>& task) {
  if (threads_.empty() || parts < 2 || process_ != getpid()) {
    for (int part = 0; part < parts; ++part) task(part);
    return;
  }
  task_ = &task;
  const int count = static_cast<int>(shares_.size());
  for (int i = 0; i < count; ++i) {
    shares_[at(i)].next = static_cast<int>(std::int64_t{parts} * i / count);
    shares_[at(i)].end = static_cast<int>(std::int64_t{parts} * (i + 1) / count);
  }
  at_work_ = static_cast<int>(threads_.size());
  ++round_;
  round_.notify_all();
  work_off(0);
  for (int left = at_work_; left > 0; left = at_work_) wait_while(at_work_, left);
}

}  // namespace zeb
