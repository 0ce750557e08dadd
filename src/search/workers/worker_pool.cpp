#include "search/workers/worker_pool.h"

#include <poll.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <utility>

#include "base/errors.h"
#include "base/interrupts.h"
#include "base/message_text.h"
#include "base/process.h"
#include "console/log.h"
#include "landmarks/landmark_workers.h"

namespace zeb {

struct worker_pool::worker {
  pid_t process = 0;
  int descriptor = -1;           // -1: it has ended
  std::vector<std::byte> bytes;  // that haven't come whole
  worker_record record;
};

namespace {

struct pools_state {
  worker_pool* innermost = nullptr;  // that has, or had, workers
};
pools_state pools;

/// What waits in buffers would be written by the copies, too.
void write_out_all() {
  flush_log();
  std::fflush(nullptr);
}

/// As it would have been said there.
void say(const captured_piece& piece) {
  const output_mask_scope as_there(piece.mask);
  if (!piece.is_warning) return emit(piece.text);
  warning(std::string_view(piece.text).substr(0, piece.text.find_last_not_of(' ') + 1));
}

}  // namespace

worker_pool::worker_pool(int parts, const part_maker& make) {
  const int count = workers_for(parts);
  if (count < 2) return;
  shared_ = std::make_unique<shared_memory>(sizeof(worker_page));
  page_ = shared_->as<worker_page>();
  end_threads_for_copies();
  write_out_all();
  for (int number = 0; number < count; ++number)
    if (!start(number, parts, make)) break;
  if (workers_.empty())
    warning("No worker can be started: the search runs on one core");
  else
    begin_pool();
}

void worker_pool::begin_pool() {
  note_division(true);
  outer_ = std::exchange(pools.innermost, this);
}

tree_list worker_pool::trees_in_work() const {
  tree_list trees;
  for (const auto& [part, found] : in_work_) trees.insert(trees.end(), found.begin(), found.end());
  return trees;
}

tree_list trees_in_work() {
  return pools.innermost ? pools.innermost->trees_in_work() : tree_list();
}

bool worker_pool::start(int number, int parts, const part_maker& make) {
  std::array<int, 2> pair{};  // here, there
  if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, pair.data()) != 0) return false;
  const pid_t parent = getpid();
  const pid_t child = fork();
  if (child == 0) {
    close(pair[0]);
    for (const auto& other : workers_) close(other->descriptor);
    run_worker({page_, number, parts, pair[1], parent}, make);
  }
  close(pair[1]);
  if (child < 0) {
    close(pair[0]);
    return false;
  }
  auto& started = *workers_.emplace_back(std::make_unique<worker>());
  started.process = started.record.process = child;
  started.descriptor = pair[0];
  return true;
}

worker_pool::~worker_pool() {
  if (workers_.empty()) return;
  page_->stop = true;
  std::vector<worker_record> records;
  for (const auto& each : workers_) {
    if (each->descriptor >= 0) {
      close(each->descriptor);
      kill(each->process, SIGKILL);
      while (waitpid(each->process, nullptr, 0) < 0 && errno == EINTR) continue;
    }
    records.push_back(each->record);
  }
  pools.innermost = outer_;
  note_workers(records);
  if (any_left()) note_division(false);
}

bool worker_pool::any_left() const {
  return std::ranges::any_of(workers_, [](const auto& each) { return each->descriptor >= 0; });
}

/// A worker that is about to take a part may take this one.
bool worker_pool::is_in_work(int part) const {
  if (page_->next <= part && !page_->stop) return any_left();
  for (std::size_t w = 0; w < workers_.size(); ++w) {
    const int in_hand = page_->in_hand[w];
    if (workers_[w]->descriptor >= 0 && (in_hand < 0 || in_hand == part + 1)) return true;
  }
  return false;
}

std::optional<std::vector<std::byte>> worker_pool::result_of(int part,
                                                             const std::function<void()>& idle) {
  constexpr int milliseconds = 50;
  constexpr double longest_wait = 5;  // seconds, for those that were asked to stop
  if (workers_.empty()) return std::nullopt;
  take_in(0);
  while (!results_.contains(part)) {
    // First this, then what it has sent: so nothing that comes is missed.
    const bool in_work = is_in_work(part);
    take_in(in_work ? milliseconds : 0);
    if (!in_work && !results_.contains(part)) return std::nullopt;
    idle();
    if (!interrupted()) continue;
    if (stop_since_ == 0) stop_since_ = wall_clock();
    page_->stop = true;
    if (wall_clock() - stop_since_ > longest_wait) return std::nullopt;
  }
  result found = std::move(results_.extract(part).mapped());
  in_work_.erase(part);
  if (found.failed) return std::nullopt;
  for (const captured_piece& piece : found.said) say(piece);
  return std::move(found.found);
}

void worker_pool::take_in(int milliseconds) {
  std::vector<pollfd> waiting;
  std::vector<worker*> of_entry;
  for (const auto& each : workers_) {
    if (each->descriptor < 0) continue;
    waiting.push_back({each->descriptor, POLLIN, 0});
    of_entry.push_back(each.get());
  }
  if (poll(waiting.data(), waiting.size(), milliseconds) <= 0) return;
  for (std::size_t i = 0; i < waiting.size(); ++i)
    if (waiting[i].revents != 0) take_in_from(*of_entry[i]);
}

void worker_pool::take_in_from(worker& from) {
  constexpr std::size_t piece = 1 << 16;
  for (;;) {
    const std::size_t end = from.bytes.size();
    from.bytes.resize(end + piece);
    const ssize_t count = recv(from.descriptor, from.bytes.data() + end, piece, MSG_DONTWAIT);
    from.bytes.resize(end + static_cast<std::size_t>(std::max<ssize_t>(count, 0)));
    if (count > 0 || (count < 0 && errno == EINTR)) continue;
    take_frames(from);
    if (count == 0 || (errno != EAGAIN && errno != EWOULDBLOCK)) note_end(from);
    return;
  }
}

void worker_pool::take_frames(worker& from) {
  std::span<const std::byte> rest = from.bytes;
  frame_length length = 0;
  while (rest.size() >= sizeof length) {
    std::memcpy(&length, rest.data(), sizeof length);
    if (rest.size() - sizeof length < length) break;
    take_frame(from, rest.subspan(sizeof length, length));
    rest = rest.subspan(sizeof length + length);
  }
  from.bytes.erase(from.bytes.begin(), from.bytes.end() - static_cast<std::ptrdiff_t>(rest.size()));
}

void worker_pool::take_trees(int part, packet_reader& reader) {
  tree_list& trees = in_work_[part];
  trees.clear();
  while (!reader.at_end()) trees.push_back(reader.list());
}

void worker_pool::take_frame(worker& from, std::span<const std::byte> frame) {
  packet_reader reader(frame);
  const int part = reader.whole();
  if (reader.byte() != 0) return take_trees(part, reader);
  result& to = results_[part];
  to.failed = reader.byte() != 0;
  from.record.seconds = reader.real();
  from.record.peak = reader.real();
  from.record.own = reader.real();
  from.record.parts += !to.failed;
  for (int pieces = reader.whole(); pieces > 0; --pieces) {
    const auto mask = static_cast<unsigned>(reader.whole());
    const std::string text = reader.text();
    to.said.push_back({mask, text, reader.byte() != 0});
  }
  to.found.assign(reader.rest().begin(), reader.rest().end());
}

/// The part in its hands is made by who waits for it.
void worker_pool::note_end(worker& ended) {
  close(std::exchange(ended.descriptor, -1));
  if (!any_left()) note_division(false);
  int status = 0;
  while (waitpid(ended.process, &status, 0) < 0 && errno == EINTR) continue;
  if (WIFEXITED(status) && WEXITSTATUS(status) == 0) return;
  ended.record.lost = true;
  const std::string cause = WIFSIGNALED(status) ? "by signal " + std::to_string(WTERMSIG(status))
                                                : std::string("before its time");
  warning(text_of("Worker %i was ended %s: what it had in hand is done again",
                  static_cast<int>(ended.process), cause.c_str()));
}

}  // namespace zeb
