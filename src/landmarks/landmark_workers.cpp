#include "landmarks/landmark_workers.h"

#include <algorithm>
#include <memory>

#include "landmarks/search_settings.h"
#include "landmarks/worker_threads.h"
#include "matrix/matrix.h"

namespace zeb {
namespace {

struct workers_state {
  std::unique_ptr<worker_threads> threads;
};
workers_state workers;

}  // namespace

void share_out(int parts, const std::function<void(int part)>& task) {
  const int wanted = landmark_threads();
  if (!workers.threads || workers.threads->count() != wanted) {
    workers.threads.reset();
    tell_landmark_threads();
    workers.threads = std::make_unique<worker_threads>(wanted);
  }
  workers.threads->run(parts, task);
}

void rest_workers() {
  if (!landmark_searching.threads_stay) workers.threads.reset();
}

void end_threads_for_copies() {
  workers.threads.reset();
  const bool needed = std::ranges::any_of(matrix.characters, [](const character_record& record) {
    return record.active && record.type == landmark_data;
  });
  if (needed) tell_landmark_threads();
}

}  // namespace zeb
