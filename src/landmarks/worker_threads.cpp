#include "landmarks/worker_threads.h"

#include <unistd.h>
#include <csignal>
#include <system_error>

#include "base/errors.h"

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

}  // namespace

worker_threads::worker_threads(int count) : process_(getpid()) {
  const blocked_signals quiet;
  for (int i = 1; i < count; ++i) {
    try {
      threads_.emplace_back([this] { wait_for_work(); });
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

void worker_threads::wait_for_work() {
  for (unsigned seen = 0;;) {
    round_.wait(seen);
    seen = round_;
    if (over_) return;
    work_off();
    if (--at_work_ == 0) at_work_.notify_one();
  }
}

void worker_threads::work_off() {
  for (int part = next_part_++; part < parts_; part = next_part_++) (*task_)(part);
}

void worker_threads::run(int parts, const std::function<void(int part)>& task) {
  if (threads_.empty() || parts < 2 || process_ != getpid()) {
    for (int part = 0; part < parts; ++part) task(part);
    return;
  }
  task_ = &task;
  parts_ = parts;
  next_part_ = 0;
  at_work_ = static_cast<int>(threads_.size());
  ++round_;
  round_.notify_all();
  work_off();
  for (int left = at_work_; left > 0; left = at_work_) at_work_.wait(left);
}

}  // namespace zeb
