#include "parallel/jobs/queries.h"

#include <unistd.h>

#include <algorithm>

#include "base/interrupts.h"
#include "base/process.h"
#include "parallel/jobs/liveness.h"
#include "parallel/messages/tags.h"
#include "parallel/settings.h"
#include "parallel/transport/connection.h"

namespace zeb {
namespace {

double longest_wait() {
  const double silence = longest_silence();
  return parallel.get_timeout > 0 ? std::min<double>(parallel.get_timeout, silence) : silence;
}

/// It isn't asked again, nor waited for, before it has given the answer that it owes.
bool owes_an_answer(task_record& which) {
  if (which.owed_tag != 0 && connection().receive(which.id, which.owed_tag)) which.owed_tag = 0;
  return which.owed_tag != 0;
}

}  // namespace

void ask_task(task_record& which, const packet_writer& question, int tag) {
  if (which.gone || owes_an_answer(which)) return;
  while (connection().receive(which.id, tag)) {
    // An answer that came too late for an earlier question.
  }
  send_signal(which, question);
}

std::optional<arrived_message> answer_of(task_record& which, int tag) {
  constexpr useconds_t between = 2'000;  // microseconds
  constexpr int rounds_between_tests = 100;
  const double since = wall_clock();
  for (int round = 0; !which.gone && which.owed_tag == 0; ++round) {
    if (auto answer = connection().receive(which.id, tag)) return answer;
    check_interrupt();
    if (interrupted()) break;
    usleep(between);
    if (round % rounds_between_tests != rounds_between_tests - 1 || !is_alive(which)) continue;
    if (wall_clock() - since > longest_wait()) which.owed_tag = tag;
  }
  return std::nullopt;
}

namespace {

int reply_tag(int query) { return query == query_text ? int{tag_text} : tag_reply + query; }

}  // namespace

void ask_task(task_record& which, int query) {
  packet_writer question;
  question.put(signal_query);
  question.put(query);
  ask_task(which, question, reply_tag(query));
}

std::optional<arrived_message> answer_of_query(task_record& which, int query) {
  return answer_of(which, reply_tag(query));
}

namespace {

/// The fields of a status come by a query each.
constexpr int queries_of_status[] = {query_trees,    query_rearrangements, query_score,
                                     query_finished, query_replications,   query_tag,
                                     query_stage,    query_errors};

void take_answer(int query, packet_reader from, task_status& now) {
  switch (query) {
    case query_trees:
      now.trees = from.whole();
      return;
    case query_rearrangements:
      now.rearrangements_high = from.long_whole();
      now.rearrangements_low = from.long_whole();
      return;
    case query_score:
      now.score = from.real();
      return;
    case query_finished:
      now.finished = from.whole() != 0;
      return;
    case query_replications:
      now.replications = from.whole();
      return;
    case query_tag:
      now.tag = from.whole();
      return;
    case query_stage:
      now.stage = from.whole();
      return;
    default:
      if (from.whole() != 0) now.command = "ERROR";
  }
}

/// What an answer of each query tells; without one its stage isn't known.
task_status status_by_queries(task_record& which) {
  task_status now;
  for (const int query : queries_of_status) {
    const auto answer = answer_of_query(which, query);
    if (!answer) {
      if (!which.gone) now.stage = stage_unknown;
      return now;
    }
    try {
      take_answer(query, packet_reader(answer->body), now);
    } catch (const damaged_message&) {
      which.gone = true;
    }
  }
  return now;
}

}  // namespace

std::optional<double> value_of_task(task_record& which) {
  if (which.value || which.collected || which.gone) return which.value;
  ask_task(which, query_value);
  const auto answer = answer_of_query(which, query_value);
  if (!answer) return std::nullopt;
  try {
    packet_reader from(answer->body);
    const bool given = from.whole() != 0;
    const double value = from.real();
    return given ? std::optional<double>(value) : std::nullopt;
  } catch (const damaged_message&) {
    which.gone = true;
    return std::nullopt;
  }
}

std::vector<task_status> statuses_of_tasks(std::span<task_record* const> tasks) {
  for (task_record* const t : tasks)
    if (!t->status && is_alive(*t))
      for (const int query : queries_of_status) ask_task(*t, query);
  std::vector<task_status> all;
  for (task_record* const t : tasks) {
    all.push_back(t->status ? *t->status : status_by_queries(*t));
    all.back().finished = all.back().finished || t->gone;
  }
  return all;
}

}  // namespace zeb
